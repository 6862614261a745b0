// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/batch/FileHash.h"
#include "host/text/Complaint.h"
#include "host/text/Json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// What came of one recording, as the file `status.json` in its folder tells it; docs/studies.md has the
/// table of members. It is written when all else is, so a folder without one isn't done.
struct QUILLMERE_API RunStatus {
    static constexpr const char* kFileName = "status.json";
    static constexpr const char* kDone = "done";
    static constexpr const char* kFailed = "failed";
    static constexpr const char* kInterrupted = "interrupted"; ///< Somebody has ended it.
    static constexpr const char* kCrashed = "crashed";         ///< Its process is gone.

    struct Input {
        std::string source;
        std::string path;
        FileFacts facts;
        std::string hash;
    };
    struct Result {
        std::string sink; ///< Empty for what isn't a sink's: a picture, a report.
        std::string path; ///< In the folder.
        std::uint64_t bytes = 0;
    };
    using Pairs = std::vector<std::pair<std::string, std::string>>;

    std::string state;
    std::string failure;               ///< Why it isn't done; empty when it is.
    std::vector<Complaint> complaints; ///< Written, not read.
    std::string recording;             ///< The file that it is about.
    std::string command;               ///< What does it again, alone.
    Pairs notes;                       ///< What the caller said of it: name and text.
    std::string began;                 ///< In UTC, as `2026-05-01T12:00:00.000Z`; so is `ended`.
    std::string ended;
    double seconds = 0.0;
    std::uint64_t rows = 0;
    std::optional<double> rate; ///< Rows a second that were found, of the first source.
    std::uint64_t repairs = 0;  ///< Rows that were left out, mended or made.
    std::uint64_t lost = 0;     ///< Samples, on all links.
    std::uint64_t warnings = 0;
    std::uint64_t peakMemory = 0; ///< Bytes.
    std::string host;
    Pairs versions; ///< Of the command and of plug-ins: name and version.
    std::string graph;
    std::string graphHash;
    std::vector<std::string> overrides; ///< The options that change what comes out.
    std::vector<Input> inputs;
    std::vector<Result> results;
    Json::Text outcome = Json::null(); ///< All that a run can tell, as text.

    bool getIsDone() const { return state == kDone; }
};

QUILLMERE_API Json::Text toJson(const RunStatus& status);

/// Nothing for a file that isn't there, or isn't a whole status that we know. [any]
QUILLMERE_API std::optional<RunStatus> readStatus(const std::string& path);

/// Writes `FOLDER/status.json` anew: beside its name first, so that there is never half of it. Raises
/// `RecordingException`. [any]
QUILLMERE_API void writeStatus(const std::string& folder, const RunStatus& status);

/// Now, as a status has it. [any]
QUILLMERE_API std::string timeText();

/// Why what `then` tells of isn't what a run with graph, options and versions of `now` would give; empty
/// when nothing has changed. A recording is read only where its time has changed; of a result in `folder`
/// only the size is looked at. A file that a source reads may have another name than it had. [any]
QUILLMERE_API std::string findChange(const RunStatus& then, const RunStatus& now, const std::string& folder);

} // namespace Quillmere::Host
