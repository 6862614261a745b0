// SPDX-License-Identifier: MIT
#include "everyday/Peaks.h"

#include <algorithm>
#include <limits>

namespace {
using Everyday::Peak;

constexpr double kLargest = std::numeric_limits<double>::max();

bool isHigher(const Peak& a, const Peak& b) {
    return a.value > b.value || (a.value == b.value && a.index < b.index);
}
} // namespace

Peaks::Peaks(const std::string& instanceName)
    : Filter(instanceName, true), in("in", this), out("out", this), axis("Axis", &getPropertyBag()),
      height("Height", &getPropertyBag()), prominence("Prominence", &getPropertyBag()),
      distance("Distance", &getPropertyBag()), step("Step", &getPropertyBag()),
      most("Most", &getPropertyBag()), bandFrom("From", &getPropertyBag()), bandTo("To", &getPropertyBag()),
      resetCommand("Reset", &getPropertyBag()) {
    axis.addLabel("Time");
    axis.addLabel("Frequency");
    axis.setValue(static_cast<unsigned>(Axis::Time));
    height.setRange(-kLargest, kLargest, 0.1);
    height.setValue(0.0);
    for (RangeProperty<double>* const span : {&prominence, &distance}) {
        span->setRange(0.0, kLargest, 0.1);
        span->setValue(0.0);
    }
    step.setRange(1e-9, 1e9, 0.1);
    step.setValue(1.0);
    most.setRange(1, 1000, 1);
    most.setValue(1);
    for (RangeProperty<double>* const edge : {&bandFrom, &bandTo}) {
        edge->setRange(0.0, kLargest, 0.1);
        edge->setValue(0.0);
    }
    for (RangeProperty<double>* const setting : {&height, &prominence, &distance})
        setting->setChangeHandler(this, &Peaks::startAnew);
    axis.setChangeHandler(this, &Peaks::startAnew);
    resetCommand.setChangeHandler(this, &Peaks::startAnew);
}

Peaks::~Peaks() = default;

void Peaks::process() {
    if (!in.hasData()) return;
    const bool isSpectrum = static_cast<Axis>(axis.getValue()) == Axis::Frequency;
    const MatrixXd& sample = in.take();
    if (sample.size() == 0) return;
    if (isSpectrum)
        search(sample, in.getTimeStamp());
    else
        follow(sample(0), in.getTimeStamp());
}

Everyday::PeakFinder::Rules Peaks::getRules() const {
    Everyday::PeakFinder::Rules rules;
    rules.height = height.getValue();
    rules.prominence = prominence.getValue();
    rules.distance = distance.getValue();
    return rules;
}

Everyday::PeakFinder::Rules Peaks::getRulesOfSpectrum() const {
    Everyday::PeakFinder::Rules rules = getRules();
    rules.from = bandFrom.getValue();
    const double to = bandTo.getValue();
    if (to > 0.0) rules.to = to;
    return rules;
}

void Peaks::follow(double value, double time) {
    if (isNew || !(time >= lastTime)) finder.begin(getRules());
    isNew = false;
    lastTime = time;
    Peak peak;
    if (!finder.take(time, value, peak)) return;
    resizeSample(out.data.value, 1, 2);
    out.data.value << peak.place, peak.value;
    out.send(time);
}

void Peaks::search(const MatrixXd& spectrum, double time) {
    if (spectrum.rows() != 1 && spectrum.cols() != 1) return;
    const double hertz = step.getValue();
    highest.clear();
    finder.begin(getRulesOfSpectrum());
    Peak peak;
    for (Eigen::Index k = 0; k < spectrum.size(); ++k)
        if (finder.take(static_cast<double>(k) * hertz, spectrum.data()[k], peak)) keep(spectrum, peak);
    if (finder.end(peak)) keep(spectrum, peak);
    if (highest.empty()) return;
    const auto wanted = static_cast<std::size_t>(most.getValue());
    const std::size_t count = std::min(wanted, highest.size());
    std::partial_sort(highest.begin(), highest.begin() + static_cast<std::ptrdiff_t>(count), highest.end(),
                      isHigher);
    resizeSample(out.data.value, static_cast<Eigen::Index>(wanted), 2);
    out.data.value.setConstant(std::numeric_limits<double>::quiet_NaN());
    for (std::size_t i = 0; i < count; ++i) {
        out.data.value(static_cast<Eigen::Index>(i), 0) = highest[i].place;
        out.data.value(static_cast<Eigen::Index>(i), 1) = highest[i].value;
    }
    out.send(time);
}

/// Refines a peak: the top of the parabola through three values, which is less than half a step away.
void Peaks::keep(const MatrixXd& spectrum, const Peak& peak) {
    const double* const at = spectrum.data() + peak.index;
    const double before = at[-1]; // a peak has a neighbour on either side
    const double behind = at[1];
    const double bend = before - 2.0 * at[0] + behind;
    const double shift = bend < 0.0 ? 0.5 * (before - behind) / bend : 0.0;
    Peak refined = peak;
    refined.place = (static_cast<double>(peak.index) + shift) * step.getValue();
    refined.value = peak.value - 0.25 * (before - behind) * shift;
    highest.push_back(refined);
}
