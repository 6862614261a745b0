// SPDX-License-Identifier: MIT
#include "tests/support/Allocations.h"

#include "framework/transport/MatrixXd.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Support;

TEST(AllocationsTest, CountsWhatNewAndEigenTake) {
    const AllocationCounter counter;
    const auto number = std::make_unique<int>(3);
    EXPECT_EQ(counter.count(), 1u);
    const Quillmere::Core::MatrixXd matrix(*number, *number);
    EXPECT_EQ(counter.count(), 2u);
    EXPECT_EQ(matrix.size(), 9);
}

TEST(AllocationsTest, CountsNothingForArithmetic) {
    Quillmere::Core::MatrixXd a = Quillmere::Core::MatrixXd::Ones(3, 3);
    const AllocationCounter counter;
    for (int i = 0; i < 10; ++i)
        a *= 0.5;
    EXPECT_EQ(counter.count(), 0u);
}

TEST(AllocationsTest, AShortageRefusesWhatComesBehindTheGrantedOnes) {
    if (!MemoryShortage::getIsPossible()) GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
    std::unique_ptr<int> first;
    std::unique_ptr<int> second;
    EXPECT_FALSE(succeedsWith(1, [&] {
        first = std::make_unique<int>(1);
        second = std::make_unique<int>(2);
    }));
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_FALSE(succeedsWith(0, [] { const Quillmere::Core::MatrixXd matrix(3, 3); }));
    second = std::make_unique<int>(2); // over
}
