// SPDX-License-Identifier: MIT
#include "everyday/Join.h"

#include "framework/Quillmere.h"
#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

using namespace Support;

namespace {

std::string linesOf(const std::vector<std::string>& sentences) {
    std::string text;
    for (const std::string& sentence : sentences)
        text += sentence + "\n";
    return text;
}

/// A block with senders at its first inputs only, and what it has sent as `time: values`, a line each.
class Bench {
public:
    explicit Bench(int inputs) : block("join") {
        for (int i = 1; i <= inputs; ++i)
            senders.emplace_back("sender", nullptr)
                .attach(block.getInputPin("in" + std::to_string(i)), false);
        block.getOutputPin("out").attach(receiver, false);
    }
    template <class T>
    void set(const char* name, const T& value) {
        dynamic_cast<Quillmere::Core::ValueProperty<T>&>(block.getProperty(name)).setValue(value);
    }
    void setExact(double tolerance) {
        set("Mode", 1U);
        set("Tolerance", tolerance);
    }
    /// A sample for input `number`, and a step.
    void give(std::size_t number, double time, const MatrixXd& value) {
        copySample(senders[number - 1].data.value, value);
        senders[number - 1].send(time);
        block.process();
    }
    void give(std::size_t number, double time, double value) { give(number, time, matrix({{value}})); }
    void finish() {
        dynamic_cast<Quillmere::Core::CommandProperty&>(block.getProperty("Finish")).fire();
        block.process();
    }
    /// Forgets what it gives back.
    std::string takeSent() {
        std::string text;
        for (const Sample& sample : receiver.samples) {
            text += digits17(sample.timeStamp) + ":";
            for (Eigen::Index i = 0; i < sample.value.size(); ++i)
                text += " " + digits17(sample.value(i));
            text += "\n";
        }
        receiver.samples.clear();
        return text;
    }

    Join block;
    RecordingPin receiver{"receiver"};

private:
    std::deque<Quillmere::Core::OutputPin<MatrixXd>> senders; // pins can't move
};

} // namespace

TEST(JoinTest, Catalogue) {
    Join block("join");
    EXPECT_STREQ(block.getTypeName(), "Join");
    EXPECT_EQ(catalogue(block), "input \"in1\" blocking\n"
                                "input \"in2\" blocking\n"
                                "input \"in3\" blocking\n"
                                "input \"in4\" blocking\n"
                                "input \"in5\" blocking\n"
                                "input \"in6\" blocking\n"
                                "input \"in7\" blocking\n"
                                "input \"in8\" blocking\n"
                                "output \"out\"\n"
                                "enum \"Mode\" 0 of Hold, Exact\n"
                                "range double \"Tolerance\" 0 in [0;1000000000] step 0.001\n"
                                "range int \"Waiting\" 1000 in [0;100000] step 1\n"
                                "command \"Reset\"\n"
                                "command \"Finish\"\n");
}

TEST(JoinTest, PutsPartsOfAnyWidthSideBySide) {
    for (Eigen::Index left = 0; left <= 6; ++left)
        for (Eigen::Index right = 0; right <= 6; ++right) {
            MatrixXd whole(3, left + right);
            for (Eigen::Index i = 0; i < whole.size(); ++i)
                whole(i) = static_cast<double>(i + 1);
            Bench bench(2);
            bench.give(2, 1.0, whole.rightCols(right));
            bench.give(1, 1.0, whole.leftCols(left));
            ASSERT_EQ(bench.receiver.samples.size(), 1U) << left << " and " << right << " columns";
            EXPECT_TRUE(agree(bench.receiver.samples[0].value, whole, same))
                << left << " and " << right << " columns";
        }
}

TEST(JoinTest, HoldsWhatIsNotLater) {
    Bench join(2);
    join.give(1, 0.0, 10);
    join.give(2, 1.0, 1);
    EXPECT_EQ(join.takeSent(), "") << "there was nothing yet at 0";
    join.give(1, 1.0, 11);
    EXPECT_EQ(join.takeSent(), "1: 11 1\n") << "of the same time, whoever comes first";
    join.give(1, 2.0, 12);
    EXPECT_EQ(join.takeSent(), "") << "one of that time may still come";
    join.give(1, 3.0, 13);
    join.give(2, 2.5, 2);
    EXPECT_EQ(join.takeSent(), "2: 12 1\n");
    join.give(2, 3.0, 3);
    EXPECT_EQ(join.takeSent(), "3: 13 3\n");
}

TEST(JoinTest, ExactTakesWhatIsOfTheSameTime) {
    Bench join(3);
    join.setExact(0.01);
    join.give(1, 1.0, 11);
    join.give(2, 1.005, 21);
    EXPECT_EQ(join.takeSent(), "");
    join.give(3, 0.99, 31);
    EXPECT_EQ(join.takeSent(), "1: 11 21 31\n") << "with the time of the first input";
    join.give(1, 2.0, 12);
    join.give(2, 2.0, 22);
    join.give(3, 2.5, 32);
    EXPECT_EQ(join.takeSent(), "") << "the third has gone past it";
    join.give(1, 2.5, 13);
    join.give(2, 2.5, 23);
    EXPECT_EQ(join.takeSent(), "2.5: 13 23 32\n");
}

