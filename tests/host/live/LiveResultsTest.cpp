// SPDX-License-Identifier: MIT
// What comes out of a live run, held against what the offline runner makes of the same graph.
#include "tests/host/kit/LiveFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Support::sinkLine;
using Support::sourceLine;

std::string graph(const std::string& blocks, const std::string& connections,
                  const std::string& timeline = "") {
    return "format: 1\nblocks:\n" + blocks + "connections:\n" + connections +
           (timeline.empty() ? "" : "timeline:\n" + timeline);
}

struct GraphRow {
    std::string name;
    std::string text;
    RunLimit limit = {};
};

const std::string kOut = sinkLine("out", "out.csv");
const std::string kIn = sourceLine("in", "in.csv", "p: [x, y], x: x");
/// A ramp from -1 that rises by 0.5 in each round, a round a second.
const std::string kRamp = "  - {id: ramp, type: FilterFunctionGenerator, properties: {Mode: triangular, "
                          "SignalPeriod: 4, SignalAmplitude: 1, SampleRate: 1}}\n";

const GraphRow kOneLayout[] = {
    {.name = "one block",
     .text = graph(kIn + "  - {id: g, type: FilterGain, properties: {Gain: -2}}\n" + kOut,
                   "  - {from: in.p, to: g}\n  - {from: g, to: out.p}\n")},
    {.name = "recordings merged by time",
     .text =
         graph(kIn + sourceLine("slow", "slow.csv", "s: s") + sourceLine("last", "slow.csv", "s: s") + kOut,
               "  - {from: in.x, to: out.x}\n  - {from: slow, to: out.s}\n  - {from: last, to: out.l}\n")},
    {.name = "frames that overlap",
     .text =
         graph("  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, frame: 4, hop: 3, "
               "pins: {p: [x, y]}}}\n"
               "  - {id: fft, type: FilterFFT}\n" +
                   kOut,
               "  - {from: in, to: fft}\n  - {from: fft.out, to: out.p}\n")},
    {.name = "what is left in buffers, the oldest first",
     .text = graph(kIn + "  - {id: three, type: OddThrice}\n  - {id: g, type: FilterGain}\n" + kOut,
                   "  - {from: in.x, to: three}\n  - {from: three, to: g, buffer: 99, order: oldest}\n"
                   "  - {from: g, to: out.x, buffer: 2}\n")},
    {.name = "what is left in buffers, the newest first",
     .text = graph(kIn + "  - {id: three, type: OddThrice}\n" + kOut,
                   "  - {from: in.x, to: three}\n  - {from: three, to: out.x, buffer: 17, order: newest}\n")},
    {.name = "a loop",
     .text = graph(kIn + "  - {id: sum, type: OddSum}\n  - {id: g, type: FilterGain}\n" + kOut,
                   "  - {from: in.x, to: sum.in}\n  - {from: sum, to: g}\n  - {from: g, to: sum.back}\n"
                   "  - {from: sum, to: out.x}\n")},
    {.name = "a loop with a buffer",
     .text = graph(kIn + "  - {id: sum, type: OddSum}\n  - {id: three, type: OddThrice}\n" + kOut,
                   "  - {from: in.x, to: sum.in}\n  - {from: sum, to: three}\n"
                   "  - {from: three, to: sum.back, buffer: 50}\n  - {from: sum, to: out.x}\n")},
    {.name = "a block that sends in each of its steps",
     .text = graph(kIn +
                       "  - {id: hold, type: FilterHysteresis, properties: {HighThreshold: 2.5, "
                       "LowThreshold: 1}}\n" +
                       kOut,
                   "  - {from: in.x, to: hold.input}\n  - {from: hold, to: out.x}\n")},
    {.name = "and a buffer behind it",
     .text = graph(kIn + "  - {id: hold, type: FilterHysteresis}\n" + kOut,
                   "  - {from: in.x, to: hold.input}\n  - {from: hold, to: out.x, buffer: 9}\n")},
    {.name = "blocks without inputs beside a source",
     .text = graph(kIn + "  - {id: gen, type: OddGenerator}\n" + kOut,
                   "  - {from: in.x, to: out.x}\n  - {from: gen, to: out.n}\n")},
    {.name = "columns that come late",
     .text = graph(sourceLine("in", "holes.csv", "a: a, b: [b, c]") + kOut,
                   "  - {from: in.a, to: out.a}\n  - {from: in.b, to: out.b}\n")},
    {.name = "two sinks",
     .text = graph(kIn + kOut + sinkLine("other", "other.csv"),
                   "  - {from: in.x, to: out.x}\n  - {from: in.p, to: other.p}\n")},
    {.name = "no rows",
     .text = graph(sourceLine("in", "empty.csv", "x: x") + kOut, "  - {from: in, to: out.x}\n")},
    {.name = "a timeline",
     .text = graph(kIn +
                       "  - {id: g, type: FilterGain}\n"
                       "  - {id: hold, type: FilterHysteresis, properties: {Impulse: true}}\n" +
                       kOut,
                   "  - {from: in.p, to: g}\n  - {from: g, to: out.p}\n"
                   "  - {from: in.x, to: hold.input}\n  - {from: hold, to: out.h}\n",
                   "  - {at: 0.05, set: {g.Gain: 10}}\n  - {at: 0.1, send: {hold.HighThreshold: 0.5}}\n"
                   "  - {at: 1.25, fire: hold.Reset}\n  - {at: 1.25, set: {g.Gain: -1}}\n"
                   "  - {at: 99, set: {g.Gain: 0}}\n")},
    {.name = "a generator for some rounds",
     .text = graph(kRamp + "  - {id: gen, type: OddGenerator}\n" + kOut,
                   "  - {from: ramp, to: out.x}\n  - {from: gen, to: out.n}\n"),
     .limit = {.rounds = 7, .seconds = {}}},
    {.name = "a generator for some time",
     .text = graph(kRamp + kOut, "  - {from: ramp, to: out.x}\n"),
     .limit = {.rounds = {}, .seconds = 12.5}},
    {.name = "what is left behind a generator",
     .text = graph(kRamp + "  - {id: three, type: OddThrice}\n" + kOut,
                   "  - {from: ramp, to: three}\n  - {from: three, to: out.x, buffer: 9}\n"),
     .limit = {.rounds = 4, .seconds = {}}},
    {.name = "a generator with a timeline",
     .text = graph(kRamp + "  - {id: g, type: FilterGain}\n" + kOut,
                   "  - {from: ramp, to: g}\n  - {from: g, to: out.x}\n",
                   "  - {at: 3, set: {g.Gain: 10}}\n  - {at: 4.5, set: {g.Gain: 100}}\n"),
     .limit = {.rounds = 6, .seconds = {}}},
};

