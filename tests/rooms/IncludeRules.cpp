// SPDX-License-Identifier: MIT
#include "tests/rooms/IncludeRules.h"

#include <algorithm>
#include <regex>
#include <sstream>

namespace {
/// A room and what its files may include besides their own room: folders, which end in a slash, or single
/// headers.
struct Room {
    std::string folder;
    std::vector<std::string> may;
};

constexpr const char* kMatrix = "framework/transport/MatrixXd.h";

/// A room of the host, which may include the framework and these rooms below it.
Room hostRoom(const std::string& name, const std::vector<std::string>& rooms) {
    Room room{.folder = "host/" + name + "/", .may = {"framework/"}};
    for (const std::string& other : rooms)
        room.may.push_back("host/" + other + "/");
    return room;
}

/// In the order of the arrows. Fuzzers, tests, benchmarks and examples may include anything.
const std::vector<Room> kRooms = {
    {.folder = "framework/util/", .may = {}},
    {.folder = "framework/core/", .may = {"framework/util/"}},
    {.folder = "framework/transport/", .may = {"framework/core/"}},
    {.folder = "framework/properties/", .may = {"framework/core/", kMatrix}},
    {.folder = "framework/", .may = {}}, // the umbrella header
    {.folder = "processor/", .may = {}},
    {.folder = "design/", .may = {kMatrix, "processor/"}},
    {.folder = "spectral/", .may = {"processor/"}},
    {.folder = "estimation/", .may = {kMatrix, "design/"}},
    {.folder = "blocks/", .may = {"framework/", "design/", "spectral/", "estimation/"}},
    {.folder = "plugin/", .may = {"framework/", "blocks/"}},
    // As a stranger's plug-in does.
    {.folder = "everyday/", .may = {"framework/", "blocks/Block.h", "plugin/PluginEntry.h"}},
    hostRoom("text", {}),
    hostRoom("plugins", {"text"}),
    hostRoom("description", {"text"}), // a graph is read without any plug-in
    hostRoom("ends", {"text", "plugins", "description"}),
    hostRoom("graph", {"text", "plugins", "description", "ends"}),
    hostRoom("recording", {"text", "plugins", "description", "ends"}),
    hostRoom("inspection", {"text", "plugins", "description", "ends", "recording"}),
    hostRoom("response", {"text", "plugins", "description", "ends", "graph"}),
    hostRoom("run", {"text", "plugins", "description", "ends", "graph", "recording", "response"}),
    hostRoom("live", {"text", "plugins", "description", "ends", "graph", "run"}),
    hostRoom("picture", {"text", "description", "ends", "recording", "inspection", "response"}),
    hostRoom("report", {"text", "plugins", "description", "ends", "graph", "recording", "run", "picture"}),
    hostRoom("control", {"text", "description", "live"}),
    hostRoom("batch", {"text", "plugins", "description", "ends", "recording", "graph"}),
    {.folder = "host/", .may = {"host/"}}, // the umbrella header
    {.folder = "cli/", .may = {"host/"}},
    {.folder = "python/", .may = {"framework/", "host/"}},
};

bool isAllowed(const Room& room, const std::string& included) {
    return included.starts_with(room.folder) ||
           std::any_of(room.may.begin(), room.may.end(), [&](const std::string& allowed) {
               return allowed.ends_with('/') ? included.starts_with(allowed) : included == allowed;
           });
}

std::string complaintAbout(const std::string& path, const std::string& included) {
    const auto room = std::find_if(kRooms.begin(), kRooms.end(),
                                   [&](const Room& candidate) { return path.starts_with(candidate.folder); });
    if (room == kRooms.end()) return "";
    const bool isUmbrella = room->folder == "framework/" || room->folder == "host/";
    if (isUmbrella && path.find('/', room->folder.size()) != std::string::npos)
        return path + " lies in a folder without a row";
    const bool isOfOurs = std::any_of(kRooms.begin(), kRooms.end(), [&](const Room& candidate) {
        return included.starts_with(candidate.folder);
    });
    if (!isOfOurs) return "\"" + included + "\" is not written from the root";
    if (!isAllowed(*room, included)) return room->folder + " may not include \"" + included + "\"";
    return "";
}
} // namespace

std::vector<Finding> checkIncludes(const std::string& path, const std::string& text, bool hasOwnHeader) {
    const std::regex pattern(R"re(^\s*#\s*include\s*(["<])([^">]*)[">])re");
    const std::string ownHeader = path.substr(0, path.rfind('.')) + ".h";
    std::vector<Finding> findings;
    bool isFirst = true;
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        std::smatch match;
        if (!std::regex_search(line, match, pattern)) continue;
        const std::string place = path + ":" + std::to_string(number);
        // An example is a project of its own, so its paths begin in its own folder.
        if (isFirst && hasOwnHeader && !("/" + ownHeader).ends_with("/" + match[2].str()))
            findings.push_back({place, "the first include is not the source's own header"});
        isFirst = false;
        if (match[1] != "\"") continue;
        const std::string complaint = complaintAbout(path, match[2]);
        if (!complaint.empty()) findings.push_back({place, complaint});
    }
    return findings;
}