TEST(JoinTest, WaitsForSoManySamples) {
    for (const bool isExact : {false, true}) {
        Bench join(2);
        if (isExact) join.setExact(0.0);
        join.set("Waiting", 2);
        join.give(2, 0.0, 1);
        for (int time = 0; time < 5; ++time)
            join.give(1, time, 10 + time);
        EXPECT_EQ(join.takeSent(), isExact ? "0: 10 1\n" : "0: 10 1\n1: 11 1\n2: 12 1\n");
        join.give(2, 4.0, 2);
        EXPECT_EQ(join.takeSent(), isExact ? "4: 14 2\n" : "3: 13 1\n4: 14 2\n") << "what waited";
    }
    Bench join(2);
    join.set("Waiting", 0);
    join.give(1, 0.0, 10);
    join.give(2, 0.0, 1);
    join.give(1, 1.0, 11);
    EXPECT_EQ(join.takeSent(), "1: 11 1\n") << "at once, with what has come";
}

TEST(JoinTest, AtTheFinishNothingWaitsAnyLonger) {
    for (const bool isExact : {false, true}) {
        Bench join(2);
        if (isExact) join.setExact(0.0);
        join.give(2, 0.0, 1);
        join.give(2, 1.0, 2);
        for (int time = 0; time < 4; ++time)
            join.give(1, time, 10 + time);
        EXPECT_EQ(join.takeSent(), "0: 10 1\n1: 11 2\n");
        join.finish();
        EXPECT_EQ(join.takeSent(), isExact ? "" : "2: 12 2\n3: 13 2\n");
        join.give(1, 5.0, 15);
        EXPECT_EQ(join.takeSent(), "") << "what comes behind it waits as ever";
    }
}

TEST(JoinTest, PutsColumnsSideBySide) {
    Bench join(3);
    join.give(2, 0.0, matrix({{kNaN}, {-0.0}}));
    join.give(3, 0.0, MatrixXd(2, 0));
    join.give(1, 0.0, matrix({{1, 2}, {3, 4}}));
    ASSERT_EQ(join.receiver.samples.size(), 1U);
    EXPECT_TRUE(agree(join.receiver.samples[0].value, matrix({{1, 2, kNaN}, {3, 4, -0.0}}), same));
    join.takeSent();
    join.give(2, 1.0, matrix({{1}}));
    join.give(3, 1.0, MatrixXd(2, 0));
    join.give(1, 1.0, matrix({{1, 2}, {3, 4}}));
    EXPECT_EQ(join.takeSent(), "") << "another number of rows";
}

TEST(JoinTest, AloneItPassesOn) {
    Bench join(1);
    join.give(1, 3.0, 7);
    EXPECT_EQ(join.takeSent(), "3: 7\n");
}

TEST(JoinTest, AClockThatIsSetBack) {
    Bench join(2);
    join.give(2, 5.0, 1);
    join.give(2, 2.0, 2); // takes the place of the one before
    join.give(1, 2.0, 10);
    EXPECT_EQ(join.takeSent(), "2: 10 2\n");
    join.give(1, 7.0, 11);
    join.give(1, 6.0, 12);
    join.give(1, kNaN, 13);
    join.give(2, kNaN, 3);
    join.give(2, 8.0, 4);
    EXPECT_EQ(join.takeSent(), "6: 12 2\n");
}

// What comes first in a live run of several layouts is chance.
TEST(JoinTest, OfWhatIsOfOneTimeAllIsJoinedInWhateverOrderItComes) {
    struct Given {
        std::size_t input;
        double time;
        double value;
    };
    const std::vector<Given> firsts{{1, 0, 10}, {1, 1, 11}, {1, 1, 12}, {1, 2, 13}, {1, 2.5, 14}, {1, 3, 15}};
    const std::vector<Given> others{{2, 0, 1}, {2, 1, 2}, {2, 1, 3}, {2, 2.5, 4}, {2, 2.5, 5}, {2, 4, 6}};
    for (const bool isExact : {false, true})
        for (unsigned choices = 0; choices < 1U << 12U; ++choices) {
            Bench join(2);
            if (isExact) join.setExact(0.0);
            std::size_t first = 0;
            std::size_t other = 0;
            for (unsigned i = 0; i < firsts.size() + others.size(); ++i) {
                const bool isFirst =
                    other == others.size() || (first < firsts.size() && (choices >> i & 1U) == 0);
                const Given& given = isFirst ? firsts[first++] : others[other++];
                join.give(given.input, given.time, given.value);
            }
            join.finish();
            ASSERT_EQ(join.takeSent(), isExact ? "0: 10 1\n1: 11 2\n1: 12 2\n2.5: 14 4\n"
                                               : "0: 10 1\n1: 11 2\n1: 12 2\n2: 13 3\n2.5: 14 4\n3: 15 5\n")
                << choices;
        }
}

