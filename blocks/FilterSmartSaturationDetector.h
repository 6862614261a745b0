// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Flags every element of a sample that is stuck at a sensor's limits: 1 for saturated, 0 otherwise.
///
/// An element x is saturated when it is a candidate, and it and the samples before it, "SteadySamples" in
/// all, form a flat run: with `anchor` the value at which its run began,
///
///     candidate:  x <= MinThreshold  or  x >= MaxThreshold
///     flat:       anchor - SteadyTolerance <= x <= anchor + SteadyTolerance
///
/// With "IntegerSaturation" a whole number only, or an infinity, can continue a run. State for each element:
/// the anchor, and how many samples have followed it; a change of shape forgets both, and nothing else does.
/// Writing one threshold across the other drags the other along. Kept as is: after a start the anchor is 0;
/// it does not follow the signal.
class FilterSmartSaturationDetector final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterSmartSaturationDetector";

    explicit FilterSmartSaturationDetector(const std::string& instanceName);
    ~FilterSmartSaturationDetector() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> saturation;
    RangeProperty<double> minThreshold;
    RangeProperty<double> maxThreshold;
    RangeProperty<double> steadyTolerance;
    RangeProperty<int> steadySamples;
    ValueProperty<bool> integerSaturation;

    void startAnew(const MatrixXd& sample);
    void onMinThreshold();
    void onMaxThreshold();

    MatrixXd anchor;      ///< of the input's shape: where each element's run began
    MatrixXd steadyCount; ///< of the input's shape: samples that have followed the anchor; whole numbers
};
