// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/batch/FilePattern.h"
#include "host/batch/StudyTable.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What is to be done for many recordings: for each a call of the command, `quillmere run GRAPH --input
/// SOURCE=FILE --folder FOLDER`. Written down it is a line for each, which a shell, GNU parallel and whoever
/// else starts commands can run as it is.
struct QUILLMERE_API BatchPlan {
    struct Entry {
        std::string recording;
        std::string folder;
        std::vector<std::string> words; ///< Behind `quillmere`.
        /// What the table sets, of `words`, and where it says so; not of a plan that was read.
        std::vector<std::string> settings{};
        Place row{};

        std::string getCommand() const;
    };

    std::vector<Entry> entries;

    std::string toText() const;
    /// Reads what `toText` has written; of its lines those from `first` to `last`, counted from 1. Complains
    /// of lines that aren't such calls. [setup]
    static BatchPlan fromFile(const std::string& path, std::size_t first, std::size_t last,
                              Complaints& complaints);
};

/// How a plan is made of a graph and recordings.
struct PlanWishes {
    std::string graph;
    std::string source; ///< That reads the recording.
    std::string out;    ///< The folder below which each recording gets its own, as they lie below their root.
    /// What else each call is told. `{path}`, `{folder}`, `{name}`, `{stem}` and `{id}` stand for what they
    /// are of its recording.
    std::vector<std::string> words;
    const StudyTable* table = nullptr; ///< Not owned; null for none.
};

/// Those that stand in the words of wishes for what they are of a recording. [any]
QUILLMERE_API std::vector<std::string> getPlaceNames();

/// What has been found while a plan was made that isn't wrong, and may not be meant.
struct PlanDoubts {
    std::vector<std::string> withoutRow; ///< Recordings of which the table doesn't tell.
    std::vector<std::string> unused;     ///< Names of rows that no recording has.
};

/// Complains of two recordings for one folder, and of what the table gets wrong. [setup]
QUILLMERE_API BatchPlan makePlan(const FoundFiles& recordings, const PlanWishes& wishes, PlanDoubts& doubts,
                                 Complaints& complaints);

} // namespace Quillmere::Host
