// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/RecordingReader.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// One of the variables or datasets that a file holds, each with a path: `imu/LowerBack/Acc`.
struct DataEntry {
    std::string path;
    /// What it is where it isn't rows of numbers: `text`, `complex numbers`; else empty.
    std::string unfit;
    std::uint64_t rows = 0;
    std::size_t width = 0;
};

/// What a user says of a file that may hold more than one recording.
struct DataWish {
    std::string data; ///< A path; empty: the only one that fits.
    std::string time; ///< A column of it, or the path of a variable; empty: neither.
};

/// Chooses among the entries of a file: the one that `wish` names, or the only one that has rows of numbers,
/// two at least, not counting the one that `wish.time` names. Complaints are about `file` and list what there
/// is. Raises `UnclearRecording`.
QUILLMERE_API const DataEntry& chooseData(const std::string& file, const std::vector<DataEntry>& entries,
                                          const DataWish& wish);

/// The entry that has the times of `data`, by the path that `wish.time` is, from the top or from where `data`
/// lies; null where nothing is wished, and where it names one of the columns. Raises as `chooseData`, and for
/// times that aren't one column as long as the data.
QUILLMERE_API const DataEntry* chooseTimes(const std::string& file, const std::vector<DataEntry>& entries,
                                           const DataEntry& data,
                                           const std::vector<RecordingReader::Column>& columns,
                                           const DataWish& wish);

/// Columns that have no names are called `1`, `2` and so on.
QUILLMERE_API std::vector<RecordingReader::Column> numberedColumns(std::size_t count);

/// The path of what lies around an entry, with a slash behind it; empty at the top.
QUILLMERE_API std::string folderOf(const std::string& path);

} // namespace Quillmere::Host
