// SPDX-License-Identifier: MIT
// How live runs end: by themselves, when they are told, and when something fails.
#include "tests/host/kit/LiveFixture.h"
#include "tests/host/kit/NoThreads.h"
#include "tests/support/Allocations.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <future>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Support::Fifo;
using Support::sinkLine;
using Support::sourceLine;
using Support::waitUntil;
using State = LiveRun::State;

/// A pipe through blocks to `out.csv`.
std::string piped(const std::string& blocks, const std::string& connections) {
    return "format: 1\nlayouts: [{id: one}, {id: two}]\nblocks:\n" + sourceLine("in", "pipe", "x: x") +
           blocks + sinkLine("out", "out.csv") + "connections:\n" + connections;
}
const std::string kStraight = piped("", "  - {from: in, to: out.x}\n");
const std::string kBuffered = piped("  - {id: three, type: OddThrice}\n",
                                    "  - {from: in, to: three}\n  - {from: three, to: out.x, buffer: 99}\n");

class LiveEndTest : public Support::LiveFixture {
protected:
    LiveEndTest() : pipe(folder.path("pipe")) { pipe.write("t,x\n"); }

    bool waitForRows(std::uint64_t count) {
        return waitUntil([&] { return liveRun->getProgress().rounds >= count; });
    }

    Fifo pipe;
};

TEST_F(LiveEndTest, AStopEndsARunWhole) {
    prepare(kStraight);
    EXPECT_EQ(liveRun->getState(), State::Ready);
    liveRun->start();
    EXPECT_EQ(liveRun->getState(), State::Running);
    EXPECT_FALSE(liveRun->waitFor(std::chrono::milliseconds(5))) << "the pipe is open";
    pipe.write("0,1\n1,2\n");
    ASSERT_TRUE(waitForRows(2));
    EXPECT_EQ(liveRun->getState(), State::Running);
    liveRun->stop();
    EXPECT_EQ(end(), "");
    EXPECT_EQ(liveRun->getState(), State::Ended);
    EXPECT_TRUE(liveRun->waitFor(std::chrono::milliseconds(0)));
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1\n1,2\n");
    EXPECT_FALSE(folder.has("out.csv.partial"));
    EXPECT_EQ(liveRun->getProgress().rows, 2u);
}

TEST_F(LiveEndTest, WhatIsInTheLinksComesOutAfterAStop) {
    start(kBuffered);
    pipe.write("0,1\n1,2\n");
    ASSERT_TRUE(waitForRows(2));
    EXPECT_EQ(linkStatistics("out.x").waiting, 4u);
    liveRun->stop();
    EXPECT_EQ(end(), "");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1.25\n1,1.5\n1,1.75\n1,2.25\n1,2.5\n1,2.75\n");
}

TEST_F(LiveEndTest, AnInterruptLeavesEverythingWhereItIs) {
    folder.write("out.csv", "t,x[0]\n-1,-2\n");
    start(kBuffered);
    pipe.write("0,1\n1,2\n");
    ASSERT_TRUE(waitForRows(2));
    liveRun->interrupt("the user said so");
    liveRun->interrupt("and again");
    liveRun->stop();
    EXPECT_EQ(end(), "the user said so") << "of several reasons the first counts";
    EXPECT_EQ(liveRun->getState(), State::Failed);
    EXPECT_EQ(folder.read("out.csv.partial"), "t,x[0]\n0,1.25\n1,1.5\n");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n-1,-2\n");
    EXPECT_THROW(liveRun->wait(), RunException) << "however often one asks";
}

TEST_F(LiveEndTest, ItsOutcomeTellsWhetherSomebodyHasEndedIt) {
    start(kStraight);
    pipe.write("0,1\n");
    ASSERT_TRUE(waitForRows(1));
    liveRun->interrupt("enough");
    EXPECT_EQ(end(), "enough");
    EXPECT_TRUE(liveRun->getOutcome().isInterrupted);
    EXPECT_FALSE(liveRun->getOutcome().failedBlock.has_value());
    EXPECT_TRUE(liveRun->getOutcome().hasBegun);
}

