// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "design/ButterworthComputer.h"

/// Smooths a signal with a Butterworth low-pass of order 0 to 10, or takes the smooth part away.
///
///     LowPass: out = lowpass(in)    HiPass: out = in - lowpass(in)
///
/// Any shape in, the same shape out, every element filtered on its own (`ButterworthComputer`).
/// "RelativeCutOffFreq" is a fraction of half the sample rate; the block knows no rate and filters by count,
/// not by time stamp. It remembers the recursion's state and starts in the steady state of its first sample,
/// so a constant passes a low-pass from the first output on, and a high-pass starts at zero. A change of any
/// setting, "Init", a sample on "reset" whose first value isn't 0.0, and another shape forget the state: the
/// next sample is a new start. An empty sample is sent on.
///
/// Kept as is: "HiPass" is input minus low-pass and no design of its own; "Order" 0 is a bypass in both
/// modes; and a cut-off of 0.0 makes every output non-finite.
class FilterButterworth final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterButterworth";

    enum class Mode : unsigned { LowPass, HiPass };

    explicit FilterButterworth(const std::string& instanceName);
    ~FilterButterworth() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    OutputPin<MatrixXd> out;
    InputPin<MatrixXd> in;
    InputPin<MatrixXd> reset;
    CommandProperty init;
    RangeProperty<double> relativeCutOff;
    RangeProperty<int> order;
    EnumEnumProperty<Mode, std::string> mode;

    void redesign();
    void requestDesign();

    bool designRequested = true; ///< until the next step
    ButterworthComputer computer;
};
