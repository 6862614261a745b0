// SPDX-License-Identifier: MIT
// Batches that are ended in order and out of it, and what is left for the next.
#include "tests/cli/BatchFixture.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/types.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Support::Ended;
using Support::Program;
namespace fs = std::filesystem;

/// The processes whose parent is `parent`.
std::vector<pid_t> childrenOf(pid_t parent) {
    std::vector<pid_t> children;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
        const std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        std::ifstream file(entry.path() / "stat");
        std::string text;
        if (!std::getline(file, text)) continue; // it has just ended
        std::istringstream rest(text.substr(text.rfind(')') + 1));
        std::string state;
        pid_t of = 0;
        if (rest >> state >> of && of == parent) children.push_back(std::stoi(name));
    }
    return children;
}

bool getLives(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    return std::getline(file, text) && text.find(") Z") == std::string::npos;
}

class BatchResume : public Support::BatchFixture {
protected:
    /// When each recording that is done was begun.
    std::map<std::string, std::string> begins() const {
        std::map<std::string, std::string> times;
        if (!folder.has("results")) return times;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder.path("results"))) {
            if (entry.path().filename() != "status.json") continue;
            const std::string name =
                entry.path().parent_path().lexically_relative(folder.path("results")).string();
            if (status(name, "state") == "done") times.emplace(name, status(name, "began"));
        }
        return times;
    }
    void waitForSome(std::size_t count) const {
        for (int i = 0; i < 30000 && begins().size() < count; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
};

TEST_F(BatchResume, EndsInOrderWhenItIsTold) {
    writeSlow(12, 100);
    const std::string last = "study/p2/day11.csv";
    const std::string whole = folder.read(last);
    std::string isLong = whole; // so that the batch isn't over, however late the signal comes
    for (int row = 100; row < 20000; ++row)
        isLong += std::to_string(row) + ",-1\n";
    folder.write(last, isLong);
    Program program(batchWords({"--jobs", "2"}), folder.path(""));
    waitForSome(2);
    program.signal(SIGINT);
    const Ended ended = program.wait();
    EXPECT_EQ(ended.exitCode, 1) << ended.err;
    EXPECT_NE(ended.out.find(" left (in "), std::string::npos) << ended.out;
    EXPECT_NE(ended.err.find("interrupted; the same with --resume does the rest\n"), std::string::npos);
    EXPECT_EQ(ended.err.find("failed: "), std::string::npos) << "nothing is wrong with them";
    const auto before = begins();
    EXPECT_GE(before.size(), 2u);
    EXPECT_LT(before.size(), 12u);
    folder.write(last, whole);
    EXPECT_EQ(batch({"--resume"}).exitCode, 0);
    const auto after = begins();
    EXPECT_EQ(after.size(), 12u);
    for (const auto& [name, time] : before)
        EXPECT_EQ(after.at(name), time) << name << " isn't done twice";
}

TEST_F(BatchResume, AWorkerThatIsKilledLosesOneRecording) {
    constexpr int kMostTries = 20; // one that is killed when its recording is over loses none
    writeSlow(8, 100);
    Ended ended;
    for (int i = 0; i < kMostTries && ended.exitCode != 1; ++i) {
        std::filesystem::remove_all(folder.path("results"));
        Program program(batchWords({"--jobs", "2"}), folder.path(""));
        waitForSome(1);
        const std::vector<pid_t> workers = childrenOf(program.getProcess());
        ASSERT_FALSE(workers.empty());
        ::kill(workers.front(), SIGKILL);
        ended = program.wait();
    }
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_TRUE(ended.out.starts_with("8 recordings: 7 done, 1 failed")) << ended.out;
    EXPECT_NE(ended.err.find(": its process was ended by signal 9 (Killed)\n  again: "), std::string::npos)
        << ended.err;
    EXPECT_TRUE(batch({"--resume"}).out.starts_with("8 recordings: 8 done (7 before), 0 failed"));
}

TEST_F(BatchResume, WorkersEndWithABatchThatIsKilled) {
    writeSlow(2, 20000);
    Program program(batchWords({"--jobs", "2"}), folder.path(""));
    std::vector<pid_t> workers;
    for (int i = 0; i < 30000 && workers.size() < 2; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        workers = childrenOf(program.getProcess());
    }
    ASSERT_EQ(workers.size(), 2u);
    program.signal(SIGKILL);
    program.wait();
    // Each of them has a recording that takes 20 s.
    for (const pid_t worker : workers)
        for (int i = 0; getLives(worker); ++i) {
            ASSERT_LT(i, 2500) << "it goes on";
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
}

TEST_F(BatchResume, ARunThatIsKilledLeavesNoStatusOfAnEarlierOne) {
    writeRecording("a.csv", "0,1\n");
    const std::vector<std::string> run{"run",      "g.yaml",    "--input",  "in=a.csv",
                                       "--folder", "results/a", "--plugin", CRASH_PLUGIN};
    ASSERT_EQ(call(run).exitCode, 0);
    std::string slow;
    for (int i = 0; i < 20000; ++i)
        slow += std::to_string(i) + ",-1\n";
    writeRecording("a.csv", slow);
    Program program(words(run), folder.path(""));
    for (int i = 0; i < 30000 && !folder.has("results/a/out.csv.partial"); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    EXPECT_TRUE(folder.has("results/a/out.csv.partial"));
    program.signal(SIGKILL);
    program.wait();
    EXPECT_FALSE(folder.has("results/a/status.json"));
}

/// Killed at random, a batch and its workers, and resumed until all is done: the bytes of an undisturbed
/// batch, and what was done stays.
TEST_F(BatchResume, KilledAtRandomItComesToTheSame) {
    constexpr int kRecordings = 24;
    constexpr int kKills = 6; // scripts/batch-check does more
    writeSlow(kRecordings, 30);
    ASSERT_EQ(batch().exitCode, 0);
    const auto undisturbed = results();
    fs::rename(folder.path("results"), folder.path("before"));
    std::mt19937 random(17);
    std::map<std::string, std::string> done;
    for (int i = 0; i < kKills; ++i) {
        Program program(batchWords({"--resume", "--jobs", "2"}), folder.path(""));
        std::this_thread::sleep_for(std::chrono::milliseconds(60 + random() % 120));
        const std::vector<pid_t> workers = childrenOf(program.getProcess());
        if (i % 2 == 1 && !workers.empty()) {
            ::kill(workers[random() % workers.size()], SIGKILL);
            std::this_thread::sleep_for(std::chrono::milliseconds(random() % 50));
        }
        program.signal(SIGKILL);
        program.wait();
        const auto now = begins();
        for (const auto& [name, time] : done)
            EXPECT_EQ(now.at(name), time) << name << " isn't done twice";
        done = now;
    }
    const Ended last = batch({"--resume"});
    EXPECT_EQ(last.exitCode, 0) << last.err;
    EXPECT_EQ(results(), undisturbed);
    const auto now = begins();
    for (const auto& [name, time] : done)
        EXPECT_EQ(now.at(name), time) << name << " isn't done twice";
}

} // namespace
