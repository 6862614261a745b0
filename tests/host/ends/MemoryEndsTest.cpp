// SPDX-License-Identifier: MIT
#include "host/ends/MemoryEnds.h"

#include "tests/host/kit/GraphFixture.h"
#include "tests/support/Numbers.h"

#include <cmath>
#include <string>

namespace {

using namespace Quillmere;
using Host::MemoryRecording;
using Host::SampleSeries;
using Support::agree;
using Support::kInf;
using Support::kNaN;
using Support::matrix;
using Support::same;

constexpr const char* kToOut = "connections: [{from: in.x, to: out.x}]\n";

/// Runs graphs over files and over memory.
class MemoryEndsTest : public Support::GraphFixture {
protected:
    MemoryEndsTest() { ends.addTo(catalogue); }

    /// `blocks` lie between a source 'in' and a sink 'out', whose properties or types are these.
    static std::string graph(const std::string& source, const std::string& sink, const std::string& between) {
        return "format: 1\nblocks:\n  - {id: in, type: " + source + "}\n  - {id: out, type: " + sink + "}\n" +
               between;
    }
    /// What a result file holds, as a sink in memory gets it: for each of its rows time and cells.
    Core::MatrixXd readFile(const std::string& file, const std::string& columns) {
        const std::string text =
            graph("RecordingSource, properties: {file: " + file + ", time: t, pins: {x: " + columns + "}}",
                  "MemorySink", kToOut);
        EXPECT_EQ(run(text), "");
        return ends.read("out", "x").samples.getRows();
    }
    /// Holds what a graph makes of `file` against what it makes of the same in memory, each into a file and
    /// into memory.
    void compare(const std::string& fileSource, const std::string& sinkPin, const std::string& columns,
                 const std::string& between) {
        const std::string toFile = "RecordingSink, properties: {file: ";
        ASSERT_EQ(run(graph(fileSource, toFile + "file.csv}", between)), "");
        ASSERT_EQ(run(graph("MemorySource", toFile + "memory.csv}", between)), "");
        const std::string expected = folder.read("file.csv");
        EXPECT_GT(expected.size(), 1000u) << "something to compare";
        EXPECT_TRUE(folder.read("memory.csv") == expected);
        const Core::MatrixXd cells = readFile("file.csv", columns);
        for (const std::string& source : {fileSource, std::string("MemorySource")}) {
            ASSERT_EQ(run(graph(source, "MemorySink", between)), "");
            EXPECT_TRUE(ends.getIsComplete("out"));
            EXPECT_TRUE(agree(ends.read("out", sinkPin).samples.getRows(), cells, same)) << source;
        }
    }

