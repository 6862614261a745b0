// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

#include <cstdint>

/// Multiplies a vector, element by element, by a symmetric window of the vector's own length N.
///
///     s = 2*pi / (N - 1);  w[i] = w[N-1-i] = windowCoefficient(i, s) for i = 0 .. N/2;
///     output[i] = input[i] * w[i]
///
/// In: a row or a column of at least 2 elements; out: the same shape and unit. Anything else is used up and
/// nothing is sent. The window reaches both of its ends: indices 0 and N - 1 are the two ends of one period.
/// Nothing is remembered from sample to sample.
class BlockWindowBase : public Filter {
public:
    explicit BlockWindowBase(const std::string& instanceName);
    ~BlockWindowBase() override;

    void process() override;

protected:
    /// The window at `index` steps of `step` radians; called for the first half of a window only. [run]
    virtual double windowCoefficient(std::int32_t index, double step) const = 0;

private:
    void buildWindow(std::int32_t length);

    InputPin<MatrixXd> input;
    OutputPin<MatrixXd> output;

    MatrixXd window; ///< of the sample in hand; kept for its storage alone
};
