// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Makes one sample of uniform noise a step, stamped with the wall clock.
///
///     c1 = 2^Precision - 1;  c2 = integer part of c1 / 3, plus 1;  c3 = 1 / c1
///     x = r / 32768 * c2, r drawn uniformly from 0 to 32767;  out = (2 * (3 * x) - 3 * (c2 - 1)) * c3
///
/// The draws come from the standard runtime's generator, one for the whole process, which the construction of
/// each such block seeds with the calendar time. Kept as is: the sum of three deviates that would make a bell
/// is three times one deviate.
class FilterGaussianWhiteNoiseGenerator final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterGaussianWhiteNoiseGenerator";

    explicit FilterGaussianWhiteNoiseGenerator(const std::string& instanceName);
    ~FilterGaussianWhiteNoiseGenerator() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    OutputPin<MatrixXd> out;
    RangeProperty<int> precision;

    void rescale();
    void requestRescale();

    bool rescaleRequested = true; ///< raised by the handler, cleared by the next step
    double c2 = 0.0;              ///< of the precision in force, from the first step on
    double c3 = 0.0;              ///< likewise
};
