// SPDX-License-Identifier: MIT
#include "everyday/Durations.h"

namespace {
constexpr double kLongest = 1e9; // seconds; thirty years
} // namespace

Durations::Durations(const std::string& instanceName)
    : Filter(instanceName, true), in("in", this), out("out", this), least("Least", &getPropertyBag()),
      gap("Gap", &getPropertyBag()), resetCommand("Reset", &getPropertyBag()),
      finishCommand("Finish", &getPropertyBag()) {
    for (RangeProperty<double>* const time : {&least, &gap}) {
        time->setRange(0.0, kLongest, 0.1);
        time->setValue(0.0);
    }
    resetCommand.setChangeHandler(this, &Durations::requestReset);
    finishCommand.setChangeHandler(this, &Durations::requestFinish);
    resizeSample(out.data.value, 1, 3);
    out.data.value.setZero();
}

Durations::~Durations() = default;

void Durations::process() {
    if (resetRequested) {
        state = State::Off;
        resetRequested = false;
    }
    if (finishRequested) finish();
    if (!in.hasData()) return;
    const MatrixXd& sample = in.take();
    if (sample.size() == 0) return;
    last = in.getTimeStamp();
    follow(sample(0) > 0.0, last);
}

void Durations::follow(bool isOn, double time) {
    if (isOn) {
        if (state == State::Pause && time - end > gap.getValue()) tell(time);
        if (state == State::Off) begin = time;
        state = State::On;
        return;
    }
    if (state == State::Off) return;
    if (state == State::On) end = time;
    state = State::Pause;
    const double longest = gap.getValue();
    if (longest == 0.0 || time - end > longest) tell(time);
}

void Durations::finish() {
    finishRequested = false;
    if (state == State::Off) return;
    if (state == State::On) end = last;
    tell(last);
}

/// Ends what is under way.
void Durations::tell(double time) {
    state = State::Off;
    const double length = end - begin;
    if (length < least.getValue()) return;
    out.data.value << begin, end, length;
    out.send(time);
}
