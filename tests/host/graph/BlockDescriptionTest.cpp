// SPDX-License-Identifier: MIT
#include "host/graph/BlockDescription.h"

#include "tests/host/kit/KnobBlock.h"

#include <gtest/gtest.h>

#include <iterator>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Kind = PropertyDescription::Kind;

struct Row {
    const char* name;
    Kind kind;
    const char* kindName;
    const char* value;
    const char* expected;
};

// clang-format off
const Row kRows[] = {
    {"Flag",   Kind::Flag,    "flag",         "true",             "true or false"},
    {"Whole",  Kind::Whole,   "whole number", "-3",               "a whole number"},
    {"Count",  Kind::Count,   "count",        "4294967295",       "a whole number from 0 to 4294967295"},
    {"Number", Kind::Number,  "number",       "0.1",              "a number"},
    {"Matrix", Kind::Matrix,  "matrix",       "[[1, 2], [3, 4]]", "a matrix"},
    {"Order",  Kind::Whole,   "whole number", "4",                "a whole number from 1 to 10"},
    {"Edge",   Kind::Number,  "number",       "0.5",              "a number from 0 to 1"},
    {"Mode",   Kind::Choice,  "choice",       "HiPass",
     "one of LowPass and HiPass, or an index from 0 to 1"},
    {"Go",     Kind::Command, "command",      "",                 "a setting: a command has no value"},
    {"Text",   Kind::Unknown, "unknown",      "",                 "a setting that this program can write"},
    {"Locked", Kind::Number,  "number",       "0",                "a number"},
    {"Shy",    Kind::Whole,   "whole number", "0",                "a whole number"},
};
// clang-format on

class BlockDescriptionTest : public testing::Test {
protected:
    BlockDescriptionTest() {
        block.flag.setValue(true);
        block.whole.setValue(-3);
        block.count.setValue(4294967295u);
        block.number.setValue(0.1);
        block.matrix.setValue((KnobBlock::MatrixXd(2, 2) << 1.0, 2.0, 3.0, 4.0).finished());
        block.order.setValue(4);
        block.edge.setValue(0.5);
        block.mode.setValue(1);
    }
    KnobBlock block;
};

TEST_F(BlockDescriptionTest, TellsKindValueAndWhatMayBeWritten) {
    const BlockDescription description = describe(block);
    ASSERT_EQ(description.properties.size(), std::size(kRows));
    for (std::size_t i = 0; i < std::size(kRows); ++i) {
        const Row& row = kRows[i];
        const PropertyDescription& property = description.properties[i];
        EXPECT_EQ(property.name, row.name);
        EXPECT_EQ(property.kind, row.kind) << row.name;
        EXPECT_EQ(nameOf(property.kind), row.kindName) << row.name;
        EXPECT_EQ(valueText(property), row.value) << row.name;
        EXPECT_EQ(expectedText(property), row.expected) << row.name;
        EXPECT_EQ(kindOf(*block.getPropertyBag().find(row.name)), row.kind) << row.name;
    }
}

TEST_F(BlockDescriptionTest, TellsPinsInTheOrderOfTheirCreation) {
    const BlockDescription description = describe(block);
    EXPECT_EQ(description.type, "KnobBlock");
    ASSERT_EQ(description.inputs.size(), 2u);
    EXPECT_EQ(description.inputs[0].name, "in");
    EXPECT_TRUE(description.inputs[0].isBlocking);
    EXPECT_EQ(description.inputs[1].name, "reset");
    EXPECT_FALSE(description.inputs[1].isBlocking);
    ASSERT_EQ(description.outputs.size(), 1u);
    EXPECT_EQ(description.outputs[0].name, "out");
}

TEST_F(BlockDescriptionTest, TellsLimitsAndWhoMayWrite) {
    const PropertyDescription edge = describe(block.edge);
    EXPECT_TRUE(edge.hasLimits);
    EXPECT_EQ(edge.minimum, 0.0);
    EXPECT_EQ(edge.maximum, 1.0);
    EXPECT_EQ(edge.step, 0.25);
    EXPECT_TRUE(edge.isWritable);
    EXPECT_FALSE(describe(block.number).hasLimits);
    EXPECT_FALSE(describe(block.locked).isWritable);
    EXPECT_TRUE(describe(block.locked).isReadable);
    EXPECT_FALSE(describe(block.command).isWritable) << "a command has nothing to write";
    EXPECT_EQ(describe(block.mode).labels, (std::vector<std::string>{"LowPass", "HiPass"}));
}

TEST_F(BlockDescriptionTest, ListsLimitsThatAreNoneOfTheType) {
    block.edge.setRange(-1e308, 2.0, 0.0);
    EXPECT_EQ(expectedText(describe(block.edge)), "a number from -1e+308 to 2");
    block.edge.minValue = -std::numeric_limits<double>::max();
    EXPECT_EQ(expectedText(describe(block.edge)), "a number, 2 or less");
    block.edge.setRange(0.0, std::numeric_limits<double>::max(), 0.0);
    EXPECT_EQ(expectedText(describe(block.edge)), "a number, 0 or more");
}

TEST_F(BlockDescriptionTest, WritesLimitsOfWholeNumbersInFull) {
    block.order.setRange(-400000, 200000, 1);
    EXPECT_EQ(expectedText(describe(block.order)), "a whole number from -400000 to 200000");
}

TEST_F(BlockDescriptionTest, NamesAChoiceWithoutALabelByItsIndex) {
    Quillmere::Core::EnumProperty<std::string> bare("Bare", &block.getPropertyBag());
    bare.setValue(7);
    EXPECT_EQ(valueText(describe(bare)), "7");
    EXPECT_EQ(expectedText(describe(bare)), "the index of a choice");
}

} // namespace
