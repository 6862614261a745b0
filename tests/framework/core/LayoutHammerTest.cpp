// SPDX-License-Identifier: MIT
#include "tests/support/CheckingHost.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <deque>
#include <random>
#include <thread>
#include <vector>

#include <Poco/Exception.h>

using namespace Quillmere::Core;
using namespace Support;

namespace {
using Complaints = std::set<std::string>;

/// Writes, reads and fires the settings of a block at random, so many times.
void turnKnobs(std::vector<ProbeBlock*> blocks, unsigned seed, int times) {
    std::mt19937 random(seed);
    const auto below = [&](unsigned n) { return std::uniform_int_distribution<unsigned>(0, n - 1)(random); };
    for (int i = 0; i < times; ++i) {
        ProbeBlock& block = *blocks[below(static_cast<unsigned>(blocks.size()))];
        switch (below(8)) {
        case 0:
            block.gain.setValue(below(5));
            break;
        case 1:
            block.order.setValueFromString(std::to_string(below(11)));
            break;
        case 2:
            EXPECT_THROW(block.order.setValue(11), Poco::RangeException);
            break;
        case 3:
            block.mode.setValue(below(2));
            break;
        case 4:
            block.table.setValue(MatrixXd::Constant(1 + below(3), 1 + below(3), 1.0));
            break;
        case 5:
            EXPECT_THROW(block.table.setValue(MatrixXd()), Poco::DataFormatException);
            break;
        case 6:
            block.reset.fire();
            break;
        case 7:
            EXPECT_LE(block.order.getValue(), 10);
            break;
        }
    }
}
} // namespace

TEST(LayoutHammerTest, FourWritersOneLoop) {
    CheckingHost host("loop");
    ProbeBlock source("source", host);
    ProbeBlock sink("sink", host);
    source.out.attach(sink.in, false);
    host.add(source);
    host.add(sink);
    source.generate(100000);
    host.start();
    std::vector<std::thread> writers;
    for (unsigned seed = 1; seed <= 4; ++seed)
        writers.emplace_back([&, seed] { turnKnobs({&source, &sink}, seed, 1500); });
    for (std::thread& writer : writers)
        writer.join();
    host.stop();
    EXPECT_EQ(host.getComplaints(), Complaints());
    EXPECT_TRUE(sink.isInOrder);
    EXPECT_GT(sink.getTaken(), 0);
}

TEST(LayoutHammerTest, EverySampleCrossesTwoLayoutsWhileSettingsAreTurned) {
    constexpr long kSamples = 5000;
    CheckingHost left("left");
    CheckingHost right("right");
    ProbeBlock source("source", left);
    ProbeBlock sink("sink", right);
    left.add(source);
    right.add(sink);
    sink.in.setBufferCapacity(kSamples);
    source.out.attach(sink.in, false);
    source.generate(kSamples);
    right.start();
    left.start();
    std::vector<std::thread> writers;
    for (unsigned seed = 1; seed <= 4; ++seed)
        writers.emplace_back([&, seed] { turnKnobs({&source, &sink}, seed, 500); });
    for (std::thread& writer : writers)
        writer.join();
    // The buffer never overflows, so nothing may be lost, and the sleeping reader must be woken for the last
    // one.
    while (sink.getTaken() < kSamples)
        std::this_thread::yield();
    left.stop();
    right.stop();
    EXPECT_TRUE(sink.isInOrder);
    EXPECT_EQ(sink.lastNumber, static_cast<double>(kSamples));
    EXPECT_EQ(left.getComplaints(), Complaints());
    EXPECT_EQ(right.getComplaints(), Complaints());
}