const GraphRow kFailing[] = {
    {.name = "a block that raises",
     .text = graph(kIn + "  - {id: hot, type: OddFailing, properties: {good: 5}}\n" + kOut,
                   "  - {from: in.x, to: hot}\n  - {from: hot, to: out.x}\n")},
    {.name = "a bad row midway",
     .text = graph(sourceLine("in", "bad.csv", "x: x") + kOut, "  - {from: in, to: out.x}\n")},
    {.name = "a bad first row",
     .text = graph(sourceLine("in", "worse.csv", "x: x") + kOut, "  - {from: in, to: out.x}\n")},
    {.name = "a sample that the result has no columns for",
     .text =
         graph(kIn + "  - {id: g, type: OddSettings}\n"
                     "  - {id: out, type: RecordingSink, properties: {file: out.csv, columns: {p: [a]}}}\n",
               "  - {from: in.p, to: g.main in.put}\n  - {from: g.a, to: out.p}\n")},
    {.name = "a setting that the timeline may write no more",
     .text = graph(kIn + "  - {id: odd, type: OddSettings, properties: {unlock: true}}\n" + kOut,
                   "  - {from: in.x, to: odd.main in.put}\n  - {from: odd.a, to: out.x}\n",
                   "  - {at: 0.2, set: {odd.locked: 2}}\n")},
    {.name = "a clock that stands still",
     .text = graph("  - {id: gen, type: OddGenerator}\n" + kOut, "  - {from: gen, to: out.x}\n"),
     .limit = {.rounds = {}, .seconds = 1.0}},
};

