// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/CsvDialect.h"
#include "host/recording/CsvSplit.h"

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// What is known of the tables that one kind of device or program writes, beyond what they say themselves.
/// Empty texts at the end of a list are none.
struct RecordingProfile {
    std::string_view name;

    // The fingerprint: all of it.
    std::string_view preamble = {};               ///< Stands somewhere in front of the header.
    std::array<std::string_view, 3> columns = {}; ///< Patterns, each of which some column fits.
    std::string_view kinds = {};                  ///< Of a table without a header: T time, N number.

    // What it means.
    std::array<std::string_view, 7> names = {}; ///< Of the columns of a table without a header,
    std::array<std::string_view, 7> units = {}; ///< and their units.
    std::array<std::string_view, 3> times = {}; ///< Patterns of the column of times, the first that fits.
    double perSecond = 0.0;                     ///< Of a column of times whose unit isn't said; 0: by size.
    int counterBits = 0;                        ///< Of a counter that begins anew; 0: as any.
    bool hasTimes = true;                       ///< Whether a column may be taken for times at all.
};

/// The first whose fingerprint fits is taken. [any]
QUILLMERE_API std::span<const RecordingProfile> recordingProfiles();

/// The profile of a table, null for none. `kinds` are those of its first row. `wanted` is a profile's name,
/// `none`, or empty. [any]
QUILLMERE_API const RecordingProfile* findProfile(const std::string& wanted, const CsvDialect& dialect,
                                                  const std::vector<std::string>& names,
                                                  const std::vector<CellKind>& kinds);

} // namespace Quillmere::Host
