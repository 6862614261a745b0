// SPDX-License-Identifier: MIT
#include "host/graph/Value.h"

#include "host/graph/NearestName.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

namespace Quillmere::Host {

namespace {
using Core::MatrixXd;

/// Turns the YAML reader's nodes into values and complains of what they hold twice.
class Converter {
public:
    Converter(const std::string& file, bool lines, Complaints& list)
        : name(file), hasLines(lines), complaints(list) {}

    Place place(const YAML::Mark& mark) const {
        return hasLines && mark.line >= 0 ? Place{name, mark.line + 1, mark.column + 1} : Place{name, 0, 0};
    }

    Value convert(const YAML::Node& node) {
        Value value;
        value.where = place(node.Mark());
        // References may unfold without end: ten lines can name each other into billions of values.
        if (++values > kMostValues) {
            if (values == kMostValues + 1)
                complaints.add(value.where, "more than a million values", "a smaller graph");
            return value;
        }
        switch (node.Type()) {
        case YAML::NodeType::Undefined:
        case YAML::NodeType::Null:
            break;
        case YAML::NodeType::Scalar:
            value.kind = Value::Kind::Scalar;
            value.text = node.Scalar();
            value.isQuoted = node.Tag() == "!" || node.Tag() == "tag:yaml.org,2002:str";
            break;
        case YAML::NodeType::Sequence:
            value.kind = Value::Kind::List;
            for (const YAML::Node& item : node)
                value.items.push_back(convert(item));
            break;
        case YAML::NodeType::Map:
            value.kind = Value::Kind::Map;
            for (const auto& entry : node)
                addEntry(value, entry.first, entry.second);
            break;
        }
        return value;
    }

private:
    void addEntry(Value& map, const YAML::Node& key, const YAML::Node& value) {
        const Place where = place(key.Mark());
        if (!key.IsScalar()) {
            complaints.add(where, "a key that is no text", "a name");
            return;
        }
        if (const Value::Entry* first = map.find(key.Scalar())) {
            complaints.add(where, "the key '" + key.Scalar() + "' a second time",
                           "each key once (the first is in line " + std::to_string(first->where.line) + ")");
            return;
        }
        map.entries.push_back({key.Scalar(), where, convert(value)});
    }

    static constexpr int kMostValues = 1'000'000;

    std::string name;
    bool hasLines;
    Complaints& complaints;
    int values = 0;
};

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
                       parsed<double>(value.text) ? value.text : "");
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

std::string Value::describe() const {
    const std::string origin = parameter.empty() ? "" : " (the parameter '" + parameter + "')";
    switch (kind) {
    case Kind::Null:
        return "nothing" + origin;
    case Kind::Scalar:
        return "'" + text + "'" + origin;
    case Kind::List:
        return "a list" + origin;
    case Kind::Map:
        return "a map" + origin;
    }
    return {};
}

std::optional<Value> readValueFile(const std::string& path, Complaints& complaints) {
    errno = std::filesystem::is_directory(path) ? EISDIR : 0;
    std::ifstream file;
    if (errno == 0) file.open(path, std::ios::binary);
    if (!file.is_open()) {
        complaints.add({path, 0, 0}, std::string("no file that can be read (") + std::strerror(errno) + ")",
                       "a graph file");
        return std::nullopt;
    }
    const std::string text(std::istreambuf_iterator<char>(file), {});
    return readValueText(text, path, true, complaints);
}

std::optional<Value> readValueText(const std::string& text, const std::string& name, bool hasLines,
                                   Complaints& complaints) {
    Converter converter(name, hasLines, complaints);
    try {
        const std::vector<YAML::Node> documents = YAML::LoadAll(text);
        if (documents.size() > 1)
            complaints.add(converter.place(documents[1].Mark()), "a second document",
                           "one document in a file");
        if (!documents.empty()) return converter.convert(documents.front());
        Value nothing;
        nothing.where = converter.place({});
        return nothing;
    } catch (const YAML::Exception& exception) {
        complaints.add(converter.place(exception.mark),
                       "text that is neither YAML nor JSON (" + exception.msg + ")",
                       hasLines ? "a graph file in YAML or JSON" : "a value in YAML or JSON");
        return std::nullopt;
    }
}

std::optional<double> toNumber(const Value& value, Complaints& complaints) {
    if (!isNumeric(value, "a number", complaints)) return std::nullopt;
    if (const auto special = specialNumber(value.text)) return special;
    const auto number = parsed<double>(value.text);
    if (!number) complaints.add(value.where, value.describe(), "a number");
    return number;
}

std::optional<std::int64_t> toWhole(const Value& value, Complaints& complaints) {
    if (!isNumeric(value, "a whole number", complaints)) return std::nullopt;
    const auto number = parsed<std::int64_t>(value.text);
    if (!number) complaints.add(value.where, value.describe(), "a whole number");
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
    MatrixXd matrix;
    Core::resizeSample(matrix, static_cast<Eigen::Index>(value.items.size()),
                       static_cast<Eigen::Index>(columns));
    bool isWhole = true;
    double* next = matrix.data();
    for (const Value& row : value.items) {
        if (row.items.size() != columns) {
            complaints.add(row.where, "a row of " + std::to_string(row.items.size()),
                           "rows of " + std::to_string(columns) + ", as the first has");
            return std::nullopt;
        }
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
