// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/MatrixXd.h"

#include <cstddef>
#include <span>

namespace Design {

/// A history of `size()` matrices of one shape, entry 0 the newest, that is shifted by rising index: each
/// copy reads what the copy before it has just written, so after a shift every entry above 0 holds what entry
/// 0 held before it. No older sample survives. Entry 0 is therefore all there is to keep, and a shift costs
/// nothing.
struct RisingHistory {
    using MatrixXd = Quillmere::Core::MatrixXd;

    explicit RisingHistory(std::size_t size) : entries(size), newest(MatrixXd::Zero(1, 1)) {}

    std::size_t size() const { return entries; }

    /// Makes all entries matrices of one value. Raises what `resizeSample` raises.
    void fill(Eigen::Index rows, Eigen::Index cols, double value) {
        Quillmere::Core::resizeSample(newest, rows, cols);
        newest.setConstant(value);
    }

    std::size_t entries;
    MatrixXd newest;
};

/// How an input sample becomes the newest entry of the x history; the two round differently.
enum class InputScale { Divide, Multiply };

/// What one step of the direct form computes with. `xCoeffs` run oldest first: the last one belongs to the
/// newest sample. `yCoeffs` all belong to the previous output and are added. Spans may be longer than the
/// histories use.
struct DirectForm {
    std::span<const double> xCoeffs;
    std::span<const double> yCoeffs;
    InputScale scale;
    double factor;
};

/// One step of the direct form, every element of a sample alike. With u the scaled input, y the output, nx
/// and ny the sizes of the histories:
///
///     y(n) = xCoeffs[0] u(n-1) + ... + xCoeffs[nx-2] u(n-1) + xCoeffs[nx-1] u(n)
///            + yCoeffs[0] y(n-1) + ... + yCoeffs[ny-2] y(n-1)
///
/// summed from the left, term by term. Kept as is: the histories are shifted by rising index, so however many
/// coefficients there are, the filter never looks back further than one sample.
/// Requires: both histories have the input's shape, the x history at least one entry and one coefficient.
void runDirectForm(const DirectForm& form, const Quillmere::Core::MatrixXd& input, RisingHistory& xHistory,
                   RisingHistory& yHistory);

} // namespace Design