TEST_F(LiveEndTest, ItsOutcomeNamesTheBlockThatFailedAndWhatItFound) {
    start(piped("  - {id: hot, layout: two, type: OddFailing, properties: {good: 0}}\n",
                "  - {from: in, to: hot}\n  - {from: hot, to: out.x, buffer: 9}\n"));
    pipe.write("0,1\n");
    EXPECT_TRUE(end().starts_with("block 'hot' (OddFailing of "));
    const RunOutcome& failed = liveRun->getOutcome();
    ASSERT_TRUE(failed.failedBlock.has_value());
    EXPECT_EQ(failed.failedBlock->block, "hot");
    EXPECT_EQ(failed.failedBlock->type, "OddFailing");
    EXPECT_FALSE(failed.isInterrupted);

    folder.write("in.csv", "t,x\n0,one\n");
    EXPECT_NE(runLive("format: 1\nblocks:\n" + sourceLine("file", "in.csv", "x: x") +
                      sinkLine("out", "out.csv") + "connections: [{from: file, to: out.x}]\n"),
              "");
    const RunOutcome& unread = liveRun->getOutcome(); // at its first row, before any thread
    ASSERT_TRUE(unread.failedBlock.has_value());
    EXPECT_EQ(unread.failedBlock->block, "file");
    ASSERT_EQ(unread.complaints.size(), 1u);
    EXPECT_EQ(unread.complaints[0].where.line, 2);
    try {
        liveRun->wait();
        ADD_FAILURE() << "nothing is raised";
    } catch (const RunException& exception) {
        EXPECT_EQ(exception.getComplaints().size(), 1u);
    }
}

TEST_F(LiveEndTest, ARunForWhichNoThreadCanBeMadeFailsInAMessage) {
    prepare(kStraight);
    {
        const Support::NoThreads none;
        liveRun->start();
    }
    EXPECT_EQ(end(), "no thread can be made: Resource temporarily unavailable");
    EXPECT_EQ(liveRun->getState(), State::Failed);
    EXPECT_TRUE(folder.has("out.csv.partial"));
    EXPECT_FALSE(liveRun->getOutcome().getIsWhole());
}

TEST_F(LiveEndTest, ARunThatFindsNoMemoryAtItsStartEnds) {
    if (!Support::MemoryShortage::getIsPossible()) GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
    const std::string text = "format: 1\nblocks:\n" + sourceLine("file", "in.csv", "x: x") +
                             sinkLine("out", "out.csv") + "connections: [{from: file, to: out.x}]\n";
    prepare(text);
    const Support::AllocationCounter counter;
    liveRun->start();
    const std::uint64_t allocations = counter.count();
    EXPECT_EQ(end(), "");
    EXPECT_GT(allocations, 0u);
    std::vector<std::string> failures;
    for (std::uint64_t granted = 0; granted < allocations; ++granted) {
        prepare(text);
        try {
            const Support::MemoryShortage shortage(granted);
            liveRun->start();
        } catch (const std::bad_alloc&) {
            // The result couldn't be begun, so nothing has.
            ASSERT_EQ(liveRun->getState(), State::Ready) << granted;
            continue;
        }
        failures.push_back(end());
        ASSERT_GE(liveRun->getState(), State::Ended) << granted;
    }
    ASSERT_FALSE(failures.empty());
    EXPECT_EQ(failures.front(), "out of memory");
}

TEST_F(LiveEndTest, TheEndOfItsPipeEndsARun) {
    start(kStraight);
    pipe.write("0,1\n\n2,3");
    pipe.close();
    EXPECT_EQ(end(), "");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1\n2,3\n") << "as the end of a file does";
}

