// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "estimation/SphericalFilteringCore.h"

#include <array>

/// Low-passes the acceleration and the magnetic field of a turning sensor in the Earth's frame, with an
/// orientation integrated from the gyroscope. The rule is told with `SphericalFilteringCore`; the block
/// polls, reads settings, steps it once for each gyroscope sample and sends what it knows.
///
/// "3g" in radians per second clocks the block; "3a" in units of gravity and "3m" in units of the Earth's
/// field may come or not; each has 3 elements, a row or a column, and a sample of another size counts as
/// none. "isMagPerturbed" other than 0 holds the filtered field in this step. "Fc (optional)", 1 or 2
/// elements, imposes the cut-offs, relative to the Nyquist frequency, of this step. Vectors go out as rows of
/// 3, "Rot_Gyro" as the 3-by-3 rotation from sensor to Earth, "Fc" as the two cut-offs, "Temp" as the 5-by-6
/// table of residuals, 0 by 0 at first.
///
/// "Reset" and the "reset" pin put the orientation back to identity and forget the filtered vectors. The time
/// of a step is the difference of time stamps; only the first step ever takes 1 / "Frequency".
///
/// Kept as is: a "3g" sample of the wrong size stores its time stamp and leaves "3a" and "3m" unread; a
/// "Lambda Gain", a "isMagPerturbed" or a "Fc (optional)" that is read while no usable "3g" sample comes is
/// lost; with "Use Timestamp" the "Frequency" is not read, and the first step takes 0.01 s.
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
