// SPDX-License-Identifier: MIT
#include "host/description/Value.h"

#include "host/description/Quantity.h"
#include "host/text/Printable.h"
#include "host/text/ShortestText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace Quillmere::Host {

namespace {
using Core::MatrixXd;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string_view withoutSign(std::string_view text) {
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) text.remove_prefix(1);
    return text;
}

bool hasLeadingZero(std::string_view text) {
    const std::string_view digits = withoutSign(text);
    return digits.size() > 1 && digits[0] == '0' && isDigit(digits[1]);
}

std::string withoutLeadingZeros(const std::string& text) {
    const std::size_t sign = text.size() - withoutSign(text).size();
    std::size_t zeros = sign;
    while (zeros + 1 < text.size() && text[zeros] == '0' && isDigit(text[zeros + 1]))
        ++zeros;
    return text.substr(0, sign) + text.substr(zeros);
}

/// YAML's words for what digits can't write, in the three spellings that YAML has.
std::optional<double> specialNumber(std::string_view text) {
    const std::string_view word = withoutSign(text);
    const bool isNegative = text.starts_with('-');
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    if (word == ".inf" || word == ".Inf" || word == ".INF") return isNegative ? -kInfinity : kInfinity;
    if (text == ".nan" || text == ".NaN" || text == ".NAN") return std::numeric_limits<double>::quiet_NaN();
    return std::nullopt;
}

/// A whole text as a number, or nothing.
template <typename T>
std::optional<T> parsed(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    T number{};
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || stop != text.data() + text.size()) return std::nullopt;
    return number;
}

/// Whether a scalar's text may be read as a number at all; complains if not.
bool isNumeric(const Value& value, const std::string& expected, Complaints& complaints) {
    if (!value.isScalar()) {
        complaints.add(value.where, value.describe(), expected);
        return false;
    }
    if (value.isQuoted) {
        complaints.add(value.where, "the text " + value.describe(), expected + " without quotes",
                       parsed<double>(value.text) ? value.text : withNearestUnit(value));
        return false;
    }
    if (hasLeadingZero(value.text)) {
        complaints.add(value.where, value.describe(),
                       expected + " without leading zeros (readers disagree whether they mean eights)",
                       withoutLeadingZeros(value.text));
        return false;
    }
    return true;
}

Value plain(std::string text) {
    Value value;
    value.kind = Value::Kind::Scalar;
    value.text = std::move(text);
    return value;
}

std::string lowered(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

} // namespace

const Value::Entry* Value::find(std::string_view key) const {
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&](const Entry& entry) { return entry.key == key; });
    return found == entries.end() ? nullptr : &*found;
}

std::size_t Value::count() const {
    std::size_t values = 1;
    for (const Value& item : items)
        values += item.count();
    for (const Entry& entry : entries)
        values += entry.value.count();
    return values;
}

bool Value::operator==(const Value& other) const {
    if (kind != other.kind) return false;
    if (isScalar()) return text == other.text && isQuoted == other.isQuoted;
    return items == other.items && entries == other.entries;
}

std::string Value::describe() const {
    const std::string origin = !madeOf.empty() ? " (made of '" + printable(madeOf, kLongestName) + "')"
                               : !parameter.empty()
                                   ? " (the parameter '" + printable(parameter, kLongestName) + "')"
                                   : "";
    switch (kind) {
    case Kind::Null:
        return "nothing" + origin;
    case Kind::Scalar:
        return std::string("'").append(printable(text, kLongestName)) + "'" + origin;
    case Kind::List:
        return "a list" + origin;
    case Kind::Map:
        return "a map" + origin;
    }
    return {};
}

Value valueOf(double number) {
    if (std::isnan(number)) return plain(".nan");
    if (std::isinf(number)) return plain(number < 0.0 ? "-.inf" : ".inf");
    return plain(shortestText(number));
}

Value valueOf(std::int64_t number) {
    return plain(std::to_string(number));
}

