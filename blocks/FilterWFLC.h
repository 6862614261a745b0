// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "estimation/WFLCEstimator.h"

/// Follows the frequency and the Fourier amplitudes of a signal that nearly repeats (`WFLCEstimator`, which
/// has the rule): reads settings, steps it once for each sample and sends what it knows.
///
/// A setting that changes, "Reset", and a sample other than 0 on the "Reset" pin forget everything learned;
/// the "Wf0" pin holds a new starting frequency for the next such time. Kept as is: the "Wf0" pin and the
/// "Wf0" setting write one and the same starting frequency, the later one wins, and the setting does not show
/// the pin's value; both, "Reset" and settings take effect also while no input comes.
class FilterWFLC final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterWFLC";

    explicit FilterWFLC(const std::string& instanceName);
    ~FilterWFLC() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> input;
    InputPin<MatrixXd> startFrequencyPin;
    InputPin<MatrixXd> resetPin;
    OutputPin<MatrixXd> out;
    OutputPin<MatrixXd> error;
    OutputPin<MatrixXd> frequencyWeight;
    OutputPin<MatrixXd> amplitudeWeights;
    OutputPin<MatrixXd> harmonicWeights;
    RangeProperty<int> order;
    RangeProperty<double> mu;
    RangeProperty<double> mu0;
    RangeProperty<double> muB;
    RangeProperty<double> wf0;
    RangeProperty<double> w1;
    RangeProperty<double> wm1;
    ValueProperty<double> offset;
    CommandProperty resetCommand;

    void setUp(RangeProperty<double>& property, double defaultValue);
    void pollStartFrequency();
    void rebuild();
    void send();
    void onStartFrequency();
    void requestRebuild();
    void requestReset();

    bool resetRequested = true;
    bool rebuildRequested = true; ///< read all settings and start anew
    double startFrequency;        ///< radians per sample; the last word of pin and setting
    WFLCEstimator estimator;
};
