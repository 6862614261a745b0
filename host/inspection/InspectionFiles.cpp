// SPDX-License-Identifier: MIT
#include "host/inspection/InspectionFiles.h"

#include "host/description/GraphDescription.h"
#include "host/description/ValueText.h"
#include "host/ends/StandardStream.h"
#include "host/text/Counted.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Quillmere::Host {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kBegin = "# Written by 'quillmere inspect'.";
constexpr std::size_t kLongestPin = 60;
constexpr std::size_t kMostPins = 10'000; // a graph has to stay within 16 MiB

struct Pin {
    std::string name;
    std::vector<std::string> columns;
};

/// Letters, digits and underscores; a letter first.
std::string pinName(const std::string& text) {
    std::string name;
    for (const char letter : text.substr(0, kLongestPin)) {
        if (std::isalnum(static_cast<unsigned char>(letter)) != 0)
            name += letter;
        else if (!name.empty() && name.back() != '_')
            name += '_';
    }
    while (name.ends_with('_'))
        name.pop_back();
    if (name.empty()) return "xyz";
    return std::isdigit(static_cast<unsigned char>(name.front())) != 0 ? "c" + name : name;
}

class PinMaker {
public:
    void add(const std::string& text, std::vector<std::string> columns) {
        const std::string name = pinName(text);
        std::string unique = name;
        for (int i = 2; !taken.insert(unique).second; ++i)
            unique = name + "_" + std::to_string(i);
        Pin& pin = pins.emplace_back();
        pin.name = std::move(unique);
        pin.columns = std::move(columns);
    }
    std::vector<Pin> pins;

private:
    std::set<std::string> taken;
};

/// Columns in their order, those of a group at the first of them.
std::vector<Pin> pinsOf(const Inspection& found) {
    std::unordered_map<std::string_view, int> names; // one that several columns have can't be asked for
    for (const Inspection::Column& column : found.columns)
        ++names[column.described.name];
    const auto isWanted = [&](const Inspection::Column& column) {
        return column.isRead && !column.isTime && column.numbers > 0 && names[column.described.name] == 1;
    };
    std::vector<char> isDone(found.columns.size(), 0);
    std::vector<const Inspection::Group*> groupOf(found.columns.size(), nullptr);
    for (const Inspection::Group& group : found.groups) {
        const std::vector<std::size_t>& axes = group.axes.columns;
        const bool isWhole = std::all_of(axes.begin(), axes.end(),
                                         [&](std::size_t column) { return isWanted(found.columns[column]); });
        for (const std::size_t column : axes)
            if (isWhole) groupOf[column] = &group;
    }
    PinMaker maker;
    for (std::size_t i = 0; i < found.columns.size(); ++i) {
        if (isDone[i] != 0 || !isWanted(found.columns[i])) continue;
        if (groupOf[i] == nullptr) {
            maker.add(found.columns[i].described.name, {found.columns[i].described.name});
            continue;
        }
        std::vector<std::string> columns;
        for (const std::size_t column : groupOf[i]->axes.columns) {
            isDone[column] = 1;
            columns.push_back(found.columns[column].described.name);
        }
        maker.add(groupOf[i]->axes.name, std::move(columns));
    }
    return std::move(maker.pins);
}

fs::path folderOf(const std::string& path) {
    const fs::path folder = getIsStandardStream(path) ? fs::path() : fs::path(path).parent_path();
    return folder.empty() ? fs::path(".") : folder;
}

/// As the file in `path` has to name it.
std::string recordingFrom(const std::string& recording, const std::string& path) {
    if (getIsStandardStream(recording) || fs::path(recording).is_absolute()) return recording;
    std::error_code error; // of a folder that isn't there, where nothing will be written
    const fs::path relative = fs::proximate(recording, folderOf(path), error);
    return error ? recording : relative.string();
}

bool getHasBadRows(const Inspection& found) {
    return found.badRows > 0 || found.mendedRows > 0 ||
           std::any_of(found.groups.begin(), found.groups.end(),
                       [](const Inspection::Group& group) { return group.hasHoles; });
}

void describeSource(GraphDescription::Block& block, const Inspection& found,
                    const InspectionSettings& settings, const std::string& path) {
    block.set("file", nameValue(recordingFrom(found.path, path)));
    for (const GraphDescription::Setting& setting : settings.written)
        block.set(setting.name, setting.value);
    Value pins;
    pins.kind = Value::Kind::Map;
    for (const Pin& pin : pinsOf(found)) {
        Value::Entry& entry = pins.entries.emplace_back();
        entry.key = pin.name;
        entry.value.kind = Value::Kind::List;
        for (const std::string& column : pin.columns)
            entry.value.items.push_back(nameValue(column));
    }
    block.set("pins", std::move(pins));
    if (getHasBadRows(found)) block.set("onBadRow", nameValue("nan"));
}

/// The recording may have that very name.
std::string resultBeside(const std::string& path, const std::string& recording) {
    const std::string stem = getIsStandardStream(path) ? "" : fs::path(path).stem().string();
    const std::string name = stem.empty() ? "inspected" : stem;
    const bool isTaken = fs::path(recording).filename() == name + "-result.csv";
    return name + (isTaken ? "-result-2.csv" : "-result.csv");
}

} // namespace

std::string inspectionAsProfile(const Inspection& found, const InspectionSettings& settings,
                                const std::string& path) {
    GraphDescription::Block block;
    describeSource(block, found, settings, path);
    Value map;
    map.kind = Value::Kind::Map;
    for (GraphDescription::Setting& setting : block.settings) {
        Value::Entry& entry = map.entries.emplace_back();
        entry.key = setting.name;
        entry.value = std::move(setting.value);
    }
    return std::string(kBegin) + " Properties of a RecordingSource.\n" + yamlText(map);
}

std::string inspectionAsGraph(const Inspection& found, const InspectionSettings& settings,
                              const std::string& path) {
    GraphDescription graph;
    graph.path = path;
    describeSource(graph.addBlock("in", "RecordingSource"), found, settings, path);
    graph.addBlock("out", "RecordingSink").set("file", nameValue(resultBeside(path, found.path)));
    for (const Pin& pin : pinsOf(found))
        graph.connect("in." + pin.name, "out." + pin.name);
    return std::string(kBegin) + "\n" + graph.toText();
}

std::optional<Complaint> findHindrance(const Inspection& found) {
    if (found.clock == Inspection::Clock::None)
        return Complaint{{found.path},
                         "no column of times, and no rate",
                         "'--set time=COLUMN' or '--set rate=N' with rows a second"};
    const std::size_t pins = pinsOf(found).size();
    if (pins > kMostPins)
        return Complaint{{found.path},
                         counted(pins, "group or single column", "groups and single columns"),
                         "at most " + std::to_string(kMostPins) + ", a pin for each"};
    if (pins == 0) return Complaint{{found.path}, "no column with numbers in it", "one, for a pin"};
    return std::nullopt;
}

bool getIsOfInspection(std::string_view head) {
    return head.starts_with(kBegin);
}

} // namespace Quillmere::Host
