// SPDX-License-Identifier: MIT
#include "everyday/Unframe.h"

#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Support;

namespace {
std::vector<double> stampsOf(const Feed& feed) {
    std::vector<double> stamps;
    for (const Sample& row : feed.sent())
        stamps.push_back(row.timeStamp);
    return stamps;
}

void give(Feed& feed, const MatrixXd& frame, double time) {
    feed.give("in", frame, time);
    feed.step();
}
} // namespace

TEST(UnframeTest, Catalogue) {
    Unframe block("unframe");
    EXPECT_STREQ(block.getTypeName(), "Unframe");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"out\"\n"
                                "range double \"Rate\" 0 in [0;1000000000] step 1\n"
                                "range int \"Hop\" 0 in [0;10000000] step 1\n"
                                "command \"Reset\"\n");
}

TEST(UnframeTest, GivesRowsTheirTimesByTheRate) {
    Unframe block("unframe");
    Feed feed(block);
    feed.set("Rate", 4.0);
    give(feed, matrix({{1, 2}, {3, -0.0}, {5, kNaN}}), 10.0);
    EXPECT_TRUE(agree(feed.values(), {matrix({{1, 2}}), matrix({{3, -0.0}}), matrix({{5, kNaN}})}, same));
    EXPECT_EQ(stampsOf(feed), (std::vector<double>{9.5, 9.75, 10.0}));
    feed.forget();
    give(feed, matrix({{7, 8}}), 11.0);
    EXPECT_TRUE(agree(feed.values(), {matrix({{7, 8}})}, same)) << "a frame of one row";
}

TEST(UnframeTest, TakesTheStepFromFrameToFrame) {
    Unframe block("unframe");
    Feed feed(block);
    give(feed, matrix({{1}, {2}}), 1.5);
    EXPECT_TRUE(feed.sent().empty()) << "nobody knows its step yet";
    give(feed, matrix({{3}, {4}}), 2.5);
    EXPECT_TRUE(agree(feed.values(), {matrix({{1}}), matrix({{2}}), matrix({{3}}), matrix({{4}})}, same));
    EXPECT_EQ(stampsOf(feed), (std::vector<double>{1.0, 1.5, 2.0, 2.5}));
    feed.forget();
    give(feed, matrix({{5}, {6}}), 4.5);
    EXPECT_EQ(stampsOf(feed), (std::vector<double>{3.5, 4.5})) << "a rate that changes";
}

TEST(UnframeTest, OfFramesThatOverlapTheNewRows) {
    for (const double rate : {0.0, 2.0}) {
        Unframe block("unframe");
        Feed feed(block);
        feed.set("Rate", rate);
        feed.set("Hop", 1);
        give(feed, matrix({{1}, {2}, {3}}), 1.0);
        give(feed, matrix({{2}, {3}, {4}}), 1.5);
        give(feed, matrix({{3}, {4}, {5}}), 2.0);
        EXPECT_TRUE(agree(feed.values(),
                          {matrix({{1}}), matrix({{2}}), matrix({{3}}), matrix({{4}}), matrix({{5}})}, same));
        EXPECT_EQ(stampsOf(feed), (std::vector<double>{0.0, 0.5, 1.0, 1.5, 2.0}));
    }
    Unframe block("unframe");
    Feed feed(block);
    feed.set("Hop", 4); // rows lie between two frames
    give(feed, matrix({{1}, {2}}), 1.0);
    give(feed, matrix({{5}, {6}}), 3.0);
    EXPECT_EQ(stampsOf(feed), (std::vector<double>{0.5, 1.0, 2.5, 3.0}));
}

TEST(UnframeTest, StartsAnew) {
    Unframe block("unframe");
    Feed feed(block);
    give(feed, matrix({{1}, {2}}), 1.0);
    feed.fire("Reset");
    give(feed, matrix({{3}, {4}}), 2.0);
    give(feed, MatrixXd(0, 1), 2.5); // is no frame
    give(feed, matrix({{5, 5}, {6, 6}}), 3.0);
    EXPECT_TRUE(feed.sent().empty()) << "each is a first one";
    give(feed, matrix({{7, 7}, {8, 8}}), 4.0);
    EXPECT_EQ(stampsOf(feed), (std::vector<double>{2.5, 3.0, 3.5, 4.0}));
}

TEST(UnframeTest, ASteadyStepAllocatesNothing) {
    Unframe block("unframe");
    Quillmere::Core::OutputPin<MatrixXd> sender("sender", nullptr);
    Quillmere::Core::InputPin<MatrixXd> receiver("receiver", nullptr);
    receiver.setBufferCapacity(8);
    sender.attach(block.getInputPin("in"), false);
    block.getOutputPin("out").attach(receiver, false);
    sender.data.value = MatrixXd::Ones(5, 3);
    double time = 0.0;
    const auto step = [&] {
        sender.send(time += 1.0);
        block.process();
        while (receiver.hasData())
            receiver.take();
    };
    for (int i = 0; i < 4; ++i)
        step();
    const AllocationCounter counter;
    for (int i = 0; i < 100; ++i)
        step();
    EXPECT_EQ(counter.count(), 0U);
}
