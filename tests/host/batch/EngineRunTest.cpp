// SPDX-License-Identifier: MIT
// What an engine is told and what its answers do. The engines are shells.
#include "host/batch/EngineRun.h"
#include "host/batch/RunStatus.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <stop_token>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using State = BatchEnd::State;

class EngineRunTest : public testing::Test {
protected:
    EngineRunTest() {
        for (const char* const name : {"a", "b", "c"}) {
            BatchPlan::Entry& entry = plan.entries.emplace_back();
            entry.recording = name + std::string(".csv");
            entry.folder = folder.path(name);
            entry.words = {"run", "g.yaml", "--input", "in=" + entry.recording, "--folder", entry.folder};
        }
    }

    /// Gives the second and the third to an engine.
    int run(const std::string& script, const std::string& arrivals = {}) {
        EngineOptions options;
        options.program = {"/bin/sh", "-c", "cd " + folder.path("") + "; " + script};
        options.environment = {{"ENGINE_TEST", "said anew"}};
        options.settings = "{}";
        options.arrivals = arrivals;
        const BatchOptions calls{.worker = {}, .words = {"--quiet"}, .graphs = {{"g.yaml", "abc"}}};
        EngineRun engine(plan, {1, 2}, calls, options, tally);
        return engine.run(stop.get_token(), [&](const BatchProgress& progress) {
            if (progress.running == 2) wasRunning = true;
            if (progress.running == 2 && stops) stop.request_stop();
        });
    }
    State stateOf(std::size_t recording) const { return tally.getEnds()[recording].state; }
    void makeStatus(const std::string& place, const std::string& state, const std::string& began) const {
        RunStatus status;
        status.state = state;
        status.began = began;
        std::filesystem::create_directories(folder.path(place));
        writeStatus(folder.path(place), status);
    }

    Support::TemporaryFolder folder;
    BatchPlan plan;
    BatchTally tally{3};
    std::stop_source stop;
    bool stops = false;
    bool wasRunning = false;
};

TEST_F(EngineRunTest, ItReadsSettingsAndCallsAndAnswersByTheirNumber) {
    EXPECT_EQ(
        run("cat > told; echo \"$ENGINE_TEST\" > variable; echo running 2; echo done 1; echo no answer; "
            "echo done 7; echo done 1; printf 'failed 0 quillmere: one\\036two\\n'"),
        0);
    const std::string b = "run g.yaml --input in=b.csv --folder " + folder.path("b");
    const std::string c = "run g.yaml --input in=c.csv --folder " + folder.path("c");
    const std::string more = " --quiet --graph-hash abc\n";
    EXPECT_EQ(folder.read("told"), "{}\n" + b + more + c + more);
    EXPECT_EQ(folder.read("variable"), "said anew\n");
    EXPECT_EQ(stateOf(0), State::Waiting);
    EXPECT_EQ(stateOf(1), State::Failed);
    EXPECT_EQ(tally.getEnds()[1].text, "one\ntwo");
    EXPECT_EQ(stateOf(2), State::Done);
    EXPECT_EQ(tally.getProgress().done, 1u);
    EXPECT_TRUE(wasRunning);
    EXPECT_EQ(tally.getProgress().running, 0u);
}

TEST_F(EngineRunTest, AProcessThatIsGoneLeavesAStatusHere) {
    EXPECT_EQ(run("echo crashed 0 its process was ended; exit 3"), 3);
    EXPECT_EQ(stateOf(1), State::Failed);
    const auto status = readStatus(folder.path("b/status.json"));
    ASSERT_TRUE(status);
    EXPECT_EQ(status->state, "crashed");
    EXPECT_EQ(status->failure, "its process was ended");
}

TEST_F(EngineRunTest, WhatIsDoneAndUntoldIsFound) {
    makeStatus("b", RunStatus::kDone, "2001-01-01T00:00:00.000Z");
    makeStatus("c", RunStatus::kDone, "9999-01-01T00:00:00.000Z");
    EXPECT_EQ(run("kill -9 $$"), 128 + SIGKILL);
    EXPECT_EQ(stateOf(1), State::Waiting) << "that is of an earlier batch";
    EXPECT_EQ(stateOf(2), State::Done);
}

TEST_F(EngineRunTest, AStopIsTold) {
    stops = true;
    EXPECT_EQ(run("trap 'echo interrupted 0; exit 0' TERM; echo running 2; while :; do sleep 0.01; done"), 0);
    EXPECT_EQ(stateOf(1), State::Interrupted);
    EXPECT_EQ(stateOf(2), State::Waiting);
}

TEST_F(EngineRunTest, WhatArrivesReplacesWhatAnEarlierRunHasMade) {
    makeStatus("b", RunStatus::kDone, "2001-01-01T00:00:00.000Z");
    makeStatus("arrivals/0", RunStatus::kDone, "2026-01-01T00:00:00.000Z");
    folder.write("arrivals/0/out.csv", "new");
    makeStatus("arrivals/1", RunStatus::kFailed, "2026-01-01T00:00:00.000Z");
    folder.write("arrivals/1/out.csv", "new");
    std::filesystem::create_directory(folder.path("c"));
    folder.write("c/out.csv", "somebody's own");
    EXPECT_EQ(run("echo done 0; echo failed 1 why", folder.path("arrivals")), 0);
    EXPECT_EQ(stateOf(1), State::Done);
    EXPECT_EQ(folder.read("b/out.csv"), "new");
    EXPECT_EQ(readStatus(folder.path("b/status.json"))->began, "2026-01-01T00:00:00.000Z");
    EXPECT_FALSE(folder.has("arrivals/0"));
    EXPECT_EQ(stateOf(2), State::Failed);
    EXPECT_NE(tally.getEnds()[2].text.find("which no run has written"), std::string::npos);
    EXPECT_EQ(folder.read("c/out.csv"), "somebody's own");
    EXPECT_FALSE(folder.has("c/status.json"));
}

} // namespace
