// SPDX-License-Identifier: MIT
#include "host/ends/MemoryRecording.h"

#include "host/ends/ColumnName.h"
#include "host/text/Counted.h"
#include "host/text/Printable.h"
#include "host/text/ShortestText.h"

#include <cmath>
#include <set>

namespace Quillmere::Host {

namespace {
void checkNames(const MemoryRecording& recording, const std::string& source, const Place& where,
                Complaints& complaints) {
    if (recording.pins.empty())
        complaints.add(where, "samples in memory without a pin for '" + source + "'", "one pin at least");
    std::set<std::string> names;
    for (const MemoryRecording::Pin& pin : recording.pins) {
        const std::string name = printable(pin.name, kLongestName);
        if (!getIsColumnName(pin.name))
            complaints.add(where, "the pin name '" + name + "' in memory for '" + source + "'",
                           "a name in one line, without control characters");
        else if (!names.insert(pin.name).second)
            complaints.add(where, "the pin '" + name + "' twice in memory for '" + source + "'",
                           "each name once");
    }
}

void checkClock(const MemoryRecording& recording, const std::string& source, const Place& where,
                Complaints& complaints) {
    if (recording.times.has_value() == recording.rate.has_value())
        complaints.add(where,
                       "samples in memory " +
                           std::string(recording.rate ? "with times and a rate" : "without a clock") +
                           " for '" + source + "'",
                       "either times, one for each sample, or a rate");
    if (recording.rate && !(*recording.rate > 0.0 && std::isfinite(*recording.rate)))
        complaints.add(where, "the rate " + shortestText(*recording.rate) + " in memory for '" + source + "'",
                       "a rate above 0 samples a second");
    if (!recording.times) return;
    for (std::size_t i = 0; i < recording.times->size(); ++i) {
        const double time = (*recording.times)[i];
        if (std::isfinite(time)) continue;
        complaints.add(where,
                       "the time " + shortestText(time) + " of sample " + std::to_string(i + 1) +
                           " in memory for '" + source + "'",
                       "a time in seconds");
        return; // the others would say the same
    }
}

void checkCounts(const MemoryRecording& recording, const std::string& source, const Place& where,
                 Complaints& complaints) {
    if (recording.pins.empty()) return;
    const std::size_t size = recording.getSize();
    const std::string first = "'" + source + "." + recording.pins.front().name + "'";
    if (recording.times && recording.times->size() != size)
        complaints.add(where,
                       counted(recording.times->size(), "time") + " for the " + counted(size, "sample") +
                           " of " + first,
                       "a time for each sample");
    for (const MemoryRecording::Pin& pin : recording.pins)
        if (pin.samples.getSize() != size)
            complaints.add(where,
                           counted(pin.samples.getSize(), "sample") + " of '" + source + "." + pin.name +
                               "' beside " + std::to_string(size) + " of " + first,
                           "as many on each pin; what has times of its own is a source of its own");
}
} // namespace

void MemoryRecording::check(const std::string& source, const Place& where, Complaints& complaints) const {
    checkNames(*this, source, where, complaints);
    checkClock(*this, source, where, complaints);
    checkCounts(*this, source, where, complaints);
}

} // namespace Quillmere::Host
