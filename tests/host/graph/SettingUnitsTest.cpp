// SPDX-License-Identifier: MIT
#include "host/graph/SettingUnits.h"

#include "host/ends/MainInput.h"
#include "host/graph/BlockDescription.h"
#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

using namespace Quillmere::Host;

/// Settings in seconds and hertz of their own, for which no rate is needed. The recording has no even one.
class SettingUnitsTest : public Support::GraphFixture {
protected:
    SettingUnitsTest() { folder.write("in.csv", "t,x\n0,1\n0.5,2\n0.6,3\n2,4\n2.1,1\n4,0\n"); }

    /// The block `b` between a recording and a result.
    std::string graph(const std::string& type, const std::string& properties,
                      const std::string& more = "") const {
        const BlockPtr block = catalogue.create(type, "b");
        const std::string to =
            block->getInputPins().empty() ? "out.z" : "\"b." + mainInputOf(*block)->getName() + "\"";
        return "format: 1\nblocks:\n"
               "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
               "  - {id: b, type: " +
               type + ", properties: {" + properties +
               "}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
               "connections:\n  - {from: in.x, to: " +
               to + "}\n  - {from: \"b." + block->getOutputPins().front()->getName() + "\", to: out.y}\n" +
               more;
    }
    /// What the block's setting holds before the run, and what the summary says.
    std::string valueOf(const std::string& text, const std::string& setting,
                        const GraphChanges& changes = {}) {
        Job job = jobOf(text, changes);
        job.check().raise();
        std::string held = valueText(describe(job.getGraph().getNodes()[1].block->getProperty(setting)));
        for (const RateConversion& conversion : job.getGraph().getConversions())
            held += "; " + conversion.target + ": " + conversion.getText();
        return held;
    }
    /// The only complaint, from its `found` on.
    std::string refusal(const std::string& text) {
        const std::string lines = complaintsOf(text);
        const std::size_t begin = lines.find("found");
        return begin == std::string::npos ? lines : lines.substr(begin, lines.size() - begin - 1);
    }
};

TEST_F(SettingUnitsTest, ATimeIsInSecondsAndAFrequencyInHertz) {
    EXPECT_EQ(valueOf(graph("Durations", "Gap: 400 ms"), "Gap"), "0.4; b.Gap: 400 ms is 0.4 s");
    EXPECT_EQ(valueOf(graph("Durations", "Least: 2 min"), "Least"), "120; b.Least: 2 min is 120 s");
    EXPECT_EQ(valueOf(graph("Resample", "Rate: 0.1 kHz"), "Rate"), "100; b.Rate: 0.1 kHz is 100 Hz");
    EXPECT_EQ(valueOf(graph("Resample", "Gap: 1 s, Rate: 25 Hz"), "Gap"), "1") << "of which nothing was made";
    EXPECT_EQ(valueOf(graph("Join", "Tolerance: 1 ms"), "Tolerance"), "0.001; b.Tolerance: 1 ms is 0.001 s");
    EXPECT_EQ(valueOf(graph("Unframe", "Rate: 50 Hz"), "Rate"), "50");
    EXPECT_EQ(valueOf(graph("FilterFlagStatic", "StepStdDevThreshold: 1 min"), "StepStdDevThreshold"),
              "60; b.StepStdDevThreshold: 1 min is 60 s");
    EXPECT_EQ(valueOf(graph("FilterFunctionGenerator", "SignalPeriod: 1 min"), "SignalPeriod"),
              "60; b.SignalPeriod: 1 min is 60 s");
    EXPECT_EQ(valueOf(graph("FilterSphericalFiltering", "Frequency: 128 Hz"), "Frequency"), "128");
}

TEST_F(SettingUnitsTest, TheUnitMayGoByAnotherSettingWhereverThatStands) {
    EXPECT_EQ(valueOf(graph("Peaks", "Distance: 400 ms"), "Distance"), "0.4; b.Distance: 400 ms is 0.4 s");
    EXPECT_EQ(valueOf(graph("Peaks", "Distance: 0.5 Hz, Axis: Frequency, Step: 250 mHz"), "Step"),
              "0.25; b.Step: 250 mHz is 0.25 Hz");
    EXPECT_EQ(valueOf(graph("Peaks", "Distance: 500 mHz, Axis: 1"), "Distance"),
              "0.5; b.Distance: 500 mHz is 0.5 Hz");
    EXPECT_EQ(refusal(graph("Peaks", "Distance: 400 ms, Axis: Frequency")),
              "found '400 ms' for 'Distance' of 'b' (Peaks); expected a frequency, as 5 Hz, or a number "
              "without a unit");
    EXPECT_EQ(
        refusal(graph("Peaks", "Axis: Time, Distance: 1 Hz")),
        "found '1 Hz' for 'Distance' of 'b' (Peaks); expected a time, as 0.2 s, or a number of seconds");
}