Value valueOf(bool flag) {
    return plain(flag ? "true" : "false");
}

Value valueOf(const std::string& text) {
    Value value = plain(text);
    value.isQuoted = true;
    return value;
}

Value valueOf(const std::vector<std::string>& texts) {
    Value list;
    list.kind = Value::Kind::List;
    for (const std::string& text : texts)
        list.items.push_back(valueOf(text));
    return list;
}

Value valueOf(const MatrixXd& matrix) {
    Value list;
    list.kind = Value::Kind::List;
    for (Eigen::Index row = 0; row < matrix.rows(); ++row) {
        Value& items = list.items.emplace_back();
        items.kind = Value::Kind::List;
        for (Eigen::Index column = 0; column < matrix.cols(); ++column)
            items.items.push_back(valueOf(matrix(row, column)));
    }
    return list;
}

std::optional<double> toNumber(const Value& value, Complaints& complaints) {
    if (!isNumeric(value, "a number", complaints)) return std::nullopt;
    if (const auto special = specialNumber(value.text)) return special;
    const auto number = parsed<double>(value.text);
    if (!number) complaints.add(value.where, value.describe(), "a number", withNearestUnit(value));
    return number;
}

std::optional<std::int64_t> toWhole(const Value& value, Complaints& complaints) {
    if (!isNumeric(value, "a whole number", complaints)) return std::nullopt;
    const auto number = parsed<std::int64_t>(value.text);
    if (!number) complaints.add(value.where, value.describe(), "a whole number", withNearestUnit(value));
    return number;
}

std::optional<bool> toFlag(const Value& value, Complaints& complaints) {
    const std::string word = value.isQuoted ? "" : lowered(value.text);
    if (value.isScalar() && (word == "true" || word == "1")) return true;
    if (value.isScalar() && (word == "false" || word == "0")) return false;
    const bool isYes = word == "yes" || word == "on" || word == "y";
    const bool isNo = word == "no" || word == "off" || word == "n";
    complaints.add(value.where, value.describe(), "true or false", isYes ? "true" : isNo ? "false" : "");
    return std::nullopt;
}

std::optional<std::string> toText(const Value& value, Complaints& complaints) {
    if (value.isScalar()) return value.text;
    complaints.add(value.where, value.describe(), "a text");
    return std::nullopt;
}

std::optional<MatrixXd> toMatrix(const Value& value, Complaints& complaints) {
    const std::string expected = "a matrix as a list of rows, each a list of numbers";
    const auto isList = [](const Value& item) { return item.kind == Value::Kind::List; };
    if (!isList(value) || !std::all_of(value.items.begin(), value.items.end(), isList)) {
        const bool isFlat = isList(value) && std::none_of(value.items.begin(), value.items.end(), isList);
        complaints.add(value.where, isFlat ? "a list of numbers" : value.describe(), expected,
                       isFlat || value.isScalar() ? "double brackets, as in [[1, 2, 3]]" : "");
        return std::nullopt;
    }
    const std::size_t columns = value.items.empty() ? 0 : value.items.front().items.size();
    // Looked at before anything is sized: a long first row and many short ones would make a matrix of
    // gigabytes.
    for (const Value& row : value.items) {
        if (row.items.size() == columns) continue;
        complaints.add(row.where, "a row of " + std::to_string(row.items.size()),
                       "rows of " + std::to_string(columns) + ", as the first has");
        return std::nullopt;
    }
    MatrixXd matrix;
    Core::resizeSample(matrix, static_cast<Eigen::Index>(value.items.size()),
                       static_cast<Eigen::Index>(columns));
    bool isWhole = true;
    double* next = matrix.data();
    for (const Value& row : value.items) {
        for (const Value& item : row.items) {
            const auto number = toNumber(item, complaints);
            isWhole = isWhole && number.has_value();
            *next++ = number.value_or(0.0);
        }
    }
    if (!isWhole) return std::nullopt;
    return matrix;
}

} // namespace Quillmere::Host
