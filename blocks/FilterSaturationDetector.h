// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Flags every element of a sample that lies at a sensor's limits: 1 for saturated, 0 otherwise.
///
///     saturation = 1 where not (in < Threshold High), else 1 where not (in > Threshold Low), else 0
///
/// No state. Kept as is: not-a-number counts as saturated; the thresholds are read anew for every element.
class FilterSaturationDetector final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterSaturationDetector";

    explicit FilterSaturationDetector(const std::string& instanceName);
    ~FilterSaturationDetector() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    RangeProperty<double> thresholdLow;
    RangeProperty<double> thresholdHigh;
    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> saturation;

    double flag(double x) const;
};
