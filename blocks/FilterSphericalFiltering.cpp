// SPDX-License-Identifier: MIT
#include "blocks/FilterSphericalFiltering.h"

namespace {
constexpr double kSameLambda = -1.0;      // leaves the core's averaging weight as it is
constexpr double kOwnSamplePeriod = -1.0; // stands for the core's sample period

/// The sample that waits on `pin`, if it is a vector; one of another size is used up.
const MatrixXd* pollVector(InputPin<MatrixXd>& pin) {
    if (!pin.hasData()) return nullptr;
    const MatrixXd& sample = pin.take();
    return sample.size() == 3 ? &sample : nullptr;
}
} // namespace

FilterSphericalFiltering::FilterSphericalFiltering(const std::string& instanceName)
    : Filter(instanceName, true), accelerometer("3a", this), magnetometer("3m", this), gyroscope("3g", this),
      isMagPerturbed("isMagPerturbed", this), imposedCutoffs("Fc (optional)", this), resetPin("reset", this),
      aFiltered("3a_filtered", this), mFiltered("3m_filtered", this), aTerre("3a_Terre", this),
      mTerre("3m_Terre", this), aTerreFiltered("3a_Terrefiltered", this),
      mTerreFiltered("3m_Terrefiltered", this), rotation("Rot_Gyro", this), cutoffs("Fc", this),
      residuals("Temp", this), frequency("Frequency", &getPropertyBag()),
      resetCommand("Reset", &getPropertyBag()), useTimestamp("Use Timestamp", &getPropertyBag()),
      filterGain("Filter Gain", &getPropertyBag()), lambdaGain("Lambda Gain", &getPropertyBag()) {
    frequency.setRange(0.1, 10000.0, 0.1);
    frequency.setChangeHandler(this, &FilterSphericalFiltering::requestUpdate);
    frequency.setValue(100.0);
    resetCommand.setChangeHandler(this, &FilterSphericalFiltering::requestReset);
    useTimestamp.setValue(false);
    filterGain.setChangeHandler(this, &FilterSphericalFiltering::requestUpdate);
    filterGain.setValue(0.001);
    lambdaGain.setRange(0.0, 1000000.0, 0.001);
    lambdaGain.setChangeHandler(this, &FilterSphericalFiltering::requestUpdate);
    lambdaGain.setValue(0.7);
    accelerometer.setIsBlocking(false);
    magnetometer.setIsBlocking(false);
    resetPin.setIsBlocking(false);
}

FilterSphericalFiltering::~FilterSphericalFiltering() = default;

void FilterSphericalFiltering::process() {
    if (resetPin.hasData() && isSet(resetPin.take())) resetRequested = true;
    magPerturbed = isMagPerturbed.hasData() && isSet(isMagPerturbed.take());
    const bool cutoffsAreImposed = pollImposedCutoffs();
    if (resetRequested) {
        core.reset();
        resetRequested = false;
        updateRequested = true;
    }
    const double lambda = updateRequested ? readSettings() : kSameLambda;

    if (!gyroscope.hasData()) return;
    const MatrixXd& rate = gyroscope.take();
    const double time = gyroscope.getTimeStamp();
    const double deltaTime = timeSinceLast(time);
    if (rate.size() != 3) return;
    const MatrixXd* const a = pollVector(accelerometer);
    const MatrixXd* const m = pollVector(magnetometer);
    core.update(rate, a, m, aFiltered.data.value, mFiltered.data.value, aTerre.data.value, mTerre.data.value,
                aTerreFiltered.data.value, mTerreFiltered.data.value, deltaTime, lambda, magPerturbed,
                cutoffsAreImposed ? &imposed : nullptr);
    send(time);
}

bool FilterSphericalFiltering::pollImposedCutoffs() {
    if (!imposedCutoffs.hasData()) return false;
    const MatrixXd& sample = imposedCutoffs.take();
    if (sample.size() != 1 && sample.size() != 2) return false;
    resizeSample(imposed, 1, 2);
    imposed(0) = sample(0);
    imposed(1) = sample(sample.size() - 1);
    return true;
}

/// Hands the settings to the core and returns "Lambda Gain", which goes with the step.
double FilterSphericalFiltering::readSettings() {
    if (!useTimestamp.getValue()) core.setSamplePeriod(1.0 / frequency.getValue());
    core.setFilterGain(filterGain.getValue());
    const double lambda = lambdaGain.getValue();
    updateRequested = false;
    return lambda;
}

double FilterSphericalFiltering::timeSinceLast(double time) {
    const double last = lastTimeStamp;
    lastTimeStamp = time;
    return last < 0.0 ? kOwnSamplePeriod : time - last;
}

void FilterSphericalFiltering::send(double time) {
    copySample(rotation.data.value, core.getRotationMatrix());
    copySample(cutoffs.data.value, core.getCutoffs());
    copySample(residuals.data.value, core.getTemp());
    for (OutputPin<MatrixXd>* const pin : {&aFiltered, &mFiltered, &aTerre, &mTerre, &aTerreFiltered,
                                           &mTerreFiltered, &rotation, &cutoffs, &residuals})
        pin->send(time);
}

void FilterSphericalFiltering::requestUpdate() {
    updateRequested = true;
}

void FilterSphericalFiltering::requestReset() {
    resetRequested = true;
}
