// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/description/GraphDescription.h"
#include "host/recording/TimeRepairPlan.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// Whether a column is meant by a name, with its unit or without, or by a pattern, `acc*`. [any]
QUILLMERE_API bool getMeansColumn(std::string_view wish, const std::string& column);

/// What of recordings is drawn.
struct QUILLMERE_API CurveWishes {
    struct Scale {
        std::string column;
        double factor = 1.0;
        std::string unit; ///< Of the values behind it; empty: nobody says.
    };

    std::vector<std::string> columns; ///< Names and patterns; none: all.
    std::vector<Scale> scales;
    std::string across; ///< The column that stands in place of the times; empty: none.
    /// Of all columns together, at how many pieces they are held; 0: at as many as a picture shows.
    std::size_t mostPieces = 0;

    /// Takes a setting `start` or `end`, as a source has them, or as an axis tells times. `1:30` is a minute
    /// and a half, unless times count from a time of day; `0:01:30` is that where they count from nothing
    /// that is known, else the first such time of day. [setup]
    void takeCut(const GraphDescription::Setting& setting, Complaints& complaints);
    /// Complains of two that don't go together, whatever times count from. [setup]
    void finish(Complaints& complaints) const;
    /// Of times that count from a moment in nanoseconds since 1970, of the first day since midnight, or from
    /// nothing that is known. [setup]
    TimeRepairPlan getCut(std::optional<std::int64_t> origin, Complaints& complaints) const;

private:
    std::vector<GraphDescription::Setting> cuts;
};

} // namespace Quillmere::Host
