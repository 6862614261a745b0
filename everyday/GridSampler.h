// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

namespace Everyday {

/// Gives the values of a course at even times, from samples at any times.
///
/// The times are `origin + k / rate`, the origin being the time of the first sample. Linear draws a line
/// from sample to sample, and Hold takes the newest sample. Where samples come more often than they go,
/// Linear may have a low-pass in front: each value is then a mean of the samples within 20 steps on both
/// sides, weighted by
///
///     sinc(0.9 u) kaiser(u / 20; 6.25)    u: distance in steps
///
/// and by the time that each sample stands for, and divided by the sum of the weights. Of samples at even
/// times that passes what is below 0.4 of the rate within 0.1 dB, and nothing above half the rate beyond
/// -60 dB. At both ends of a stretch the mean is of those samples that there are.
///
/// A stretch ends where the next sample is farther away than the gap. Whether the low-pass is needed is
/// found out at the begin of a stretch, of the samples of 20 steps.
class GridSampler {
public:
    struct Rules {
        double rate = 1.0; ///< Steps a second, above 0.
        double gap = 1.0;  ///< Seconds.
        bool isHold = false;
        bool hasLowPass = false; ///< Where samples come more often than they go; not with Hold.
    };

    /// Forgets everything.
    void begin(const Rules& newRules, std::size_t elements);
    /// Takes a sample; one whose time doesn't grow, isn't finite, or is so large that steps get lost in it,
    /// is dropped. Requires: `give` has said that there is no more.
    void take(double time, const double* sample);
    /// Nothing more comes of the stretch: `give` gives what is left of it. Requires: as `take`.
    void finish() { isEnding = getCount() > 0; }
    /// The next value that is decided; false when there is none.
    bool give(double& time, double* value);

private:
    void append(double time, const double* sample);
    void beginStretch();
    void decide();
    double getNextTime() const;
    double slackAt(double time) const;
    double reachAt(double time) const;
    void giveFiltered(double time, double* value) const;
    void giveNear(double time, double* value);
    void dropBefore(double time);
    double weightAt(std::size_t index, double time) const;

    std::size_t getCount() const { return times.size() - first; }

    Rules rules;
    std::size_t width = 0;
    bool hasOrigin = false;
    double origin = 0.0;
    double next = 0.0;      ///< the number of the step that comes, whole
    bool isDecided = false; ///< whether the stretch has the low-pass
    bool isFiltered = false;
    bool isEnding = false;   ///< what isn't within the stretch won't be
    bool hasWaiting = false; ///< `waitingSample` begins the next one
    double waitingTime = 0.0;
    std::vector<double> waitingSample;
    std::vector<double> times; ///< of the stretch, from `first` on; what is before that is done with
    std::vector<double> values;
    std::size_t first = 0;
    std::vector<double> kernel; ///< by distance; empty until it is needed
};

} // namespace Everyday
