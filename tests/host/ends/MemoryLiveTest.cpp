// SPDX-License-Identifier: MIT
#include "host/ends/MemoryEnds.h"

#include "tests/host/kit/LiveFixture.h"
#include "tests/support/Numbers.h"

#include <cmath>
#include <string>

namespace {

using namespace Quillmere;
using Host::SampleSeries;
using Support::agree;
using Support::same;

class MemoryLiveTest : public Support::LiveFixture {
protected:
    MemoryLiveTest() {
        ends.addTo(catalogue);
        Core::MatrixXd rows(kRows, 2);
        for (int i = 0; i < kRows; ++i) {
            rows(i, 0) = std::sin(0.2 * i);
            rows(i, 1) = std::cos(0.3 * i);
        }
        ends.setRecording("in", {.pins = {{"x", SampleSeries::ofRows(rows)}}, .rate = 1000.0});
    }
    static std::string graph(const std::string& layout) {
        return "format: 1\nlayouts: [{id: one}, {id: two}]\nblocks:\n  - {id: in, layout: one, type: "
               "MemorySource}\n"
               "  - {id: smooth, layout: one, type: FilterButterworth, properties: {RelativeCutOffFreq: "
               "0.1}}\n"
               "  - {id: out, layout: " +
               layout +
               ", type: MemorySink}\nconnections: [{from: in.x, to: smooth.in}, {from: smooth, to: out.x}]\n";
    }

    static constexpr int kRows = 3000;
    Host::MemoryEnds ends;
};

TEST_F(MemoryLiveTest, ALiveRunGivesTheBitsOfAnOfflineOne) {
    ASSERT_EQ(run(graph("one")), "");
    const Host::TimedSamples offline = ends.read("out", "x");
    ASSERT_EQ(offline.times.size(), static_cast<std::size_t>(kRows));
    for (const char* const layout : {"one", "two"}) {
        ASSERT_EQ(runLive(graph(layout)), "") << layout;
        EXPECT_TRUE(ends.getIsComplete("out"));
        const Host::TimedSamples live = ends.read("out", "x");
        EXPECT_EQ(live.times, offline.times) << layout;
        EXPECT_TRUE(agree(live.samples.getRows(), offline.samples.getRows(), same)) << layout;
        EXPECT_EQ(liveRun->getOutcome().results.at(0).rows, static_cast<std::uint64_t>(kRows)) << layout;
    }
}

TEST_F(MemoryLiveTest, WhatHasComeIsReadMeanwhile) {
    start(graph("two"), {.speed = 20.0});
    std::vector<double> times;
    while (times.size() < static_cast<std::size_t>(kRows) && !::testing::Test::HasFailure()) {
        const Host::TimedSamples more = ends.read("out", "x", times.size());
        ASSERT_EQ(more.times.size(), more.samples.getSize()) << "both of one instant";
        times.insert(times.end(), more.times.begin(), more.times.end());
        if (liveRun->waitFor(std::chrono::milliseconds(1)) && more.times.empty()) break;
    }
    ASSERT_EQ(end(), "");
    ASSERT_GT(times.size(), 0u);
    std::vector<double> all = ends.read("out", "x").times;
    ASSERT_GE(all.size(), times.size());
    all.resize(times.size());
    EXPECT_EQ(times, all);
}

} // namespace
