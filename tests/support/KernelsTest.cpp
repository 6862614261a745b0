// SPDX-License-Identifier: MIT
// Part of every program that tests kernels: each of these runs twice, once with VELMARIND_KERNELS=plain.
#include "tests/support/KernelChoice.h"

#include <gtest/gtest.h>

namespace {
const bool isPlainWanted = Support::pickKernels();
} // namespace

TEST(KernelsTest, AreTheFastestOrThePlainOnesWhereThoseAreWanted) {
    using namespace Processor;
    EXPECT_EQ(kernels(), isPlainWanted ? Kernels::Plain : fastestKernels());
}

TEST(KernelsTest, WideOnesAreThereForEveryPC) {
#ifdef __x86_64__
    EXPECT_EQ(Processor::fastestKernels() == Processor::Kernels::Avx2, __builtin_cpu_supports("avx2") != 0);
#else
    EXPECT_EQ(Processor::fastestKernels(), Processor::Kernels::Plain);
#endif
}
