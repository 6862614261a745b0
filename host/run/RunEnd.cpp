// SPDX-License-Identifier: MIT
#include "host/run/RunEnd.h"

#include "host/graph/Printable.h"
#include "host/plugins/BlockDescription.h"

#include <Poco/Exception.h>

namespace Quillmere::Host {

namespace {
constexpr std::size_t kLongestReason = 2000; // plug-ins write it, too

std::string reasonOf(const std::exception& exception) {
    const auto* const poco = dynamic_cast<const Poco::Exception*>(&exception);
    return poco == nullptr ? exception.what() : poco->displayText();
}
} // namespace

std::string failureText(const Core::Filter* block, double streamTime, const std::exception& exception) {
    std::string text =
        "at " + shortestText(streamTime) + " s: " + printable(reasonOf(exception), kLongestReason);
    if (block == nullptr) return text;
    return "block '" + block->getName() + "' (" + block->getTypeName() + ") " + text;
}

void endSinks(const std::vector<Sink*>& sinks, bool isWhole) {
    std::string failure;
    for (Sink* const sink : sinks) {
        try {
            if (isWhole && failure.empty())
                sink->complete();
            else
                sink->abandon();
        } catch (const std::exception& exception) {
            if (failure.empty()) failure = exception.what();
        }
    }
    if (isWhole && !failure.empty()) throw RunException(failure);
}

} // namespace Quillmere::Host
