// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/transport/MatrixXd.h"

#include <cstddef>

namespace Quillmere::Core {

/// What a block may derive from behind `Filter`: who has many rows for it at hand, as an array that lies in
/// memory, may have them stepped in one call, without a link's and a step's cost for each. A host asks for it
/// by `dynamic_cast`; blocks that don't offer it, and plug-ins that were built before it, are stepped row by
/// row as ever.
///
///     while (count > 0) {
///         const Eigen::Index width = stepper.getRowWidth(columns);
///         if (width == RowStepper::kOneByOne) ... // send one row and call process()
///         else stepper.stepRows(...)              // of those that are left kMostRows at most
///     }
///
/// It is for a block that makes of every row that comes to its main input (its first blocking one), by itself
/// or with what it remembers, one row that leaves by its main output ("out", or its first) with the same time
/// stamp, and that reckons with no times. Whatever else a step may do (to start, to take another shape, to
/// drop a sample, to hear another input, to send by another output) stays in `process`: `getRowWidth` says
/// so, and the next row goes that way.
class QUILLMERE_API RowStepper {
public:
    static constexpr Eigen::Index kOneByOne = -1;
    /// Settings are read once for all rows of a call, so one that is written meanwhile counts behind the
    /// call, as it counts behind the step that is under way.
    static constexpr std::size_t kMostRows = 256;

    /// Numbers of the row that leaves for each row of `columns` numbers, `kOneByOne` if the next one has to
    /// come as a sample. Requires: `columns` is 1 at least. [run]
    virtual Eigen::Index getRowWidth(Eigen::Index columns) = 0;

    /// Does what `count` steps do, each with the next of `rows` as a sample of 1 by `columns`, to the bit and
    /// with the same state behind it, and writes what they would send to `results`. Pins stay out of it:
    /// nothing is taken, sent or counted, and what an output holds means nothing until the next step.
    /// Allocates nothing and raises nothing. Requires: `getRowWidth` has just told how wide results are, and
    /// since then the gate, if there is one, hasn't been given up; nothing waits at the main input; `rows`
    /// and `results` don't overlap. [run]
    virtual void stepRows(const double* rows, double* results, std::size_t count, Eigen::Index columns) = 0;

protected:
    RowStepper() = default;
    RowStepper(const RowStepper&) = default;
    RowStepper& operator=(const RowStepper&) = default;
    virtual ~RowStepper();
};

} // namespace Quillmere::Core
