// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/SourceAccount.h"
#include "host/recording/ReadingWishes.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Quillmere::Host {

/// Looks whether a recording whose `rate` a graph gives has a column of times too, by its name, and whether
/// that goes at another pace by more than 2 % over the first `rows` rows. The column may be in seconds,
/// milli-, micro- or nanoseconds. A column in which time doesn't go on from row to row is none of times.
/// Raises `RecordingException`.
QUILLMERE_API std::optional<SourceAccount::OtherClock>
findOtherClock(const std::string& path, double rate, std::uint64_t rows, const ReadingWishes& wishes);

/// Whether a column of times says by its name that it holds milli-, micro- or nanoseconds, as `time (ms)`,
/// `t_us` and `timestampNs` do.
QUILLMERE_API std::optional<SourceAccount::OtherUnit> findOtherUnit(const std::string& column);

} // namespace Quillmere::Host
