// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/SampleSeries.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What a `MemorySource` sends: a sample on each of its pins at each time.
struct QUILLMERE_API MemoryRecording {
    struct Pin {
        std::string name;
        SampleSeries samples; ///< As many on each pin.
    };

    std::vector<Pin> pins = {};
    // One of the two:
    std::optional<std::vector<double>> times = {}; ///< Seconds, one for each sample.
    std::optional<double> rate = {};               ///< Samples a second, the first at 0 s.

    /// How many samples each pin has. Requires: nothing is wrong.
    std::size_t getSize() const { return pins.front().samples.getSize(); }
    /// Seconds. Requires: nothing is wrong.
    double getTime(std::size_t index) const {
        return rate ? static_cast<double>(index) / *rate : (*times)[index];
    }
    /// Complains of what can't be sent, all of it at `where`; `source` is who would send it.
    void check(const std::string& source, const Place& where, Complaints& complaints) const;
};

} // namespace Quillmere::Host
