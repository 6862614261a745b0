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

std::string failureIn(const std::string& said) {
    std::size_t at = 0;
    for (;;) {
        const std::size_t end = said.find('\n', at);
        std::string line = said.substr(at, end == std::string::npos ? end : end - at);
        const bool isLast = end == std::string::npos;
        if (isLast || line.find(": warning: ") == std::string::npos) return line;
        at = end + 1;
    }
}

RunStatus failedStatus(const BatchPlan::Entry& entry, const std::string& began, const std::string& failure) {
    RunStatus status;
    status.state = RunStatus::kFailed;
    status.failure = failure;
    status.recording = entry.recording;
    status.command = entry.getCommand();
    status.began = began;
    for (std::size_t i = 0; i + 1 < entry.words.size(); ++i) {
        if (entry.words[i] != "--note") continue;
        const std::string& note = entry.words[i + 1];
        const std::size_t sign = note.find('=');
        if (sign != std::string::npos) status.notes.emplace_back(note.substr(0, sign), note.substr(sign + 1));
    }
    return status;
}

void tellCrash(const BatchPlan::Entry& entry, const std::string& began, const std::string& text) {
    if (readStatus(entry.folder + "/" + RunStatus::kFileName)) return;
    RunStatus status = failedStatus(entry, began, text);
    status.state = RunStatus::kCrashed;
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
