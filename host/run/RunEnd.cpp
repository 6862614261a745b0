// SPDX-License-Identifier: MIT
#include "host/run/RunEnd.h"

#include "host/text/ShortestText.h"
#include "host/text/CaughtText.h"
#include "host/plugins/PluginLibrary.h"

namespace Quillmere::Host {

std::string failureText(const Core::Filter* block, double streamTime, const std::exception& exception) {
    std::string text = "at " + shortestText(streamTime) + " s: " + wordsOf(exception);
    if (block == nullptr) return text;
    return "block " + blockText(*block) + " " + text;
}

void endSinks(const std::vector<Sink*>& sinks, bool isWhole) {
    std::string failure;
    const auto attempt = [&](Sink* sink, void (Sink::*operation)()) {
        try {
            (sink->*operation)();
        } catch (const std::exception& exception) {
            if (failure.empty()) failure = exception.what();
        }
    };
    // What can fail for want of room comes before any result is replaced.
    for (Sink* const sink : sinks)
        if (isWhole) attempt(sink, &Sink::finish);
    for (Sink* const sink : sinks)
        attempt(sink, isWhole && failure.empty() ? &Sink::complete : &Sink::abandon);
    if (isWhole && !failure.empty()) throw RunException(failure);
}

} // namespace Quillmere::Host
