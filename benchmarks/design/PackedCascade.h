// SPDX-License-Identifier: MIT
#pragma once

#include "design/ButterworthSections.h"

#include <cstddef>
#include <vector>

namespace Bench {

/// The cascade at rest, packed: a block of neighbouring elements, then a section, then its two delayed
/// values, a register or more wide each. Everything that can be is known to the compiler.
template <int lanes, int order>
class PackedCascade {
public:
    PackedCascade(double cutOff, Eigen::Index elements)
        : blocks((elements + lanes - 1) / lanes),
          states(static_cast<std::size_t>(2 * kSections * blocks), Lanes::Zero()) {
        Design::designButterworthSections(coefficients, cutOff, order);
    }

    /// Requires: room for `lanes` behind the last element of either.
    void step(const double* in, double* out) {
        using namespace Design;
        Lanes* s = states.data();
        for (Eigen::Index block = 0; block < blocks; ++block, in += lanes, out += lanes) {
            Lanes u = Eigen::Map<const Lanes>(in);
            const double* c = coefficients.data();
            for (int k = 0; k < kSections; ++k, s += 2, ++c) {
                const Lanes s1 = s[0];
                const Lanes s2 = s[1];
                const Lanes w = u + c[kA1 * kSections] * s1 + c[kA2 * kSections] * s2;
                u = (c[kB1 * kSections] * s1 + w + c[kB2 * kSections] * s2) * c[kGain * kSections];
                s[1] = s1;
                s[0] = w;
            }
            Eigen::Map<Lanes> result(out);
            result = u;
        }
    }

private:
    static constexpr int kSections = (order + 1) / 2;
    using Lanes = Eigen::Array<double, lanes, 1>;
    Quillmere::Core::MatrixXd coefficients;
    Eigen::Index blocks;
    std::vector<Lanes> states;
};

} // namespace Bench