    Host::MemoryEnds ends;
};

/// Six seconds of a tremor at 100 rows a second, as text of so many digits that it reads back to the same
/// bits.
struct Tremor {
    Tremor() : rows(600, 1), times(600) {
        text = "t,g\n";
        for (int i = 0; i < 600; ++i) {
            times[static_cast<std::size_t>(i)] = i / 100.0;
            rows(i) = std::sin(0.377 * i) + 0.25 * std::sin(0.01 * i * i);
            char line[64];
            std::snprintf(line, sizeof line, "%.17g,%.17g\n", i / 100.0, rows(i));
            text += line;
        }
    }
    Core::MatrixXd rows;
    std::vector<double> times;
    std::string text;
};

TEST_F(MemoryEndsTest, ATremorIsTrackedToTheSameBitsAsOverFiles) {
    const Tremor tremor;
    folder.write("wrist.csv", tremor.text);
    ends.setRecording("in", {.pins = {{"roll", SampleSeries::ofRows(tremor.rows)}}, .times = tremor.times});
    compare(
        "RecordingSource, properties: {file: wrist.csv, time: t, pins: {roll: [g]}}", "w", "['w[0]', 'w[1]']",
        "  - {id: band, type: FilterBandPass, properties: {Order: 2, High Cutoff Freq. (relative): 0.24,"
        " Low Cutoff Freq. (relative): 0.06}}\n"
        "  - {id: track, type: FilterWFLC, properties: {Order: 1, Mu: 0.05, Mu0: 0.001, MuB: 0, Wf0: "
        "0.377}}\n"
        "connections: [{from: in.roll, to: band}, {from: band, to: track.Input}, {from: track.AmplWeights,"
        " to: out.w}]\n");
    EXPECT_EQ(ends.read("out", "w").times, tremor.times);
}

TEST_F(MemoryEndsTest, FramesGiveTheSameSpectraAsOverFiles) {
    const Tremor tremor;
    folder.write("wrist.csv", tremor.text);
    MemoryRecording frames{.pins = {{"up", {}}}, .times = std::vector<double>{}};
    for (int begin = 0; begin + 64 <= 600; begin += 16) {
        frames.pins[0].samples.append(tremor.rows.middleRows(begin, 64));
        frames.times->push_back(tremor.times[static_cast<std::size_t>(begin) + 63]);
    }
    ends.setRecording("in", frames);
    std::string columns;
    for (int i = 0; i < 32; ++i)
        columns += (i == 0 ? "['a[" : ", 'a[") + std::to_string(i) + "]'";
    compare("RecordingSource, properties: {file: wrist.csv, time: t, frame: 64, hop: 16, pins: {up: [g]}}",
            "a", columns + "]",
            "  - {id: taper, type: FilterHanningWindow}\n"
            "  - {id: spectrum, type: FilterFFT, properties: {Pause: false}}\n"
            "connections: [{from: in.up, to: taper}, {from: taper, to: spectrum}, {from: spectrum, to: "
            "out.a}]\n");
    EXPECT_EQ(ends.read("out", "a").times, *frames.times);
}

TEST_F(MemoryEndsTest, ARateGivesTheTimesOfAFileByRate) {
    ends.setRecording("in",
                      {.pins = {{"x", SampleSeries::ofRows(matrix({{1}, {2}, {3}, {4}}))}}, .rate = 3.0});
    ASSERT_EQ(run(graph("MemorySource", "MemorySink", kToOut)), "");
    EXPECT_EQ(ends.read("out", "x").times, (std::vector<double>{0.0, 1 / 3.0, 2 / 3.0, 3 / 3.0}));
    ASSERT_EQ(outcome.recordings.size(), 1u);
    EXPECT_EQ(outcome.recordings[0].path, "");
    EXPECT_EQ(outcome.recordings[0].rows, 4u);
    EXPECT_EQ(outcome.recordings[0].account.getLength(), 1.0);
    EXPECT_EQ(outcome.recordings[0].account.medianStep, 1 / 3.0);
    EXPECT_EQ(outcome.results.at(0).path, "");
    EXPECT_EQ(outcome.results.at(0).rows, 4u);
    EXPECT_TRUE(outcome.results.at(0).isComplete);
}

TEST_F(MemoryEndsTest, SeveralSourcesAreMergedByTime) {
    ends.setRecording("in", {.pins = {{"x", SampleSeries::ofRows(matrix({{1}, {2}, {3}}))},
                                      {"pair", SampleSeries::ofRows(matrix({{7, 8}, {9, 10}, {11, 12}}))}},
                             .times = {{0.0, 1.0, 2.0}}});
    ends.setRecording("late",
                      {.pins = {{"y", SampleSeries::ofRows(matrix({{-1}, {-2}}))}}, .times = {{0.5, 1.0}}});
    const auto text = [](const std::string& sink) {
        return graph("MemorySource", sink,
                     "  - {id: late, type: MemorySource}\nconnections:\n  - {from: in.x, to: out.x}\n"
                     "  - {from: late.y, to: out.y}\n  - {from: in.pair, to: out.pair}\n");
    };
    ASSERT_EQ(run(text("MemorySink")), "");
    EXPECT_EQ(ends.getPins("out"), (std::vector<std::string>{"x", "y", "pair"}));
    EXPECT_EQ(ends.read("out", "x").times, (std::vector<double>{0, 1, 2}));
    EXPECT_EQ(ends.read("out", "y").times, (std::vector<double>{0.5, 1}));
    EXPECT_TRUE(agree(ends.read("out", "y").samples.getRows(), matrix({{-1}, {-2}}), same));
    EXPECT_TRUE(agree(ends.read("out", "pair", 1).samples.getRows(), matrix({{9, 10}, {11, 12}}), same));
    EXPECT_EQ(ends.read("out", "x", 2).times, std::vector<double>{2});
    EXPECT_TRUE(ends.read("out", "x", 3).times.empty());
    EXPECT_EQ(outcome.results.at(0).rows, 5u) << "rounds in which anything came";
    ASSERT_EQ(run(text("RecordingSink, properties: {file: out.csv}")), "");
    EXPECT_EQ(folder.read("out.csv"),
              "t,x[0],y[0],pair[0],pair[1]\n0,1,,7,8\n0.5,,-1,,\n1,2,,9,10\n1,,-2,,\n2,3,,11,12\n");
}

TEST_F(MemoryEndsTest, WhatIsNotFiniteComesThroughAndIsTold) {
    ends.setRecording("in",
                      {.pins = {{"x", SampleSeries::ofRows(matrix({{1, -0.0}, {kNaN, kInf}, {-kInf, 2}}))}},
                       .times = {{0.0, 0.5, 1.0}}});
    ASSERT_EQ(run(graph("MemorySource", "MemorySink", kToOut)), "");
    EXPECT_TRUE(
        agree(ends.read("out", "x").samples.getRows(), matrix({{1, -0.0}, {kNaN, kInf}, {-kInf, 2}}), same));
    EXPECT_EQ(warningsOfRun(),
              "g.yaml:3:10: warning: 'in' read 3 values that aren't finite, the first in row 2 "
              "(0.5 s), column 'x[0]'\n"
              "g.yaml:4:10: warning: 'out' holds 3 values that aren't finite, the first in row 2 "
              "(0.5 s), column 'x[0]'\n");
}

TEST_F(MemoryEndsTest, SamplesMayBeEmptyAndChangeTheirShape) {
    const std::vector<Core::MatrixXd> samples{matrix({{1, 2}, {3, 4}}), matrix({}), Core::MatrixXd(0, 3),
                                              matrix({{5}})};
    ends.setRecording("in", {.pins = {{"x", SampleSeries::ofSamples(samples)}}, .rate = 1.0});
    ASSERT_EQ(run(graph("MemorySource", "MemorySink", kToOut)), "");
    const SampleSeries got = ends.read("out", "x").samples;
    ASSERT_EQ(got.getSize(), samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i)
        EXPECT_TRUE(agree(got.getSample(i), samples[i], same)) << i;
}

TEST_F(MemoryEndsTest, NoSamplesAreARunOfNone) {
    ends.setRecording("in", {.pins = {{"x", {}}}, .rate = 10.0});
    ASSERT_EQ(run(graph("MemorySource", "MemorySink", kToOut)), "");
    EXPECT_TRUE(ends.read("out", "x").times.empty());
    EXPECT_TRUE(ends.getIsComplete("out"));
    EXPECT_EQ(
        warningsOfRun(),
        "g.yaml:4:10: warning: 'out' received nothing: 'in' (MemorySource) read 0 rows and sent none\n");
}

TEST_F(MemoryEndsTest, OddTimesAreToldOfTheBlock) {
    ends.setRecording(
        "in", {.pins = {{"x", SampleSeries::ofRows(matrix({{1}, {2}, {3}}))}}, .times = {{0, 1, 0.5}}});
    ASSERT_EQ(run(graph("MemorySource", "MemorySink", kToOut)), "");
    EXPECT_EQ(warningsOfRun(),
              "g.yaml:3:10: warning: 'in': 1 time stamp goes back, in row 3 (from 1 s to 0.5 s)\n");
}

TEST_F(MemoryEndsTest, WhatCannotBeSentIsComplainedOfBeforeTheRun) {
    const SampleSeries two = SampleSeries::ofRows(matrix({{1}, {2}}));
    const std::string in = "g.yaml:3:10: found ";
    const struct {
        MemoryRecording recording;
        std::string complaint;
    } rows[] = {
        {{.pins = {{"x", two}}, .times = {{0}}},
         "1 time for the 2 samples of 'in.x'; expected a time for each sample"},
        {{.pins = {{"x", two}}},
         "samples in memory without a clock for 'in'; expected either times, one for each sample, or a rate"},
        {{.pins = {{"x", two}}, .times = {{0, 1}}, .rate = 1.0},
         "samples in memory with times and a rate for 'in'; expected either times, one for each sample, or a "
         "rate"},
        {{.pins = {{"x", two}}, .rate = 0.0},
         "the rate 0 in memory for 'in'; expected a rate above 0 samples a second"},
        {{.pins = {{"x", two}}, .times = {{0, kNaN}}},
         "the time nan of sample 2 in memory for 'in'; expected a time in seconds"},
        {{.pins = {{"x", two}, {"y", {}}}, .rate = 1.0},
         "0 samples of 'in.y' beside 2 of 'in.x'; expected as many on each pin; what has times of its own is "
         "a "
         "source of its own"},
        {{.pins = {{"x", two}, {"x", two}}, .rate = 1.0},
         "the pin 'x' twice in memory for 'in'; expected each name once"},
    };
    for (const auto& row : rows) {
        ends.setRecording("in", row.recording);
        EXPECT_EQ(complaintsOf(graph("MemorySource", "MemorySink", kToOut)), in + row.complaint + "\n");
    }
}

TEST_F(MemoryEndsTest, ANameThatNothingWasGivenForIsComplainedOf) {
    ends.setRecording("inn", {.pins = {{"x", {}}}, .rate = 1.0});
    EXPECT_EQ(
        complaintsOf(graph("MemorySource", "MemorySink", kToOut)),
        "g.yaml:3:10: found no samples in memory for the MemorySource 'in'; expected the name of what the "
        "program has: inn; did you mean inn?\n");
    ends.setRecording("in", {.pins = {{"x", {}}}, .rate = 1.0});
    EXPECT_EQ(complaintsOf(graph("MemorySource, properties: {file: in.csv}", "MemorySink", kToOut)),
              "g.yaml:3:47: found the property 'file' of MemorySource; expected no properties, since it has "
              "none\n");
}

std::string refusalOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Host::HostException& exception) {
        return exception.what();
    }
    return "nothing";
}

