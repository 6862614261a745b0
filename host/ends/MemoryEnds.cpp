// SPDX-License-Identifier: MIT
#include "host/ends/MemoryEnds.h"

#include "host/ends/MemorySink.h"
#include "host/ends/MemorySource.h"
#include "host/text/HostException.h"

#include <map>
#include <mutex>
#include <utility>

namespace Quillmere::Host {

namespace {
template <class Thing>
std::vector<std::string> namesOf(const std::map<std::string, Thing>& things) {
    std::vector<std::string> names;
    for (const auto& [name, thing] : things)
        names.push_back(name);
    return names;
}
} // namespace

struct MemoryEnds::State {
    std::mutex mutex;
    std::map<std::string, std::shared_ptr<const MemoryRecording>> recordings;
    std::map<std::string, std::shared_ptr<MemoryResult>> results;
};

MemoryEnds::MemoryEnds() : state(std::make_shared<State>()) {}

MemoryEnds::~MemoryEnds() = default;

void MemoryEnds::addTo(BlockCatalogue& catalogue) const {
    catalogue.add(MemorySource::kTypeName, [held = state](const std::string& name) -> Core::Filter* {
        const std::lock_guard lock(held->mutex);
        const auto found = held->recordings.find(name);
        return new MemorySource(name, found == held->recordings.end() ? nullptr : found->second,
                                namesOf(held->recordings));
    });
    catalogue.add(MemorySink::kTypeName, [held = state](const std::string& name) -> Core::Filter* {
        return new MemorySink(name, [held](const std::string& sink, std::shared_ptr<MemoryResult> result) {
            const std::lock_guard lock(held->mutex);
            held->results[sink] = std::move(result);
        });
    });
}

void MemoryEnds::setRecording(const std::string& source, MemoryRecording recording) {
    auto kept = std::make_shared<const MemoryRecording>(std::move(recording));
    const std::lock_guard lock(state->mutex);
    state->recordings[source] = std::move(kept);
}

std::shared_ptr<MemoryResult> MemoryEnds::find(const std::string& sink) const {
    const std::lock_guard lock(state->mutex);
    const auto found = state->results.find(sink);
    if (found == state->results.end())
        throw HostException(
            Complaint::unknown({}, "the MemorySink '" + sink + "', to which no run has begun to send", sink,
                               namesOf(state->results), "one of ", "a graph with it whose run has begun"));
    return found->second;
}

TimedSamples MemoryEnds::read(const std::string& sink, const std::string& pin, std::size_t first) const {
    return find(sink)->read(sink, pin, first);
}

std::vector<std::string> MemoryEnds::getPins(const std::string& sink) const {
    return find(sink)->getPins();
}

bool MemoryEnds::getIsComplete(const std::string& sink) const {
    return find(sink)->getIsComplete();
}

} // namespace Quillmere::Host
