// SPDX-License-Identifier: MIT
#include "tests/support/Scalars.h"

#include "tests/support/Numbers.h"

namespace Support {

using Quillmere::Core::MatrixXd;

std::vector<MatrixXd> scalars(const std::vector<double>& values) {
    std::vector<MatrixXd> trace;
    for (const double value : values)
        trace.push_back(MatrixXd::Constant(1, 1, value));
    return trace;
}

double anyNumber(std::mt19937_64& random) {
    constexpr double kOdd[] = {-0.0, kInf, -kInf, kNaN};
    const auto kind = random() % 20;
    if (kind == 0) return kOdd[random() % 4];
    if (kind < 4) return std::uniform_real_distribution<double>(-3.0, 3.0)(random);
    return 0.5 * static_cast<double>(random() % 13) - 3.0;
}

MatrixXd anyMatrix(std::mt19937_64& random, Eigen::Index rows, Eigen::Index cols) {
    MatrixXd matrix(rows, cols);
    for (Eigen::Index i = 0; i < matrix.size(); ++i)
        matrix(i) = anyNumber(random);
    return matrix;
}

bool onceIn(int n, std::mt19937_64& random) {
    return random() % static_cast<unsigned>(n) == 0;
}

} // namespace Support
