// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"

#include <algorithm>

/// Lines of a matrix that lie side by side.
struct Span {
    Eigen::Index first;
    Eigen::Index length;
};

/// Makes `cropped` the part of `sample` that these rows and columns have in common. Requires: they are lines
/// of `sample`, or none; `cropped` is another matrix.
inline void cropSample(const Quillmere::Core::MatrixXd& sample, const Span& rows, const Span& columns,
                       Quillmere::Core::MatrixXd& cropped) {
    Quillmere::Core::resizeSample(cropped, rows.length, columns.length);
    for (Eigen::Index row = 0; row < rows.length; ++row) {
        const double* const from = sample.data() + (rows.first + row) * sample.cols() + columns.first;
        std::copy_n(from, columns.length, cropped.data() + row * columns.length);
    }
}