class LiveResultsTest : public Support::LiveFixture {
protected:
    LiveResultsTest() {
        std::string text = "t,x,y\n";
        for (int i = 0; i < 60; ++i)
            text += std::to_string(0.05 * i) + "," + std::to_string(3.0 * std::sin(0.4 * i)) + "," +
                    std::to_string(i % 7) + "\n";
        folder.write("in.csv", text);
        folder.write("slow.csv", "t,s\n-1,100\n0.5,200\n0.51,300\n9,400\n");
        folder.write("holes.csv", "t,a,b,c\n0,1,,\n1,2,,\n2,,3,4\n3,5,6,7\n");
        folder.write("empty.csv", "t,x\n");
        folder.write("bad.csv", "t,x\n0,1\n1,2\n2,oops\n3,4\n");
        folder.write("worse.csv", "t,x\n,1\n");
    }

    /// A result, whole or not, and its name; then it is gone.
    std::string takeResult(const std::string& file) const {
        std::string text;
        for (const std::string& name : {file, file + ".partial"}) {
            if (!folder.has(name)) continue;
            text += name + ":\n" + folder.read(name);
            std::filesystem::remove(folder.path(name));
        }
        return text;
    }
    /// Why the run failed, if it did, and all that it left.
    std::string takeOutcome(std::string failure) const {
        failure += "\n" + takeResult("out.csv");
        return failure + takeResult("other.csv");
    }

    void expectTheSame(const GraphRow& row) {
        const std::string wanted = takeOutcome(run(row.text, {}, row.limit));
        EXPECT_NE(wanted.find("out.csv"), std::string::npos) << row.name;
        EXPECT_EQ(takeOutcome(runLive(row.text, {.speed = Support::kUnpaced}, row.limit)), wanted)
            << row.name;
    }
};

TEST_F(LiveResultsTest, UnpacedInOneLayoutTheyAreTheOfflineRunsBytes) {
    for (const GraphRow& row : kOneLayout)
        expectTheSame(row);
}

TEST_F(LiveResultsTest, AFailureLeavesWhatAnOfflineRunLeaves) {
    for (const GraphRow& row : kFailing)
        expectTheSame(row);
}

TEST_F(LiveResultsTest, StatisticsTakeNoPart) {
    const GraphRow& row = kOneLayout[3];
    const std::string wanted = takeOutcome(run(row.text));
    EXPECT_EQ(takeOutcome(runLive(row.text, {.speed = Support::kUnpaced, .countsSteps = false})), wanted);
    for (const LiveStatistics::Block& block : liveRun->getStatistics().blocks)
        EXPECT_EQ(block.steps, 0u) << block.id;
    EXPECT_EQ(linkStatistics("three.in").taken, 60u) << "samples are counted always";
}

using Columns = std::map<std::string, std::vector<std::string>>;

/// Of each column the cells that aren't empty, behind the time of their row or, with `hasTimes` false,
/// without it.
Columns columnsOf(const std::string& table, bool hasTimes) {
    std::istringstream lines(table);
    std::string line;
    std::vector<std::string> names;
    Columns columns;
    const auto cellsOf = [](const std::string& text) {
        std::vector<std::string> cells(1);
        for (const char c : text)
            if (c == ',')
                cells.emplace_back();
            else
                cells.back() += c;
        return cells;
    };
    std::getline(lines, line);
    names = cellsOf(line);
    while (std::getline(lines, line)) {
        const std::vector<std::string> cells = cellsOf(line);
        for (std::size_t i = 1; i < cells.size(); ++i)
            if (!cells[i].empty())
                columns[names.at(i)].push_back((hasTimes ? cells[0] + ": " : "") + cells[i]);
    }
    return columns;
}

