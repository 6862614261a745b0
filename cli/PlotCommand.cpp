// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/ReadingArguments.h"
#include "cli/RunReport.h"
#include "cli/SideFile.h"
#include "cli/StopSignals.h"
#include "cli/UsageError.h"
#include "host/ends/RecordingException.h"
#include "host/ends/StandardStream.h"
#include "host/picture/PictureFile.h"
#include "host/picture/RecordingCurves.h"
#include "host/picture/TextPage.h"
#include "host/text/Counted.h"
#include "host/text/Printable.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <utility>

namespace Cli {

using namespace Quillmere::Host;

namespace {

constexpr const char* kOutputOption = "--output";

ResultOptions optionsOf(bool overwrites) {
    return {.overwrites = overwrites, .looksOwn = getIsPicture, .isOfGraph = false};
}

std::string numberText(double number) {
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}

/// Why a picture is empty.
Complaint nothingDrawn(const Picture& picture, const PictureWishes& wishes, std::uint64_t rows) {
    for (const Panel& panel : picture.panels) {
        if (panel.kind != Panel::Kind::Heat || !panel.curves.empty()) continue;
        const std::string unit = panel.rowsUnit.empty() ? "" : " " + panel.rowsUnit;
        return {{"--band"},
                "no column of the spectra between " + numberText(wishes.lowestRow) + " and " +
                    numberText(wishes.highestRow) + unit,
                "a part of 0 to " + numberText(panel.rowsEnd) + unit};
    }
    return {{},
            "no numbers to draw in " + counted(rows, "row"),
            "some, between --start and --end where these are given"};
}

} // namespace

/// A recording that is open, and what is read of it.
struct PlotCommand::Opened {
    InspectionSettings said;
    std::unique_ptr<RecordingReader> reader;
    std::unique_ptr<RecordingCurves> curves;
};

PlotCommand::PlotCommand(CLI::App& command) {
    command.add_option("FILE", files, "Recordings or results; - is standard input.")->required();
    command
        .add_option(kOutputOption, output,
                    "Where the picture goes; without it FILE.svg in this folder; - is standard output.")
        ->type_name("FILE.svg|FILE.png");
    command.add_flag("--text", isText, "Print the curves as text; a picture only where --output says.");
    arguments.enter(command);
    command
        .add_option("--set", settings,
                    "Say how to read the files, by a setting of RecordingSource: time, rate and the like.")
        ->type_name("PROPERTY=VALUE")
        ->allow_extra_args(false);
    command.add_flag("--overwrite", overwrites, "Let the picture replace a file that is none of these.");
}

ExitCode PlotCommand::run() {
    checkOutput();
    const StopSignals signals;
    InspectionSettings said = readingSettingsOf(settings);
    said.wishes.stop = signals.getToken();
    const CurveWishes wishes = arguments.getCurveWishes();
    const PictureWishes page = arguments.getPictureWishes(files);
    // A reader that goes away is a failure to write, which is told.
    std::signal(SIGPIPE, SIG_IGN);
    std::deque<Opened> opened; // they point into each other, so they can't move
    std::vector<CurveTable> tables;
    try {
        if (!open(said, wishes, opened)) return kNothingRun;
    } catch (const InterruptedException& exception) {
        std::cerr << "quillmere: " << exception.what() << "\n";
        return kFailedMidway;
    } catch (const RecordingException& exception) {
        std::cerr << "quillmere: " << exception.what() << "\n";
        return kNothingRun;
    }
    try {
        for (const Opened& one : opened) {
            ProgressLine progress(ProgressLine::Clock::now(), false);
            const auto tell = [&](const InspectionProgress& now) {
                progress.show({.rows = now.rows, .bytesRead = now.bytesRead, .bytes = now.bytes});
            };
            const bool shows = ::isatty(STDERR_FILENO) != 0;
            tables.push_back(shows ? one.curves->read(said.wishes.stop, tell)
                                   : one.curves->read(said.wishes.stop));
            progress.clear();
            for (const std::string& note : one.reader->getNotes())
                std::cerr << "quillmere: " << one.reader->getPath() << ": " << note << "\n";
        }
    } catch (const RecordingException& exception) {
        std::cerr << "quillmere: " << exception.what() << "\n";
        return kFailedMidway;
    }
    return draw(std::move(tables), page);
}

/// Before the recordings are read, which may take long.
void PlotCommand::checkOutput() {
    if (std::count_if(files.begin(), files.end(), getIsStandardStream) > 1)
        throw UsageError({{}, "standard input a second time", "each recording once"});
    if (output.empty() && isText) return;
    if (output.empty()) {
        const std::string stem = getIsStandardStream(files.front())
                                     ? "plot"
                                     : std::filesystem::path(files.front()).stem().string();
        output = stem + ".svg";
    }
    if (isText && getIsStandardStream(output))
        throw UsageError({{kOutputOption}, "standard output, where --text prints", "a file"});
    Complaints complaints;
    pictureFormOf(output, {kOutputOption}, complaints);
    if (!complaints.isEmpty()) throw UsageError(complaints.getSorted().front());
    checkSideFile(kOutputOption, output, optionsOf(overwrites));
    for (const std::string& file : files)
        keepFromSideFile(kOutputOption, output, file, "the recording");
}

/// False, with a message, where a file has to be explained.
bool PlotCommand::open(const InspectionSettings& said, const CurveWishes& wishes,
                       std::deque<Opened>& opened) const {
    for (const std::string& file : files) {
        Opened& one = opened.emplace_back();
        one.said = said;
        one.reader = openToDraw(file, one.said);
        if (one.reader == nullptr) return false;
        one.curves = std::make_unique<RecordingCurves>(*one.reader, one.said, wishes);
        const std::optional<std::size_t> time = one.curves->getClock().column;
        // Nobody has said so, and a table has its times first as a rule.
        if (time.value_or(0) > 0 && said.wishes.time.empty() && wishes.across.empty() &&
            !one.reader->getHasOwnTimes())
            std::cerr << "quillmere: " << file << ": the column '"
                      << printable(one.reader->getColumns()[*time].name, kLongestName)
                      << "': taken for the time; '--set time=NAME' says another\n";
    }
    std::vector<std::string> known;
    for (const Opened& one : opened)
        known.insert(known.end(), one.curves->getNames().begin(), one.curves->getNames().end());
    if (known.empty())
        throw UsageError({{files.front()}, "no column of numbers", "a recording, or a result of a run"});
    arguments.checkNames(known);
    return true;
}

ExitCode PlotCommand::draw(std::vector<CurveTable> tables, const PictureWishes& wishes) const {
    std::uint64_t rows = 0;
    for (const CurveTable& table : tables)
        rows += table.rows;
    const Picture picture = arrange(std::move(tables), wishes);
    if (!picture.getTimes()) {
        std::cerr << "quillmere: " << nothingDrawn(picture, wishes, rows).getText() << "\n";
        return kFailedMidway;
    }
    if (const std::string leftOut = picture.getLeftOut(); !leftOut.empty())
        std::cerr << "quillmere: the picture leaves out " << leftOut
                  << " too many; --columns says which to draw\n";
    if (isText) std::cout << pictureAsText(picture, getTextWidth(), getShowsUtf8());
    if (output.empty()) return kDone;
    Complaints complaints;
    const auto form = pictureFormOf(output, {kOutputOption}, complaints);
    if (!writeSideFile(output, optionsOf(overwrites), drawPicture(picture, *form))) return kFailedMidway;
    std::ostream& report = getIsStandardStream(output) ? std::cerr : std::cout;
    report << output << ": " << counted(picture.panels.size(), "panel") << " of " << counted(rows, "row")
           << "\n";
    return kDone;
}

} // namespace Cli
