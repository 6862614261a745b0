// SPDX-License-Identifier: MIT
#include "cli/PlotArguments.h"

#include "cli/GraphArguments.h"
#include "cli/UsageError.h"
#include "host/description/ValueReader.h"
#include "host/ends/StandardStream.h"
#include "host/recording/UnitText.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <optional>
#include <utility>

namespace Cli {

using namespace Quillmere::Host;

namespace {

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const std::size_t comma = std::min(text.find(',', begin), text.size());
        if (comma > begin) parts.push_back(text.substr(begin, comma - begin));
        begin = comma + 1;
    }
    return parts;
}

/// A finite number at the front of a text, and what stands behind it, without the spaces between.
std::optional<std::pair<double, std::string>> numberAndRest(const std::string& text) {
    double number = 0.0;
    const char* const end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || !std::isfinite(number)) return std::nullopt;
    std::string rest(behind, end);
    rest.erase(0, std::min(rest.find_first_not_of(' '), rest.size()));
    return std::pair(number, std::move(rest));
}

[[noreturn]] void refuse(const std::string& option, const std::string& text, const std::string& expected) {
    throw UsageError({{option}, "'" + printable(text, kLongestName) + "'", expected});
}

std::vector<std::string> bareNames(std::vector<std::string> names) {
    for (std::string& name : names)
        if (std::string bare = nameWithoutUnit(name); !bare.empty()) name = std::move(bare);
    return names;
}

void takeCut(CurveWishes& wishes, const std::string& name, const std::string& text, Complaints& complaints) {
    if (text.empty()) return;
    GraphDescription::Setting setting;
    setting.name = name;
    setting.where = {"--" + name};
    if (auto value = readValueText(text, "--" + name, false, complaints)) {
        setting.value = std::move(*value);
        wishes.takeCut(setting, complaints);
    }
}

std::string fileNameOf(const std::string& path) {
    return getIsStandardStream(path) ? "standard input" : std::filesystem::path(path).filename().string();
}

} // namespace

void PlotArguments::enter(CLI::App& command) {
    const auto enter = [&](const char* name, auto& value, const char* form, const char* meaning) {
        command.add_option(name, value, meaning)->type_name(form)->allow_extra_args(false);
    };
    enter("--columns", columns, "NAME,...", "Draw these columns only: names, or patterns as in 'acc*'.");
    enter("--panel", panels, "NAME,...", "Put these columns into one panel, whatever file they are of.");
    enter("--start", start, "TIME", "Draw from there on: seconds, as 12.5, 2 min or 1:30, or a moment.");
    enter("--end", end, "TIME", "Draw what is before that.");
    enter("--x", across, "COLUMN", "Draw over this column instead of the times.");
    enter("--scale", scales, "COLUMN=FACTOR [UNIT]", "Multiply a column, and say the unit that it has then.");
    enter("--at", spectraAt, "TIME,...", "Draw spectra of these times, in seconds, beside their heat map.");
    enter("--apart", rowsApart, "NUMBER [UNIT]", "The columns of a spectrum are so far apart, as '0.5 Hz'.");
    enter("--band", band, "LOW,HIGH", "Of spectra draw what is between these, in the unit of --apart.");
    enter("--title", title, "TEXT", "What stands above the picture.");
}

CurveWishes PlotArguments::getCurveWishes() const {
    CurveWishes wishes;
    for (const std::vector<std::string>* const lists : {&columns, &panels})
        for (const std::string& list : *lists)
            for (std::string& name : split(list))
                wishes.columns.push_back(std::move(name));
    wishes.across = across;
    for (const std::string& text : scales) {
        const auto [column, scale] = splitSetting(text, "--scale", "COLUMN=FACTOR");
        auto factor = numberAndRest(scale);
        if (!factor) refuse("--scale", text, "a column, = and a number, as in 'w=15.9 Hz'");
        CurveWishes::Scale& taken = wishes.scales.emplace_back();
        taken.column = column;
        taken.factor = factor->first;
        taken.unit = std::move(factor->second);
    }
    Complaints complaints;
    takeCut(wishes, "start", start, complaints);
    takeCut(wishes, "end", end, complaints);
    wishes.finish(complaints);
    complaints.raise();
    return wishes;
}

PictureWishes PlotArguments::getPictureWishes(const std::vector<std::string>& files) const {
    PictureWishes wishes;
    wishes.title = title;
    for (const std::string& file : title.empty() ? files : std::vector<std::string>())
        wishes.title += (wishes.title.empty() ? "" : ", ") + fileNameOf(file);
    for (const std::string& panel : panels)
        wishes.panels.push_back(split(panel));
    for (const std::string& text : split(spectraAt)) {
        const auto time = numberAndRest(text);
        if (!time || !(time->second.empty() || time->second == "s"))
            refuse("--at", text, "seconds, as in 2.5");
        wishes.spectraAt.push_back(time->first);
    }
    if (!band.empty()) {
        const std::vector<std::string> ends = split(band);
        const auto low = ends.size() == 2 ? numberAndRest(ends[0]) : std::nullopt;
        const auto high = ends.size() == 2 ? numberAndRest(ends[1]) : std::nullopt;
        if (!low || !high) refuse("--band", band, "two numbers, as in 1,15");
        if (!(low->first < high->first)) refuse("--band", band, "the lower number first, as in 1,15");
        wishes.lowestRow = low->first;
        wishes.highestRow = high->first;
    }
    if (rowsApart.empty()) return wishes;
    auto apart = numberAndRest(rowsApart);
    if (!apart || !(apart->first > 0.0)) refuse("--apart", rowsApart, "a number above 0, as in '0.5 Hz'");
    wishes.rowsApart = apart->first;
    wishes.rowsUnit = std::move(apart->second);
    return wishes;
}

/// A name counts where one of the files has such a column.
void PlotArguments::checkNames(const std::vector<std::string>& known) const {
    Complaints complaints;
    const auto check = [&](const std::string& option, const std::string& wish) {
        const bool isThere = std::any_of(known.begin(), known.end(),
                                         [&](const std::string& name) { return getMeansColumn(wish, name); });
        if (!isThere)
            refuseName(complaints, {option}, wish, "the column '" + printable(wish, kLongestName) + "'",
                       "one of ", [&] { return bareNames(known); });
    };
    for (const std::string& list : columns)
        for (const std::string& name : split(list))
            check("--columns", name);
    for (const std::string& list : panels)
        for (const std::string& name : split(list))
            check("--panel", name);
    for (const std::string& scale : scales)
        check("--scale", splitSetting(scale, "--scale", "COLUMN=FACTOR").first);
    if (!across.empty()) check("--x", across);
    complaints.raise();
}

} // namespace Cli
