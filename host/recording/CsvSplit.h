// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/ReadingWishes.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

enum class CellKind { Empty, Number, Time, Text };
/// What is in a cell. A text that stands for a missing value is as good as none. [any]
QUILLMERE_API CellKind cellKindOf(std::string_view cell, char decimal, const ReadingWishes& wishes);

inline constexpr char kNoSeparator = '\0'; ///< One column.
inline constexpr std::array kSeparators{',', ';', '\t', '|'};

using CsvLines = std::vector<std::string_view>;

/// How well a separator and a decimal sign make a table of numbers out of lines.
struct CsvSplit {
    char separator = ',';
    char decimal = '.';
    std::size_t width = 0;  ///< Cells of those lines that have the most numbers and times.
    std::size_t fits = 0;   ///< Cells of such lines that are numbers or times,
    std::size_t others = 0; ///< and those that are text.

    /// Many numbers, and few other texts between them.
    double getScore() const {
        const auto all = static_cast<double>(fits + others);
        return all > 0.0 ? static_cast<double>(fits) * static_cast<double>(fits) / all : 0.0;
    }
};

/// The best of those that `wishes` leaves; a comma and a point where nothing is better. [any]
QUILLMERE_API CsvSplit bestSplit(const CsvLines& lines, const ReadingWishes& wishes);

/// What stands in each column of rows: that of most of their cells. [any]
QUILLMERE_API std::vector<CellKind> signatureOf(const CsvLines& lines, const CsvSplit& split,
                                                const ReadingWishes& wishes);

/// Whether a line is a row: numbers where rows have them, and times. [any]
QUILLMERE_API bool isRow(std::string_view line, const CsvSplit& split, const std::vector<CellKind>& signature,
                         const ReadingWishes& wishes);

} // namespace Quillmere::Host
