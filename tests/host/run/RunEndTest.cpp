// SPDX-License-Identifier: MIT
#include "host/run/RunEnd.h"

#include "host/ends/RecordingException.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using namespace Quillmere::Host;

/// Notes what is done with it, and fails where it is told.
class NotingSink final : public Sink {
public:
    NotingSink(const std::string& name, std::string& list, const std::string& failure = "")
        : Sink(name, true), notes(list), failsAt(failure) {}

    void open() override { note("open"); }
    void finish() override { note("finish"); }
    void complete() override { note("complete"); }
    void abandon() override { note("abandon"); }
    void discard() override { note("discard"); }
    std::uint64_t getRows() const override { return 0; }
    bool getIsComplete() const override { return false; }
    void process() override {}
    const char* getTypeName() const override { return "NotingSink"; }

private:
    void note(const std::string& what) {
        notes += what + " " + getName() + "\n";
        if (what == failsAt) throw std::runtime_error(getName() + " can't " + what);
    }

    std::string& notes;
    const std::string failsAt;
};

class EndSinksTest : public testing::Test {
protected:
    /// Ends `a` and `b`, each of which fails at what is given. Why they aren't whole, or nothing.
    std::string end(bool isWhole, const std::string& failureOfA = "", const std::string& failureOfB = "") {
        notes.clear();
        NotingSink a("a", notes, failureOfA);
        NotingSink b("b", notes, failureOfB);
        ending = endSinks({&a, &b}, isWhole, 0.5);
        return ending.failure;
    }

    std::string notes;
    RunEnding ending;
};

TEST_F(EndSinksTest, AllAreFinishedBeforeOneTakesThePlaceOfAFormerResult) {
    EXPECT_EQ(end(true), "");
    EXPECT_EQ(notes, "finish a\nfinish b\ncomplete a\ncomplete b\n");
}

TEST_F(EndSinksTest, OneThatCantBeFinishedMakesNoneLookWhole) {
    EXPECT_EQ(end(true, "", "finish"), "b can't finish");
    EXPECT_FALSE(ending.isCutShort);
    ASSERT_TRUE(ending.block.has_value());
    EXPECT_EQ(ending.block->block, "b");
    EXPECT_EQ(ending.block->time, 0.5);
    EXPECT_EQ(notes, "finish a\nfinish b\nabandon a\nabandon b\n");
    EXPECT_EQ(end(true, "finish", ""), "a can't finish");
    EXPECT_EQ(notes, "finish a\nfinish b\nabandon a\nabandon b\n") << "the others are finished all the same";
}

TEST_F(EndSinksTest, OneThatCantBeCompletedLeavesThoseBehindItPartial) {
    EXPECT_EQ(end(true, "complete", ""), "a can't complete");
    EXPECT_EQ(notes, "finish a\nfinish b\ncomplete a\nabandon b\n");
}

TEST_F(EndSinksTest, OfSeveralFailuresTheFirstIsRaised) {
    EXPECT_EQ(end(true, "complete", "abandon"), "a can't complete");
    EXPECT_EQ(end(true, "abandon", "finish"), "b can't finish");
}

TEST_F(EndSinksTest, WhatIsNotWholeIsKeptAndItsOwnFailureTellsNothingNew) {
    EXPECT_EQ(end(false, "abandon", ""), "");
    EXPECT_EQ(notes, "abandon a\nabandon b\n");
}

TEST(BeginSinks, OneThatCantBeStartedTakesTheOthersBack) {
    std::string notes;
    NotingSink a("a", notes);
    NotingSink b("b", notes, "open");
    const RunEnding ending = beginSinks({&a, &b});
    EXPECT_EQ(ending.failure, "b can't open");
    EXPECT_EQ(ending.block.value_or(RunOutcome::Spot()).block, "b");
    EXPECT_EQ(notes, "open a\nopen b\ndiscard a\ndiscard b\n");
    EXPECT_TRUE(beginSinks({&a}).getIsWhole());
}

TEST(EndingOf, NamesTheBlockTheTimeAndTheReason) {
    std::string notes;
    const NotingSink block("smooth", notes);
    const std::runtime_error reason("no room");
    const RunEnding ending = endingOf(&block, 12.5, reason);
    EXPECT_EQ(ending.failure, "block 'smooth' (NotingSink) at 12.5 s: no room");
    EXPECT_TRUE(ending.isCutShort);
    EXPECT_FALSE(ending.isInterrupted);
    EXPECT_EQ(ending.complaints.at(0).getText(), ending.failure);
    EXPECT_EQ(ending.complaints.at(0).found, "no room");
    EXPECT_EQ(ending.block.value_or(RunOutcome::Spot()).type, "NotingSink");
    const RunEnding between = endingOf(nullptr, 0.1, InterruptedException());
    EXPECT_EQ(between.failure, "at 0.1 s: interrupted") << "between two steps";
    EXPECT_TRUE(between.isInterrupted);
    EXPECT_TRUE(between.complaints.empty()) << "nothing is wrong";
    EXPECT_FALSE(between.block.has_value());
    EXPECT_EQ(endingOf(nullptr, 0.1, RecordingException({{"x"}, "a", "b"})).complaints.at(0).found, "a");
}

} // namespace