TEST_F(SettingUnitsTest, TheOtherUnitAndWhatTheSettingDoesNotTakeAreRefusedWithTheirPlace) {
    EXPECT_EQ(complaintsOf(graph("Resample", "Gap: 1 Hz, Rate: 10 ms")),
              "g.yaml:4:47: found '1 Hz' for 'Gap' of 'b' (Resample); expected a time, as 0.2 s, or a number "
              "of seconds\n"
              "g.yaml:4:59: found '10 ms' for 'Rate' of 'b' (Resample); expected a frequency, as 5 Hz, or a "
              "number without a unit\n");
    EXPECT_EQ(refusal(graph("FilterFunctionGenerator", "SampleRate: 10 ms")),
              "found '0.01' (made of '10 ms'); expected a whole number");
    EXPECT_EQ(refusal(graph("Durations", "Gap: -1 min")),
              "found '-60' (made of '-1 min') for 'Gap'; expected " +
                  expectedText(describe(catalogue.create("Durations", "b")->getProperty("Gap"))));
    EXPECT_EQ(refusal(graph("Resample", "Gap: 1 sec")),
              "found '1 sec'; expected a number; did you mean 1 s?");
    EXPECT_EQ(refusal(graph("Peaks", "Height: 1 s")),
              "found '1 s' for 'Height' of 'b' (Peaks); expected a number without a unit, since nothing says "
              "that it is relative to the rate of samples");
}

TEST_F(SettingUnitsTest, ABlockWithoutAPageTakesNumbersOnly) {
    const std::string plugin = folder.path("libBare.so");
    std::filesystem::copy_file(catalogue.getPluginPath("Durations"), plugin);
    HostCatalogue bare;
    bare.load(plugin);
    Complaints complaints;
    Graph graph(
        GraphDescription::fromFile(folder.write("g.yaml", this->graph("Durations", "Gap: 1 s")), complaints),
        bare, complaints);
    graph.openSources(complaints);
    ASSERT_EQ(complaints.getSorted().size(), 1u);
    EXPECT_EQ(complaints.getSorted().front().found, "'1 s' for 'Gap' of 'b' (Durations)");
    EXPECT_EQ(complaints.getSorted().front().expected,
              "a number without a unit, since nothing says that it is relative to the rate of samples");
}

TEST_F(SettingUnitsTest, ChangesAndParametersAndTheTimelineTakeThemToo) {
    const std::string asParameter = graph("Durations", "Gap: \"${gap}\"", "parameters: {gap: 100 ms}\n");
    EXPECT_EQ(valueOf(asParameter, "Gap"), "0.1; b.Gap: 100 ms is 0.1 s");
    GraphChanges changes;
    changes.parameters = {{"gap", "200 ms", "--param"}};
    EXPECT_EQ(valueOf(asParameter, "Gap", changes), "0.2; b.Gap: 200 ms is 0.2 s");
    GraphChanges settings;
    settings.settings = {{"b", "Gap", "300 ms", "--set"}};
    EXPECT_EQ(valueOf(graph("Durations", ""), "Gap", settings), "0.3; b.Gap: 300 ms is 0.3 s");
    const auto timeline = [&](const std::string& value) {
        return graph("Durations", "Gap: 5", "timeline:\n  - {at: 1, set: {b.Gap: " + value + "}}\n");
    };
    EXPECT_EQ(valueOf(timeline("50 ms"), "Gap"), "5; b.Gap: at 1 s 50 ms is 0.05 s");
    ASSERT_EQ(run(timeline("0.05")), "");
    const std::string asNumber = folder.read("out.csv");
    ASSERT_EQ(run(timeline("50 ms")), "");
    EXPECT_EQ(folder.read("out.csv"), asNumber);
    EXPECT_EQ(refusal(timeline("5 Hz")),
              "found '5 Hz' for 'Gap' of 'b' (Durations); expected a time, as 0.2 s, or a number of seconds");
}

TEST_F(SettingUnitsTest, AStatedRateHoldsForHertzBehindIt) {
    const auto behind = [&](const std::string& type, const std::string& properties) {
        return "format: 1\nblocks:\n"
               "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
               "  - {id: low, type: FilterButterworth, properties: {RelativeCutOffFreq: 5 Hz}}\n"
               "  - {id: even, type: " +
               type + ", properties: {" + properties +
               "}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
               "connections: [{from: in.x, to: even}, {from: even, to: low.in}, {from: low, to: out.y}]\n";
    };
    const std::string known = "0.1; low.RelativeCutOffFreq: 5 Hz is 0.1 of half the rate (100 samples/s, as "
                              "stated for 'even')";
    EXPECT_EQ(valueOf(behind("Resample", "Rate: 100 Hz"), "RelativeCutOffFreq"), known);
    EXPECT_EQ(valueOf(behind("Unframe", "Rate: 100"), "RelativeCutOffFreq"), known);
    EXPECT_EQ(refusal(behind("Unframe", "Rate: 0")),
              "found '5 Hz' for 'RelativeCutOffFreq' of 'low' (FilterButterworth); expected a number without "
              "a unit, since there is no rate to convert it with: the rate 'Rate' of 'even' (Unframe) is "
              "none");
}

TEST_F(SettingUnitsTest, SamplesThatWaitForOthersAreCountedByARateButNeedNotComeEvenly) {
    const auto warnings = [&](const std::string& type, const std::string& properties) {
        Job job = jobOf(graph(type, properties));
        return job.check().getSortedWarnings().size();
    };
    EXPECT_EQ(warnings("FilterDiscarder", "Samples: 2"), 1u) << "the times are uneven";
    EXPECT_EQ(warnings("Join", "Waiting: 500"), 0u);
    folder.write("in.csv", "t,x\n0,1\n0.5,2\n1,3\n1.5,4\n");
    EXPECT_EQ(valueOf(graph("Join", "Waiting: 5 s"), "Waiting").substr(0, 34),
              "10; b.Waiting: 5 s is 10 samples (");
}

} // namespace
