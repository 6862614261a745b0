// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/MatrixXd.h"

#include <random>
#include <vector>

namespace Support {

/// A trace of 1 by 1 samples.
std::vector<Quillmere::Core::MatrixXd> scalars(const std::vector<double>& values);

/// A number as comparisons meet it: mostly a multiple of a half between -3 and 3, so that it often lies right
/// on a threshold, and now and then something in between, -0.0, an infinity or not-a-number.
double anyNumber(std::mt19937_64& random);

/// A matrix of them.
Quillmere::Core::MatrixXd anyMatrix(std::mt19937_64& random, Eigen::Index rows, Eigen::Index cols);

/// True once in `n` draws.
bool onceIn(int n, std::mt19937_64& random);

} // namespace Support
