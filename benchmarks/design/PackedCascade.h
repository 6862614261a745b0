// SPDX-License-Identifier: MIT
#pragma once

#include "design/ButterworthSections.h"

#include <algorithm>
#include <array>
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

    /// Many rows of up to `lanes` elements each, one behind the other, with the delayed values at hand.
    /// Requires: one block; room for `lanes` behind the last element of either.
    void run(const double* in, double* out, Eigen::Index rows, Eigen::Index columns) {
        using namespace Design;
        std::array<Lanes, 2 * kSections> s;
        std::copy_n(states.begin(), s.size(), s.begin());
        const double* const c = coefficients.data();
        for (Eigen::Index row = 0; row < rows; ++row, in += columns, out += columns) {
            Lanes u = Eigen::Map<const Lanes>(in);
            for (int k = 0; k < kSections; ++k) {
                const Lanes s1 = s[2 * k];
                const Lanes s2 = s[2 * k + 1];
                const Lanes w = u + c[kA1 * kSections + k] * s1 + c[kA2 * kSections + k] * s2;
                u = (c[kB1 * kSections + k] * s1 + w + c[kB2 * kSections + k] * s2) *
                    c[kGain * kSections + k];
                s[2 * k + 1] = s1;
                s[2 * k] = w;
            }
            Eigen::Map<Lanes> result(out);
            result = u;
        }
        std::copy_n(s.begin(), s.size(), states.begin());
    }

private:
    static constexpr int kSections = (order + 1) / 2;
    using Lanes = Eigen::Array<double, lanes, 1>;
    Quillmere::Core::MatrixXd coefficients;
    Eigen::Index blocks;
    std::vector<Lanes> states;
};

} // namespace Bench
