// SPDX-License-Identifier: MIT
#include "host/picture/CurveLine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <utility>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Style = Curve::Style;
using Samples = std::vector<std::pair<double, double>>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
/// A unit of the page for a second and for one of the values.
constexpr Scale kAsItIs{0.0, 1000.0, 0.0, 1000.0};

Envelope envelopeOf(const Samples& samples, std::size_t most = Envelope::kMostPieces) {
    Envelope envelope(most);
    for (const auto& [time, value] : samples)
        envelope.take(time, value);
    return envelope;
}

TEST(CurveLine, GoesThroughEachOfFewSamples) {
    const CurveLine line = lineOf(envelopeOf({{0, 5}, {1, 7}, {2, 6}}), Style::Line, kAsItIs, kAsItIs);
    ASSERT_EQ(line.lines.size(), 1u);
    EXPECT_TRUE(line.points.empty());
    ASSERT_EQ(line.lines[0].size(), 3u);
    EXPECT_EQ(line.lines[0][1].x, 1.0);
    EXPECT_EQ(line.lines[0][1].y, 7.0);
}

TEST(CurveLine, IsBrokenAtGapsAndWhereThereIsNoNumber) {
    const CurveLine line =
        lineOf(envelopeOf({{0, 1}, {1, 1}, {2, 1}, {3, kNan}, {4, 1}, {5, 1}, {15.5, 1}, {30, 2}, {31, 2}}),
               Style::Line, kAsItIs, kAsItIs);
    ASSERT_EQ(line.lines.size(), 3u); // 10.5 steps and 14.5 are gaps, 10 are none
    EXPECT_EQ(line.lines[0].back().x, 2.0);
    EXPECT_EQ(line.lines[1].front().x, 4.0);
    EXPECT_EQ(line.lines[1].back().x, 5.0);
    ASSERT_EQ(line.points.size(), 1u); // which has no neighbour
    EXPECT_EQ(line.points[0].x, 15.5);
    EXPECT_EQ(line.lines[2].front().x, 30.0);
}

TEST(CurveLine, WhatRisesHasNoSteps) {
    Samples samples;
    for (int i = 0; i < 100'000; ++i)
        samples.emplace_back(i * 0.01, i * 0.01);
    const CurveLine line = lineOf(envelopeOf(samples), Style::Line, kAsItIs, kAsItIs);
    ASSERT_EQ(line.lines.size(), 1u);
    for (const Canvas::Point& point : line.lines[0])
        ASSERT_NEAR(point.y, point.x, 1e-9);
}

TEST(CurveLine, OfMarksNothingIsJoined) {
    const CurveLine line = lineOf(envelopeOf({{0, 1}, {1, 2}, {2, 3}}), Style::Marks, kAsItIs, kAsItIs);
    EXPECT_TRUE(line.lines.empty());
    EXPECT_EQ(line.points.size(), 3u);
}

/// What is seen of a line in a column of the page: everything from its lowest to its highest point.
std::map<int, std::pair<double, double>> shownIn(const CurveLine& line) {
    std::map<int, std::pair<double, double>> shown;
    for (const auto& points : line.lines)
        for (const Canvas::Point& point : points) {
            const auto [place, isNew] =
                shown.try_emplace(static_cast<int>(std::floor(point.x)), point.y, point.y);
            place->second.first = std::min(place->second.first, point.y);
            place->second.second = std::max(place->second.second, point.y);
        }
    return shown;
}

TEST(CurveLine, EveryColumnShowsItsSmallestAndItsLargestValue) {
    std::mt19937 random(3);
    std::normal_distribution<double> noise;
    Samples samples;
    for (int i = 0; i < 200'000; ++i)
        samples.emplace_back(i * 0.01, noise(random) + (i == 123'456 ? 50.0 : 0.0));
    const Scale across{0.0, 2000.0, 0.0, 1000.0};
    const Envelope envelope = envelopeOf(samples);
    const auto shown = shownIn(lineOf(envelope, Style::Line, across, kAsItIs));
    // A piece stands in the column that its first sample falls into.
    std::map<int, std::pair<double, double>> wanted;
    for (const auto& [time, value] : samples) {
        const double begin = std::floor(time / envelope.getWidth()) * envelope.getWidth();
        const double first = std::ceil(begin / 0.01 - 1e-9) * 0.01;
        const auto column = static_cast<int>(std::floor(across.getPlace(first) + 1e-9));
        const auto [place, isNew] = wanted.try_emplace(column, value, value);
        place->second.first = std::min(place->second.first, value);
        place->second.second = std::max(place->second.second, value);
    }
    EXPECT_LT(envelope.getWidth(), 1.0); // finer than the columns
    ASSERT_GE(shown.size(), 1000u);
    int differing = 0;
    for (const auto& [column, values] : wanted)
        if (const auto found = shown.find(column); found == shown.end() ||
                                                   found->second.first > values.first + 1e-12 ||
                                                   found->second.second < values.second - 1e-12)
            ++differing;
    EXPECT_EQ(differing, 0);
    EXPECT_GT(shown.at(static_cast<int>(across.getPlace(1234.56))).second, 40.0); // one sample of many
}

TEST(CurveLine, ALevelIsABoxWhereItIsOn) {
    Samples samples;
    for (int i = 0; i <= 100; ++i)
        samples.emplace_back(i, i >= 20 && i < 50 ? 1.0 : 0.0);
    const auto boxes = boxesOf(envelopeOf(samples), 101, kAsItIs, 7.0, 3.0);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].x, 20.0);
    EXPECT_EQ(boxes[0].width, 30.0);
    EXPECT_EQ(boxes[0].y, 7.0);
    EXPECT_EQ(boxes[0].height, 3.0);
}

TEST(CurveLine, APulseOfALongLevelIsSeen) {
    Samples samples;
    for (int i = 0; i < 1'000'000; ++i)
        samples.emplace_back(i * 0.001, i == 654'321 ? 1.0 : 0.0);
    const auto boxes = boxesOf(envelopeOf(samples), 1'000'000, kAsItIs, 0.0, 1.0);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_NEAR(boxes[0].x, 654.321, 0.25);
    EXPECT_GE(boxes[0].width, 1.5);
}

TEST(CurveLine, EventsLastNoTime) {
    const auto boxes = boxesOf(envelopeOf({{10, 1}, {20, 1}, {30, 1}}), 1000, kAsItIs, 0.0, 1.0);
    ASSERT_EQ(boxes.size(), 3u);
    EXPECT_EQ(boxes[1].x, 20.0);
    EXPECT_LT(boxes[1].width, 2.0);
}

TEST(CurveLine, FollowsAPathToAndFro) {
    Curve curve("y", "", 100);
    const double way[][2] = {{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}};
    for (const auto& [x, y] : way) {
        curve.envelope.take(x, y);
        curve.path.take(x, y);
    }
    const Scale across{0.0, 2.0, 0.0, 100.0};
    const Scale up{0.0, 2.0, 100.0, 0.0};
    const CurveLine line = lineOf(curve, 5, across, up);
    ASSERT_EQ(line.lines.size(), 1u);
    ASSERT_EQ(line.lines[0].size(), 5u);
    EXPECT_EQ(line.lines[0][2].x, 100.0);
    EXPECT_EQ(line.lines[0][2].y, 0.0);
    EXPECT_EQ(line.lines[0][3].x, 0.0) << "back again";
    EXPECT_EQ(line.lines[0][4].y, 100.0);
}

} // namespace
