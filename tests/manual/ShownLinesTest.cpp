// SPDX-License-Identifier: MIT
#include "tests/manual/ShownLines.h"

#include <gtest/gtest.h>

namespace {

using Support::isShown;

TEST(ShownLines, AreThoseOfTheText) {
    EXPECT_TRUE(isShown("t,x\n0,1\n", "t,x\n0,1\n"));
    EXPECT_FALSE(isShown("t,x\n0,1\n", "t,x\n0,2\n"));
    EXPECT_FALSE(isShown("t,x\n0,1\n", "t,x\n0,1\n1,1\n"));
    EXPECT_FALSE(isShown("t,x\n0,1\n1,1\n", "t,x\n0,1\n"));
    EXPECT_FALSE(isShown("t,x\n", "t,y\n"));
    EXPECT_FALSE(isShown("0,1\n", "0,1,\n")) << "an empty cell is one";
    EXPECT_FALSE(isShown("0,\n", "0,0\n"));
}

TEST(ShownLines, MayDifferInTheLastDigits) {
    EXPECT_TRUE(isShown("0,0.1\n", "0,0.10000000000000002\n"));
    EXPECT_TRUE(isShown("0,-1e5\n", "0,-100000\n"));
    EXPECT_FALSE(isShown("0,0.1\n", "0,0.100000001\n"));
    EXPECT_FALSE(isShown("0,0\n", "0,1e-17\n")) << "nothing is near zero";
    EXPECT_FALSE(isShown("0,1x\n", "0,1\n"));
}

TEST(ShownLines, MayLeaveSomeOut) {
    EXPECT_TRUE(isShown("a\n...\nd\n", "a\nb\nc\nd\n"));
    EXPECT_TRUE(isShown("a\n...\nc\n...\n", "a\nc\nb\nc\nd\n"));
    EXPECT_TRUE(isShown("a\n...\n", "a\n"));
    EXPECT_FALSE(isShown("a\n...\nc\n", "a\nb\nc\nd\n"));
    EXPECT_FALSE(isShown("...\nb\na\n...\n", "a\nb\nc\n"));
}

} // namespace
