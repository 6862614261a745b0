// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/CsvDialect.h"
#include "host/recording/ReadingWishes.h"

#include <string>
#include <string_view>

namespace Quillmere::Host {

/// As much of a file as is looked at, and as many lines.
inline constexpr std::size_t kSniffedBytes = std::size_t{1} << 16;

/// Finds out how a table is written.
///
/// A table that the plain form fits (commas, points, a row of names above rows of as many cells) is taken for
/// that, so that what can be read without guessing is. Else the separator and the decimal sign are those by
/// which the most cells of the last lines are numbers or times; the first line of such cells is the first
/// row, and what stands right above is the header. What is said in `wishes` isn't guessed. Where two readings
/// are as good as each other and give different numbers, it raises an `UnclearRecording`.
class QUILLMERE_API CsvSniffer {
public:
    /// `path` is for messages.
    CsvSniffer(std::string path, const ReadingWishes& wishes);

    /// `head` is the file's begin behind a byte order mark; `isWhole` says that nothing follows. Lines that
    /// aren't whole don't count.
    CsvDialect sniff(std::string_view head, bool isWhole) const;

private:
    std::string path;
    const ReadingWishes& wishes;
};

} // namespace Quillmere::Host
