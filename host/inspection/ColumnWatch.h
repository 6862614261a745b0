// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// The smallest and the largest number of a piece of a recording.
struct NumberRange {
    double smallest = std::numeric_limits<double>::infinity(); ///< Above the largest where there is none.
    double largest = -std::numeric_limits<double>::infinity();

    bool getIsEmpty() const { return !(smallest <= largest); }
    void take(double number) {
        if (number < smallest) smallest = number;
        if (number > largest) largest = number;
    }
    void take(const NumberRange& other) {
        smallest = std::min(smallest, other.smallest);
        largest = std::max(largest, other.largest);
    }
};

/// Looks at the numbers of a column as they come, in memory that doesn't grow.
///
/// Its picture is one range for each piece of the recording, all as many rows long: where there are twice as
/// many pieces as are wanted, each two become one. A column is clipped where an extreme is what a sensor
/// gives beyond its range: at least ten rows and one in a thousand have exactly that number, five times as
/// many as have the number next to it. Columns of fewer than sixteen different numbers are flags and counts,
/// and never clipped; nor is one at 0, where much rests that isn't on.
class QUILLMERE_API ColumnWatch {
public:
    static constexpr std::size_t kPieces = 40;

    /// Without a picture it is smaller by far.
    explicit ColumnWatch(bool hasPicture = true) {
        if (hasPicture) pieces.reserve(2 * kPieces);
        keepsPicture = hasPicture;
    }

    void take(double number) {
        if (!(number - number == 0.0)) { // neither infinite nor not-a-number
            takeNone();
            return;
        }
        ++finite;
        // Most numbers lie between.
        if (!(number > low.next && number < high.next)) takeExtreme(number);
        if (!hasMany) takeKind(number);
        piece.take(number);
        passRow();
    }
    /// A row in which the column has no number.
    void takeNone() {
        ++none;
        passRow();
    }

    std::uint64_t getNumbers() const { return finite; }
    std::uint64_t getRowsWithout() const { return none; }
    /// Nothing without a number.
    std::optional<double> getSmallest() const;
    std::optional<double> getLargest() const;
    /// Of two rows at least.
    bool getIsConstant() const { return finite > 1 && low.number == high.number; }
    bool getIsClippedBelow() const { return getIsClipped(low); }
    bool getIsClippedAbove() const { return getIsClipped(high); }
    std::uint64_t getRowsAtSmallest() const { return low.count; }
    std::uint64_t getRowsAtLargest() const { return high.count; }

    /// Between `kPieces` and twice as many for a long recording, one for each row of a short one.
    std::vector<NumberRange> getPicture() const;

private:
    /// The outermost number, and the one next to it; exact, since what is between them comes to stand there.
    struct Extreme {
        double number = 0.0;
        double next = 0.0;
        std::uint64_t count = 0;
        std::uint64_t nextCount = 0;
    };

    void passRow() {
        if (++rowsOfPiece == rowsPerPiece && keepsPicture) endPiece();
    }
    void endPiece();
    void takeExtreme(double number);
    void takeKind(double number);
    bool getIsClipped(const Extreme& extreme) const;

    std::uint64_t finite = 0;
    std::uint64_t none = 0;
    Extreme low{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity(), 0, 0};
    Extreme high{-std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(), 0, 0};

    std::array<double, 16> kinds{}; ///< Different numbers that have been seen.
    std::size_t kindsSeen = 0;
    bool hasMany = false;

    bool keepsPicture = true;
    std::vector<NumberRange> pieces;
    NumberRange piece;
    std::uint64_t rowsOfPiece = 0;
    std::uint64_t rowsPerPiece = 1;
};

/// A picture in one line of `width` characters at most: for each piece of the recording what the column went
/// through. With `isUtf8` two pieces and four heights to a character, in dots of braille; else one piece and
/// three heights, `_` low, `-` in the middle, `"` high, `,` and `'` two of these, `|` all.
QUILLMERE_API std::string pictureText(const std::vector<NumberRange>& pieces, std::size_t width, bool isUtf8);

} // namespace Quillmere::Host
