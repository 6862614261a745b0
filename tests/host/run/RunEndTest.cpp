// SPDX-License-Identifier: MIT
#include "host/run/RunEnd.h"

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
    /// Ends `a` and `b`, each of which fails at what is given. What was raised, or nothing.
    std::string end(bool isWhole, const std::string& failureOfA = "", const std::string& failureOfB = "") {
        notes.clear();
        NotingSink a("a", notes, failureOfA);
        NotingSink b("b", notes, failureOfB);
        try {
            endSinks({&a, &b}, isWhole);
        } catch (const RunException& exception) {
            return exception.what();
        }
        return "";
    }

    std::string notes;
};

TEST_F(EndSinksTest, AllAreFinishedBeforeOneTakesThePlaceOfAFormerResult) {
    EXPECT_EQ(end(true), "");
    EXPECT_EQ(notes, "finish a\nfinish b\ncomplete a\ncomplete b\n");
}

TEST_F(EndSinksTest, OneThatCantBeFinishedMakesNoneLookWhole) {
    EXPECT_EQ(end(true, "", "finish"), "b can't finish");
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

TEST(FailureText, NamesTheBlockTheTimeAndTheReason) {
    std::string notes;
    const NotingSink block("smooth", notes);
    const std::runtime_error reason("no room");
    EXPECT_EQ(failureText(&block, 12.5, reason), "block 'smooth' (NotingSink) at 12.5 s: no room");
    EXPECT_EQ(failureText(nullptr, 0.1, reason), "at 0.1 s: no room") << "between two steps";
}

} // namespace
