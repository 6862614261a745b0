// SPDX-License-Identifier: MIT
#include "host/batch/RunStatus.h"

#include "host/description/Value.h"
#include "host/description/ValueReader.h"
#include "host/ends/RecordingException.h"
#include "host/text/ComplaintJson.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <map>

namespace Quillmere::Host {

namespace {

constexpr const char* kDocument = "recording status";
constexpr const char* kFormat = "1"; // another one when a member changes its meaning or goes
constexpr const char* kInputOption = "--input";
constexpr const char* kOutcomeLine = ",\n  \"outcome\": ";

Json::Text count(std::uint64_t number) {
    return std::to_string(number);
}

Json::Text textOrNull(const std::string& text) {
    return text.empty() ? Json::null() : Json::text(text);
}

Json::Text objectOf(const RunStatus::Pairs& pairs) {
    Json::Members members;
    for (const auto& [name, value] : pairs)
        members.emplace_back(name, Json::text(value));
    return Json::object(members);
}

Json::Text inputsOf(const RunStatus& status) {
    std::vector<Json::Text> texts;
    for (const RunStatus::Input& input : status.inputs)
        texts.push_back(Json::object({{"source", Json::text(input.source)},
                                      {"file", Json::text(input.path)},
                                      {"bytes", count(input.facts.bytes)},
                                      {"modified", std::to_string(input.facts.modified)},
                                      {"sha256", textOrNull(input.hash)}}));
    return Json::list(texts);
}

Json::Text resultsOf(const RunStatus& status) {
    std::vector<Json::Text> texts;
    for (const RunStatus::Result& result : status.results)
        texts.push_back(Json::object({{"sink", Json::text(result.sink)},
                                      {"file", Json::text(result.path)},
                                      {"bytes", count(result.bytes)}}));
    return Json::list(texts);
}

/// A value as it was before it stood in a map.
Json::Text unindented(const std::string& text) {
    Json::Text value;
    for (std::size_t at = 0; at < text.size(); ++at) {
        value += text[at];
        if (text[at] == '\n') at += 2;
    }
    return value;
}

/// The members of a map in a file; what isn't there is empty or 0.
class Members {
public:
    explicit Members(const Value& read) : value(read) {}

    std::string text(const char* name) const {
        const Value* const member = find(name);
        return member == nullptr ? std::string() : member->text;
    }
    template <class Number>
    Number number(const char* name) const {
        const std::string digits = text(name);
        Number read{};
        std::from_chars(digits.data(), digits.data() + digits.size(), read);
        return read;
    }
    RunStatus::Pairs pairs(const char* name) const {
        RunStatus::Pairs list;
        if (const Value* const member = find(name))
            for (const Value::Entry& entry : member->entries)
                list.emplace_back(entry.key, entry.value.text);
        return list;
    }
    const std::vector<Value>& items(const char* name) const {
        static const std::vector<Value> kNone;
        const Value* const member = find(name);
        return member == nullptr ? kNone : member->items;
    }

private:
    /// A null's text says `null` or nothing; it counts as nothing.
    const Value* find(const char* name) const {
        const Value::Entry* const entry = value.find(name);
        return entry == nullptr || entry->value.kind == Value::Kind::Null ? nullptr : &entry->value;
    }

    const Value& value;
};

RunStatus::Input inputOf(const Value& value) {
    const Members members(value);
    RunStatus::Input input;
    input.source = members.text("source");
    input.path = members.text("file");
    input.facts.bytes = members.number<std::uint64_t>("bytes");
    input.facts.modified = members.number<std::int64_t>("modified");
    input.hash = members.text("sha256");
    return input;
}

RunStatus::Result resultOf(const Value& value) {
    const Members members(value);
    RunStatus::Result result;
    result.sink = members.text("sink");
    result.path = members.text("file");
    result.bytes = members.number<std::uint64_t>("bytes");
    return result;
}

RunStatus statusOf(const Members& members) {
    RunStatus status;
    status.state = members.text("state");
    status.failure = members.text("failure");
    status.recording = members.text("recording");
    status.command = members.text("command");
    status.notes = members.pairs("notes");
    status.began = members.text("began");
    status.ended = members.text("ended");
    status.seconds = members.number<double>("seconds");
    status.rows = members.number<std::uint64_t>("rows");
    if (!members.text("rate").empty()) status.rate = members.number<double>("rate");
    status.repairs = members.number<std::uint64_t>("repairs");
    status.lost = members.number<std::uint64_t>("lost");
    status.warnings = members.number<std::uint64_t>("warnings");
    status.peakMemory = members.number<std::uint64_t>("peakMemory");
    status.host = members.text("host");
    status.versions = members.pairs("versions");
    status.graph = members.text("graph");
    status.graphHash = members.text("graphHash");
    for (const Value& item : members.items("overrides"))
        status.overrides.push_back(item.text);
    for (const Value& item : members.items("inputs"))
        status.inputs.push_back(inputOf(item));
    for (const Value& item : members.items("results"))
        status.results.push_back(resultOf(item));
    return status;
}

[[noreturn]] void refuse(const std::string& path) {
    throw RecordingException(Complaint::sentence(
        {path}, std::string("cannot be written: ") + std::strerror(errno), "a file that can be written"));
}

/// Whether the file `path` isn't what was read then.
bool getIsChanged(const RunStatus::Input& input, const std::string& path) {
    const auto facts = factsOf(path);
    if (!facts || facts->bytes != input.facts.bytes) return true;
    return facts->modified != input.facts.modified && hashOfFile(path) != input.hash;
}

/// The file that a source reads by the options, where one file is what it has read.
class InputNames {
public:
    InputNames(const RunStatus& then, const RunStatus& now) {
        std::map<std::string, int> counts;
        for (const RunStatus::Input& input : then.inputs)
            ++counts[input.source];
        for (std::size_t i = 0; i + 1 < now.overrides.size(); ++i) {
            if (now.overrides[i] != kInputOption) continue;
            const std::string& word = now.overrides[i + 1];
            const std::string source = word.substr(0, word.find('='));
            if (counts[source] == 1) names[source] = word.substr(std::min(word.size(), source.size() + 1));
        }
    }

