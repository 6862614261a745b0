// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/BlockPoleZeroBase.h"
#include "design/EllipticDesigner.h"

/// Filters every element of a sample with an elliptic filter of order 1 to 10 in four band shapes, by the
/// bilinear mapping. Pins, settings, state and what is sent when: `BlockPoleZeroBase`, except that "gain"
/// carries the reciprocal of the design's gain and row 1 of "coeffs" the negated feedback. The design:
/// `EllipticDesigner`.
///
/// Kept as is: much of what `EllipticDesigner` tells. A high edge that starts at 0.0 is pulled up to the low
/// one when a band mode is chosen, and nothing finite leaves until one is moved. A high edge below 0.01
/// cannot take the low edge along: the write raises, the high edge stays as written, and the design waits for
/// the next setting.
class FilterEllipticV1 final : public BlockPoleZeroBase {
public:
    static constexpr const char* kTypeName = "FilterEllipticV1";

    explicit FilterEllipticV1(const std::string& instanceName);
    ~FilterEllipticV1() override;

    const char* getTypeName() const override { return kTypeName; }

private:
    RangeProperty<double> passRipple;
    RangeProperty<double> stopRipple;
    CommandProperty resetCommand;

    void passParameters(std::int32_t designCode) override;
    double gainToPublish() const override { return 1.0 / designer.getGain(); }
    std::vector<double> feedbackToPublish() const override;
    void onPassRipple();
    void onStopRipple();

    EllipticDesigner designer{Design::kLowPass, 1, 0.05, 0.5, -10.0, 0.0};
};
