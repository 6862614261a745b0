// SPDX-License-Identifier: MIT
#include "host/run/RunEnd.h"

#include "host/text/Printable.h"
#include "host/text/ShortestText.h"
#include "host/text/CaughtText.h"
#include "host/plugins/PluginLibrary.h"

#include <Poco/Exception.h>

#include <new>

namespace Quillmere::Host {

namespace {
std::string reasonOf(const std::exception& exception) {
    if (dynamic_cast<const std::bad_alloc*>(&exception) != nullptr) return "out of memory";
    const auto* const poco = dynamic_cast<const Poco::Exception*>(&exception);
    if (poco != nullptr) return poco->displayText();
    const char* const text = exception.what();
    return text != nullptr && *text != '\0' ? text : "an exception without a text";
}
} // namespace

std::string failureText(const Core::Filter* block, double streamTime, const std::exception& exception) {
    std::string text =
        "at " + shortestText(streamTime) + " s: " + printable(reasonOf(exception), kLongestReason);
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
