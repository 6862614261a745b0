// SPDX-License-Identifier: MIT
// What becomes of recordings by what their workers do. The workers are shells, which read a line from the
// socket that is their standard input, and answer there.
#include "host/batch/BatchRun.h"
#include "host/batch/RunStatus.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using State = BatchEnd::State;

class BatchRunTest : public testing::Test {
protected:
    BatchRunTest() {
        for (const char* const name : {"a", "b", "c"}) {
            BatchPlan::Entry& entry = plan.entries.emplace_back();
            entry.recording = name + std::string(".csv");
            entry.folder = folder.path(name);
            entry.words = {"run", entry.recording, "--folder", entry.folder};
        }
    }

    /// `script` does what a worker does for the line in `$line`.
    std::vector<State> run(const std::string& script, std::size_t jobs = 1) {
        batch.emplace(plan,
                      BatchOptions{.worker = {"/bin/sh", "-c", "while read -r line; do " + script + "; done"},
                                   .jobs = jobs,
                                   .words = {"--quiet"}});
        batch->run(stop.get_token(), [](const BatchProgress&) {});
        std::vector<State> states;
        for (const BatchEnd& end : batch->getEnds())
            states.push_back(end.state);
        return states;
    }
    std::string stateIn(const std::string& name) const {
        const auto status = readStatus(folder.path(name + "/status.json"));
        return status ? status->state : "none";
    }
    void writeDone(const std::string& name, const std::string& began) const {
        RunStatus status;
        status.state = RunStatus::kDone;
        status.began = began;
        std::filesystem::create_directories(folder.path(name));
        writeStatus(folder.path(name), status);
    }

    Support::TemporaryFolder folder;
    BatchPlan plan;
    std::stop_source stop;
    std::optional<BatchRun> batch;
};

TEST_F(BatchRunTest, AnswersSayWhatBecameOfARecording) {
    EXPECT_EQ(run("case $line in *a.csv*) echo done >&0;; *b.csv*) echo kept >&0;; "
                  "*) echo 'quillmere: no room' >&2; echo failed >&0;; esac"),
              (std::vector<State>{State::Done, State::Kept, State::Failed}));
    EXPECT_EQ(batch->getEnds()[2].text, "no room");
    const BatchProgress& progress = batch->getProgress();
    EXPECT_EQ(progress.done, 2u);
    EXPECT_EQ(progress.kept, 1u);
    EXPECT_EQ(progress.failed, 1u);
    EXPECT_EQ(progress.running, 0u);
}

TEST_F(BatchRunTest, AWorkerTakesSeveralAndGetsTheWordsOfEach) {
    EXPECT_EQ(run("echo \"$line\" >> " + folder.path("lines") + "; echo $$ >> " + folder.path("pids") +
                  "; echo done >&0"),
              (std::vector<State>{State::Done, State::Done, State::Done}));
    EXPECT_TRUE(folder.read("lines").starts_with("run a.csv --folder " + folder.path("a") + " --quiet\n"));
    const std::string pids = folder.read("pids");
    const std::string first = pids.substr(0, pids.find('\n') + 1);
    EXPECT_EQ(pids, first + first + first);
}

TEST_F(BatchRunTest, AWorkerThatEndsTakesOneRecordingWithIt) {
    for (const std::size_t jobs : {1u, 2u, 3u}) {
        EXPECT_EQ(run("case $line in *b.csv*) echo why >&2; kill -9 $$;; esac; echo done >&0", jobs),
                  (std::vector<State>{State::Done, State::Failed, State::Done}));
        EXPECT_EQ(batch->getEnds()[1].text, "its process was ended by signal 9 (Killed): why");
        EXPECT_EQ(stateIn("b"), "crashed");
    }
    EXPECT_EQ(run("exit 3"), (std::vector<State>{State::Failed, State::Failed, State::Failed}));
    EXPECT_EQ(batch->getEnds()[0].text, "its process ended with the code 3");
}

TEST_F(BatchRunTest, WhatWasDoneBeforeStaysWhereItsWorkerEndsFirst) {
    writeDone("b", "2026-01-01T00:00:00.000Z");
    EXPECT_EQ(run("kill -9 $$")[1], State::Failed);
    EXPECT_EQ(stateIn("b"), "done") << "a run takes the status away when it begins";
}

TEST_F(BatchRunTest, WhatIsDoneCountsWhereOnlyTheAnswerIsMissing) {
    writeDone("b", "9999-01-01T00:00:00.000Z");
    EXPECT_EQ(run("kill -9 $$")[1], State::Done);
}

TEST_F(BatchRunTest, AWorkerThatCantStartIsAFailureOfEach) {
    BatchRun none(plan, {.worker = {"/nowhere/quillmere"}, .jobs = 2});
    none.run({}, [](const BatchProgress&) {});
    EXPECT_EQ(none.getProgress().failed, 3u);
}

TEST_F(BatchRunTest, AStopLetsNoOtherBegin) {
    stop.request_stop();
    EXPECT_EQ(run("echo done >&0"), (std::vector<State>{State::Waiting, State::Waiting, State::Waiting}));
    stop = std::stop_source();
    batch.emplace(plan,
                  BatchOptions{.worker = {"/bin/sh", "-c",
                                          "read -r line; touch " + folder.path("has") + "; exec sleep 100"},
                               .jobs = 1});
    batch->run(stop.get_token(), [&](const BatchProgress&) {
        if (folder.has("has")) stop.request_stop();
    });
    EXPECT_EQ(batch->getEnds()[0].state, State::Interrupted) << batch->getEnds()[0].text;
    EXPECT_EQ(batch->getProgress().failed, 0u);
}

TEST_F(BatchRunTest, AsManyRunAsThereAreJobs) {
    std::size_t most = 0;
    BatchRun three(
        plan,
        {.worker = {"/bin/sh", "-c", "while read -r line; do sleep 0.1; echo done >&0; done"}, .jobs = 3});
    three.run({}, [&](const BatchProgress& progress) { most = std::max(most, progress.running); });
    EXPECT_EQ(most, 3u);
    EXPECT_EQ(three.getProgress().running, 0u);
    EXPECT_EQ(three.getProgress().done, 3u);
}

} // namespace
