// SPDX-License-Identifier: MIT
#pragma once

#include <Eigen/Core>

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

namespace Quillmere::Core {

/// The payload of every sample: dense, double, stored by rows, so element (r, c) has linear index r * cols +
/// c.
using MatrixXd = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

/// What sizing a sample raises: the size is out of bounds, or there is no memory for it.
class MatrixAllocationException : public std::bad_alloc {
public:
    const char* what() const noexcept override { return "bad allocation"; }
};

/// A sample holds fewer elements than this.
inline constexpr std::int64_t kSampleElementLimit = std::int64_t{1} << 29;

namespace Private {
/// The road of `resizeSample` for a shape that changes; out of line, since a steady stream never takes it.
[[gnu::noinline, gnu::cold]] inline void changeShape(MatrixXd& matrix, Eigen::Index rows, Eigen::Index cols) {
    constexpr Eigen::Index kLargestInt = std::numeric_limits<std::int32_t>::max();
    if (rows < 0 || cols < 0 || (cols > 0 && rows > kLargestInt / cols) || rows * cols >= kSampleElementLimit)
        throw MatrixAllocationException();
    try {
        if (rows * cols == matrix.size()) return matrix.resize(rows, cols);
        // Eigen's own resize frees the old storage first, and would have nothing to keep if the new one
        // cannot be had.
        MatrixXd fresh(rows, cols);
        matrix.swap(fresh);
    } catch (const std::bad_alloc&) {
        throw MatrixAllocationException();
    }
}
} // namespace Private

/// Gives `matrix` the shape `rows` by `cols`; the only way in which a sample is sized. The storage, and with
/// it every element's value in linear order, stays while the number of elements stays; else the elements are
/// indeterminate. Raises `MatrixAllocationException` for a negative size, for rows times columns beyond a
/// signed 32-bit number, for 2^29 elements or more, and when there is no memory; the matrix is then as it
/// was. [any]
inline void resizeSample(MatrixXd& matrix, Eigen::Index rows, Eigen::Index cols) {
    // Compare first: a resize divides to test for overflow, and the shape seldom changes.
    if (matrix.rows() == rows && matrix.cols() == cols) return;
    Private::changeShape(matrix, rows, cols);
}

namespace Private {
/// One by one where a call would cost more: a load of several elements waits for stores of single ones, which
/// the block before has just done.
inline void copyElements(double* to, const double* from, Eigen::Index count) {
    switch (count) {
    case 4:
        to[3] = from[3];
        [[fallthrough]];
    case 3:
        to[2] = from[2];
        [[fallthrough]];
    case 2:
        to[1] = from[1];
        [[fallthrough]];
    case 1:
        to[0] = from[0];
        [[fallthrough]];
    case 0:
        return;
    default:
        std::memcpy(to, from, static_cast<std::size_t>(count) * sizeof(double));
    }
}
} // namespace Private

/// Makes `to` a copy of `from`, shape and bits, reusing storage as `resizeSample` does and raising what it
/// raises, with `to` as it was. [any]
inline void copySample(MatrixXd& to, const MatrixXd& from) {
    resizeSample(to, from.rows(), from.cols());
    if (to.data() != from.data()) Private::copyElements(to.data(), from.data(), from.size());
}

} // namespace Quillmere::Core