TEST_F(MemoryEndsTest, ASinkOrPinThatIsNotThereIsRefusedByName) {
    EXPECT_EQ(refusalOf([&] { ends.read("out", "x"); }),
              "found the MemorySink 'out', to which no run has begun to send; expected a graph with it whose "
              "run has "
              "begun");
    ends.setRecording("in", {.pins = {{"x", {}}}, .rate = 1.0});
    ASSERT_EQ(run(graph("MemorySource", "MemorySink", kToOut)), "");
    EXPECT_EQ(refusalOf([&] { ends.getPins("oout"); }),
              "found the MemorySink 'oout', to which no run has begun to send; expected one of out; did you "
              "mean out?");
    EXPECT_EQ(refusalOf([&] { ends.read("out", "xx"); }),
              "found the pin 'xx' of the MemorySink 'out'; expected one of x; did you mean x?");
}

TEST_F(MemoryEndsTest, AGraphOutlivesWhatGaveItItsSamples) {
    auto own = std::make_unique<Host::MemoryEnds>();
    own->setRecording("in", {.pins = {{"x", SampleSeries::ofRows(matrix({{1}, {2}}))}}, .rate = 1.0});
    Host::HostCatalogue mine;
    own->addTo(mine);
    const Host::BlockPtr block = mine.create("MemorySource", "in");
    own = nullptr;
    auto& source = dynamic_cast<Host::Source&>(*block);
    ASSERT_TRUE(source.prepare());
    source.release();
    source.process();
    EXPECT_EQ(source.getRows(), 1u);
}

TEST_F(MemoryEndsTest, ARunThatFailsKeepsWhatCame) {
    ends.setRecording("in", {.pins = {{"x", SampleSeries::ofRows(matrix({{1}, {2}, {3}}))}}, .rate = 1.0});
    EXPECT_EQ(run(graph("MemorySource", "MemorySink",
                        "  - {id: f, type: OddFailing, properties: {good: 2}}\n"
                        "connections: [{from: in.x, to: f}, {from: f, to: out.x}]\n"))
                  .substr(0, 9),
              "block 'f'");
    EXPECT_FALSE(ends.getIsComplete("out"));
    EXPECT_TRUE(agree(ends.read("out", "x").samples.getRows(), matrix({{1}, {2}}), same));
}

} // namespace
