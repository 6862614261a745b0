// SPDX-License-Identifier: MIT
#include "host/run/Job.h"

#include "host/text/ShortestText.h"
#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <functional>
#include <string>

namespace {

using namespace Quillmere::Host;

/// What is told at the end of a run of the rates by which numbers were made before it.
class RateReviewTest : public Support::GraphFixture {
protected:
    /// `count` rows of `t`, `x` and `slow`, which every tenth has; row i has the time `timeOf(i)`.
    static std::string table(int count, const std::function<double(int)>& timeOf) {
        std::string text = "t,x,slow\n";
        for (int i = 0; i < count; ++i)
            text +=
                shortestText(timeOf(i)) + "," + std::to_string(i % 7) + "," + (i % 10 == 0 ? "1" : "") + "\n";
        return text;
    }
    /// Six thousand rows at 100 rows a second, then as many at half of it.
    static std::string slowingTable() {
        return table(12000, [](int i) { return 0.01 * i + (i > 6000 ? 0.01 * (i - 6000) : 0.0); });
    }
    static std::string graph(const std::string& cutOff, const std::string& more = "",
                             const std::string& pin = "x", const std::string& file = "in.csv") {
        return "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: " + file +
               ", time: t, pins: {x: x, slow: slow}" + more +
               "}}\n  - {id: b, type: FilterButterworth, properties: {RelativeCutOffFreq: " + cutOff +
               "}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
               "connections: [{from: in." +
               pin + ", to: b.in}, {from: b.out, to: out.y}]\n";
    }
};

TEST_F(RateReviewTest, ARateThatChangesBehindWhatWasMeasuredIsToldWithWhatItMade) {
    folder.write("in.csv", slowingTable());
    EXPECT_EQ(run(graph("5 Hz")), "");
    EXPECT_EQ(warningsOfRun(), "g.yaml:3:56: warning: 'in.x' sent 66.6685 samples/s over all of in.csv, "
                               "while numbers were made of '5 "
                               "Hz' for 'b.RelativeCutOffFreq' by the 100 samples/s of its first 5000 rows; "
                               "'resample' would give it "
                               "one rate throughout\n");
    EXPECT_EQ(run(graph("0.5 Hz", "", "slow")), "");
    EXPECT_EQ(warningsOfRun().substr(0, 60), "g.yaml:3:56: warning: 'in.slow' sent 6.66667 samples/s over ");
    isStrict = true;
    EXPECT_EQ(run(graph("5 Hz")), "ended with a warning, taken for an error");
}

TEST_F(RateReviewTest, NothingIsToldWhereNothingWasConvertedOrTheRateStays) {
    folder.write("in.csv", slowingTable());
    for (const std::string& text :
         {graph("0.1"), graph("5 Hz", ", resample: 100"), graph("5 Hz", ", end: 60.5")}) {
        EXPECT_EQ(run(text), "");
        EXPECT_EQ(warningsOfRun(), "");
    }
    // A clock that ticks in milliseconds, loses every fortieth row and pauses.
    folder.write("in.csv", table(12000, [](int i) {
                     return 0.001 * static_cast<double>(i * 1000 / 128 + i / 40 * 8) +
                            (i > 8000 ? 60.0 : 0.0);
                 }));
    EXPECT_EQ(run(graph("5 Hz")), "");
    EXPECT_EQ(warningsOfRun().find("sent"), std::string::npos) << warningsOfRun();
}

TEST_F(RateReviewTest, StepsThatAreUnevenAreToldOnceWhereverTheyAreFound) {
    const auto uneven = [](int i) { return 0.01 * i + (i > 5500 && i % 2 == 1 ? 0.009 : 0.0); };
    folder.write("in.csv", table(12000, uneven));
    EXPECT_EQ(run(graph("0.1")), "");
    EXPECT_EQ(warningsOfRun(),
              "g.yaml:3:56: warning: 54 % of the steps in in.csv differ from their mean by more than half of "
              "it, which "
              "is no even rate, while 'b' (FilterButterworth) takes its samples to come evenly\n");
    EXPECT_TRUE(outcome.doubts.empty());
    EXPECT_EQ(run(graph("0.1", ", resample: 100")), "");
    EXPECT_EQ(warningsOfRun(), "");
    folder.write("in.csv", table(12000, [](int i) { return 0.01 * i + (i % 2 == 1 ? 0.009 : 0.0); }));
    EXPECT_EQ(run(graph("0.1")), "");
    EXPECT_EQ(warningsOfRun(), "") << "it was told before";
    EXPECT_EQ(outcome.doubts.size(), 1u);
}

TEST_F(RateReviewTest, OfAPipeItIsToldAtTheEnd) {
    Support::StandardPipe input(STDIN_FILENO);
    input.write(table(100, [](int i) { return 0.01 * i + (i % 2 == 1 ? 0.009 : 0.0); }));
    input.close();
    EXPECT_EQ(run(graph("0.1", "", "x", "\"-\"")), "");
    EXPECT_TRUE(outcome.doubts.empty());
    EXPECT_NE(warningsOfRun().find(" % of the steps in standard input differ from their mean"),
              std::string::npos)
        << warningsOfRun();
}

} // namespace
