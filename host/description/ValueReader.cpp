// SPDX-License-Identifier: MIT
#include "host/description/ValueReader.h"

#include "host/text/Printable.h"
#include "host/description/TableGuess.h"
#include "host/description/ValueEvents.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <unordered_map>

namespace Quillmere::Host {

namespace {
using Kind = ValueEvent::Kind;

/// Where things stand in a text; without lines for one that is no file.
struct Origin {
    std::string name;
    bool hasLines = true;

    Place at(int line, int column) const {
        return hasLines && line >= 0 ? Place{name, line + 1, column + 1} : Place{name, 0, 0};
    }
};

/// Turns events into values, references into copies, and complains of keys that stand twice.
class Converter {
public:
    Converter(const std::vector<ValueEvent>& list, const Origin& from, Complaints& complaintList)
        : events(list), origin(from), complaints(complaintList) {}

    Value convert(std::size_t begin) {
        const ValueEvent& event = events[begin];
        if (event.kind == Kind::Reference) return convert(event.other);
        require(values++ < kMostValues, event, "more than a million values", "a smaller graph");
        require(depth < kDeepestValue, event,
                "references that unfold to more than " + std::to_string(kDeepestValue) + " levels", "fewer");
        ++depth;
        Value value;
        value.where = placeOf(event);
        if (event.kind == Kind::Scalar) {
            value.kind = Value::Kind::Scalar;
            value.text = event.text;
            value.isQuoted = event.isQuoted;
        }
        if (event.kind == Kind::List) takeItems(begin, value);
        if (event.kind == Kind::Map) takeEntries(begin, value);
        --depth;
        return value;
    }

private:
    void takeItems(std::size_t list, Value& value) {
        value.kind = Value::Kind::List;
        for (std::size_t at = list + 1; events[at].kind != Kind::End; at = behind(at))
            value.items.push_back(convert(at));
    }

    void takeEntries(std::size_t map, Value& value) {
        value.kind = Value::Kind::Map;
        std::unordered_map<std::string_view, int> lines; // of each key
        std::size_t at = map + 1;
        while (events[at].kind != Kind::End) {
            const ValueEvent& key = events[events[at].kind == Kind::Reference ? events[at].other : at];
            at = behind(at);
            const std::size_t content = at;
            at = behind(at);
            if (key.kind != Kind::Scalar) {
                complaints.add(placeOf(key), "a key that is no text", "a name");
                continue;
            }
            const auto [first, isNew] = lines.try_emplace(key.text, placeOf(key).line);
            if (!isNew) {
                refuseSecond(key, first->second);
                continue;
            }
            Value::Entry& entry = value.entries.emplace_back();
            entry.key = key.text;
            entry.where = placeOf(key);
            entry.value = convert(content);
        }
    }

    void refuseSecond(const ValueEvent& key, int lineOfFirst) {
        complaints.add(placeOf(key), "the key '" + printable(key.text, kLongestName) + "' a second time",
                       lineOfFirst == 0
                           ? std::string("each key once")
                           : "each key once (the first is in line " + std::to_string(lineOfFirst) + ")");
    }

    void require(bool isGood, const ValueEvent& event, const std::string& found,
                 const std::string& expected) const {
        if (!isGood) throw ValueRefusal(event.line, event.column, found, expected);
    }
    Place placeOf(const ValueEvent& event) const { return origin.at(event.line, event.column); }
    /// The event behind the value that begins at `at`.
    std::size_t behind(std::size_t at) const {
        return events[at].kind == Kind::Reference ? at + 1 : events[at].other;
    }

    const std::vector<ValueEvent>& events;
    const Origin& origin;
    Complaints& complaints;
    std::size_t values = 0;
    int depth = 0;
};

/// As much of the file as may be read, and a byte more of one that is too large.
std::string contentOf(std::ifstream& file) {
    std::string text;
    std::string piece(std::size_t{1} << 16, '\0');
    while (text.size() <= kLargestValueFile && file) {
        file.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        text.append(piece, 0, static_cast<std::size_t>(file.gcount()));
    }
    return text;
}
} // namespace

std::optional<Value> readValueFile(const std::string& path, Complaints& complaints) {
    errno = std::filesystem::is_directory(path) ? EISDIR : 0;
    std::ifstream file;
    if (errno == 0) file.open(path, std::ios::binary);
    if (!file.is_open()) {
        complaints.add({path, 0, 0}, std::string("no file that can be read (") + std::strerror(errno) + ")",
                       "a graph file");
        return std::nullopt;
    }
    errno = 0;
    const std::string text = contentOf(file);
    if (file.bad()) {
        complaints.add({path, 0, 0},
                       std::string("a file that can't be read to its end (") + std::strerror(errno) + ")",
                       "a graph file");
        return std::nullopt;
    }
    if (const std::string_view header = tableHeader(text); !header.empty()) {
        complaints.add({path, 1, 1},
                       "a table, as recordings are, that begins '" + printable(header, kLongestName) + "'",
                       "a graph file, which names its recordings by 'file:'");
        return std::nullopt;
    }
    return readValueText(text, path, true, complaints);
}

std::optional<Value> readValueText(const std::string& text, const std::string& name, bool hasLines,
                                   Complaints& complaints) {
    const Origin origin{name, hasLines};
    if (text.size() > kLargestValueFile) {
        complaints.add(origin.at(-1, -1), "more than 16 MiB", hasLines ? "a graph file" : "a value");
        return std::nullopt;
    }
    try {
        const std::vector<ValueEvent> events =
            valueEvents(text, hasLines ? "a graph file in YAML or JSON" : "a value in YAML or JSON",
                        hasLines ? "one document in a file" : "one value; a list stands in brackets");
        if (!events.empty()) return Converter(events, origin, complaints).convert(0);
        Value nothing;
        nothing.where = origin.at(0, 0);
        return nothing;
    } catch (const ValueRefusal& refusal) {
        complaints.add(origin.at(refusal.line, refusal.column), refusal.what(), refusal.expected);
        return std::nullopt;
    }
}

} // namespace Quillmere::Host
