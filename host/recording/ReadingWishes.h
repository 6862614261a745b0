// SPDX-License-Identifier: MIT
#pragma once

#include "host/recording/TimeText.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What a graph says of how a recording is to be read. Everything that it doesn't say is left to what the
/// file looks like.
struct ReadingWishes {
    /// The path of a variable in a file that holds several; empty: the only one that fits.
    std::string data;

    // About the form of a table.
    std::optional<char> separator;
    std::optional<char> decimal;
    std::optional<std::string> comment; ///< What lines begin with that are passed over; empty: none.
    std::optional<std::size_t> skipLines;
    std::optional<std::size_t> headerRows; ///< Of names: 0, 1 or 2.
    std::optional<bool> hasUnitsRow;
    std::string profile; ///< A name of `recordingProfiles`, `none`, or empty: by its fingerprint.

    // About times.
    std::vector<std::string> time; ///< The column, or those of date and time.
    bool findsTimes = false;       ///< Nobody names them and no rate is given: the file has to say them.
    std::optional<double> perSecond;
    std::optional<DateOrder> dateOrder;
    std::optional<std::int64_t> start; ///< Nanoseconds since 1970 that times count from.
    std::optional<int> counterBits;    ///< 0: the counter doesn't wrap.
    std::optional<bool> isSpread;      ///< Rows of one whole second are spread over it.

    std::stop_token stop;             ///< Ends a wait for whoever writes a pipe.
    std::vector<std::string> names;   ///< Columns that are asked for.
    std::vector<std::string> missing; ///< Texts of cells that stand for not-a-number.

    bool getHasForm() const {
        return separator || decimal || comment || skipLines || headerRows || hasUnitsRow ||
               (!profile.empty() && profile != "none");
    }
    bool getHasTimeForm() const { return perSecond || dateOrder || start || counterBits || isSpread; }
};

} // namespace Quillmere::Host
