// SPDX-License-Identifier: MIT
#include "framework/transport/TimeStampedData.h"

#include "tests/support/Allocations.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Quillmere::Core;
using namespace Support;

TEST(TimeStampedDataTest, StartsEmptyAtZero) {
    const Sample sample;
    EXPECT_EQ(sample.value.rows(), 0);
    EXPECT_EQ(sample.value.cols(), 0);
    EXPECT_TRUE(agree(sample.timeStamp, 0.0, same));
}

TEST(TimeStampedDataTest, ACopyTakesPayloadAndTimeStamp) {
    const Sample from{.value = matrix({{1, -0.0}, {std::numeric_limits<double>::quiet_NaN(), 4}}),
                      .timeStamp = 2.5};
    Sample to{.value = matrix({{9, 9, 9, 9}}), .timeStamp = 9.0};
    const double* const storage = to.value.data();
    const AllocationCounter counter;
    copySample(to, from);
    EXPECT_EQ(counter.count(), 0u);
    EXPECT_TRUE(agree(to.value, from.value, same));
    EXPECT_TRUE(agree(to.timeStamp, 2.5, same));
    EXPECT_EQ(to.value.data(), storage) << "as many elements keep the storage";
}

TEST(TimeStampedDataTest, ASwapCopiesNoElement) {
    Sample a{.value = matrix({{1, 2}}), .timeStamp = 1.0};
    Sample b{.value = matrix({{3}, {4}, {5}}), .timeStamp = 2.0};
    const double* const ofA = a.value.data();
    const double* const ofB = b.value.data();
    swapSamples(a, b);
    EXPECT_EQ(a.value.data(), ofB);
    EXPECT_EQ(b.value.data(), ofA);
    EXPECT_TRUE(agree(a.value, matrix({{3}, {4}, {5}}), same));
    EXPECT_EQ(a.timeStamp, 2.0);
    EXPECT_EQ(b.timeStamp, 1.0);
}
