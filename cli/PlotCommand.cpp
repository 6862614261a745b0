// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/PlotNotes.h"
#include "cli/ReadingArguments.h"
#include "cli/RunPicture.h"
#include "cli/RunReport.h"
#include "cli/SideFile.h"
#include "cli/StopSignals.h"
#include "cli/UsageError.h"
#include "host/ends/RecordingException.h"
#include "host/ends/StandardStream.h"
#include "host/picture/RecordingCurves.h"
#include "host/picture/TextPage.h"
#include "host/report/PlotPage.h"
#include "host/report/ReportPage.h"
#include "host/report/SignalCurves.h"
#include "host/text/Counted.h"
#include "host/text/Printable.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <deque>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace Cli {

using namespace Quillmere::Host;

namespace {

constexpr const char* kOutputOption = "--output";
constexpr const char* kPageOption = "--html";

ResultOptions pageOptions(bool overwrites) {
    return {.overwrites = overwrites,
            .looksOwn = [](std::string_view head) { return head.starts_with(ReportPage::beginOfPage()); },
            .isOfGraph = false};
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
    command.add_option(kPageOption, page, "Write a page for a browser; a picture only where --output says.")
        ->type_name("FILE.html");
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
    CurveWishes wishes = arguments.getCurveWishes();
    if (!page.empty()) wishes.mostPieces = SignalCurves::kMostPieces / files.size();
    const PictureWishes drawing = arguments.getPictureWishes(files);
    // A reader that goes away is a failure to write, which is told.
    std::signal(SIGPIPE, SIG_IGN);
    std::deque<Opened> opened; // they point into each other, so they can't move
    std::vector<CurveTable> tables;
    std::vector<PlottedRecording> recordings;
    try {
        if (!open(said, wishes, opened)) return kNothingRun;
        keepInputs();
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
            PlottedRecording& recording = recordings.emplace_back();
            recording.file = one.reader->getPath();
            recording.notes = notesOf(tables.back(), *one.reader);
            for (const std::string& note : recording.notes)
                std::cerr << "quillmere: " << recording.file << ": " << note << "\n";
        }
    } catch (const RecordingException& exception) {
        std::cerr << "quillmere: " << exception.what() << "\n";
        return kFailedMidway;
    }
    return draw(std::move(tables), recordings, drawing);
}

/// Before the recordings are read, which may take long.
void PlotCommand::checkOutput() {
    if (std::count_if(files.begin(), files.end(), getIsStandardStream) > 1)
        throw UsageError({{}, "standard input a second time", "each recording once"});
    if (!page.empty()) checkPage();
    if (output.empty() && (isText || !page.empty())) return;
    if (output.empty()) {
        const std::string stem = getIsStandardStream(files.front())
                                     ? "plot"
                                     : std::filesystem::path(files.front()).stem().string();
        output = stem + ".svg";
    }
    if (isText && getIsStandardStream(output))
        throw UsageError({{kOutputOption}, "standard output, where --text prints", "a file"});
    if (!getIsInput(output)) checkPicture(kOutputOption, output, overwrites);
}

/// Where the picture would replace what is read, the file is looked at first: it may be no recording at all.
void PlotCommand::keepInputs() const {
    for (const std::string& file : files)
        if (!output.empty()) keepFromSideFile(kOutputOption, output, file, "the recording");
}

bool PlotCommand::getIsInput(const std::string& name) const {
    std::error_code error; // of what isn't there, which can't be the same
    return std::any_of(files.begin(), files.end(), [&](const std::string& file) {
        return std::filesystem::equivalent(name, file, error);
    });
}

void PlotCommand::checkPage() const {
    if (!ReportPage::getIsThere())
        throw UsageError({{kPageOption},
                          "a build without reports, whose page is made by node and npm",
                          "one that was configured where both are (scripts/install installs them)"});
    checkPageName(kPageOption, page);
    if (isText && getIsStandardStream(page))
        throw UsageError({{kPageOption}, "standard output, where --text prints", "a file"});
    if (!output.empty()) keepFromOutput(kPageOption, page, output, "the picture");
    if (output.empty() && arguments.getHasSpectra())
        throw UsageError({{"--at"}, "spectra of single times, which a page doesn't draw", "--output, too"});
    checkSideFile(kPageOption, page, pageOptions(overwrites));
    for (const std::string& file : files)
        keepFromSideFile(kPageOption, page, file, "the recording");
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

ExitCode PlotCommand::draw(std::vector<CurveTable> tables, const std::vector<PlottedRecording>& recordings,
                           const PictureWishes& wishes) const {
    std::uint64_t rows = 0;
    for (const CurveTable& table : tables)
        rows += table.rows;
    const Picture picture = arrange(std::move(tables), wishes);
    if (!picture.getTimes()) {
        std::cerr << "quillmere: " << nothingDrawn(picture, wishes, rows).getText() << "\n";
        return kFailedMidway;
    }
    if (const std::string leftOut = picture.getLeftOut(); !leftOut.empty())
        std::cerr << "quillmere: the " << (output.empty() && !isText ? "page" : "picture") << " leaves out "
                  << leftOut << " too many; --columns says which to draw\n";
    for (const std::string& line : missedSpectra(picture, wishes))
        std::cerr << "quillmere: " << line << "\n";
    if (isText) std::cout << pictureAsText(picture, getTextWidth(), getShowsUtf8());
    const auto tell = [&](const std::string& file) {
        std::ostream& report =
            getIsStandardStream(output) || getIsStandardStream(page) ? std::cerr : std::cout;
        report << file << ": " << counted(picture.panels.size(), "panel") << " of " << counted(rows, "row")
               << "\n";
    };
    if (!page.empty()) {
        if (!writeSideFile(page, pageOptions(overwrites), plotPage(picture, recordings, QUILLMERE_VERSION)))
            return kFailedMidway;
        tell(page);
    }
    if (output.empty()) return kDone;
    if (!writePicture(kOutputOption, output, overwrites, picture)) return kFailedMidway;
    tell(output);
    return kDone;
}

} // namespace Cli
