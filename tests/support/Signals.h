// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/MatrixXd.h"

#include <cmath>
#include <initializer_list>
#include <numbers>

/// Samples to feed: signals of one column, and elements that can be found again.
namespace Support {

/// A column of the given values.
inline Quillmere::Core::MatrixXd column(std::initializer_list<double> values) {
    Quillmere::Core::MatrixXd result(static_cast<Eigen::Index>(values.size()), 1);
    Eigen::Index row = 0;
    for (const double value : values)
        result(row++) = value;
    return result;
}

/// `rows` samples of amplitude * cos(2*pi*cycles*row/rows + phase): `cycles` whole periods lie at that exact
/// bin.
inline Quillmere::Core::MatrixXd tone(Eigen::Index rows, double amplitude, double cycles,
                                      double phase = 0.0) {
    Quillmere::Core::MatrixXd result(rows, 1);
    for (Eigen::Index row = 0; row < rows; ++row) {
        const double turns = cycles * static_cast<double>(row) / static_cast<double>(rows);
        result(row) = amplitude * std::cos(2.0 * std::numbers::pi * turns + phase);
    }
    return result;
}

/// Elements that tell where they stood: the row, and behind the point the column in thousandths.
inline Quillmere::Core::MatrixXd numbered(Eigen::Index rows, Eigen::Index cols) {
    Quillmere::Core::MatrixXd result(rows, cols);
    for (Eigen::Index row = 0; row < rows; ++row)
        for (Eigen::Index col = 0; col < cols; ++col)
            result(row, col) = static_cast<double>(row) + 0.001 * static_cast<double>(col);
    return result;
}

} // namespace Support
