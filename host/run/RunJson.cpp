// SPDX-License-Identifier: MIT
#include "host/run/RunJson.h"

#include "host/text/ComplaintJson.h"

#include <string>

namespace Quillmere::Host::Json {

namespace {
constexpr const char* kSummary = "run summary";
constexpr const char* kVersion = "1"; // another one when a member changes its meaning or goes

Text count(std::uint64_t number) {
    return std::to_string(number);
}

Text wordsOrNull(const std::string& words) {
    return words.empty() ? null() : text(words);
}

Text numberOrNull(const std::optional<double>& value) {
    return value ? number(*value) : null();
}

Text spot(const std::optional<RunOutcome::Spot>& spot) {
    if (!spot) return null();
    return object({{"block", text(spot->block)}, {"type", text(spot->type)}, {"time", number(spot->time)}});
}

/// Of time stamps that are odd.
Text finding(const SourceAccount::Finding& finding) {
    if (finding.count == 0) return object({{"count", "0"}});
    const SourceAccount::Spot& first = finding.first;
    return object({{"count", count(finding.count)},
                   {"firstRow", count(first.row)},
                   {"firstLine", first.line == 0 ? null() : count(first.line)},
                   {"before", number(first.before)},
                   {"time", number(first.time)}});
}

Text repairs(const SourceAccount& account) {
    return object({{"skippedRows", count(account.skippedRows)},
                   {"mendedRows", count(account.mendedRows)},
                   {"missingCells", count(account.missingCells)},
                   {"cutEndDropped", flag(account.isCutEndDropped)},
                   {"firstFaults", listOfTexts(account.firstFaults)}});
}

/// What was left out, filled and resampled.
Text timeRepairs(const SourceAccount::TimeRepairs& repairs) {
    return object({{"repeated", finding(repairs.duplicates)},
                   {"backward", finding(repairs.backward)},
                   {"behindEnd", finding(repairs.behindEnd)},
                   {"gaps", finding(repairs.gaps)},
                   {"rowsFilled", count(repairs.rowsFilled)},
                   {"gapsLeft", count(repairs.gapsLeft)},
                   {"earlyRows", count(repairs.earlyRows)},
                   {"resampledRate", numberOrNull(repairs.resampledRate)},
                   {"resampledRows", count(repairs.resampledRows)}});
}

Text source(const RunOutcome::Recording& recording) {
    const SourceAccount& account = recording.account;
    const bool hasTimes = account.rows > 0;
    return object({{"id", text(recording.id)},
                   {"file", wordsOrNull(recording.path)},
                   {"rows", count(recording.rows)},
                   {"processedRows", count(recording.processedRows)},
                   {"firstTime", hasTimes ? number(account.firstTime) : null()},
                   {"lastTime", hasTimes ? number(account.lastTime) : null()},
                   {"medianRate", numberOrNull(account.getMedianRate())},
                   {"origin", wordsOrNull(account.origin)},
                   {"notes", listOfTexts(account.notes)},
                   {"repairs", repairs(account)},
                   {"timeRepairs", timeRepairs(account.repairs)},
                   {"timesBackward", finding(account.backward)},
                   {"timesEqual", finding(account.equal)},
                   {"timesJumping", finding(account.jumps)},
                   {"changedMeanwhile", flag(account.isChangedMeanwhile)},
                   {"nonFiniteValues", count(recording.nonFiniteValues)}});
}

Text nonFinite(const ResultAccount& account) {
    if (account.nonFiniteValues == 0) return object({{"values", "0"}});
    return object({{"values", count(account.nonFiniteValues)},
                   {"firstTime", number(account.firstTime)},
                   {"firstRow", count(account.firstRow)},
                   {"firstColumn", text(account.firstColumn)}});
}

Text sink(const RunOutcome::Result& result) {
    return object({{"id", text(result.id)},
                   {"file", wordsOrNull(result.path)},
                   {"where", wordsOrNull(result.getWhere())},
                   {"complete", flag(result.isComplete)},
                   {"rows", count(result.rows)},
                   {"nonFinite", nonFinite(result.account)},
                   {"silentPins", listOfTexts(result.silentPins)}});
}

Text link(const RunOutcome::Link& link) {
    Members members{{"from", wordsOrNull(link.from)},
                    {"to", text(link.to)},
                    {"received", count(link.received)},
                    {"taken", count(link.taken)},
                    {"lost", count(link.lost)}};
    for (const auto& member : place(link.where))
        members.push_back(member);
    return object(members);
}

Text conversion(const RateConversion& conversion) {
    return object({{"target", text(conversion.target)},
                   {"written", text(conversion.written)},
                   {"number", number(conversion.number)},
                   {"rate", text(conversion.rate)},
                   {"at", numberOrNull(conversion.at)},
                   {"sentence", text(conversion.getText())}});
}

std::string sentenceOf(const RunOutcome::Change& change) {
    std::string sentence = change.isCommand ? "fires " : "sets ";
    sentence += change.target;
    if (!change.isCommand) sentence.append(" to ").append(change.value);
    return sentence;
}

Text change(const RunOutcome::Change& change) {
    return object({{"time", numberOrNull(change.time)},
                   {"target", text(change.target)},
                   {"value", change.isCommand ? null() : text(change.value)},
                   {"sentence", text(sentenceOf(change))}});
}

Text note(const RunOutcome::Note& note) {
    return object({{"block", text(note.block)}, {"text", text(note.text)}});
}

template <class Things, class Write>
Text listOf(const Things& things, Write write) {
    std::vector<Text> texts;
    for (const auto& thing : things)
        texts.push_back(write(thing));
    return list(texts);
}

const char* stateOf(const RunOutcome& outcome) {
    if (!outcome.hasBegun) return "refused";
    return outcome.getIsWhole() ? "whole" : "failed";
}
} // namespace

Text check(const Job& job, const Complaints& complaints) {
    const GraphDescription& description = job.getDescription();
    const std::vector<std::string> piped = job.getPipedSources();
    return object({{"document", text("check")},
                   {"format", kVersion},
                   {"graph", text(description.getName())},
                   {"graphFile", wordsOrNull(description.path)},
                   {"ready", flag(!complaints.getIsRefusal(job.getOptions().isStrict))},
                   {"blocks", count(description.blocks.size())},
                   {"connections", count(description.connections.size())},
                   {"leftUnread", listOfTexts(piped)},
                   {"conversions", listOf(job.getGraph().getConversions(), conversion)},
                   {"complaints", Json::complaints(complaints.getSorted())},
                   {"moreComplaints", count(complaints.getMore())},
                   {"warnings", warnings(complaints.getSortedWarnings())},
                   {"moreWarnings", count(complaints.getMoreWarnings())}});
}

Text outcome(const RunOutcome& outcome) {
    return object({{"document", text(kSummary)},
                   {"format", kVersion},
                   {"graph", text(outcome.graph)},
                   {"graphFile", wordsOrNull(outcome.graphFile)},
                   {"state", text(stateOf(outcome))},
                   {"interrupted", flag(outcome.isInterrupted)},
                   {"failure", wordsOrNull(outcome.failure)},
                   {"failedBlock", spot(outcome.failedBlock)},
                   {"complaints", complaints(outcome.complaints)},
                   {"rounds", count(outcome.progress.rounds)},
                   {"rows", count(outcome.progress.rows)},
                   {"streamTime", number(outcome.progress.streamTime)},
                   {"seconds", number(outcome.seconds)},
                   {"sources", listOf(outcome.recordings, source)},
                   {"sinks", listOf(outcome.results, sink)},
                   {"links", listOf(outcome.links, link)},
                   {"firstNonFinite", spot(outcome.firstMaker)},
                   {"conversions", listOf(outcome.conversions, conversion)},
                   {"changes", listOf(outcome.changes, change)},
                   {"changesLeftOut", count(outcome.changesLeftOut)},
                   {"notes", listOf(outcome.notes, note)},
                   {"doubts", warnings(outcome.doubts)},
                   {"warnings", warnings(outcome.warnings)}});
}

Text beginOfOutcome() {
    return "{\n  \"document\": " + text(kSummary) + ",\n";
}

} // namespace Quillmere::Host::Json
