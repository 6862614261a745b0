// SPDX-License-Identifier: MIT
// What a filter of order 4 over rows of three costs in C++, for a Python that has the rows as an array.
#include "benchmarks/design/PackedCascade.h"
#include "design/ButterworthComputer.h"

/// Nothing but the arithmetic, from rest. Requires: a number behind the last of either array.
extern "C" [[gnu::visibility("default")]] void bareLowpass(const double* in, double* out, long rows,
                                                           double cutOff) {
    Bench::PackedCascade<4, 4> cascade(cutOff, 3);
    cascade.run(in, out, rows, 3);
}

/// The engine, a sample a row.
extern "C" [[gnu::visibility("default")]] void engineLowpass(const double* in, double* out, long rows,
                                                             double cutOff) {
    using Quillmere::Core::Private::copyElements;
    ButterworthComputer computer;
    computer.setParameters(cutOff, 4);
    Quillmere::Core::MatrixXd row(1, 3);
    for (long i = 0; i < rows; ++i, in += 3, out += 3) {
        copyElements(row.data(), in, 3);
        computer.step(row);
        copyElements(out, computer.output().data(), 3);
    }
}
