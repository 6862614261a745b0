// SPDX-License-Identifier: MIT
#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Quillmere::Host;

/// What is doubtful about a graph before it runs.
class FirstRowsTest : public Support::GraphFixture {
protected:
    /// The source's settings beside its file and pins, and a block behind it.
    std::string warningsOf(const std::string& clock, const std::string& type = "FilterFlagStatic") {
        Complaints complaints;
        const GraphDescription description = GraphDescription::fromFile(
            folder.write("g.yaml", "format: 1\nblocks:\n"
                                   "  - {id: in, type: RecordingSource, properties: {file: in.csv, " +
                                       clock +
                                       ", pins: {a: [x, x, x], b: [x, x, x]}}}\n"
                                       "  - {id: gain, type: FilterGain}\n"
                                       "  - {id: still, type: " +
                                       type +
                                       "}\n"
                                       "connections:\n"
                                       "  - {from: in.a, to: gain}\n" +
                                       (type == "FilterGain" ? "  - {from: gain, to: still}\n"
                                                             : "  - {from: gain, to: still.3g}\n"
                                                               "  - {from: in.b, to: still.3bias}\n")),
            complaints);
        Graph graph(description, catalogue, complaints);
        graph.openSources(complaints);
        EXPECT_TRUE(complaints.isEmpty()) << GraphException(complaints.getSorted()).what();
        std::string text;
        for (const Warning& warning : complaints.getSortedWarnings())
            text += withoutFolder(warning.getText()) + "\n";
        return text;
    }
    /// Rows a hundredth of a second apart behind the first.
    void write(double firstStep) {
        std::string text = "t,x\n0,1\n";
        for (int i = 0; i < 200; ++i)
            text += std::to_string(firstStep + 0.01 * i) + ",1\n";
        folder.write("in.csv", text);
    }
};

TEST_F(FirstRowsTest, AFirstStepThatIsNotTheUsualOneMisleadsStillness) {
    write(1.0);
    EXPECT_EQ(
        warningsOf("time: t"),
        "g.yaml:5:10: warning: 'still' takes the rate of rows from the first two of in.csv, which are 1 s "
        "apart, while 0.01 s are usual; without the first row it would be right\n");
    write(0.0075);
    EXPECT_NE(warningsOf("time: t"), "");
    write(0.0);
    EXPECT_NE(warningsOf("time: t"), "");
    write(0.0105);
    EXPECT_EQ(warningsOf("time: t"), "") << "clocks jitter";
}

TEST_F(FirstRowsTest, NobodyElseIsMisledByIt) {
    write(1.0);
    EXPECT_EQ(warningsOf("time: t", "FilterGain"), "");
    EXPECT_EQ(warningsOf("time: t, frame: 10"), "") << "a frame has the time of its last row";
}

TEST_F(FirstRowsTest, ATimeColumnNamedForAnotherUnitIsTakenForSecondsAndSaysSo) {
    const auto written = [&](const std::string& name) {
        folder.write("in.csv", name + ",x\n0,1\n10,1\n20,1\n30,1\n");
        return warningsOf("time: " + name, "FilterGain");
    };
    const std::string begin = "g.yaml:3:56: warning: the time stamps of the column '";
    const std::string rates =
        ", are taken for seconds, which gives a median rate of 0.1 rows a second; if the "
        "name is right, divide them, or 'rate: ";
    const std::string end = "' in place of 'time' counts rows instead (in.csv)\n";
    for (const char* const name : {"time (ms)", "t_ms", "timestampMs", "TimeMS", "Milliseconds", "ms"})
        EXPECT_EQ(written(name), begin + name + "', whose name says milliseconds" + rates + "100" + end);
    for (const char* const name : {"timestamp_us", "t \xC2\xB5s", "t \xCE\xBCs"})
        EXPECT_EQ(written(name), begin + name + "', whose name says microseconds" + rates + "1e+05" + end);
    EXPECT_EQ(written("time.ns"), begin + "time.ns', whose name says nanoseconds" + rates + "1e+08" + end);
    EXPECT_EQ(written("time (10ms)"), begin + "time (10ms)', whose name says 10ms" + rates + "10" + end);
    for (const char* const name : {"t", "time (s)", "seconds", "times", "rms", "status", "columns"})
        EXPECT_EQ(written(name), "") << name;
}

TEST_F(FirstRowsTest, AFrameThatIsLongerThanTheFileIsNeverFull) {
    write(0.01); // 201 rows
    EXPECT_EQ(warningsOf("time: t, frame: 202", "FilterGain"),
              "g.yaml:3:80: warning: found 201 rows in in.csv for a frame of 202; expected as many at least, "
              "or 'in' sends nothing\n");
    EXPECT_EQ(warningsOf("time: t, frame: 201", "FilterGain"), "");
    folder.write("in.csv", "t,x\n0,1\n1,one\n");
    EXPECT_EQ(warningsOf("time: t, frame: 202", "FilterGain"), "") << "the run ends at the bad row";
    EXPECT_NE(warningsOf("time: t, frame: 202, onBadRow: skip", "FilterGain").find("found 1 row in in.csv"),
              std::string::npos);
}

TEST_F(FirstRowsTest, ARateThatTheTimesContradictIsDoubtful) {
    write(0.01);
    EXPECT_EQ(warningsOf("rate: 100"), "");
    EXPECT_EQ(
        warningsOf("rate: 128"),
        "g.yaml:3:56: warning: the column 't' of in.csv looks like a clock that goes at 100 rows a second, "
        "which is not the 'rate' of 'in'; 'time: t' would read it, if it is in seconds\n");
}

} // namespace
