// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "estimation/SlidingStdDev.h"

#include <array>
#include <cstdint>

/// Tells for each sample of a three-axis sensor whether the sensor stands still: 1 for still, 0 for moving.
///
///     FlagStatic = FlagThreshold * |estimate| > |3g - 3bias|
///
/// The estimate is a standard deviation for each axis. It starts at "StdDevIni" and adopts the deviations w
/// of the last "Windows Size" samples as soon as
///
///     tolerance * |estimate| > |w|   and   0.499 s have passed since the first sample
///
/// The tolerance is 1 at a start and after every adoption, and grows by (MaxStdDev - 1) / (rate *
/// StepStdDevThreshold) a sample up to "MaxStdDev". The rate is taken from the time stamps of the first two
/// samples. "Clear" and a change of "StdDevIni" start anew at the next step; the first sample after that
/// sends nothing.
///
/// Kept as is: "Windows Size" takes hold at the second sample after a start only; a start keeps the old rate
/// for the first two samples; an axis whose deviation is exactly 0 counts as twice its estimate.
class FilterFlagStatic final : public Filter {
public:
    using Vector3 = std::array<double, 3>;

    static constexpr const char* kTypeName = "FilterFlagStatic";

    explicit FilterFlagStatic(const std::string& instanceName);
    ~FilterFlagStatic() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> signal;
    InputPin<MatrixXd> bias;
    OutputPin<MatrixXd> flagStatic;
    OutputPin<MatrixXd> stdDev;
    RangeProperty<int> windowSize;
    RangeProperty<double> largestTolerance;
    RangeProperty<double> flagThreshold;
    RangeProperty<double> rampSeconds;
    RangeProperty<double> startStdDev;
    CommandProperty clear;

    void startAnew();
    void resetWindows();
    void push(const Vector3& sample);
    void growTolerance();
    Vector3 windowDeviations() const;
    void adoptIfBelievable(const Vector3& window, double time);
    void requestReset();

    double firstTimeStamp = 0.0; ///< seconds; of the first sample after a start
    std::array<SlidingStdDev, 3> windows;
    Vector3 estimate{};        ///< "StdDevIni" on each axis after a start
    Vector3 firstSample{};     ///< the first sample after a start
    int samplesSeen = 0;       ///< since a start; stays at 2, since only 0 and 1 matter
    double sampleRate = 200.0; ///< per second; outlives a start
    double tolerance = 1.0;
    bool resetRequested = true;
};
