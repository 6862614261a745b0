// SPDX-License-Identifier: MIT
#include "everyday/Logic.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

using namespace Support;

namespace {
constexpr unsigned kAnd = 0;
constexpr unsigned kOr = 1;
constexpr unsigned kNot = 2;
constexpr unsigned kAny = 3;
constexpr unsigned kAll = 4;
} // namespace

TEST(LogicTest, Catalogue) {
    Logic block("logic");
    EXPECT_STREQ(block.getTypeName(), "Logic");
    EXPECT_EQ(catalogue(block), "input \"a\" blocking\n"
                                "input \"b\" non-blocking\n"
                                "output \"out\"\n"
                                "enum \"Operation\" 0 of And, Or, Not, Any, All\n");
}

TEST(LogicTest, CombinesLevels) {
    struct Row {
        const char* name;
        unsigned operation;
        MatrixXd a;
        MatrixXd b;
        MatrixXd output;
    };
    const MatrixXd levels = matrix({{1, 1, 0, 0}});
    const MatrixXd others = matrix({{1, 0, 1, 0}});
    const Row rows[] = {
        {.name = "and", .operation = kAnd, .a = levels, .b = others, .output = matrix({{1, 0, 0, 0}})},
        {.name = "or", .operation = kOr, .a = levels, .b = others, .output = matrix({{1, 1, 1, 0}})},
        {.name = "and one for all", .operation = kAnd, .a = levels, .b = matrix({{1}}), .output = levels},
        {.name = "or one for all",
         .operation = kOr,
         .a = levels,
         .b = matrix({{2}}),
         .output = matrix({{1, 1, 1, 1}})},
        {.name = "not", .operation = kNot, .a = matrix({{1}, {0}}), .b = {}, .output = matrix({{0}, {1}})},
        {.name = "any", .operation = kAny, .a = levels, .b = {}, .output = matrix({{1}})},
        {.name = "any of none", .operation = kAny, .a = matrix({{0, -1}}), .b = {}, .output = matrix({{0}})},
        {.name = "all",
         .operation = kAll,
         .a = matrix({{1, 0.1}, {kInf, 2}}),
         .b = {},
         .output = matrix({{1}})},
        {.name = "all but one", .operation = kAll, .a = levels, .b = {}, .output = matrix({{0}})},
        {.name = "what is on",
         .operation = kNot,
         .a = matrix({{1e-300, -0.0, -1, kNaN, kInf, -kInf}}),
         .b = {},
         .output = matrix({{0, 1, 1, 1, 0, 1}})},
        {.name = "any of nothing", .operation = kAny, .a = MatrixXd(0, 0), .b = {}, .output = matrix({{0}})},
        {.name = "all of nothing", .operation = kAll, .a = MatrixXd(0, 3), .b = {}, .output = matrix({{1}})},
        {.name = "not of nothing", .operation = kNot, .a = MatrixXd(0, 3), .b = {}, .output = MatrixXd(0, 3)},
        {.name = "and of nothing",
         .operation = kAnd,
         .a = MatrixXd(0, 3),
         .b = matrix({{1}}),
         .output = MatrixXd(0, 3)},
    };
    for (const Row& row : rows) {
        Logic block("logic");
        Feed feed(block);
        feed.set("Operation", row.operation);
        feed.give("b", row.b, 9.0);
        EXPECT_TRUE(agree(feed.run("a", row.a, 0.25), row.output, same)) << row.name;
        EXPECT_TRUE(agree(feed.last().timeStamp, 0.25, same)) << row.name;
    }
}

TEST(LogicTest, WhatCameLastAtBCounts) {
    Logic block("logic");
    Feed feed(block);
    feed.give("a", matrix({{1}}));
    feed.step();
    EXPECT_TRUE(feed.sent().empty()) << "nothing has come";
    feed.give("b", matrix({{1}}));
    feed.step();
    EXPECT_TRUE(feed.sent().empty()) << "'a' is the clock";
    EXPECT_TRUE(agree(feed.run("a", matrix({{1}})), matrix({{1}}), same));
    EXPECT_TRUE(agree(feed.run("a", matrix({{0}})), matrix({{0}}), same));
    feed.give("b", matrix({{0}}));
    EXPECT_TRUE(agree(feed.run("a", matrix({{1}})), matrix({{0}}), same)) << "of the same step";
    feed.forget();
    feed.give("b", matrix({{1, 1}}));
    feed.give("a", matrix({{1, 1, 1}}));
    feed.step();
    EXPECT_TRUE(feed.sent().empty()) << "other shapes";
    EXPECT_TRUE(agree(feed.run("a", matrix({{1, 0}})), matrix({{1, 0}}), same));
}

TEST(LogicTest, ASteadyStepAllocatesNothing) {
    Logic block("logic");
    Feed(block).set("Operation", kNot);
    EXPECT_EQ(allocationsOfAHundredSteps(block, "a", MatrixXd::Ones(4, 6)), 0U);
}
