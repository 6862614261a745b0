// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/SampleSeries.h"

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What came to one pin: samples and their times in seconds, as many of either. A value.
struct TimedSamples {
    std::vector<double> times;
    SampleSeries samples;
};

/// What came to the pins of a `MemorySink` in one run. Many may look while one adds. [any, guarded]
class MemoryResult {
public:
    explicit MemoryResult(const std::vector<std::string>& pins);

    /// Adds what came to some of the pins, null for those to which nothing came.
    void add(double time, const std::vector<const Core::MatrixXd*>& samples);
    void add(double time, std::size_t pin, const Core::MatrixXd& sample);
    void setIsComplete();
    void clear();

    std::vector<std::string> getPins() const;
    bool getIsComplete() const;
    /// From that sample of the pin on. Raises `HostException` for a pin that isn't there; `sink` is whose it
    /// would be.
    TimedSamples read(const std::string& sink, const std::string& pin, std::size_t first) const;

private:
    struct Pin {
        std::string name;
        TimedSamples got;
    };

    mutable std::mutex state;
    std::vector<Pin> pins;
    bool isComplete = false;
};

} // namespace Quillmere::Host