TEST_F(LiveEndTest, ARunEndsWithTheLastOfItsSources) {
    start("format: 1\nblocks:\n" + sourceLine("in", "pipe", "x: x") + sourceLine("file", "in.csv", "y: y") +
          sinkLine("out", "out.csv") + "connections: [{from: in, to: out.x}, {from: file, to: out.y}]\n");
    ASSERT_TRUE(waitForRows(3)) << "of the recording";
    pipe.write("7,1\n");
    ASSERT_TRUE(waitForRows(4));
    EXPECT_EQ(liveRun->getState(), State::Running);
    pipe.close();
    EXPECT_EQ(end(), "");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0],y[0]\n0,,10\n0.5,,20\n1,,30\n7,1,\n");
}

TEST_F(LiveEndTest, ARunThatIsStoppedOrInterruptedBeforeItsStartEndsAtOnce) {
    prepare(kStraight);
    liveRun->stop();
    EXPECT_EQ(liveRun->getState(), State::Ready);
    liveRun->start();
    EXPECT_EQ(end(), "");
    EXPECT_EQ(folder.read("out.csv"), "t\n");

    pipe.write("t,x\n");
    prepare(kStraight);
    liveRun->interrupt("never mind");
    liveRun->start();
    EXPECT_EQ(end(), "never mind");
    EXPECT_TRUE(folder.has("out.csv.partial"));
}

TEST_F(LiveEndTest, ARunThatIsGivenUpEndsAllTheSame) {
    start(kBuffered);
    pipe.write("0,1\n");
    ASSERT_TRUE(waitForRows(1));
    liveRun.reset();
    EXPECT_EQ(folder.read("out.csv.partial"), "t,x[0]\n0,1.25\n");
    EXPECT_FALSE(folder.has("out.csv"));
    pipe.write("t,x\n");
    prepare(kStraight);
    liveRun.reset(); // without a start
    EXPECT_FALSE(folder.has("out.csv"));
}

TEST_F(LiveEndTest, EveryoneWhoWaitsHearsOfTheEnd) {
    start(kStraight);
    const auto waits = [this] { liveRun->wait(); };
    auto first = std::async(std::launch::async, waits);
    auto second = std::async(std::launch::async, waits);
    pipe.write("0,1\n");
    ASSERT_TRUE(waitForRows(1));
    liveRun->interrupt("enough");
    EXPECT_THROW(first.get(), RunException);
    EXPECT_THROW(second.get(), RunException);
}

TEST_F(LiveEndTest, ABlockThatRaisesEndsAllLayouts) {
    start(piped(
        "  - {id: hot, layout: two, type: OddFailing, properties: {good: 2}}\n" +
            sinkLine("other", "other.csv", "two"),
        "  - {from: in, to: out.x}\n  - {from: in, to: hot, buffer: 9}\n  - {from: hot, to: other.x}\n"));
    pipe.write("0,1\n1,2\n2.5,3\n");
    EXPECT_EQ(end(), "block 'hot' (OddFailing of " + std::filesystem::canonical(ODD_PLUGIN).string() +
                         ") at 2.5 s: Runtime exception: overheated")
        << "the time of its sample, since its layout has no rounds";
    EXPECT_EQ(liveRun->getState(), State::Failed);
    EXPECT_EQ(folder.read("other.csv.partial"), "t,x[0]\n0,1\n1,2\n");
    EXPECT_TRUE(folder.has("out.csv.partial"));
    EXPECT_FALSE(folder.has("out.csv"));
}

TEST_F(LiveEndTest, WhateverABlockRaisesEndsTheRunInOrder) {
    start(piped("  - {id: hot, type: OddFailing, properties: {good: 1, strange: true}}\n",
                "  - {from: in, to: hot}\n  - {from: hot, to: out.x}\n"));
    pipe.write("0,1\n1,2\n");
    EXPECT_EQ(end(), "block 'hot' (OddFailing of " + std::filesystem::canonical(ODD_PLUGIN).string() +
                         ") at 1 s: something that is no std::exception");
    EXPECT_EQ(folder.read("out.csv.partial"), "t,x[0]\n0,1\n");
}