TEST(JoinTest, TellsWhatFoundNothing) {
    Bench held(3);
    held.give(3, 0.0, 0);
    for (int time = 0; time < 6; ++time)
        held.give(1, time, time);
    held.give(2, 2.0, 2);
    held.give(3, 9.0, 9);
    held.finish();
    EXPECT_EQ(linesOf(held.block.getLosses()), "");
    EXPECT_EQ(
        linesOf(held.block.getNotes()),
        "2 of 6 samples of 'in1' came before the first sample of 'in2' and made no row\n"
        "3 of 6 samples of 'in1' came behind the last sample of 'in2', of 2 s, and were sent with it\n");
    Bench exact(2);
    exact.setExact(0.0);
    exact.give(1, 0.0, 0);
    exact.give(1, 1.0, 0);
    exact.give(2, 1.0, 0);
    exact.give(1, 2.0, 0);
    exact.finish();
    EXPECT_EQ(linesOf(exact.block.getLosses()), "");
    EXPECT_EQ(linesOf(exact.block.getNotes()),
              "2 of 3 samples of 'in1' found no sample of 'in2' of their time and made no row\n");
}

TEST(JoinTest, TellsWhatIsLost) {
    Bench held(2);
    held.set("Waiting", 2);
    for (int time = 0; time < 5; ++time)
        held.give(1, time, time);
    held.give(2, 3.0, 1);
    for (int time = 5; time < 9; ++time)
        held.give(1, time, time);
    EXPECT_EQ(
        linesOf(held.block.getLosses()),
        "3 of 9 samples of 'in1' were given up, since 'in2' was farther behind than 'Waiting' lets them "
        "wait\n3 of 9 samples of 'in1' were sent with what had come to 'in2' by then, since it was "
        "farther behind than 'Waiting' lets them wait\n");
    held.finish();
    EXPECT_EQ(
        linesOf(held.block.getNotes()),
        "2 of 9 samples of 'in1' came behind the last sample of 'in2', of 3 s, and were sent with it\n");
    Bench unlike(2);
    unlike.give(1, 0.0, matrix({{1}, {2}}));
    unlike.give(2, 0.0, 1);
    EXPECT_EQ(linesOf(unlike.block.getLosses()),
              "1 of 1 sample of 'in1' were given up, since the sample of 'in2' has another number of rows\n");
    Bench ahead(2);
    for (int time = 0; time < 100002; ++time)
        ahead.give(2, time, 1);
    EXPECT_EQ(linesOf(ahead.block.getLosses()),
              "2 samples of 'in2' were lost, since it was too far ahead of 'in1'\n");
}

// All may wait that the setting allows.
TEST(JoinTest, NoneIsForgottenThatMayWait) {
    Bench join(2);
    join.set("Waiting", 100000);
    for (int time = 0; time < 100000; ++time)
        join.give(1, time, 1);
    join.give(2, 0.0, 2);
    EXPECT_EQ(join.takeSent(), "0: 1 2\n");
    join.give(2, 100000.0, 2);
    EXPECT_EQ(join.receiver.samples.size(), 99999U);
    EXPECT_TRUE(join.block.getLosses().empty());
}

TEST(JoinTest, ResetForgetsWhatWaits) {
    Bench join(2);
    join.give(1, 1.0, 10);
    join.give(2, 0.0, 1);
    dynamic_cast<Quillmere::Core::CommandProperty&>(join.block.getProperty("Reset")).fire();
    join.give(2, 2.0, 2);
    join.give(1, 2.0, 11);
    EXPECT_EQ(join.takeSent(), "2: 11 2\n");
}

TEST(JoinTest, ASteadyStepAllocatesNothing) {
    Join block("join");
    Quillmere::Core::OutputPin<MatrixXd> one("one", nullptr);
    Quillmere::Core::OutputPin<MatrixXd> other("other", nullptr);
    Quillmere::Core::InputPin<MatrixXd> receiver("receiver", nullptr);
    one.attach(block.getInputPin("in1"), false);
    other.attach(block.getInputPin("in2"), false);
    block.getOutputPin("out").attach(receiver, false);
    one.data.value = MatrixXd::Ones(1, 3);
    other.data.value = MatrixXd::Ones(1, 3);
    double time = 0.0;
    const auto step = [&] {
        one.send(time += 0.01);
        block.process();
        other.send(time);
        block.process();
        ASSERT_TRUE(receiver.hasData());
        receiver.take();
    };
    for (int i = 0; i < 8; ++i)
        step();
    const AllocationCounter counter;
    for (int i = 0; i < 100; ++i)
        step();
    EXPECT_EQ(counter.count(), 0U);
}
