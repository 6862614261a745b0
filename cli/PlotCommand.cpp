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

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <deque>
#include <filesystem>
#include <iostream>
#include <memory>
#include <utility>

namespace Cli {

using namespace Quillmere::Host;

namespace {

constexpr const char* kOutputOption = "--output";

ResultOptions optionsOf(bool overwrites) {
    return {.overwrites = overwrites, .looksOwn = getIsPicture};
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
    std::size_t columnsLeftOut = 0;
    for (const CurveTable& table : tables) {
        rows += table.rows;
        columnsLeftOut += table.columnsLeftOut;
    }
    const Picture picture = arrange(std::move(tables), wishes);
    if (!picture.getTimes()) {
        const Complaint complaint({}, "no numbers to draw in " + counted(rows, "row"),
                                  "some, between --start and --end where these are given");
        std::cerr << "quillmere: " << complaint.getText() << "\n";
        return kFailedMidway;
    }
    if (columnsLeftOut > 0 || picture.panelsLeftOut > 0)
        std::cerr << "quillmere: " << counted(columnsLeftOut, "column") << " and "
                  << counted(picture.panelsLeftOut, "panel")
                  << " too many are left out; --columns says which to draw\n";
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
