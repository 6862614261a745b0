// SPDX-License-Identifier: MIT
#include "host/run/RunEnd.h"

#include "host/ends/LateRowException.h"
#include "host/ends/RecordingException.h"
#include "host/plugins/PluginLibrary.h"
#include "host/text/CaughtText.h"
#include "host/text/Counted.h"
#include "host/text/ShortestText.h"

#include <new>

namespace Quillmere::Host {

namespace {
/// `block 'smooth' (FilterButterworth) at 0.5 s`.
std::string spotText(const Core::Filter* block, double streamTime) {
    const std::string when = "at " + shortestText(streamTime) + " s";
    return block == nullptr ? when : "block " + blockText(*block) + " " + when;
}

/// What was raised, part by part; of what isn't the host's own there is one part.
std::vector<Complaint> partsOf(const std::exception& exception, const std::string& spot) {
    if (dynamic_cast<const HostException*>(&exception) != nullptr) return complaintsOf(exception);
    Complaint raised = Complaint::sentence({}, wordsOf(exception), "a block that raises nothing");
    raised.part = spot;
    return {raised};
}

RunOutcome::Spot spotOf(const Core::Filter& block, double streamTime) {
    RunOutcome::Spot spot;
    spot.block = block.getName();
    spot.type = block.getTypeName();
    spot.time = streamTime;
    return spot;
}

/// In the words of what a sink has raised, which name its file.
RunEnding endingOfSink(const Sink& sink, double streamTime, const std::exception& exception) {
    RunEnding ending;
    ending.failure = exception.what();
    ending.complaints = partsOf(exception, spotText(&sink, streamTime));
    ending.block = spotOf(sink, streamTime);
    return ending;
}
} // namespace

RunEnding endingOf(const Core::Filter* block, double streamTime, const std::exception& exception) {
    RunEnding ending;
    ending.isCutShort = true;
    if (const auto* const late = dynamic_cast<const LateRowException*>(&exception))
        streamTime = late->getTime();
    const std::string spot = spotText(block, streamTime);
    ending.failure = spot + ": " + wordsOf(exception);
    ending.complaints = partsOf(exception, spot);
    ending.isInterrupted = dynamic_cast<const InterruptedException*>(&exception) != nullptr;
    if (block != nullptr) ending.block = spotOf(*block, streamTime);
    return ending;
}

RunEnding interruptionFor(std::string reason) {
    RunEnding ending;
    ending.failure.swap(reason);
    ending.isCutShort = true;
    ending.isInterrupted = true;
    return ending;
}

RunEnding endingOf(const std::vector<Warning>& warnings) {
    RunEnding ending;
    if (warnings.empty()) return ending;
    ending.failure = "ended with " +
                     (warnings.size() == 1 ? "a warning" : counted(warnings.size(), "warning")) +
                     ", taken for " + (warnings.size() == 1 ? "an error" : "errors");
    for (const Warning& warning : warnings)
        ending.complaints.push_back(warning.getComplaint());
    return ending;
}

RunEnding beginSinks(const std::vector<Sink*>& sinks) {
    const auto discard = [&] {
        for (Sink* const sink : sinks)
            sink->discard();
    };
    for (Sink* const sink : sinks) {
        try {
            sink->open();
        } catch (const std::bad_alloc&) {
            discard();
            throw;
        } catch (const std::exception& exception) {
            discard();
            RunEnding ending = endingOfSink(*sink, 0.0, exception);
            ending.isInterrupted = dynamic_cast<const InterruptedException*>(&exception) != nullptr;
            if (ending.isInterrupted) ending.block.reset(); // no block's fault
            return ending;
        } catch (...) {
            discard();
            throw;
        }
    }
    return {};
}

RunEnding endSinks(const std::vector<Sink*>& sinks, bool isWhole, double streamTime) {
    RunEnding ending;
    const auto attempt = [&](Sink* sink, void (Sink::*operation)()) {
        try {
            (sink->*operation)();
        } catch (const std::exception& exception) {
            if (!ending.getIsWhole()) return;
            // A row that another thread has written ends the run as if it had been written at once.
            ending = dynamic_cast<const LateRowException*>(&exception) == nullptr
                         ? endingOfSink(*sink, streamTime, exception)
                         : endingOf(sink, streamTime, exception);
        }
    };
    // What can fail for want of room comes before any result is replaced.
    for (Sink* const sink : sinks)
        if (isWhole) attempt(sink, &Sink::finish);
    for (Sink* const sink : sinks)
        attempt(sink, isWhole && ending.getIsWhole() ? &Sink::complete : &Sink::abandon);
    return isWhole ? ending : RunEnding{};
}

} // namespace Quillmere::Host
