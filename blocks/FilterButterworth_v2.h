// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "design/ButterworthComputer_v2.h"

/// Smooths a signal with a first-order Butterworth low-pass, or takes the smooth part away, at a cut-off that
/// may move at every sample (`ButterworthComputer_v2`).
///
///     y = a1 y + g (x + in),   x = in        LowPass: out = y    HiPass: out = in - y
///
/// with a1 = (1 - t) / (1 + t), g = t / (1 + t), t = tan(cutOff pi / 2). State: x and y of every element,
/// which another shape starts at the present sample. Every other restart is governed by
/// "ReinitOnCutOffFreqUpdate": while it is true, a new cut-off, order or mode, "Init" and "reset" restart at
/// the next sample; while it is false, a new cut-off meets the running state, a new mode swaps the output,
/// and "Init" and "reset" change nothing. "MemorizeCoef" takes effect at the next change of the cut-off.
///
/// Kept as is: a cut-off from the pin doesn't show in the setting, whose value comes back the next time any
/// setting of the four, "Init" or "reset" is touched; without restarts a new "Order" from 0 to 1 goes on with
/// the coefficients of before.
class FilterButterworth_v2 final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterButterworth_v2";

    enum class Mode : unsigned { LowPass, HiPass };

    explicit FilterButterworth_v2(const std::string& instanceName);
    ~FilterButterworth_v2() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    OutputPin<MatrixXd> out;
    InputPin<MatrixXd> in;
    InputPin<MatrixXd> cutOffInput;
    InputPin<MatrixXd> reset;
    CommandProperty init;
    RangeProperty<double> relativeCutOff;
    RangeProperty<int> order;
    EnumEnumProperty<Mode, std::string> mode;
    ValueProperty<bool> reinitOnUpdate;
    ValueProperty<bool> memorize;

    void adoptSettings();
    void moveCutOff(double cutOff);
    void requestDesign();

    bool designRequested = true; ///< until the next step
    ButterworthComputer_v2 computer;
};
