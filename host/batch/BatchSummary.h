// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/batch/RunStatus.h"
#include "host/text/Complaint.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// A number that stands for a column of a result.
struct ColumnStatistic {
    std::string name;
    /// Of finite values in ascending order, at least one.
    std::function<double(const std::vector<double>&)> measure;
};

/// `mean`, `median`, `std` (of a sample), `min`, `max`, `count`, and `p0` to `p100` for percentiles, between
/// two values in proportion; nothing for another name. [any]
QUILLMERE_API std::optional<ColumnStatistic> findStatistic(const std::string& name);
QUILLMERE_API std::vector<std::string> getStatisticNames();

/// The columns of a result and their values, the first one left out, which is the time.
struct ResultTable {
    struct Column {
        std::string name;
        std::vector<double> values; ///< Not-a-number for an empty cell.
    };
    std::vector<Column> columns;
};
/// Empty for a file that isn't there. [any]
QUILLMERE_API ResultTable readResult(const std::string& path);

/// The folders below `folder` that have a status, sorted. [any]
QUILLMERE_API std::vector<std::string> findResultFolders(const std::string& folder);

/// A table with a row for each folder that has a status: what came of the recording, what is noted of it, of
/// a sink named `summary` the last row, and of the others the statistics. `out` is what folders are named
/// below; `told` has what is known of folders in which no status could be written. Warns of a recording that
/// has several rows. [any]
QUILLMERE_API std::string summaryTable(const std::vector<std::string>& folders, const std::string& out,
                                       const std::vector<ColumnStatistic>& statistics, Complaints& doubts,
                                       const std::map<std::string, RunStatus>& told = {});
/// The file with it, and how the text of every such table begins.
inline constexpr const char* kSummaryName = "summary.csv";
inline constexpr const char* kSummaryBegin = "folder,recording,state,";

} // namespace Quillmere::Host
