// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "everyday/PeakFinder.h"

#include <vector>

/// Finds the peaks of a signal, or of a spectrum.
///
/// With "Axis" Time each sample is a value of a signal, its first element:
///
///     out = [time of the peak, its value]    1 by 2, as soon as it is decided
///
/// With Frequency each sample is a whole spectrum in a row or a column, whose value k stands at k * "Step"
/// hertz:
///
///     out = "Most" by 2: frequency and height, the highest peak first, not-a-number where there are no more
///
/// Only values from "From" to "To" hertz count there, with no end where To is 0; the rest of the spectrum tells
/// how far they stand out. Each is refined by the parabola through the highest value and its two neighbours, and nothing is
/// sent of a spectrum without a peak. `PeakFinder` tells what a peak is: "Height", "Prominence" and
/// "Distance" (seconds or hertz). Sent with the time stamp of the sample that decides; a time stamp that
/// goes back, or is no number, forgets what came before it. An empty sample is dropped. "Reset" and
/// another "Axis", "Height", "Prominence" or "Distance" start anew.
class Peaks final : public Filter {
public:
    static constexpr const char* kTypeName = "Peaks";
    enum class Axis { Time, Frequency };

    explicit Peaks(const std::string& instanceName);
    ~Peaks() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    EnumEnumProperty<Axis, std::string> axis;
    RangeProperty<double> height;
    RangeProperty<double> prominence;
    RangeProperty<double> distance;
    RangeProperty<double> step;
    RangeProperty<int> most;
    RangeProperty<double> bandFrom;
    RangeProperty<double> bandTo;
    CommandProperty resetCommand;

    Everyday::PeakFinder::Rules getRules() const;
    Everyday::PeakFinder::Rules getRulesOfSpectrum() const;
    void follow(double value, double time);
    void search(const MatrixXd& spectrum, double time);
    void keep(const MatrixXd& spectrum, const Everyday::Peak& peak);
    void startAnew() { isNew = true; }

    bool isNew = true;     ///< the next sample is the first
    double lastTime = 0.0; ///< seconds; of the sample before
    Everyday::PeakFinder finder;
    std::vector<Everyday::Peak> highest; ///< of a spectrum; keeps its storage
};
