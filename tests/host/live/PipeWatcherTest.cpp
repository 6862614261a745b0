// SPDX-License-Identifier: MIT
#include "host/live/PipeWatcher.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <system_error>

namespace {

using Quillmere::Core::Synchronizer;
using Quillmere::Host::PipeWatcher;

constexpr std::chrono::seconds kPatience{30};

/// A pipe whose reader a watcher watches for two gates.
class PipeWatcherTest : public testing::Test {
protected:
    PipeWatcherTest() {
        if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
            throw std::system_error(errno, std::generic_category());
        watcher.start();
    }
    ~PipeWatcherTest() override {
        watcher.stop();
        for (const int end : ends)
            if (end >= 0) ::close(end);
    }

    void write() const { ASSERT_EQ(::write(ends[1], "x", 1), 1); }
    void read() const {
        char c = 0;
        ASSERT_EQ(::read(ends[0], &c, 1), 1);
    }
    void closeWriter() {
        ::close(ends[1]);
        ends[1] = -1;
    }
    /// Sleeps as a layout does; false when nothing came.
    static bool isStirred(Synchronizer& gate, std::chrono::milliseconds patience = kPatience) {
        gate.sleep(Synchronizer::Clock::now() + patience);
        return gate.takeReasons() == Synchronizer::kStir;
    }
    /// Whether nothing comes; a false yes would need a watcher that is late.
    static bool isLeftAlone(Synchronizer& gate) { return !isStirred(gate, std::chrono::milliseconds(20)); }

    Synchronizer gate;
    Synchronizer other;
    PipeWatcher watcher;
    int ends[2] = {-1, -1};
};

TEST_F(PipeWatcherTest, StirsTheGateWhenSomethingComes) {
    watcher.watch(ends[0], gate);
    EXPECT_TRUE(isLeftAlone(gate));
    write();
    EXPECT_TRUE(isStirred(gate));
}

TEST_F(PipeWatcherTest, StirsAtOnceWhatHasSomethingAlready) {
    write();
    watcher.watch(ends[0], gate);
    EXPECT_TRUE(isStirred(gate));
}

TEST_F(PipeWatcherTest, StirsOnceForEachTimeItIsAsked) {
    watcher.watch(ends[0], gate);
    write();
    EXPECT_TRUE(isStirred(gate));
    write();
    EXPECT_TRUE(isLeftAlone(gate)) << "nobody has asked again";
    watcher.watch(ends[0], gate);
    EXPECT_TRUE(isStirred(gate));
    read();
    read();
    watcher.watch(ends[0], gate);
    EXPECT_TRUE(isLeftAlone(gate)) << "there is nothing to read";
}

TEST_F(PipeWatcherTest, StirsWhenTheWriterIsGone) {
    watcher.watch(ends[0], gate);
    closeWriter();
    EXPECT_TRUE(isStirred(gate));
    watcher.watch(ends[0], gate);
    EXPECT_TRUE(isStirred(gate)) << "and for everyone who asks later";
}

TEST_F(PipeWatcherTest, OfTwoGatesTheLastIsStirred) {
    watcher.watch(ends[0], gate);
    watcher.watch(ends[0], other);
    write();
    EXPECT_TRUE(isStirred(other));
    EXPECT_TRUE(isLeftAlone(gate));
}

TEST_F(PipeWatcherTest, WhatCanNotBeWatchedIsRefused) {
    try {
        watcher.watch(-1, gate);
        ADD_FAILURE() << "no refusal";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::bad_file_descriptor);
        EXPECT_TRUE(std::string(error.what()).starts_with("a pipe cannot be watched")) << error.what();
    }
}

TEST_F(PipeWatcherTest, StopsTwiceAndWithoutAStart) {
    watcher.watch(ends[0], gate);
    watcher.stop();
    watcher.stop();
    write();
    EXPECT_TRUE(isLeftAlone(gate)) << "who is stopped stirs nobody";
    PipeWatcher idle;
    idle.stop();
}

} // namespace
