// SPDX-License-Identifier: MIT
#include "tests/support/CheckingHost.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using namespace Quillmere::Core;
using namespace Support;

// A pass by a loop of one's own, and what it leaves to be counted.

namespace {
struct NamingPass {
    bool isWanted = true;
    std::string names;

    bool begin() const { return isWanted; }
    void step(Filter& filter) {
        names += filter.getName();
        filter.process();
    }
    void end() { names += "."; }
};

std::string namesOfOnePass(LayoutManager& layout) {
    NamingPass pass;
    layout.runPass(pass);
    return pass.names;
}
} // namespace

TEST(PassTest, StepsEachBlockOnceInOrder) {
    CheckingHost host("host");
    ProbeBlock a("a", host);
    ProbeBlock b("b", host);
    host.add(a);
    host.add(b);
    EXPECT_EQ(namesOfOnePass(host.getLayout()), "ab.");
}

TEST(PassTest, APassThatIsNotWantedStepsNothing) {
    CheckingHost host("host");
    ProbeBlock a("a", host);
    host.add(a);
    NamingPass pass{.isWanted = false, .names = ""};
    host.getLayout().runPass(pass);
    EXPECT_EQ(pass.names, "");
}

TEST(PassTest, ArrangePutsWhatItNamesFirst) {
    CheckingHost host("host");
    ProbeBlock a("a", host);
    ProbeBlock b("b", host);
    ProbeBlock c("c", host);
    ProbeBlock stranger("x", host);
    for (ProbeBlock* const block : {&a, &b, &c})
        host.add(*block);
    host.getLayout().arrange({&c, &stranger, &b});
    EXPECT_EQ(namesOfOnePass(host.getLayout()), "cba.");
    host.getLayout().arrange({});
    EXPECT_EQ(namesOfOnePass(host.getLayout()), "cba.");
}

TEST(PassTest, ANewOrderLeavesNobodyOutOfThePassThatIsUnderWay) {
    CheckingHost host("host");
    ProbeBlock a("a", host);
    ProbeBlock b("b", host);
    ProbeBlock c("c", host);
    ProbeBlock d("d", host);
    ProbeBlock late("e", host);
    for (ProbeBlock* const block : {&a, &b, &c, &d})
        host.add(*block);
    struct ReorderingPass {
        LayoutManager& layout;
        std::vector<std::vector<Filter*>> orders; ///< Behind the first step, behind the second and so on.
        Filter* added = nullptr;                  ///< Behind the second step.
        Filter* removed = nullptr;                ///< Behind the second step.
        std::string names{};

        bool begin() const { return true; }
        void step(Filter& filter) {
            names += filter.getName();
            if (names.size() == 2 && added != nullptr) layout.add(*added);
            if (names.size() == 2 && removed != nullptr) layout.remove(*removed);
            if (names.size() <= orders.size()) layout.arrange(orders[names.size() - 1]);
        }
        void end() { names += "."; }
    };
    ReorderingPass pass{.layout = host.getLayout(), .orders = {{&d, &c, &b, &a}, {&a, &b, &c, &d}}};
    host.getLayout().runPass(pass);
    EXPECT_EQ(pass.names, "adbc.") << "each once, in the order of that time";
    EXPECT_EQ(namesOfOnePass(host.getLayout()), "abcd.");

    ReorderingPass changing{.layout = host.getLayout(),
                            .orders = {{&d, &c, &b, &a}, {&b, &late, &a}},
                            .added = &late,
                            .removed = &c};
    host.getLayout().runPass(changing);
    EXPECT_EQ(changing.names, "adbe.");
    EXPECT_EQ(namesOfOnePass(host.getLayout()), "bead.");
}

