// SPDX-License-Identifier: MIT
#include "framework/transport/MatrixXd.h"

#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <limits>

#include <sys/resource.h>

using namespace Quillmere::Core;
using namespace Support;

namespace {
constexpr std::int64_t kLimit = std::int64_t{1} << 29;
} // namespace

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define HAS_SANITIZER_ALLOCATOR 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define HAS_SANITIZER_ALLOCATOR 1
#endif
#endif

#ifdef HAS_SANITIZER_ALLOCATOR
// A sanitizer's allocator has a limit of its own and ends the program there, unless it is told not to.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=1024";
}
extern "C" const char* __tsan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=1024";
}
namespace {
void limitMemory() {}
} // namespace
#else
namespace {
void limitMemory() {
    const rlimit limit{1u << 30, 1u << 30};
    setrlimit(RLIMIT_AS, &limit);
}
} // namespace
#endif

TEST(MatrixXdTest, IsStoredByRows) {
    const MatrixXd m = matrix({{1, 2, 3}, {4, 5, 6}});
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(m.data()[i], i + 1.0);
    EXPECT_EQ(m(0), 1.0);
    EXPECT_EQ(m(1 * m.cols() + 2), m(1, 2));
}

TEST(MatrixXdTest, ResizingKeepsTheStorageWhileTheNumberOfElementsStays) {
    MatrixXd m = matrix({{1, 2, 3}, {4, 5, 6}});
    const double* const storage = m.data();
    const AllocationCounter counter;
    resizeSample(m, 2, 3);
    resizeSample(m, 1, 6);
    resizeSample(m, 3, 2);
    EXPECT_EQ(counter.count(), 0u);
    EXPECT_TRUE(agree(m, matrix({{1, 2}, {3, 4}, {5, 6}}), same));
    EXPECT_EQ(m.data(), storage);
    resizeSample(m, 1, 5);
    EXPECT_EQ(m.rows(), 1);
    EXPECT_EQ(m.cols(), 5);
}

TEST(MatrixXdTest, EmptyShapesAreShapesToo) {
    MatrixXd m;
    const std::int64_t shapes[][2] = {
        {0, 0}, {0, 7}, {7, 0}, {0, std::int64_t{1} << 40}, {std::int64_t{1} << 40, 0}};
    for (const auto& [rows, cols] : shapes) {
        resizeSample(m, rows, cols);
        EXPECT_EQ(m.rows(), rows);
        EXPECT_EQ(m.cols(), cols);
    }
}

TEST(MatrixXdTest, SizesOutOfBoundsAreRefused) {
    struct Row {
        const char* name;
        std::int64_t rows;
        std::int64_t cols;
    };
    constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
    const Row rows[] = {
        {.name = "2^29 elements in a row", .rows = 1, .cols = kLimit},
        {.name = "2^29 elements in a column", .rows = kLimit, .cols = 1},
        {.name = "2^29 elements in a block", .rows = 1 << 14, .cols = 1 << 15},
        {.name = "a product of 2^31", .rows = 1 << 15, .cols = 1 << 16},
        {.name = "a product of 2^32, 0 in 32 bits", .rows = 1 << 16, .cols = 1 << 16},
        {.name = "a product that is small in 32 bits", .rows = 3, .cols = 1431655766},
        {.name = "a product beyond 64 bits", .rows = kLargest, .cols = kLargest},
        {.name = "negative rows", .rows = -1, .cols = 3},
        {.name = "negative columns", .rows = 3, .cols = -1},
        {.name = "both negative, the product small", .rows = -2, .cols = -3},
        {.name = "negative by zero", .rows = -1, .cols = 0},
        {.name = "zero by negative", .rows = 0, .cols = -1},
    };
    for (const Row& row : rows) {
        MatrixXd m = matrix({{1, 2}});
        EXPECT_EQ(refusal<MatrixAllocationException>([&] { resizeSample(m, row.rows, row.cols); }),
                  "bad allocation")
            << row.name;
        EXPECT_TRUE(agree(m, matrix({{1, 2}}), same)) << row.name << ": a refusal changes nothing";
        try {
            resizeSample(m, row.rows, row.cols);
            ADD_FAILURE() << row.name;
        } catch (const std::bad_alloc& exception) {
            EXPECT_STREQ(exception.what(), "bad allocation") << row.name;
        }
    }
}

/// In a process of its own, where memory is short.
TEST(MatrixXdDeathTest, AFailedAllocationIsTheSameException) {
    const auto shortOfMemory = [] {
        limitMemory();
        MatrixXd m = matrix({{1, 2}});
        const std::string text =
            refusal<MatrixAllocationException>([&] { resizeSample(m, 1 << 14, 1 << 14); });
        std::exit(text == "bad allocation" && agree(m, matrix({{1, 2}}), same) ? 0 : 1); // as it was
    };
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(shortOfMemory(), testing::ExitedWithCode(0), "");
}

TEST(MatrixXdTest, ACopyHasShapeAndBits) {
    MatrixXd to = matrix({{1}});
    for (const MatrixXd& from : {matrix({{kNaN, -0.0}, {kInf, 5e-324}}), MatrixXd(0, 3), MatrixXd(3, 0),
                                 MatrixXd(), matrix({{1}, {2}})}) {
        copySample(to, from);
        EXPECT_TRUE(agree(to, from, same));
    }
    copySample(to, to);
    EXPECT_TRUE(agree(to, matrix({{1}, {2}}), same)) << "onto itself";
    for (Eigen::Index elements = 0; elements < 12; ++elements) {
        MatrixXd from(1, elements);
        for (Eigen::Index i = 0; i < elements; ++i)
            from(i) = 10.0 + static_cast<double>(i);
        copySample(to, from);
        EXPECT_TRUE(agree(to, from, same)) << elements << " elements";
    }
}
