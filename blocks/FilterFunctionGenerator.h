// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Makes one sample of a test signal a step, in a time of its own.
///
///     sinusoid     sin(p * 2*pi / P) * A + O
///     triangular   (2*p / P - 1) * A + O
///     rectangular  O + A if 2*p <= P, else O - A
///     continuous   O
///     then  p += SampleRate, time += SampleRate;  p -= P once if p >= P
///
/// with the phase p, P = "SignalPeriod", A = "SignalAmplitude" and O = "SignalOffset"; stamped with the time
/// after the step. State: phase and time, for the life of the block. Before the first step the output holds
/// minus the default amplitude. Kept as is: the period is taken off once a step, so a step beyond it lets the
/// phase grow; in "continuous" mode amplitude, period and rate cannot be written.
class FilterFunctionGenerator final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterFunctionGenerator";

    explicit FilterFunctionGenerator(const std::string& instanceName);
    ~FilterFunctionGenerator() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    OutputPin<MatrixXd> out;
    EnumProperty<std::string> mode;
    RangeProperty<double> signalPeriod;
    RangeProperty<double> signalAmplitude;
    RangeProperty<double> signalOffset;
    RangeProperty<int> sampleRate;

    double valueAtPhase() const;
    void advance();
    void onMode();

    double phase = 0.0; ///< place in the period, in the unit of the period
    double time = 0.0;  ///< stamp of the sample sent last, in the same unit
};
