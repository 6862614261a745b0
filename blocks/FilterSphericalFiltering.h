// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "estimation/SphericalFilteringCore.h"

#include <array>

/// Low-passes the acceleration and the magnetic field of a turning sensor in the Earth's frame
/// (`SphericalFilteringCore`, which has the rule): polls, reads settings, steps it once for each "3g" sample
/// and sends what it knows.
///
/// "Reset" and the "reset" pin put the orientation back to identity and forget the filtered vectors. The time
/// of a step is the difference of time stamps; only the first step ever takes 1 / "Frequency", or 0.01 s with
/// "Use Timestamp".
///
/// Kept as is: a "3g" sample of the wrong size stores its time stamp and leaves "3a" and "3m" unread; a
/// "Lambda Gain", an "isMagPerturbed" or a "Fc (optional)" that is read while no usable "3g" sample comes is
/// lost.
class FilterSphericalFiltering final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterSphericalFiltering";

    explicit FilterSphericalFiltering(const std::string& instanceName);
    ~FilterSphericalFiltering() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> accelerometer;
    InputPin<MatrixXd> magnetometer;
    InputPin<MatrixXd> gyroscope;
    InputPin<MatrixXd> isMagPerturbed;
    InputPin<MatrixXd> imposedCutoffs;
    InputPin<MatrixXd> resetPin;
    OutputPin<MatrixXd> aFiltered;
    OutputPin<MatrixXd> mFiltered;
    OutputPin<MatrixXd> aTerre;
    OutputPin<MatrixXd> mTerre;
    OutputPin<MatrixXd> aTerreFiltered;
    OutputPin<MatrixXd> mTerreFiltered;
    OutputPin<MatrixXd> rotation;
    OutputPin<MatrixXd> cutoffs;
    OutputPin<MatrixXd> residuals;
    RangeProperty<double> frequency;
    CommandProperty resetCommand;
    ValueProperty<bool> useTimestamp;
    ValueProperty<double> filterGain;
    RangeProperty<double> lambdaGain;

    bool pollImposedCutoffs();
    double readSettings();
    double timeSinceLast(double time);
    void send(double time);
    void requestUpdate();
    void requestReset();

    bool updateRequested = true; ///< read the settings anew
    bool resetRequested = true;
    bool magPerturbed = false;   ///< in this step
    double lastTimeStamp = -1.0; ///< seconds; of the last "3g" sample; outlives a reset; negative for none
    MatrixXd imposed;            ///< 1 by 2: the cut-offs of this step, if any
    SphericalFilteringCore core;
};