TEST(PassTest, CountsTellWhatBecameOfEverySample) {
    CheckingHost left("left");
    CheckingHost right("right");
    ProbeBlock source("source", left);
    ProbeBlock sink("sink", right);
    left.add(source);
    right.add(sink);
    sink.in.setBufferCapacity(3);
    source.out.attach(sink.in, false);
    EXPECT_TRUE(sink.in.getIsWaking());
    source.generate(10);
    for (int i = 0; i < 5; ++i)
        left.getLayout().runStep();
    LinkCounts counts = sink.in.getCounts();
    EXPECT_EQ(source.out.getSentCount(), 5u);
    EXPECT_EQ(counts.received, 5u);
    EXPECT_EQ(counts.waiting, 3u);
    EXPECT_EQ(counts.getLost(), 2u) << "the buffer keeps three";

    EXPECT_TRUE(sink.in.hasData());
    EXPECT_EQ(sink.in.getCounts().waiting, 3u) << "fetched and not taken";
    right.getLayout().runStep();
    counts = sink.in.getCounts();
    EXPECT_EQ(counts.taken, 1u);
    EXPECT_EQ(sink.in.getTakenCount(), 1u);
    EXPECT_EQ(counts.waiting, 2u);
    EXPECT_EQ(counts.getLost(), 2u);

    source.out.detach(sink.in, false);
    counts = sink.in.getCounts();
    EXPECT_EQ(counts.waiting, 0u);
    EXPECT_EQ(counts.getLost(), 4u) << "what waited in a link that is gone is lost";
    EXPECT_FALSE(sink.in.getIsWaking());
}

TEST(PassTest, AnInputCountsWhatIsSentWhileItIsLinked) {
    CheckingHost host("host");
    ProbeBlock first("first", host);
    ProbeBlock second("second", host);
    ProbeBlock sink("sink", host);
    for (ProbeBlock* const block : {&first, &second, &sink})
        host.add(*block);
    const auto passes = [&](int count) {
        for (; count > 0; --count)
            host.getLayout().runStep();
    };
    first.generate(100);
    second.generate(100);
    passes(3); // before any link
    EXPECT_EQ(sink.in.getCounts().received, 0u);
    first.out.attach(sink.in, false);
    passes(2);
    EXPECT_EQ(sink.in.getCounts().received, 2u);
    first.out.detach(sink.in, false);
    passes(4); // between two links
    EXPECT_EQ(sink.in.getCounts().received, 2u);
    second.out.attach(sink.in, false);
    passes(5);
    EXPECT_EQ(sink.in.getCounts().received, 7u);
    EXPECT_EQ(sink.in.getCounts().taken, 7u);
    EXPECT_EQ(sink.in.getTakenCount(), 7u);
    EXPECT_EQ(first.out.getSentCount(), 14u);
}

TEST(PassTest, OnlyLinksOnWhichReadersMaySleepWake) {
    CheckingHost left("left");
    CheckingHost right("right");
    ProbeBlock source("source", left);
    ProbeBlock neighbour("neighbour", left);
    ProbeBlock sink("sink", right);
    left.add(source);
    left.add(neighbour);
    right.add(sink);
    source.out.attach(neighbour.in, false);
    source.out.attach(sink.control, false);
    EXPECT_FALSE(neighbour.in.getIsWaking()) << "the same layout";
    EXPECT_FALSE(sink.control.getIsWaking()) << "not blocking";
    right.getLayout().add(neighbour);
    EXPECT_TRUE(neighbour.in.getIsWaking());
}

TEST(PassTest, EverySampleIsAccountedForWhileTheReaderLags) {
    constexpr std::uint64_t kSamples = 20000;
    CheckingHost left("left");
    CheckingHost right("right");
    ProbeBlock source("source", left);
    ProbeBlock sink("sink", right);
    left.add(source);
    right.add(sink);
    sink.in.setBufferCapacity(2);
    source.out.attach(sink.in, false);
    source.generate(kSamples);
    left.start();
    right.start();
    LinkCounts counts;
    while (counts.received < kSamples || counts.waiting > 0) {
        counts = sink.in.getCounts();
        EXPECT_LE(counts.taken + counts.waiting, counts.received);
    }
    left.stop();
    right.stop();
    EXPECT_EQ(counts.received, kSamples);
    EXPECT_EQ(counts.taken, static_cast<std::uint64_t>(sink.getTaken()));
    EXPECT_EQ(counts.getLost(), kSamples - counts.taken);
}
