// SPDX-License-Identifier: MIT
#include "host/run/SourceWarnings.h"

#include "host/text/Counted.h"
#include "host/graph/FirstRows.h"
#include "host/graph/BlockDescription.h"
#include "host/ends/StandardStream.h"
#include "host/text/ShortestText.h"

#include <cstdint>

namespace Quillmere::Host {

namespace {
using Spot = SourceAccount::Spot;

std::string placeText(const Spot& spot) {
    return spot.line == 0 ? "in row " + std::to_string(spot.row) : "in line " + std::to_string(spot.line);
}

/// `3 time stamps go back, the first in line 512 (from 5.12 s to 5.11 s)`; `does` is the verb for one and for
/// several.
std::string timesText(const SourceAccount::Finding& finding, const char* doesOne, const char* doSeveral) {
    const Spot& spot = finding.first;
    const bool isOne = finding.count == 1;
    return counted(finding.count, "time stamp") + " " + (isOne ? doesOne : doSeveral) + ", " +
           (isOne ? "" : "the first ") + placeText(spot) + " (from " + shortestText(spot.before) + " s to " +
           shortestText(spot.time) + " s)";
}

/// A hint at a stamp that leaves out rows which may be right. One row that it leaves out is none: it may as
/// well be that row.
std::string wildText(const SourceAccount::Finding& wildest) {
    if (wildest.count < 2) return "";
    return "; of these " + counted(wildest.count, "row") + " behind the " + shortestText(wildest.first.time) +
           " s " + placeText(wildest.first) + ", which may be the wrong time stamp itself";
}

/// What was done about times since the graph asks for it.
std::vector<std::string> repairTexts(const SourceAccount::TimeRepairs& repairs) {
    std::vector<std::string> texts;
    const auto leftOut = [](const SourceAccount::Finding& finding) {
        return finding.count == 1 ? "; its row is left out" : "; their rows are left out";
    };
    if (repairs.backward.count > 0)
        texts.push_back(timesText(repairs.backward, "goes back", "go back") + leftOut(repairs.backward) +
                        wildText(repairs.wildest));
    if (repairs.behindEnd.count > 0)
        texts.push_back(timesText(repairs.behindEnd, "is behind 'end' while the next isn't",
                                  "are behind 'end' while the next aren't") +
                        leftOut(repairs.behindEnd));
    if (repairs.duplicates.count > 0)
        texts.push_back(timesText(repairs.duplicates, "repeats the one before", "repeat the one before") +
                        leftOut(repairs.duplicates));
    if (repairs.gaps.count == 0) return texts;
    const std::string limit = shortestText(repairs.gapLimit);
    std::string text = timesText(repairs.gaps, ("jumps by more than " + limit + " s").c_str(),
                                 ("jump by more than " + limit + " s").c_str());
    if (repairs.rowsFilled > 0)
        text += "; " + counted(repairs.rowsFilled, "row") + (repairs.rowsFilled == 1 ? " fills " : " fill ") +
                (repairs.gaps.count == 1 ? "it with " : "them with ") +
                (repairs.isHeld ? "the values before" : "nan");
    if (repairs.gapsLeft > 0)
        text += "; " + counted(repairs.gapsLeft, "gap") +
                " stayed, since the rows in front don't tell what is missing";
    texts.push_back(std::move(text));
    return texts;
}

/// What is wrong with rows, with the first places of it.
std::string faultsText(const SourceAccount& account) {
    std::vector<std::string> parts;
    if (account.skippedRows > 0) parts.push_back(counted(account.skippedRows, "bad row") + " skipped");
    if (account.mendedRows > 0)
        parts.push_back(counted(account.mendedRows, "bad row") + " taken with nan in place of bad cells");
    if (account.isCutEndDropped) parts.emplace_back("the last line, which is cut, left out");
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : ", ") + part;
    if (text.empty() || account.firstFaults.empty()) return text;
    text += ": ";
    for (const std::string& fault : account.firstFaults)
        text += (&fault == &account.firstFaults.front() ? "" : "; ") + fault;
    return text;
}
} // namespace

std::vector<Warning> warningsOf(const std::string& path, const SourceAccount& account) {
    const Place place{getIsStandardStream(path) ? "standard input" : path, 0, 0};
    std::vector<Warning> warnings;
    const auto warn = [&](const std::string& text) { warnings.push_back({place, text}); };
    if (const std::string faults = faultsText(account); !faults.empty()) warn(faults);
    for (const std::string& text : repairTexts(account.repairs))
        warn(text);
    if (account.rows == 0 && account.repairs.earlyRows > 0)
        warn("none of its rows counts by 'start' and 'end', the last that was read being that of " +
             shortestText(account.repairs.lastSeen) + " s");
    if (account.isChangedMeanwhile) warn("the file was written to while it was read");
    if (account.backward.count > 0) warn(timesText(account.backward, "goes back", "go back"));
    if (account.equal.count > 0)
        warn(timesText(account.equal, "repeats the one before", "repeat the one before"));
    if (account.jumps.count > 0)
        warn(timesText(account.jumps, "jumps by more than ten median steps",
                       "jump by more than ten median steps"));
    if (account.otherUnit) warn(otherUnitText(account));
    if (account.otherClock && getIsStandardStream(path)) // of a file it was told before the run
        warn("the column '" + account.otherClock->column + "' looks like a clock of about " +
             shortestText(account.otherClock->rate) +
             " rows a second, which isn't the rate that the graph gives");
    return warnings;
}

} // namespace Quillmere::Host