TEST_F(LiveEndTest, ABadRowInAPipeEndsTheRun) {
    start(kStraight);
    pipe.write("0,1\n1,oops\n2,3\n");
    EXPECT_EQ(end(),
              "block 'in' (RecordingSource) at 0 s: pipe:3: column 'x': found \"oops\"; expected a number");
    EXPECT_EQ(folder.read("out.csv.partial"), "t,x[0]\n0,1\n");
}

TEST_F(LiveEndTest, AFullDiskEndsTheRun) {
    start("format: 1\nblocks:\n" + sourceLine("in", "pipe", "x: x") + sinkLine("out", "/dev/full") +
          sinkLine("other", "out.csv") + "connections: [{from: in, to: out.x}, {from: in, to: other.x}]\n");
    pipe.write("3,1\n");
    EXPECT_EQ(end(),
              "block 'out' (RecordingSink) at 3 s: /dev/full: cannot be written: No space left on device");
    EXPECT_TRUE(folder.has("out.csv.partial"));
    EXPECT_FALSE(folder.has("out.csv"));
}

/// A result that goes into a pipe.
class PipedResultTest : public LiveEndTest {
protected:
    PipedResultTest() : path(folder.path("result")) {
        std::signal(SIGPIPE, SIG_IGN);
        if (::mkfifo(path.c_str(), 0600) == 0)
            reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    }
    ~PipedResultTest() override { closeReader(); }

    void closeReader() {
        if (reader >= 0) ::close(reader);
        reader = -1;
    }
    /// Reads until so many lines have come.
    std::string readLines(std::size_t count) const {
        std::string text;
        const bool isThere = waitUntil([&] {
            char piece[256];
            const ssize_t size = ::read(reader, piece, sizeof piece);
            if (size > 0) text.append(piece, static_cast<std::size_t>(size));
            return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) >= count;
        });
        EXPECT_TRUE(isThere) << text;
        return text;
    }

    const std::string path;
    const std::string graph = "format: 1\nblocks:\n" + sourceLine("in", "pipe", "x: x") +
                              sinkLine("out", "result") + "connections: [{from: in, to: out.x}]\n";
    int reader = -1;
};

TEST_F(PipedResultTest, RowsGoOutOneByOne) {
    start(graph);
    pipe.write("0,1\n");
    EXPECT_EQ(readLines(2), "t,x[0]\n0,1\n");
    pipe.write("1,");
    pipe.write("2\n2,3\n");
    EXPECT_EQ(readLines(2), "1,2\n2,3\n");
    liveRun->stop();
    EXPECT_EQ(end(), "");
}

TEST_F(PipedResultTest, AReaderThatGoesAwayEndsTheRun) {
    start(graph);
    pipe.write("0,1\n");
    EXPECT_EQ(readLines(2), "t,x[0]\n0,1\n");
    closeReader();
    pipe.write("1.5,2\n");
    EXPECT_EQ(end(), "block 'out' (RecordingSink) at 1.5 s: result: cannot be written: Broken pipe");
}

TEST_F(PipedResultTest, ARunEndsAlthoughNobodyReadsWhatItWrites) {
    std::string text = "t,x\n";
    for (int i = 0; i < 20000; ++i)
        text += std::to_string(i) + ",0.123456\n";
    folder.write("long.csv", text); // more than a pipe holds
    start("format: 1\nblocks:\n" + sourceLine("in", "long.csv", "x: x") + sinkLine("out", "result") +
          "connections: [{from: in, to: out.x}]\n");
    std::uint64_t rounds = 0;
    ASSERT_TRUE(waitUntil([&] { // until it waits for the reader
        const std::uint64_t before = std::exchange(rounds, liveRun->getProgress().rounds);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        return rounds > 1000 && rounds == before;
    }));
    liveRun->interrupt("enough");
    EXPECT_EQ(end(), "enough");
    EXPECT_LT(liveRun->getProgress().rows, 20000u);
}

} // namespace
