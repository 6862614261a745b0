// SPDX-License-Identifier: MIT
#include "host/graph/Timeline.h"

#include "host/recording/CsvReader.h"
#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Quillmere::Host;

/// The fixture's recording has x = 1, 2, 3 at 0, 0.5 and 1 seconds.
class TimelineTest : public Support::GraphFixture {
protected:
    /// A graph of source, the given block `b` and sink; the timeline begins in line 9.
    static std::string graph(const std::string& block, const std::string& input, const std::string& output,
                             const std::string& timeline) {
        return "format: 1\nparameters: {when: 0.5}\nblocks:\n"
               "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
               "  - {id: b, " +
               block +
               "}\n"
               "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
               "connections: [{from: in, to: \"b." +
               input + "\"}, {from: \"b." + output + "\", to: out.y}]\ntimeline:\n" + timeline;
    }
    static std::string gain(const std::string& timeline) {
        return graph("type: FilterGain", "input", "output", timeline);
    }
    std::string result(const std::string& text) {
        const std::string failure = run(text);
        return failure.empty() ? folder.read("out.csv") : failure;
    }
};

struct RunRow {
    const char* name;
    const char* timeline;
    const char* gains; ///< What the three samples are multiplied by.
};

TEST_F(TimelineTest, AnEntryAppliesBeforeTheFirstSampleAtOrAfterItsTime) {
    const RunRow rows[] = {
        {.name = "at a sample's time", .timeline = "  - {at: 0.5, set: {b.Gain: 10}}\n", .gains = "1 20 30"},
        {.name = "between samples", .timeline = "  - {at: 0.25, set: {b.Gain: 10}}\n", .gains = "1 20 30"},
        {.name = "just behind a sample",
         .timeline = "  - {at: 0.50001, set: {b.Gain: 10}}\n",
         .gains = "1 2 30"},
        {.name = "before all", .timeline = "  - {at: -7, set: {b.Gain: 10}}\n", .gains = "10 20 30"},
        {.name = "behind all", .timeline = "  - {at: 1.5, set: {b.Gain: 10}}\n", .gains = "1 2 3"},
        {.name = "two between samples, by time and not as written",
         .timeline = "  - {at: 0.4, set: {b.Gain: 10}}\n  - {at: 0.3, set: {b.Gain: 100}}\n",
         .gains = "1 20 30"},
        {.name = "two of one time, as written",
         .timeline = "  - {at: 0.5, set: {b.Gain: 10}}\n  - {at: 0.5, set: {b.Gain: 100}}\n",
         .gains = "1 200 300"},
        {.name = "there and back",
         .timeline = "  - {at: 0.5, set: {b.Gain: 10}}\n  - {at: 0.75, set: {b.Gain: -1}}\n",
         .gains = "1 20 -3"},
        {.name = "a parameter",
         .timeline = "  - {at: \"${when}\", set: {b.Gain: \"${when}\"}}\n",
         .gains = "1 1 1.5"},
        {.name = "no entries", .timeline = "  []\n", .gains = "1 2 3"},
    };
    for (const RunRow& row : rows) {
        std::string wanted = "t,y[0]\n0,";
        for (const char* c = row.gains; *c != '\0'; ++c)
            wanted += *c;
        const std::size_t first = wanted.find(' ');
        wanted.replace(first, 1, "\n0.5,");
        wanted.replace(wanted.find(' '), 1, "\n1,");
        EXPECT_EQ(result(gain(row.timeline)), wanted + "\n") << row.name;
    }
}

TEST_F(TimelineTest, OneRunIsLikeTheOther) {
    const std::string text = gain("  - {at: 0.5, set: {b.Gain: 0.3}}\n");
    const std::string first = result(text);
    EXPECT_EQ(result(text), first);
    EXPECT_EQ(first, "t,y[0]\n0,1\n0.5,0.6\n1,0.8999999999999999\n");
}

TEST_F(TimelineTest, SettingsOfEveryKindAreWrittenAsAmongProperties) {
    EXPECT_EQ(
        result(graph("type: FilterThreshold, properties: {Threshold: 2.5}", "Input", "Output",
                     "  - {at: 0.5, set: {b.Mode: Low Level}}\n  - {at: 1, set: {b.Threshold: 3.5}}\n")),
        "t,y[0]\n0,0\n0.5,1\n1,1\n");
    EXPECT_EQ(result(graph("type: FilterThresholdLeveler, properties: {Levels: [[7]]}", "In", "Level",
                           "  - at: 0.5\n    set:\n      b.Levels: [[8]]\n      b.Thresholds: [[2, 3]]\n")),
              "t,y[0]\n0,7\n0.5,8\n1,8\n");
}

