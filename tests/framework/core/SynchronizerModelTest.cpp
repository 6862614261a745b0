// SPDX-License-Identifier: MIT
#include "tests/framework/core/GateModel.h"

#include <gtest/gtest.h>

#include <iostream>

using namespace GateModel;

namespace {
/// A seed decides who does what in which order, though not how the threads interleave; a failure may need its
/// seed a few times over to show again.
void playAll(const Family& family, unsigned firstSeed, unsigned rounds = 1200) {
    std::cout << "seeds " << firstSeed << " to " << firstSeed + rounds - 1 << '\n';
    for (unsigned seed = firstSeed; seed < firstSeed + rounds; ++seed)
        ASSERT_EQ(play(makePlan(family, seed)), "") << "seed " << seed;
}
} // namespace

TEST(SynchronizerModelTest, ReadersThatSleep) {
    playAll({.hasSleepingReaders = true}, 1);
}

TEST(SynchronizerModelTest, LoopsThatSleepBetweenPasses) {
    playAll({.hasSleepingLoops = true}, 10001);
}

TEST(SynchronizerModelTest, BothWithABlockThatMoves) {
    playAll({.hasSleepingReaders = true, .hasSleepingLoops = true, .hasWanderer = true}, 20001);
}

TEST(SynchronizerModelTest, LayoutsThatAreShutDown) {
    playAll({.hasSleepingReaders = true, .hasSleepingLoops = true, .hasShutDown = true}, 30001);
}

TEST(SynchronizerModelTest, LoopsThatAreMetAsTheyFallAsleep) {
    playAll({.isDuel = true}, 40001, 250);
}