/// Two thousand rows through filters in three layouts, with buffers that hold them all.
std::string threeLayouts() {
    const auto filter = [](const std::string& id, const std::string& type, const std::string& layout) {
        return "  - {id: " + id + ", type: " + type + ", layout: " + layout + "}\n";
    };
    return "format: 1\nlayouts: [{id: fast}, {id: second}, {id: third}]\nblocks:\n" +
           sourceLine("in", "long.csv", "p: [x, y], x: x") + filter("g", "FilterGain", "fast") +
           filter("smooth", "FilterButterworth", "second") + filter("band", "FilterBessel", "third") +
           filter("three", "OddThrice", "second") + filter("back", "FilterGain", "fast") +
           filter("inner", "FilterGain", "second") + sinkLine("a", "a.csv", "third") +
           sinkLine("b", "b.csv", "second") + sinkLine("c", "c.csv", "fast") +
           "connections:\n"
           "  - {from: in.p, to: g}\n"
           "  - {from: g, to: smooth.in, buffer: 9000}\n"
           "  - {from: in.x, to: three, buffer: 9000}\n"
           "  - {from: smooth.out, to: inner}\n"
           "  - {from: inner, to: band.in, buffer: 9000}\n"
           "  - {from: band.out, to: a.p}\n"
           "  - {from: three, to: b.x, buffer: 9000}\n"
           "  - {from: three, to: back, buffer: 9000}\n"
           "  - {from: back, to: c.x, buffer: 9000}\n"
           "  - {from: band.out, to: c.p, buffer: 9000}\n";
}

TEST_F(LiveResultsTest, AcrossLayoutsWithBuffersThatHoldAllTheValuesAreThoseOfAnOfflineRun) {
    std::string text = "t,x,y\n";
    for (int i = 0; i < 2000; ++i)
        text +=
            std::to_string(i) + "," + std::to_string(std::sin(0.1 * i)) + "," + std::to_string(i % 11) + "\n";
    folder.write("long.csv", text);
    ASSERT_EQ(run(threeLayouts()), "");
    std::map<std::string, std::string> wanted;
    for (const char* const file : {"a.csv", "b.csv", "c.csv"})
        wanted[file] = folder.read(file);
    EXPECT_EQ(columnsOf(wanted["b.csv"], false).at("x[0]").size(), 6000u);
    ASSERT_EQ(runLive(threeLayouts()), "");
    for (const LiveStatistics::Link& link : liveRun->getStatistics().links)
        EXPECT_EQ(link.lost, 0u) << link.to;
    EXPECT_TRUE(folder.read("a.csv") == wanted["a.csv"]) << "one pin: the rows are the same too";
    // What waited in a buffer has the time of a later round offline.
    for (const auto& [file, table] : wanted)
        EXPECT_TRUE(columnsOf(folder.read(file), false) == columnsOf(table, false)) << file;
}

TEST_F(LiveResultsTest, AControlInputFromAnotherLayoutMakesNoRowOfItsOwn) {
    // What the generator sends has a time of its own: gathered by time, it would be a row beside the round's.
    ASSERT_EQ(
        runLive("format: 1\nlayouts: [{id: one}, {id: two}]\nblocks:\n" + kIn +
                "  - {id: g, type: FilterGain, layout: two}\n  - {id: smooth, type: FilterButterworth}\n"
                "  - {id: gen, type: OddGenerator}\n" +
                kOut +
                "connections: [{from: in.x, to: g}, {from: g, to: smooth.reset}, {from: in.p, to: "
                "smooth.in}, {from: smooth.out, to: out.p}, {from: gen, to: out.n}]\n"),
        "");
    const Columns columns = columnsOf(folder.read("out.csv"), true);
    EXPECT_EQ(columns.at("n[0]").size(), 60u);
    EXPECT_EQ(columns.at("n[0]").at(59), "2.95: 60") << "in the round's row";
    EXPECT_EQ(columns.at("p[0]").size(), 60u);
}

TEST_F(LiveResultsTest, AResultThatGathersFromTwoLayoutsNamesTheTimesOfItsSamples) {
    // `far` comes to the sink from another layout, `near` from its own, which goes on meanwhile.
    ASSERT_EQ(
        runLive("format: 1\nlayouts: [{id: one}, {id: two}]\nblocks:\n" + kIn +
                "  - {id: g, type: FilterGain, layout: two}\n" + kOut +
                "connections: [{from: in.x, to: out.near}, {from: in.x, to: g, buffer: 99}, {from: g, to: "
                "out.far, buffer: 99}]\n"),
        "");
    const Columns columns = columnsOf(folder.read("out.csv"), true);
    EXPECT_EQ(columns.at("near[0]").size(), 60u);
    EXPECT_EQ(columns.at("near[0]"), columns.at("far[0]")) << "the same value at the same time";
    EXPECT_EQ(columns.at("near[0]").at(1), "0.05: 1.168255");
}

} // namespace