TEST_F(TimelineTest, CommandsAreFired) {
    EXPECT_EQ(result(graph("type: FilterDerivate", "Input", "Output", "  - {at: 1, fire: b.Reset}\n")),
              "t,y[0]\n0,0\n0.5,1\n1,0\n");
    EXPECT_EQ(
        result(graph("type: FilterDerivate", "Input", "Output", "  - {at: 0.5, fire: [b.Reset, b.Reset]}\n")),
        "t,y[0]\n0,0\n0.5,0\n1,1\n");
}

TEST_F(TimelineTest, APeriodCounterRunsFromAFile) {
    folder.write("in.csv", "t,x\n0,-1\n1,1\n2,-1\n3,1\n4,-1\n5,1\n6,-1\n7,1\n8,-1\n");
    EXPECT_EQ(result(graph("type: FilterPeriodCounter, properties: {Nb Period: 1}", "in", "Is Counting",
                           "  - {at: 2, fire: b.Reset}\n")),
              "t,y[0]\n0,0\n1,0\n2,0\n3,1\n4,1\n5,1\n6,0\n7,0\n8,0\n");
}

TEST_F(TimelineTest, ValuesAreSentToInputs) {
    EXPECT_EQ(result(graph(
                  "type: FilterHysteresis", "input", "output",
                  "  - {at: 0.5, send: {b.HighThreshold: 1.5}}\n  - {at: 1, send: {b.Reset: [[0, 1]]}}\n")),
              "t,y[0]\n0,0\n0.5,1\n1,0\n");
    EXPECT_EQ(result(graph("type: FilterDiscarder, properties: {Samples: 1}", "in", "out",
                           "  - {at: 1, send: {b.reset: 1}}\n")),
              "t,y[0]\n0.5,2\n")
        << "an input that blocks holds nothing up here";
}

TEST_F(TimelineTest, OfTwoValuesBeforeOneSampleTheLastCounts) {
    EXPECT_EQ(result(graph(
                  "type: FilterHysteresis", "input", "output",
                  "  - {at: 0.1, send: {b.HighThreshold: 0}}\n  - {at: 0.2, send: {b.HighThreshold: 9}}\n")),
              "t,y[0]\n0,0\n0.5,0\n1,0\n");
}

TEST_F(TimelineTest, AMainInputMayLiveOnTheTimeline) {
    const std::string text =
        "format: 1\nblocks:\n"
        "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
        "  - {id: g, type: FilterGain, properties: {Gain: 2}}\n"
        "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
        "connections: [{from: in, to: out.x}, {from: g, to: out.g}]\n"
        "timeline: [{at: 0.5, send: {g.input: [[4, 5]]}}]\n";
    EXPECT_EQ(result(text), "t,x[0],g[0],g[1]\n0,1,,\n0.5,2,8,10\n1,3,,\n");
}

TEST_F(TimelineTest, AGeneratorsTimeIsStreamTimeToo) {
    const std::string text =
        "format: 1\nblocks:\n"
        "  - {id: source, type: FilterFunctionGenerator, properties: {SampleRate: 10}}\n"
        "  - {id: g, type: FilterGain, properties: {Gain: 0}}\n"
        "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
        "connections: [{from: source, to: g}, {from: g, to: out.g}, {from: source, to: out.s}]\n"
        "timeline: [{at: 35, set: {g.Gain: 1}}]\n";
    ASSERT_EQ(run(text, {}, {.rounds = 6, .seconds = {}}), "");
    folder.write("in.csv", folder.read("out.csv"));
    CsvReader reader(folder.path("in.csv"));
    reader.select({0, 1, 2});
    double row[3];
    int rows = 0;
    for (; reader.readRow(row); ++rows)
        EXPECT_EQ(row[1], row[0] >= 35.0 ? row[2] : 0.0) << "at " << row[0];
    EXPECT_EQ(rows, 6);
    EXPECT_EQ(row[0], 60.0);
}

TEST_F(TimelineTest, ChangesAreRehearsedInOrderOfTime) {
    const auto odd = [](const std::string& timeline) {
        return graph("type: OddSettings", "main in.put", "a", timeline);
    };
    EXPECT_EQ(complaintsOf(odd("  - {at: 2, set: {b.locked: 3}}\n  - {at: 1, set: {b.unlock: true}}\n")), "");
    EXPECT_EQ(
        complaintsOf(odd("  - {at: 1, set: {b.locked: 3}}\n  - {at: 2, set: {b.unlock: true}}\n")),
        "g.yaml:9:29: found '3' for 'locked'; expected a number that the block takes (Property 'locked' is "
        "not writable)\n");
    EXPECT_EQ(complaintsOf(odd("  - {at: 1, set: {b.ranged.number: 1.25}}\n")), "")
        << "split at the first dot";
}