TEST(LayoutHammerTest, LinksComeAndGoAndBlocksMoveWhileAllRuns) {
    CheckingHost left("left");
    CheckingHost right("right");
    ProbeBlock source("source", left);
    ProbeBlock middle("middle", left);
    ProbeBlock sink("sink", right);
    left.add(source);
    left.add(middle);
    right.add(sink);
    source.generate(1000000000);
    source.out.attach(middle.in, false);
    left.start();
    right.start();

    std::vector<std::thread> threads;
    for (unsigned seed = 1; seed <= 4; ++seed)
        threads.emplace_back([&, seed] { turnKnobs({&source, &middle, &sink}, seed, 400); });
    threads.emplace_back([&] {
        for (int i = 0; i < 300; ++i) {
            source.out.attach(sink.in, i % 2 == 0);
            EXPECT_THROW(middle.out.attach(sink.in, false), Poco::ExistsException);
            if (i % 3 == 0) sink.in.setBufferCapacity(1 + static_cast<std::uint32_t>(i % 4));
            if (i % 2 == 0)
                source.out.detach(sink.in, false);
            else
                sink.in.detachAll();
        }
    });
    threads.emplace_back([&] {
        // A block with a plain link to the source leaves the source's layout, and comes back.
        for (int i = 0; i < 200; ++i) {
            right.getLayout().add(middle);
            left.getLayout().add(middle);
        }
    });
    for (std::thread& thread : threads)
        thread.join();
    const long taken = middle.getTaken();
    while (middle.getTaken() == taken)
        std::this_thread::yield();
    left.stop();
    right.stop();
    EXPECT_EQ(left.getLayout().getFilters().size(), 2u);
    EXPECT_EQ(right.getLayout().getFilters().size(), 1u);
    EXPECT_TRUE(middle.isInOrder);
}

TEST(LayoutHammerTest, TwoMoveOneBlockWhileOthersHoldTheGatesOnItsWay) {
    std::deque<LayoutManager> layouts;
    for (const char* const name : {"a", "b", "c", "d"})
        layouts.emplace_back(name);
    CheckingHost host("of the block");
    ProbeBlock block("block", host);
    std::atomic<int> moversLeft{2};
    std::barrier start(4);
    const auto below = [](std::mt19937& random, unsigned n) {
        return std::uniform_int_distribution<unsigned>(0, n - 1)(random);
    };
    std::vector<std::thread> threads;
    for (unsigned seed = 1; seed <= 2; ++seed) {
        threads.emplace_back([&, seed] {
            std::mt19937 random(seed);
            start.arrive_and_wait();
            for (int i = 0; i < 100000; ++i)
                layouts[below(random, 4)].add(block);
            --moversLeft;
        });
        threads.emplace_back([&, seed] {
            // As a link between two other blocks is made; an end that doesn't come is what would be wrong.
            std::mt19937 random(seed + 2);
            start.arrive_and_wait();
            while (moversLeft > 0)
                const Synchronizer::DisablerLocker guard(&layouts[below(random, 4)].getSynchronizer(),
                                                         &layouts[below(random, 4)].getSynchronizer());
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    std::size_t found = 0;
    for (LayoutManager& layout : layouts)
        found += layout.getFilters().size();
    EXPECT_EQ(found, 1u);
    block.getManager()->remove(block);
}

TEST(LayoutHammerTest, TwoLayoutsPassOneSampleBackAndForth) {
    CheckingHost left("left");
    CheckingHost right("right");
    ProbeBlock here("here", left);
    ProbeBlock there("there", right);
    left.add(here);
    right.add(there);
    here.out.attach(there.in, false);
    there.out.attach(here.in, false);
    left.start();
    right.start();
    // Both sleep; one sample goes round for ever, and each hop has to wake the next.
    here.generate(1);
    std::thread knobs([&] { turnKnobs({&here, &there}, 9, 300); });
    while (here.getTaken() < 2000)
        std::this_thread::yield();
    knobs.join();
    left.stop();
    right.stop();
    EXPECT_EQ(left.getComplaints(), Complaints());
    EXPECT_EQ(right.getComplaints(), Complaints());
}

TEST(LayoutHammerTest, ALayoutStopsWhileItsReaderSleeps) {
    for (int i = 0; i < 100; ++i) {
        CheckingHost left("left");
        CheckingHost right("right");
        ProbeBlock source("source", left);
        ProbeBlock sink("sink", right);
        left.add(source);
        right.add(sink);
        source.out.attach(sink.in, false);
        right.start();
        if (i % 2 == 0) std::this_thread::yield();
        right.stop();
    }
}
