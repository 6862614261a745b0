// SPDX-License-Identifier: MIT
#include "host/graph/SettingRules.h"

#include "host/graph/ClockWarnings.h"
#include "tests/host/kit/GraphFixture.h"

#include <string>

namespace {

using namespace Quillmere::Host;

class SettingRulesTest : public Support::GraphFixture {
protected:
    /// What a graph with that block between a recording and a result is warned of.
    std::string warningsOf(const std::string& block) {
        return warningsOfGraph(
            "format: 1\nblocks:\n"
            "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
            "  - {id: f, type: " +
            block +
            "}\n  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
            "connections: [{from: in, to: f.in}, {from: f.out, to: out.x}]\n");
    }
    std::string warningsOfGraph(const std::string& text) {
        Complaints complaints;
        const GraphDescription description =
            GraphDescription::fromFile(folder.write("g.yaml", text), complaints);
        const Graph graph(description, catalogue, complaints);
        graph.requireDrive(complaints);
        std::string lines;
        for (const Warning& warning : complaints.getSortedWarnings())
            lines += withoutFolder(warning.getText()) + "\n";
        return lines;
    }
};

TEST_F(SettingRulesTest, EveryRuleIsOfABlockAndOfSettingsThatThereAre) {
    for (const SettingRule& rule : getSettingRules()) {
        const BlockPtr block = catalogue.create(rule.type, "b");
        ASSERT_NE(block, nullptr) << rule.type;
        EXPECT_NE(block->getPropertyBag().find(rule.first), nullptr) << rule.type << "." << rule.first;
        if (rule.second != nullptr) {
            EXPECT_NE(block->getPropertyBag().find(rule.second), nullptr) << rule.type << "." << rule.second;
        }
        if (rule.isOfBands) {
            EXPECT_NE(block->getPropertyBag().find("Mode"), nullptr) << rule.type;
        }
    }
}

TEST_F(SettingRulesTest, ContradictionsAreToldWhereTheyAreWritten) {
    EXPECT_EQ(warningsOf("FilterButterworth, properties: {RelativeCutOffFreq: 0}"),
              "g.yaml:4:51: warning: 'f' (FilterButterworth) has 'RelativeCutOffFreq' at 0 and 'Order' at 1: "
              "a cut-off of 0 "
              "has no design, and everything becomes not-a-number\n");
    EXPECT_EQ(warningsOf("FilterButterworth, properties: {RelativeCutOffFreq: 0, Order: 0}"), "")
        << "passes all on";
    EXPECT_NE(warningsOf("FilterButterworth_v2, properties: {RelativeCutOffFreq: 0}")
                  .find("at a cut-off of 0 the output stays at its first value"),
              std::string::npos);
    EXPECT_EQ(warningsOf("FilterButterworth_v2, properties: {RelativeCutOffFreq: 0, Order: 0}"), "")
        << "passes all on";
    EXPECT_NE(
        warningsOf(
            "FilterBandPass, properties: {Low Cutoff Freq. (relative): 0.2, High Cutoff Freq. (relative): "
            "0.1}")
            .find("warning: 'f' (FilterBandPass) has 'Low Cutoff Freq. (relative)' at 0.2 and 'High Cutoff "
                  "Freq. "
                  "(relative)' at 0.1: the low edge has to lie below the high one, or there is no band\n"),
        std::string::npos);
    EXPECT_EQ(warningsOf("FilterFFT, properties: {Pause: false}").find("paused"), std::string::npos);
    const std::string harmonics = warningsOfGraph(
        "format: 1\nblocks:\n"
        "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
        "  - {id: seven, type: FilterWFLC, properties: {Order: 7}}\n"
        "  - {id: six, type: FilterWFLC, properties: {Order: 6}}\n"
        "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
        "connections: [{from: in, to: seven.Input}, {from: in, to: six.Input}, {from: seven.Out, to: out.a}, "
        "{from: six.Out, to: out.b}]\n");
    EXPECT_NE(harmonics.find("'seven' (FilterWFLC) has 'Mu' at 0.15 and 'Order' at 7: their product has to "
                             "stay below 1, or the weights grow without end\n"),
              std::string::npos)
        << harmonics;
    EXPECT_EQ(harmonics.find("'six'"), std::string::npos) << harmonics;
    EXPECT_NE(warningsOf("FilterFFT").find("a block that is paused sends nothing"), std::string::npos);
    EXPECT_NE(
        warningsOf("Peaks, properties: {Axis: Frequency, From: 3, To: 2}")
            .find("'f' (Peaks) has 'From' at 3 and 'To' at 2: the band has to begin below its end, or no "
                  "peak lies in it\n"),
        std::string::npos);
    EXPECT_EQ(warningsOf("Peaks, properties: {Axis: Frequency, From: 3}").find("'From'"), std::string::npos)
        << "to the end of the spectrum";
}

TEST_F(SettingRulesTest, ValuesAreQuotedAsTheUserWroteThem) {
    EXPECT_EQ(
        warningsOf("FilterSmartSaturationDetector, properties: {MinThreshold: 5, MaxThreshold: 3.0}"),
        "g.yaml:4:63: warning: 'f' (FilterSmartSaturationDetector) has 'MinThreshold' at 5 (moved to 3 by "
        "the block) and 'MaxThreshold' at 3: the low threshold has to lie below the high one, or every "
        "value may be flagged\n");
    EXPECT_EQ(warningsOf("FilterSmartSaturationDetector, properties: {MinThreshold: 5, MaxThreshold: 6}"),
              "");
}

TEST_F(SettingRulesTest, EdgesCountInBandModesOnlyAndAlsoWhereTheBlockHasMovedOne) {
    EXPECT_EQ(warningsOf("FilterChebyshev, properties: {LowRelativeCutOffFreq: 0.3}"), "");
    EXPECT_NE(warningsOf("FilterChebyshev, properties: {Mode: BandPass, LowRelativeCutOffFreq: 0.3, "
                         "HighRelativeCutOffFreq: 0.2}")
                  .find("the low edge has to lie below the high one"),
              std::string::npos);
}

TEST_F(SettingRulesTest, AWallClockThatReachesAReaderOfTimesIsDoubtful) {
    const std::string text =
        "format: 1\nblocks:\n"
        "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
        "  - {id: edge, type: FilterEdge}\n  - {id: gain, type: FilterGain}\n  - {id: rate, type: "
        "FilterFrequency}\n"
        "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
        "connections: [{from: in, to: edge}, {from: edge, to: gain}, {from: gain, to: rate}, {from: rate, "
        "to: out.x}]\n";
    EXPECT_EQ(warningsOfGraph(text),
              "g.yaml:6:10: warning: the wall clock, which 'edge.edge' stamps, reaches 'rate' "
              "(FilterFrequency), which reads time stamps; with 'clock: stream' it stamps the time "
              "of an offline run\n");
    EXPECT_EQ(warningsOfGraph("clock: stream\n" + text), "");
    EXPECT_NE(warningsOfGraph("layouts: [{id: a}, {id: b}]\n" + text).find("makes the rows of 'out'"),
              std::string::npos);
}

TEST_F(SettingRulesTest, AWallClockMakesRowsBehindABlockThatMakesTimes) {
    const auto text = [](const std::string& type) {
        return "format: 1\nblocks:\n"
               "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
               "  - {id: edge, type: FilterEdge}\n  - {id: rows, type: " +
               type +
               "}\n  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
               "connections: [{from: in, to: edge}, {from: edge, to: rows}, {from: rows, to: out.x}]\n";
    };
    EXPECT_EQ(warningsOfGraph(text("Unframe")),
              "g.yaml:6:10: warning: the wall clock, which 'edge.edge' stamps, makes the rows of 'out'; with "
              "'clock: stream' it stamps the time of an offline run\n");
    EXPECT_EQ(warningsOfGraph("clock: stream\n" + text("Unframe")), "");
    EXPECT_EQ(warningsOfGraph(text("FilterGain")), "") << "by rounds, whatever the stamps";
}

class ClockRules : public SettingRulesTest {
protected:
    using Rule = void (*)(const Graph&, Complaints&);
    /// What one rule alone says of a graph, complaints and warnings.
    std::string textsOf(Rule rule, const std::string& text) {
        Complaints own;
        const GraphDescription description = GraphDescription::fromFile(folder.write("g.yaml", text), own);
        const Graph graph(description, catalogue, own);
        EXPECT_TRUE(own.isEmpty()) << GraphException(own.getSorted()).what();
        Complaints complaints;
        rule(graph, complaints);
        std::string lines;
        for (const Warning& warning : complaints.getSortedWarnings())
            lines += withoutFolder(warning.getText()) + "\n";
        if (!complaints.isEmpty()) lines += withoutFolder(GraphException(complaints.getSorted()).what());
        return lines;
    }
};

TEST_F(ClockRules, AClockThatStampsTheWallClockIsRefusedBeforeItRuns) {
    const std::string noise = "  - {id: noise, type: FilterGaussianWhiteNoiseGenerator}\n";
    const std::string sine = "  - {id: sine, type: FilterFunctionGenerator}\n";
    const std::string stream = "format: 1\nclock: stream\nblocks:\n";
    EXPECT_EQ(
        textsOf(requireStreamClock, stream + noise + sine),
        "g.yaml:2:8: found 'noise' (FilterGaussianWhiteNoiseGenerator), which stamps the wall clock, as "
        "the block that tells the time; expected a generator with a time of its own in front of it, or "
        "'clock: wall'");
    EXPECT_EQ(textsOf(requireStreamClock, stream + sine + noise), "");
    EXPECT_EQ(textsOf(requireStreamClock, "format: 1\nblocks:\n" + noise), "");
    EXPECT_EQ(
        textsOf(
            requireStreamClock,
            stream + noise +
                "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"),
        "")
        << "the recording tells it";
}

constexpr const char* kEdgeToFrequency =
    "format: 1\nblocks:\n"
    "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
    "  - {id: edge, type: FilterEdge}\n  - {id: rate, type: FilterFrequency}\n"
    "connections: [{from: in, to: edge}, {from: edge, to: rate}]\n";

TEST_F(ClockRules, ALiveRunStampsTheWallClockWhateverTheGraphSays) {
    EXPECT_EQ(textsOf(warnOfLiveWallClock, std::string("clock: stream\n") + kEdgeToFrequency),
              "g.yaml:6:10: warning: the wall clock, which 'edge.edge' stamps, reaches 'rate' "
              "(FilterFrequency), which reads time stamps; with 'clock: stream' it stamps the time of an "
              "offline run only, and this one is live\n");
    EXPECT_EQ(textsOf(warnOfLiveWallClock, kEdgeToFrequency), "") << "told when it is built";
}

TEST_F(ClockRules, ACounterThatNothingStartsCountsNothing) {
    const std::string text = "format: 1\nblocks:\n  - {id: sine, type: FilterFunctionGenerator}\n"
                             "  - {id: count, type: FilterPeriodCounter}\n  - {id: gain, type: FilterGain}\n"
                             "connections:\n  - {from: sine, to: count}\n";
    const std::string heard = text + "  - {from: count.Nb Period, to: gain}\n";
    EXPECT_EQ(
        textsOf(warnOfIdleBlocks, heard),
        "g.yaml:4:10: warning: 'count' (FilterPeriodCounter) counts nothing until its command 'Reset' is "
        "fired, and no entry of the timeline fires it; 'fire: [count.Reset]' would\n");
    EXPECT_EQ(textsOf(warnOfIdleBlocks, heard + "timeline: [{at: 1, fire: [count.Reset]}]\n"), "");
}

TEST_F(SettingRulesTest, AGraphWithoutASinkAndABlockThatFeedsItselfAreDoubtful) {
    EXPECT_EQ(warningsOfGraph("format: 1\nblocks:\n  - {id: g, type: FilterGain}\n"
                              "connections: [{from: g, to: g}]\n"),
              "g.yaml:1:1: warning: the graph has no sink, so nothing is kept of what it does; a "
              "RecordingSink writes a "
              "result\n"
              "g.yaml:3:10: warning: 'g' waits for what it sends itself\n");
}

} // namespace
