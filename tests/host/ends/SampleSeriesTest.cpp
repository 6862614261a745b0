// SPDX-License-Identifier: MIT
#include "host/ends/SampleSeries.h"

#include "host/text/HostException.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Quillmere::Host::SampleSeries;
using Support::agree;
using Support::matrix;
using Support::same;

TEST(SampleSeriesTest, RowsAreSamplesOfOneRow) {
    const SampleSeries series = SampleSeries::ofRows(matrix({{1, 2}, {3, 4}, {5, 6}}));
    EXPECT_EQ(series.getSize(), 3u);
    EXPECT_EQ(series.getShape(), (SampleSeries::Shape{1, 2}));
    EXPECT_TRUE(agree(series.getSample(1), matrix({{3, 4}}), same));
    EXPECT_TRUE(agree(series.getRows(), matrix({{1, 2}, {3, 4}, {5, 6}}), same));
    EXPECT_EQ(SampleSeries::ofRows(matrix({})).getSize(), 0u);
    EXPECT_EQ(SampleSeries::ofRows(matrix({})).getRows().size(), 0);
}

TEST(SampleSeriesTest, EachSampleMayHaveAShapeOfItsOwn) {
    const SampleSeries series = SampleSeries::ofSamples({matrix({{1, 2}, {3, 4}}), matrix({{5, 6}, {7, 8}}),
                                                         matrix({}), matrix({{9}}), matrix({{10}, {11}})});
    EXPECT_EQ(series.getSize(), 5u);
    EXPECT_FALSE(series.getShape());
    EXPECT_TRUE(agree(series.getSample(1), matrix({{5, 6}, {7, 8}}), same));
    EXPECT_TRUE(agree(series.getSample(2), matrix({}), same));
    EXPECT_TRUE(agree(series.getSample(4), matrix({{10}, {11}}), same));
    try {
        series.getRows();
        FAIL();
    } catch (const Quillmere::Host::HostException& exception) {
        EXPECT_STREQ(exception.what(),
                     "found a sample of 0 elements behind those of 4; expected samples of one "
                     "size, as the rows of a matrix have");
    }
}

TEST(SampleSeriesTest, ATailBeginsAnywhere) {
    const SampleSeries series = SampleSeries::ofSamples(
        {matrix({{1, 2}}), matrix({{3, 4}}), matrix({{5}, {6}}), matrix({}), matrix({{7, 8}})});
    for (std::size_t first = 0; first <= series.getSize() + 1; ++first) {
        const SampleSeries tail = series.getTail(first);
        const std::size_t left = first > series.getSize() ? 0 : series.getSize() - first;
        ASSERT_EQ(tail.getSize(), left) << first;
        for (std::size_t i = 0; i < left; ++i)
            EXPECT_TRUE(agree(tail.getSample(i), series.getSample(first + i), same)) << first << " " << i;
    }
    EXPECT_TRUE(agree(series.getTail(4).getRows(), matrix({{7, 8}}), same));
}

} // namespace
