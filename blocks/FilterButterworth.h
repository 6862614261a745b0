// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "design/ButterworthComputer.h"

/// Smooths a signal with a Butterworth low-pass of order 0 to 10, or takes the smooth part away
/// (`ButterworthComputer`).
///
///     LowPass: out = lowpass(in)    HiPass: out = in - lowpass(in)
///
/// State: the recursion of each element, which starts in the steady state of its first sample; a change of
/// any setting, "Init", a first value other than 0.0 on "reset" and another shape forget it. Kept as is:
/// "HiPass" is no design of its own, "Order" 0 is a bypass in both modes.
class FilterButterworth final : public Filter, public RowStepper {
public:
    static constexpr const char* kTypeName = "FilterButterworth";

    enum class Mode : unsigned { LowPass, HiPass };

    explicit FilterButterworth(const std::string& instanceName);
    ~FilterButterworth() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }
    Eigen::Index getRowWidth(Eigen::Index columns) override;
    void stepRows(const double* rows, double* results, std::size_t count, Eigen::Index columns) override;

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
