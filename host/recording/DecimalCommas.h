// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// Cells between commas that may be halves of numbers with a decimal comma: `0,001,1,5` for 0.001 and 1.5.
///
/// A half behind a comma is nothing but digits, the half in front is a whole number, and where any number
/// has a point, commas aren't decimal ones.
class QUILLMERE_API DecimalCommas {
public:
    /// Cells of rows without quotes, empty where they say nothing; rows of fewer than `width` don't count.
    DecimalCommas(const std::vector<std::vector<std::string_view>>& rows, std::size_t width);

    /// How many numbers at most the rows may have that are written as two cells.
    std::size_t getMost() const;

    /// Whether the cells themselves show it, for rows without names: zeros in front, as in `001` and `-0`,
    /// or digits behind every second comma as decimals have them. Plain whole numbers don't.
    bool getAreShown() const;

private:
    /// What the cells of a column have in common.
    struct Column {
        bool isTime = false;    ///< Texts of times.
        bool isWhole = true;    ///< Whole numbers, and one of them at least.
        bool isFraction = true; ///< Nothing but digits, maybe with an exponent.
        bool hasZeros = false;  ///< Some have a zero in front of digits.
        bool hasMinusZero = false;
        bool isGrowing = true;     ///< From row to row, as counts and times do.
        bool isEven = true;        ///< As many digits in every row.
        std::size_t digits = 0;    ///< Of the last row.
        std::size_t distinct = 0;  ///< Texts,
        std::size_t longOnes = 0;  ///< those of them with several digits,
        std::size_t firstOnes = 0; ///< and the characters that they begin with.
    };
    static Column columnOf(const std::vector<std::string_view>& cells);
    bool getIsPair(std::size_t behind) const;
    bool getHasZerosBehindComma(std::size_t behind) const;
    bool getLooksLikePairs() const;

    std::vector<Column> columns;
    std::size_t rowCount = 0;
    bool hasPoint = false;
};

} // namespace Quillmere::Host
