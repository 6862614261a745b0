// SPDX-License-Identifier: MIT
#include "host/batch/BatchTally.h"

#include "host/batch/RunStatus.h"
#include "host/ends/RecordingException.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace Quillmere::Host {

namespace {
constexpr const char* kOwnName = "quillmere: ";
} // namespace

void BatchTally::take(std::size_t recording, BatchEnd::State state, std::string text) {
    using State = BatchEnd::State;
    ends[recording].state = state;
    ends[recording].text = std::move(text);
    if (state == State::Done || state == State::Kept) ++progress.done;
    if (state == State::Kept) ++progress.kept;
    if (state == State::Failed) ++progress.failed;
    if (state == State::Interrupted) ++progress.interrupted;
}

std::string saidIn(std::string printed) {
    while (printed.ends_with('\n'))
        printed.pop_back();
    if (printed.starts_with(kOwnName)) printed.erase(0, std::char_traits<char>::length(kOwnName));
    return printed;
}

void tellCrash(const BatchPlan::Entry& entry, const std::string& began, const std::string& text) {
    if (readStatus(entry.folder + "/" + RunStatus::kFileName)) return;
    RunStatus status;
    status.state = RunStatus::kCrashed;
    status.failure = text;
    status.recording = entry.recording;
    status.command = entry.getCommand();
    status.began = began;
    status.ended = timeText();
    try {
        std::error_code error;
        std::filesystem::create_directories(entry.folder, error);
        writeStatus(entry.folder, status);
    } catch (const RecordingException&) {
        // A folder without a status isn't done either.
    }
}

} // namespace Quillmere::Host
