// SPDX-License-Identifier: MIT
#include "host/graph/RateSettings.h"

#include "host/graph/BlockDescription.h"
#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>

namespace {

using namespace Quillmere::Host;

/// Settings in hertz and seconds. The recording has `t` at 100 rows a second, `x`, and `slow`, which is empty
/// but in every tenth row.
class RateSettingsTest : public Support::GraphFixture {
protected:
    RateSettingsTest() {
        std::string text = "t,x,slow\n";
        for (int i = 0; i < 300; ++i)
            text += std::to_string(0.01 * i) + "," + std::to_string(i % 7) + "," + (i % 10 == 0 ? "1" : "") +
                    "\n";
        folder.write("in.csv", text);
    }

    static std::string source(const std::string& more = "time: t") {
        return "  - {id: in, type: RecordingSource, properties: {file: in.csv, " + more +
               ", pins: {x: x, slow: slow}}}\n";
    }
    /// The block `b` behind `between`, a list of blocks and one of connections that end at it.
    std::string graph(const std::string& type, const std::string& properties, const std::string& input,
                      const std::string& timeline = "", const std::string& from = "in.x",
                      const std::string& blocks = "", const std::string& connections = "",
                      const std::string& origin = source()) {
        const BlockPtr block = catalogue.create(type, "b");
        return "format: 1\nblocks:\n" + origin + "  - {id: b, type: " + type + ", properties: {" +
               properties + "}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n" + blocks +
               "connections:\n  - {from: " + from + ", to: \"b." + input + "\"}\n  - {from: \"b." +
               block->getOutputPins().front()->getName() + "\", to: out.y}\n" + connections + timeline;
    }
    /// The only one, without its line end.
    std::string complaintOf(const std::string& text) {
        const std::string line = complaintsOf(text);
        return line.substr(0, line.empty() ? 0 : line.size() - 1);
    }
    /// What the block's setting holds before the run, and what the summary says.
    std::string valueOf(const std::string& text, const std::string& setting) {
        Job job = jobOf(text);
        job.check().raise();
        std::string held = valueText(describe(job.getGraph().getNodes()[1].block->getProperty(setting)));
        for (const RateConversion& conversion : job.getGraph().getConversions())
            held += "; " + conversion.target + ": " + conversion.getText();
        return withoutFolder(held);
    }
};

TEST_F(RateSettingsTest, AFrequencyIsAFractionOfHalfTheRate) {
    EXPECT_EQ(
        valueOf(graph("FilterButterworth", "RelativeCutOffFreq: 5 Hz", "in"), "RelativeCutOffFreq"),
        "0.1; b.RelativeCutOffFreq: 5 Hz is 0.1 of half the rate (100 samples/s, as measured in in.csv)");
}

TEST_F(RateSettingsTest, AFrequencyIsAnAngleASample) {
    EXPECT_EQ(valueOf(graph("FilterWFLC", "Wf0: 25 Hz", "Input"), "Wf0"),
              "1.5707963267948966; b.Wf0: 25 Hz is 1.5707963267948966 radians a sample (100 samples/s, as "
              "measured in in.csv)");
}

TEST_F(RateSettingsTest, ATimeIsTheNearestNumberOfSamples) {
    EXPECT_EQ(valueOf(graph("FilterDiscarder", "Samples: 0.256 s", "in"), "Samples"),
              "26; b.Samples: 0.256 s is 26 samples (100 samples/s, as measured in in.csv)");
}

TEST_F(RateSettingsTest, AStatedRateIsTakenAsItIs) {
    const std::string origin = source("rate: 40");
    EXPECT_EQ(
        valueOf(graph("FilterButterworth", "RelativeCutOffFreq: 5 Hz", "in", "", "in.x", "", "", origin),
                "RelativeCutOffFreq"),
        "0.25; b.RelativeCutOffFreq: 5 Hz is 0.25 of half the rate (40 samples/s, as stated for in.csv)");
}

TEST_F(RateSettingsTest, APinThatGetsEveryTenthRowHasATenthOfTheRate) {
    for (const char* const clock : {"time: t", "rate: 100"})
        EXPECT_EQ(valueOf(graph("FilterButterworth", "RelativeCutOffFreq: 1 Hz", "in", "", "in.slow", "", "",
                                source(clock)),
                          "RelativeCutOffFreq"),
                  "0.2; b.RelativeCutOffFreq: 1 Hz is 0.2 of half the rate (10 samples/s, as measured in "
                  "in.csv)")
            << clock;
}

TEST_F(RateSettingsTest, FramesComeAsOftenAsTheyBegin) {
    const std::string origin = source("time: t, frame: 20, hop: 5, missing: [\"\"]");
    EXPECT_EQ(valueOf(graph("FilterDiscarder", "Samples: 1 s", "in", "", "in.x", "", "", origin), "Samples"),
              "20; b.Samples: 1 s is 20 samples (20 samples/s, as measured in in.csv)");
}

TEST_F(RateSettingsTest, TheRateIsFollowedThroughBlocksThatKeepIt) {
    EXPECT_EQ(
        valueOf(graph("FilterButterworth", "RelativeCutOffFreq: 5 Hz", "in", "", "g",
                      "  - {id: g, type: FilterGain}\n", "  - {from: in.x, to: g}\n"),
                "RelativeCutOffFreq"),
        "0.1; b.RelativeCutOffFreq: 5 Hz is 0.1 of half the rate (100 samples/s, as measured in in.csv)");
}

TEST_F(RateSettingsTest, ABlockThatSendsAtNoEvenRateAndAnUnknownOneLeaveNoRate) {
    EXPECT_EQ(
        complaintOf(graph("FilterButterworth", "RelativeCutOffFreq: 5 Hz", "in", "", "g",
                          "  - {id: g, type: FilterFrequency}\n", "  - {from: in.x, to: g}\n")),
        "g.yaml:4:71: found '5 Hz' for 'RelativeCutOffFreq' of 'b' (FilterButterworth); expected a number "
        "without a unit, since there is no rate to convert it with: 'out' of 'g' (FilterFrequency) sends "
        "at no even rate");
    EXPECT_EQ(
        complaintOf(graph("FilterButterworth", "RelativeCutOffFreq: 5 Hz", "in", "", "g.a",
                          "  - {id: g, type: OddSettings}\n", "  - {from: in.x, to: g.main in.put}\n")),
        "g.yaml:4:71: found '5 Hz' for 'RelativeCutOffFreq' of 'b' (FilterButterworth); expected a number "
        "without a unit, since there is no rate to convert it with: nothing says how often 'g' "
        "(OddSettings) sends");
}

TEST_F(RateSettingsTest, AGeneratorSendsByItsStepAndALoopAndTheTimelineAtNoRate) {
    const auto refusal = [&](const std::string& text) {
        const std::string line = complaintOf(text);
        return line.substr(std::min(line.find("with: "), line.size()));
    };
    const auto behind = [&](const std::string& step) {
        return graph("FilterButterworth", "RelativeCutOffFreq: 0.02 Hz", "in", "", "g",
                     "  - {id: g, type: FilterFunctionGenerator, properties: {SampleRate: " + step + "}}\n",
                     "  - {from: in.x, to: out.x}\n");
    };
    EXPECT_EQ(
        valueOf(behind("4"), "RelativeCutOffFreq"),
        "0.16; b.RelativeCutOffFreq: 0.02 Hz is 0.16 of half the rate (0.25 samples/s, as stated for 'g')");
    EXPECT_EQ(refusal(behind("0")),
              "with: the step 'SampleRate' of 'g' (FilterFunctionGenerator) is no time");
    EXPECT_EQ(refusal(graph("FilterButterworth", "RelativeCutOffFreq: 1 Hz", "in", "", "g",
                            "  - {id: g, type: FilterGain}\n  - {id: h, type: FilterGain}\n",
                            "  - {from: g, to: h}\n  - {from: h, to: g}\n  - {from: in.x, to: out.x}\n")),
              "with: 'g' stands in a loop, which has no rate of its own");
    EXPECT_EQ(
        refusal("format: 1\nblocks:\n" + source() +
                "  - {id: b, type: FilterButterworth, properties: {RelativeCutOffFreq: 1 Hz}}\n"
                "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
                "connections: [{from: in.x, to: out.x}, {from: b, to: out.y}]\n"
                "timeline: [{at: 1, send: {b.in: 1}}]\n"),
        "with: its samples come from no block of the graph file, but from the timeline or a block that was "
        "added");
}

TEST_F(RateSettingsTest, ALongChainIsFollowedToItsEnd) {
    std::string blocks;
    std::string connections = "  - {from: in.x, to: g0}\n";
    for (int i = 0; i < 3000; ++i)
        blocks += "  - {id: g" + std::to_string(i) + ", type: FilterGain}\n";
    for (int i = 1; i < 3000; ++i)
        connections += "  - {from: g" + std::to_string(i - 1) + ", to: g" + std::to_string(i) + "}\n";
    EXPECT_EQ(valueOf(graph("FilterButterworth", "RelativeCutOffFreq: 5 Hz", "in", "", "g2999", blocks,
                            connections),
                      "RelativeCutOffFreq")
                  .substr(0, 4),
              "0.1;");
}

TEST_F(RateSettingsTest, WhatTheRateOrTheSettingDoesNotTakeIsRefusedBeforeTheRun) {
    const auto complaints = [&](const std::string& type, const std::string& property,
                                const std::string& input) {
        const std::string text = complaintsOf(graph(type, property, input));
        return text.substr(text.find("found"), text.find('\n') - text.find("found"));
    };
    EXPECT_EQ(
        complaints("FilterButterworth", "RelativeCutOffFreq: 50.1 Hz", "in"),
        "found '50.1 Hz' for 'RelativeCutOffFreq' of 'b' (FilterButterworth); expected at most 50 Hz, half "
        "of 100 samples/s, as measured in in.csv");
    EXPECT_EQ(complaints("FilterButterworth", "RelativeCutOffFreq: -5 Hz", "in"),
              "found '-0.1' (made of '-5 Hz') for 'RelativeCutOffFreq'; expected a number from 0 to 1");
    EXPECT_EQ(
        complaints("FilterButterworth", "RelativeCutOffFreq: 5 s", "in"),
        "found '5 s' for 'RelativeCutOffFreq' of 'b' (FilterButterworth); expected a frequency, as 5 Hz, or "
        "a number without a unit");
    EXPECT_EQ(
        complaints("FilterDiscarder", "Samples: 5 Hz", "in"),
        "found '5 Hz' for 'Samples' of 'b' (FilterDiscarder); expected a time, as 0.2 s, or a number of "
        "samples");
    EXPECT_EQ(
        complaints("FilterDiscarder", "Samples: 4 ms", "in"),
        "found '4 ms' for 'Samples' of 'b' (FilterDiscarder); expected a time of one sample at least, at "
        "100 samples/s, as measured in in.csv");
    EXPECT_EQ(
        complaints("FilterGain", "Gain: 5 Hz", "input"),
        "found '5 Hz' for 'Gain' of 'b' (FilterGain); expected a number without a unit, since nothing says "
        "that it is relative to the rate of samples");
    EXPECT_EQ(complaints("FilterButterworth", "RelativeCutOffFreq: 5 hz", "in"),
              "found '5 hz'; expected a number; did you mean 5 Hz?");
}

TEST_F(RateSettingsTest, AllSettingsOfTheBlockWaitSoThatTheirOrderStays) {
    // The low edge drags the high one along when it passes it.
    EXPECT_EQ(valueOf(graph("FilterBessel",
                            "Mode: BandPass, HighRelativeCutOffFreq: 0.3, LowRelativeCutOffFreq: 5 Hz", "in"),
                      "HighRelativeCutOffFreq")
                  .substr(0, 4),
              "0.3;");
}

TEST_F(RateSettingsTest, TheTimelineSetsAndSendsByTheRate) {
    EXPECT_EQ(run(graph("FilterButterworth_v2", "Order: 1", "in",
                        "timeline:\n  - {at: 1, send: {b.RelativeCutOffFreq: 10 Hz}}\n")),
              "");
    const std::string sent = folder.read("out.csv");
    EXPECT_EQ(run(graph("FilterButterworth_v2", "Order: 1", "in",
                        "timeline:\n  - {at: 1, send: {b.RelativeCutOffFreq: 0.2}}\n")),
              "");
    EXPECT_EQ(folder.read("out.csv"), sent);
    ASSERT_EQ(run(graph("FilterButterworth", "Order: 1", "in",
                        "timeline:\n  - {at: 1, set: {b.RelativeCutOffFreq: 10 Hz}}\n")),
              "");
    ASSERT_EQ(outcome.conversions.size(), 1u);
    EXPECT_EQ(withoutFolder(outcome.conversions.front().getText()),
              "at 1 s 10 Hz is 0.2 of half the rate (100 samples/s, as measured in in.csv)");
    EXPECT_EQ(
        complaintOf(graph("FilterButterworth", "Order: 1", "in",
                          "timeline:\n  - {at: 1, set: {b.RelativeCutOffFreq: 60 Hz}}\n")),
        "g.yaml:10:41: found '60 Hz' for 'RelativeCutOffFreq' of 'b' (FilterButterworth); expected at most "
        "50 Hz, half of 100 samples/s, as measured in in.csv");
}

TEST_F(RateSettingsTest, RatesMayBeStatedInHertzAndTimesOfTheTimelineInMilliseconds) {
    EXPECT_EQ(
        valueOf(graph("FilterDiscarder", "Samples: 1 s", "in", "", "in.x", "", "", source("rate: 0.04 kHz")),
                "Samples"),
        "40; b.Samples: 1 s is 40 samples (40 samples/s, as stated for in.csv)");
    ASSERT_EQ(run(graph("FilterButterworth", "Order: 1", "in",
                        "timeline:\n  - {at: 500 ms, set: {b.RelativeCutOffFreq: 10 Hz}}\n")),
              "");
    ASSERT_EQ(outcome.conversions.size(), 1u);
    EXPECT_EQ(outcome.conversions.front().at, 0.5);
    const auto refusal = [&](const std::string& origin) {
        const std::string line =
            complaintOf(graph("FilterGain", "", "input", "", "in.x", "", "", source(origin)));
        return line.substr(std::min(line.find("found"), line.size()));
    };
    EXPECT_EQ(refusal("rate: 20 ms"), "found '20 ms'; expected a frequency, as 50 Hz");
    EXPECT_EQ(refusal("rate: 0 Hz"), "found '0 Hz'; expected a rate above 0 rows a second");
    EXPECT_EQ(refusal("rate: \"50,0 Hz\""),
              "found the text '50,0 Hz'; expected a number without quotes; did you mean 50.0 Hz?");
    EXPECT_EQ(refusal("rate: 5 MHz"), "found '5 MHz'; expected a number; did you mean 5000 kHz?");
    for (const char* const two : {"rate: 50, nominalRate: 50", "time: t, nominalRate: 50, resample: 50"})
        EXPECT_EQ(refusal(two),
                  "found the RecordingSource 'in' with two rates; expected 'rate:' or 'resample:' alone, or "
                  "'nominalRate:' beside times as they are");
    const std::string line =
        complaintOf(graph("FilterGain", "", "input", "timeline:\n  - {at: 2 Hz, set: {b.Gain: 1}}\n"));
    EXPECT_NE(line.find("found '2 Hz'; expected a time, as 0.2 s"), std::string::npos) << line;
}

TEST_F(RateSettingsTest, ANominalRateThatTheTimesContradictDrawsAWarning) {
    const auto warningsWith = [&](const char* rate) {
        Job job = jobOf(graph("FilterDiscarder", "Samples: 1 s", "in", "", "in.x", "", "",
                              source(std::string("time: t, nominalRate: ") + rate)));
        std::string all;
        for (const Warning& warning : job.check().getSortedWarnings())
            all += withoutFolder(warning.getText()) + "\n";
        return all;
    };
    EXPECT_EQ(warningsWith("50"),
              "g.yaml:3:56: warning: the times of in.csv tell 100 rows a second, evenly, "
              "which is not the 'nominalRate' of 'in'; without that they would be taken\n");
    EXPECT_EQ(warningsWith("101"), "");
}

TEST_F(RateSettingsTest, WhyThereIsNoRateIsToldWithIt) {
    folder.write("in.csv", "t,x,slow\n0,1,1\n0.01,oops,1\n");
    EXPECT_EQ(complaintOf(graph("FilterButterworth", "RelativeCutOffFreq: 2 Hz", "in")),
              "g.yaml:4:71: found '2 Hz' for 'RelativeCutOffFreq' of 'b' (FilterButterworth); expected a "
              "number without a unit, since there is no rate to convert it with: that of in.csv can't be "
              "known before the run, since in.csv:3: column 'x': found \"oops\"; expected a number; "
              "'nominalRate:' of 'in' (RecordingSource) and rows a second would state it");
    folder.write("in.csv", "t,x,slow\n0,1,1\n");
    const std::string line = complaintOf(graph("FilterButterworth", "RelativeCutOffFreq: 2 Hz", "in"));
    EXPECT_NE(line.find("before the run, since no two of its samples have times that grow; 'nominalRate:'"),
              std::string::npos)
        << line;
}

/// What comes through a pipe is left to the run by a check that knows of none.
class PipedRateTest : public RateSettingsTest {
protected:
    PipedRateTest() {
        std::filesystem::remove(folder.path("in.csv"));
        pipe.emplace(folder.path("in.csv"));
        pipe->write("t,x,slow\n0,1,1\n0.01,2,1\n");
    }
    std::string check(const std::string& origin, RunMode mode) {
        Job job = jobOf(
            graph("FilterButterworth", "RelativeCutOffFreq: 5 Hz", "in", "", "in.x", "", "", source(origin)));
        std::string text;
        for (const Complaint& complaint : job.check(mode).getSorted())
            text += complaint.getText();
        for (const RateConversion& conversion : job.getGraph().getConversions())
            text += conversion.getText();
        return withoutFolder(text);
    }
    std::optional<Support::Fifo> pipe;
};

TEST_F(PipedRateTest, ACheckRefusesWhatARunWould) {
    const std::string refusal =
        "g.yaml:4:71: found '5 Hz' for 'RelativeCutOffFreq' of 'b' (FilterButterworth); expected a number "
        "without a unit, since there is no rate to convert it with: that of in.csv can't be known before "
        "the run, since it comes through a pipe; 'nominalRate:' of 'in' (RecordingSource) and rows a second "
        "would state it";
    EXPECT_EQ(check("time: t", RunMode::Unsaid), refusal);
    EXPECT_EQ(check("time: t", RunMode::Offline), refusal);
}

TEST_F(PipedRateTest, AStatedRateIsKnownToBoth) {
    const std::string number = "5 Hz is 0.25 of half the rate (40 samples/s, as stated for in.csv)";
    EXPECT_EQ(check("rate: 40", RunMode::Unsaid), number);
    EXPECT_EQ(check("time: t, nominalRate: 40 Hz", RunMode::Unsaid), number);
    EXPECT_EQ(check("time: t, nominalRate: 40 Hz", RunMode::Offline), number);
}

TEST_F(PipedRateTest, WhatTheFileMaySayIsLeftToTheRun) {
    EXPECT_EQ(check("onBadRow: skip", RunMode::Unsaid), "");
}

TEST_F(PipedRateTest, AFrameInSecondsNeedsARateToo) {
    EXPECT_EQ(
        check("time: t, frame: 200 ms", RunMode::Offline),
        "g.yaml:3:80: found a frame in seconds of 'in'; expected a number of rows, since the rate can't "
        "be known before the run (it comes through a pipe); 'nominalRate:' and rows a second would "
        "state it");
    const std::string framed = check("time: t, nominalRate: 40, frame: 200 ms", RunMode::Unsaid);
    EXPECT_NE(framed.find("at most 2.5 Hz, half of 5 samples/s, as stated for in.csv"), std::string::npos)
        << framed;
}

TEST_F(RateSettingsTest, UnevenStampsGiveNoRateAndAWarningWhereABlockCountsOnOne) {
    std::string text = "t,x,slow\n";
    for (int i = 0; i < 100; ++i)
        text += std::to_string(i / 10) + ",1,1\n";
    folder.write("in.csv", text);
    EXPECT_EQ(
        complaintOf(graph("FilterButterworth", "RelativeCutOffFreq: 2 Hz", "in")),
        "g.yaml:4:71: found '2 Hz' for 'RelativeCutOffFreq' of 'b' (FilterButterworth); expected a number "
        "without a unit, since there is no rate to convert it with: 91 % of the steps in in.csv differ "
        "from their mean by more than half of it, which is no even rate; 'nominalRate:' of 'in' "
        "(RecordingSource) and rows a second would state it");
    const auto warnings = [&](const std::string& graphText) {
        Job job = jobOf(graphText);
        std::string all;
        for (const Warning& warning : job.check().getSortedWarnings())
            all += withoutFolder(warning.getText()) + "\n";
        return all;
    };
    EXPECT_EQ(valueOf(graph("FilterButterworth", "RelativeCutOffFreq: 2 Hz", "in", "", "in.x", "", "",
                            source("time: t, nominalRate: 10")),
                      "RelativeCutOffFreq"),
              "0.4; b.RelativeCutOffFreq: 2 Hz is 0.4 of half the rate (10 samples/s, as stated for in.csv)");
    EXPECT_NE(
        warnings(graph("FilterButterworth", "Order: 1", "in"))
            .find("91 % of the steps in in.csv differ from their mean by more than half of it, which is no "
                  "even rate, while 'b' (FilterButterworth) takes its samples to come evenly\n"),
        std::string::npos);
    EXPECT_EQ(warnings(graph("FilterGain", "", "input")).find("evenly"), std::string::npos);
}

TEST_F(RateSettingsTest, UnevenStampsAreToldOnceForAllBlocksBehindThem) {
    std::string text = "t,x,slow\n";
    for (int i = 0; i < 100; ++i)
        text += std::to_string(i / 10) + ",1,1\n";
    folder.write("in.csv", text);
    const std::string another = "  - {id: c, type: FilterButterworth, properties: {Order: 1}}\n";
    Job job = jobOf(graph("FilterButterworth", "Order: 1", "in", "", "in.x", another,
                          "  - {from: in.x, to: c.in}\n  - {from: c.out, to: out.z}\n"));
    const auto found = job.check().getSortedWarnings();
    const auto warnings = std::count_if(found.begin(), found.end(), [](const Warning& warning) {
        return warning.getText().find("evenly") != std::string::npos;
    });
    EXPECT_EQ(warnings, 1);
}

} // namespace
