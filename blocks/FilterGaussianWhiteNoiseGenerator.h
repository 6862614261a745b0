// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Makes one sample of uniform noise a step, stamped with the wall clock.
///
///     c1 = 2^Precision - 1;  c2 = integer part of c1 / 3, plus 1;  c3 = 1 / c1
///     x = r / 32768 * c2, r drawn uniformly from 0 to 32767;  out = (2 * (3 * x) - 3 * (c2 - 1)) * c3
///
/// Out: 1 by 1, without a unit: from about -1 to about 1 for a large "Precision", in at most 32768 steps
/// whatever it is; from 0 to 6 for 1 and from -1 to 3 for 2. The draws come from the standard runtime's
/// generator, one for the whole process: all blocks of this type share its sequence, and the construction of
/// each seeds it with the calendar time.
///
/// Kept as is: the sum of three deviates that would make a bell is three times one deviate, so the noise is
/// uniform, not Gaussian; and the limits don't lie evenly about zero.
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