    std::string nameOf(const RunStatus::Input& input) const {
        const auto name = names.find(input.source);
        return name == names.end() ? input.path : name->second;
    }
    /// Without the names: one file may have several.
    std::vector<std::string> settings(std::vector<std::string> words) const {
        for (std::size_t i = 1; i < words.size(); ++i)
            if (words[i - 1] == kInputOption && names.contains(words[i].substr(0, words[i].find('='))))
                words[i] = words[i].substr(0, words[i].find('='));
        return words;
    }

private:
    std::map<std::string, std::string> names;
};

} // namespace

Json::Text toJson(const RunStatus& status) {
    return Json::object({{"document", Json::text(kDocument)},
                         {"format", kFormat},
                         {"state", Json::text(status.state)},
                         {"failure", textOrNull(status.failure)},
                         {"complaints", Json::complaints(status.complaints)},
                         {"recording", textOrNull(status.recording)},
                         {"command", Json::text(status.command)},
                         {"notes", objectOf(status.notes)},
                         {"began", Json::text(status.began)},
                         {"ended", Json::text(status.ended)},
                         {"seconds", Json::number(status.seconds)},
                         {"rows", count(status.rows)},
                         {"rate", status.rate ? Json::number(*status.rate) : Json::null()},
                         {"repairs", count(status.repairs)},
                         {"lost", count(status.lost)},
                         {"warnings", count(status.warnings)},
                         {"peakMemory", count(status.peakMemory)},
                         {"host", Json::text(status.host)},
                         {"versions", objectOf(status.versions)},
                         {"graph", textOrNull(status.graph)},
                         {"graphHash", textOrNull(status.graphHash)},
                         {"overrides", Json::listOfTexts(status.overrides)},
                         {"inputs", inputsOf(status)},
                         {"results", resultsOf(status)},
                         {"outcome", status.outcome}}) +
           "\n";
}

std::optional<RunStatus> readStatus(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open() || !factsOf(path)) return std::nullopt;
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    // Most of it is the outcome, which stands last and isn't read. No text within has a line's end.
    const std::size_t outcome = text.find(kOutcomeLine);
    if (outcome == std::string::npos || !text.ends_with("}\n")) return std::nullopt;
    constexpr std::size_t kEnd = 3; // "\n}\n"
    const std::size_t begin = outcome + std::char_traits<char>::length(kOutcomeLine);
    const std::string value = text.substr(begin, std::max(text.size() - kEnd, begin) - begin);
    text.erase(outcome);
    text += '}';
    Complaints complaints;
    const auto read = readValueText(text, path, false, complaints);
    if (!read || !complaints.isEmpty()) return std::nullopt;
    const Members members(*read);
    if (members.text("document") != kDocument || members.text("format") != kFormat) return std::nullopt;
    RunStatus status = statusOf(members);
    status.outcome = unindented(value);
    return status;
}

/// Not brought to the disk: where power fails, a status that is lost costs a run, and results were brought
/// there before.
void writeStatus(const std::string& folder, const RunStatus& status) {
    const std::string path = folder + "/" + RunStatus::kFileName;
    const std::string partial = path + ".partial";
    std::ofstream file(partial, std::ios::binary | std::ios::trunc);
    if (!file.is_open()) refuse(partial);
    file << toJson(status);
    file.close();
    if (!file) {
        const int reason = errno;
        std::remove(partial.c_str());
        errno = reason;
        refuse(partial);
    }
    if (std::rename(partial.c_str(), path.c_str()) != 0) refuse(path);
}

std::string timeText() {
    const auto now =
        std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto rest = static_cast<int>(now.time_since_epoch().count() % 1000);
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    char day[32];
    std::strftime(day, sizeof day, "%Y-%m-%dT%H:%M:%S", &parts);
    char text[48];
    std::snprintf(text, sizeof text, "%s.%03dZ", day, rest);
    return text;
}

std::string findChange(const RunStatus& then, const RunStatus& now, const std::string& folder) {
    if (then.graphHash != now.graphHash) return "the graph has changed";
    const InputNames names(then, now);
    if (names.settings(then.overrides) != names.settings(now.overrides)) return "the settings have changed";
    if (then.versions != now.versions) return "the versions of command or plug-ins have changed";
    for (const RunStatus::Input& input : then.inputs)
        if (getIsChanged(input, names.nameOf(input))) return "the recording '" + input.path + "' has changed";
    for (const RunStatus::Result& result : then.results) {
        const auto facts = factsOf(folder + "/" + result.path);
        if (!facts) return "the result '" + result.path + "' is gone";
        if (facts->bytes != result.bytes) return "the result '" + result.path + "' has changed";
    }
    return {};
}

} // namespace Quillmere::Host
