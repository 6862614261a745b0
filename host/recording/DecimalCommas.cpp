// SPDX-License-Identifier: MIT
#include "host/recording/DecimalCommas.h"

#include "host/recording/CsvCells.h"
#include "host/recording/TimeText.h"

#include <algorithm>
#include <charconv>
#include <set>

namespace Quillmere::Host {

namespace {

constexpr std::string_view kDigits = "0123456789";
/// So many different decimals, none of which begins with a zero, are none: of decimals one in ten does.
constexpr std::size_t kManyDecimals = 50;
/// Where a number crosses so many whole ones, its decimals begin with more digits than those few.
constexpr std::size_t kFewWholes = 3;
constexpr std::size_t kFewFirstDigits = 3;
/// So many different last digits, of ten, are those of decimals rather than of a flag or a button.
constexpr std::size_t kManyDigits = 8;
/// In fewer rows numbers with decimals may grow by chance from row to row.
constexpr std::size_t kManyRows = 20;

bool isSign(char c) {
    return c == '-' || c == '+';
}

/// `5`, `001`, and `5E-1`, whose exponent is that of the whole number.
bool areDecimals(std::string_view text) {
    const std::size_t end = std::min(text.find_first_not_of(kDigits), text.size());
    if (end == 0) return false;
    std::string_view rest = text.substr(end);
    if (rest.empty()) return true;
    if (rest.front() != 'e' && rest.front() != 'E') return false;
    rest.remove_prefix(1);
    if (!rest.empty() && isSign(rest.front())) rest.remove_prefix(1);
    return !rest.empty() && rest.find_first_not_of(kDigits) == std::string_view::npos;
}

bool isWholeNumber(std::string_view text) {
    if (!text.empty() && isSign(text.front())) text.remove_prefix(1);
    return !text.empty() && text.find_first_not_of(kDigits) == std::string_view::npos;
}

/// `001` and `00`, but not `0`.
bool hasZeroInFront(std::string_view text) {
    if (!text.empty() && isSign(text.front())) text.remove_prefix(1);
    return text.size() > 1 && text[0] == '0' && kDigits.find(text[1]) != std::string_view::npos;
}

/// A number with a point, which nothing but `decimal: point` writes; a date has letters or further signs.
bool isNumberWithPoint(std::string_view text) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    double value = 0.0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && stop == text.data() + text.size() &&
           text.find('.') != std::string_view::npos;
}

} // namespace

DecimalCommas::DecimalCommas(const std::vector<std::vector<std::string_view>>& rows, std::size_t width) {
    std::vector<std::vector<std::string_view>> cellsOfColumn(width);
    for (const auto& row : rows) {
        if (row.size() < width) continue;
        ++rowCount;
        for (std::size_t i = 0; i < width; ++i) {
            const std::string_view text = trimmed(row[i]);
            hasPoint = hasPoint || isNumberWithPoint(text);
            if (!text.empty()) cellsOfColumn[i].push_back(text);
        }
    }
    for (const auto& cells : cellsOfColumn)
        columns.push_back(columnOf(cells));
}

DecimalCommas::Column DecimalCommas::columnOf(const std::vector<std::string_view>& cells) {
    Column column;
    std::set<std::string_view> seen;
    double before = 0.0;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string_view text = cells[i];
        const std::size_t digits = static_cast<std::size_t>(std::count_if(
            text.begin(), text.end(), [](char c) { return kDigits.find(c) != std::string_view::npos; }));
        column.isTime = column.isTime || (!areDecimals(text) && !isWholeNumber(text) && getIsTimeText(text));
        column.isWhole = column.isWhole && isWholeNumber(text);
        column.isFraction = column.isFraction && areDecimals(text);
        column.hasZeros = column.hasZeros || hasZeroInFront(text);
        column.hasMinusZero = column.hasMinusZero || text == "-0";
        column.isEven = column.isEven && (i == 0 || digits == column.digits);
        double value = 0.0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        column.isGrowing = column.isGrowing && (i == 0 || value > before);
        column.digits = digits;
        before = value;
        seen.insert(text);
    }
    column.distinct = seen.size();
    std::set<char> firstOnes;
    for (const std::string_view text : seen) {
        firstOnes.insert(text.front());
        column.longOnes += text.size() > 1 ? 1 : 0;
    }
    column.firstOnes = firstOnes.size();
    if (cells.empty()) column.isWhole = column.isFraction = false;
    return column;
}

bool DecimalCommas::getIsPair(std::size_t behind) const {
    if (behind == 0 || behind >= columns.size()) return false;
    const Column& front = columns[behind - 1];
    const Column& decimals = columns[behind];
    const bool lacksZeros = decimals.longOnes >= kManyDecimals && !decimals.hasZeros;
    return front.isWhole && !front.hasZeros && decimals.isFraction && !lacksZeros;
}

std::size_t DecimalCommas::getMost() const {
    std::size_t most = 0;
    for (std::size_t i = 1; i < columns.size() && !hasPoint; ++i) {
        if (!getIsPair(i)) continue;
        ++most;
        ++i; // a cell is half of one number only
    }
    return most;
}

bool DecimalCommas::getAreShown() const {
    if (hasPoint) return false;
    for (std::size_t i = 1; i < columns.size(); ++i)
        if (getHasZerosBehindComma(i) || (getIsPair(i) && columns[i - 1].hasMinusZero)) return true;
    return getLooksLikePairs();
}

/// Numbers in front of a comma and behind the next one have no zeros in front. Where they have, all numbers
/// are filled up with them, such as days and months.
bool DecimalCommas::getHasZerosBehindComma(std::size_t behind) const {
    const Column& front = columns[behind - 1];
    const bool isFrontWhole = (front.isWhole && !front.hasZeros) || front.isTime;
    const bool isNextFilled = behind + 1 < columns.size() && columns[behind + 1].hasZeros;
    return columns[behind].isFraction && columns[behind].hasZeros && isFrontWhole && !isNextFilled;
}

/// Two pairs at least, maybe behind times or a count, with as many decimals in each row, and not just whole
/// numbers of one length.
bool DecimalCommas::getLooksLikePairs() const {
    const bool isLonger = columns.size() % 2 == 1;
    std::size_t begin = 0;
    while (begin < columns.size() && columns[begin].isTime)
        ++begin;
    if (begin == 0 && isLonger) begin = 1;
    const std::size_t pairs = (columns.size() - begin) / 2;
    if (pairs == 0 || (columns.size() - begin) % 2 == 1) return false;
    std::size_t distinct = 0;
    bool isLike = true;
    bool hasManyDigits = false;
    bool hasLongOnes = false;
    for (std::size_t i = begin + 1; i < columns.size(); i += 2) {
        const Column& front = columns[i - 1];
        const Column& decimals = columns[i];
        if (!getIsPair(i) || front.hasZeros || !decimals.isEven) return false;
        const bool isSwept = front.distinct < kFewWholes || decimals.firstOnes > kFewFirstDigits;
        if (rowCount >= kManyRows && (front.isGrowing || !isSwept)) return false;
        isLike = isLike && front.isEven && front.digits == decimals.digits;
        hasManyDigits = hasManyDigits || (decimals.digits == 1 && decimals.distinct >= kManyDigits);
        distinct += decimals.longOnes;
        hasLongOnes = hasLongOnes || decimals.digits > 1;
    }
    if (isLike || distinct >= kManyDecimals) return false;
    return hasManyDigits || (pairs > 1 && (hasLongOnes || rowCount < kManyRows));
}

} // namespace Quillmere::Host