struct RefusalRow {
    const char* timeline;
    const char* complaint; ///< Behind `g.yaml:`.
};

TEST_F(TimelineTest, RefusalsNameTheEntrysLine) {
    const RefusalRow rows[] = {
        {"  - {at: 1, set: {b.Gain: 2}}\n  - {at: 2, set: {c.Gain: 2}}\n",
         "10:19: found the block 'c'; expected the id of a block: in, b and out\n"},
        {"  - {at: 2, set: {b: 2}}\n", "9:19: found 'b' alone; expected 'b.' and what of it\n"},
        {"  - {at: 2, set: {b.gain: 2}}\n",
         "9:19: found the property 'gain' of 'b' (FilterGain); expected one of Gain; did you mean Gain?\n"},
        {"  - {at: 2, set: {b.Gain: high}}\n", "9:27: found 'high'; expected a number\n"},
        {"  - {at: 2, fire: b.Gain}\n",
         "9:19: found the command 'Gain' of 'b' (FilterGain); expected a block that has some\n"},
        {"  - {at: 2, send: {b.input: 2}}\n", "9:20: found a value for 'b.input', which is connected; "
                                              "expected an input without a connection (line 7 has "
                                              "one)\n"},
        {"  - {at: 2, send: {b.in: 2}}\n",
         "9:20: found the input 'in' of 'b' (FilterGain); expected one of input\n"},
        {"  - {at: 2, set: {in.file: a.csv}}\n", "9:19: found the block 'in' (RecordingSource); expected a "
                                                 "block that can be changed while it runs\n"},
        {"  - {set: {b.Gain: 2}}\n",
         "9:5: found an entry without a time; expected 'at:' and seconds of stream time\n"},
        {"  - {at: .nan, set: {b.Gain: 2}}\n", "9:10: found '.nan'; expected seconds of stream time\n"},
        {"  - {at: -.inf, set: {b.Gain: 2}}\n", "9:10: found '-.inf'; expected seconds of stream time\n"},
        {"  - {at: noon, set: {b.Gain: 2}}\n", "9:10: found 'noon'; expected a number\n"},
        {"  - {at: \"${then}\", set: {b.Gain: 2}}\n", "9:10: found the parameter 'then'; expected one of the "
                                                      "graph's parameters: when; did you mean when?\n"},
        {"  - {at: 2}\n", "9:5: found an entry that does nothing; expected 'set:', 'fire:' or 'send:'\n"},
        {"  - {at: 2, sets: {b.Gain: 2}}\n",
         "9:13: found the key 'sets'; expected one of at, set, fire and send; did you mean set?\n"},
        {"  - {at: 2, set: b.Gain}\n",
         "9:18: found 'b.Gain'; expected settings as in {block.Property: value}\n"},
        {"  - {at: 2, send: {}}\n", "9:19: found an empty map; expected values as in {block.pin: value}\n"},
        {"  - {at: 2, fire: [[b.Reset]]}\n",
         "9:20: found a list; expected 'block.Command' or a list of such\n"},
        {"  - 2\n", "9:5: found '2'; expected an entry as in {at: 2.5, set: {block.Property: value}}\n"},
        {"  {at: 2, set: {b.Gain: 2}}\n",
         "9:3: found a map; expected a list of entries, each as in {at: 2.5, fire: block.Command}\n"},
    };
    for (const RefusalRow& row : rows)
        EXPECT_EQ(complaintsOf(gain(row.timeline)), std::string("g.yaml:") + row.complaint) << row.timeline;
}

TEST_F(TimelineTest, LimitsAreTheBlocks) {
    const auto resample = [](const std::string& timeline) {
        return graph("type: FilterResample", "in", "out", timeline);
    };
    EXPECT_EQ(complaintsOf(resample("  - {at: 1, set: {b.Matrix size: 0}}\n")),
              "g.yaml:9:34: found '0' for 'Matrix size'; expected a whole number from 1 to 10000\n");
    EXPECT_EQ(
        complaintsOf(graph("type: FilterDerivate", "Input", "Output", "  - {at: 1, set: {b.Reset: 1}}\n")),
        "g.yaml:9:28: found '1' for 'Reset'; expected a setting: a command has no value\n");
}

} // namespace
