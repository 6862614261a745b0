// SPDX-License-Identifier: MIT
#include "host/picture/Envelope.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <utility>
#include <vector>

namespace {

using Quillmere::Host::Envelope;
using Samples = std::vector<std::pair<double, double>>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

Envelope envelopeOf(const Samples& samples, std::size_t most) {
    Envelope envelope(most);
    for (const auto& [time, value] : samples)
        envelope.take(time, value);
    return envelope;
}

/// Rows at a hundred a second with gaps, bursts, repeated times and values that are none.
Samples randomSamples(unsigned seed, std::size_t count) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> part(0.0, 1.0);
    Samples samples;
    double time = -3.0;
    for (std::size_t i = 0; i < count; ++i) {
        const double luck = part(random);
        time += luck < 0.001 ? 100.0 * part(random) : luck < 0.01 ? 0.0 : luck < 0.3 ? 0.001 : 0.01;
        samples.emplace_back(time, part(random) < 0.02 ? kNan : std::tan(3.0 * part(random)));
    }
    return samples;
}

/// Finite samples by their place on a grid of that width.
std::map<double, Samples> sorted(const Samples& samples, double width) {
    std::map<double, Samples> pieces;
    for (const auto& sample : samples)
        if (std::isfinite(sample.second)) pieces[std::floor(sample.first / width)].push_back(sample);
    return pieces;
}

void expectPieces(const Envelope& envelope, const Samples& samples) {
    const auto wanted = sorted(samples, envelope.getWidth());
    ASSERT_EQ(envelope.getPieces().size(), wanted.size());
    std::size_t i = 0;
    for (const auto& [place, held] : wanted) {
        const Envelope::Piece& piece = envelope.getPieces()[i++];
        const auto byTime = [](const auto& one, const auto& other) { return one.first < other.first; };
        const auto byValue = [](const auto& one, const auto& other) { return one.second < other.second; };
        ASSERT_EQ(piece.count, held.size());
        ASSERT_EQ(piece.firstTime, std::min_element(held.begin(), held.end(), byTime)->first);
        ASSERT_EQ(piece.lastTime, std::max_element(held.begin(), held.end(), byTime)->first);
        ASSERT_EQ(piece.smallest, std::min_element(held.begin(), held.end(), byValue)->second);
        ASSERT_EQ(piece.largest, std::max_element(held.begin(), held.end(), byValue)->second);
        ASSERT_EQ(piece.first, held.front().second);
        ASSERT_EQ(piece.last, held.back().second);
    }
}

TEST(Envelope, HoldsWhatTheSamplesOfEachPieceHold) {
    for (const unsigned seed : {1u, 2u, 3u, 4u}) {
        for (const std::size_t most : {2u, 16u, 500u, 8192u}) {
            const Samples samples = randomSamples(seed, 20000);
            const Envelope envelope = envelopeOf(samples, most);
            expectPieces(envelope, samples);
            EXPECT_LE(envelope.getPieces().size(), most);
            // No finer grid would have done.
            EXPECT_GT(sorted(samples, envelope.getWidth() / 2.0).size(), most);
        }
    }
}

TEST(Envelope, OfFewSamplesEachStandsAlone) {
    const Samples samples{{0.0, 1.5}, {1e-6, -2.0}, {86400.0, 3.0}, {86400.01, 4.0}};
    const Envelope envelope = envelopeOf(samples, 4);
    ASSERT_EQ(envelope.getPieces().size(), 4u);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        EXPECT_EQ(envelope.getPieces()[i].firstTime, samples[i].first);
        EXPECT_EQ(envelope.getPieces()[i].first, samples[i].second);
    }
}

TEST(Envelope, DoesNotDependOnTheOrderOfTimes) {
    Samples samples = randomSamples(7, 3000);
    // Of one time only one, since which of them is first is a matter of order.
    std::erase_if(samples, [&, last = -1e9](const auto& sample) mutable {
        return std::exchange(last, sample.first) == sample.first;
    });
    const Envelope inOrder = envelopeOf(samples, 100);
    std::shuffle(samples.begin(), samples.end(), std::mt19937(9));
    const Envelope shuffled = envelopeOf(samples, 100);
    ASSERT_EQ(shuffled.getPieces().size(), inOrder.getPieces().size());
    EXPECT_EQ(shuffled.getWidth(), inOrder.getWidth());
    for (std::size_t i = 0; i < inOrder.getPieces().size(); ++i) {
        EXPECT_EQ(shuffled.getPieces()[i].first, inOrder.getPieces()[i].first);
        EXPECT_EQ(shuffled.getPieces()[i].last, inOrder.getPieces()[i].last);
        EXPECT_EQ(shuffled.getPieces()[i].smallest, inOrder.getPieces()[i].smallest);
        EXPECT_EQ(shuffled.getPieces()[i].count, inOrder.getPieces()[i].count);
    }
}

TEST(Envelope, ACoarserOneIsThatOfTheSamples) {
    const Samples samples = randomSamples(5, 20000);
    const Envelope coarser = envelopeOf(samples, 4096).getCoarser(64);
    expectPieces(coarser, samples);
    EXPECT_EQ(coarser.getWidth(), envelopeOf(samples, 64).getWidth());
}

TEST(Envelope, KnowsWhereThereWasNoNumber) {
    const Envelope envelope = envelopeOf({{0, 1}, {1, 2}, {2, kNan}, {3, 4}, {4, kNan}, {5, 6}}, 100);
    ASSERT_EQ(envelope.getPieces().size(), 4u);
    EXPECT_FALSE(envelope.getPieces()[1].isBroken);
    EXPECT_TRUE(envelope.getPieces()[2].isBroken);
    EXPECT_TRUE(envelope.getPieces()[3].isBroken);
    EXPECT_EQ(envelope.getBreaks(), 2u);
    EXPECT_EQ(envelope.getCount(), 4u);
}

TEST(Envelope, TellsTheUsualStepOfSingleSamplesAndOfManyInAPiece) {
    Samples samples;
    for (int i = 0; i < 100'000; ++i)
        samples.emplace_back((i < 50'000 ? 0.0 : 1000.0) + i * 0.25, i);
    EXPECT_EQ(envelopeOf({samples.begin(), samples.begin() + 1000}, 2000).getUsualStep(), 0.25);
    EXPECT_EQ(envelopeOf(samples, 1000).getUsualStep(), 0.25);
    EXPECT_EQ(envelopeOf({{1.0, 2.0}}, 10).getUsualStep(), std::nullopt);
    EXPECT_EQ(Envelope().getUsualStep(), std::nullopt);
}

TEST(Envelope, IsALevelWhereAllSamplesAreZerosAndOnes) {
    EXPECT_TRUE(envelopeOf({{0, 0}, {1, 1}, {2, kNan}, {3, 0}}, 2).getIsLevel());
    EXPECT_FALSE(envelopeOf({{0, 0}, {1, 1}, {2, 0.5}, {3, 0}}, 2).getIsLevel());
    EXPECT_FALSE(Envelope().getIsLevel());
}

TEST(Envelope, TakesTimesThatNoClockTells) {
    const Samples samples{{-1e308, 1.0}, {0.0, 2.0}, {1e-300, 3.0}, {1e308, 4.0}, {1.5e308, 5.0}};
    const Envelope envelope = envelopeOf(samples, 3);
    EXPECT_LE(envelope.getPieces().size(), 3u);
    EXPECT_EQ(envelope.getCount(), 5u);
    EXPECT_EQ(envelope.getPieces().front().smallest, 1.0);
    EXPECT_EQ(envelope.getPieces().back().largest, 5.0);
}

} // namespace
