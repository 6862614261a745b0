// SPDX-License-Identifier: MIT
#include "host/graph/PropertyWriter.h"

#include "host/description/ValueReader.h"
#include "host/graph/BlockDescription.h"
#include "tests/host/kit/KnobBlock.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

/// What is complained of when that YAML is written to that setting.
std::string refusalOf(KnobBlock& block, const char* name, const std::string& yaml) {
    Complaints complaints;
    const auto value = readValueText(yaml, "a.yaml", true, complaints);
    if (!value) return "no YAML";
    writeProperties({{block.getPropertyBag().find(name), &*value}}, complaints);
    const std::vector<Complaint> list = complaints.getSorted();
    return list.empty() ? "" : list.front().getText();
}

struct Taken {
    const char* name;
    const char* yaml;
    const char* value;
};

// clang-format off
const Taken kTaken[] = {
    {"Flag",   "true",             "true"},
    {"Whole",  "-2147483648",      "-2147483648"},
    {"Count",  "4294967295",       "4294967295"},
    {"Number", "1e-3",             "0.001"},
    {"Matrix", "[[1, 2], [3, 4]]", "[[1, 2], [3, 4]]"},
    {"Order",  "10",               "10"},
    {"Edge",   "1",                "1"},
    {"Mode",   "HiPass",           "HiPass"},
    {"Mode",   "1",                "HiPass"},
};
// clang-format on

TEST(PropertyWriter, WritesEachKindInItsOwnType) {
    for (const Taken& row : kTaken) {
        KnobBlock block;
        EXPECT_EQ(refusalOf(block, row.name, row.yaml), "") << row.name;
        EXPECT_EQ(valueText(describe(*block.getPropertyBag().find(row.name))), row.value) << row.name;
    }
}

struct Refused {
    const char* name;
    const char* yaml;
    const char* text;
};

const Refused kRefused[] = {
    {"Flag", "yes", "found 'yes'; expected true or false; did you mean true?"},
    {"Whole", "1.5", "found '1.5'; expected a whole number"},
    {"Whole", "2147483648", "found '2147483648' for 'Whole'; expected a whole number that fits in 32 bits"},
    {"Count", "-1", "found '-1' for 'Count'; expected a whole number from 0 to 4294967295"},
    {"Number", "half", "found 'half'; expected a number"},
    {"Order", "11", "found '11' for 'Order'; expected a whole number from 1 to 10"},
    {"Order", "2147483648", "found '2147483648' for 'Order'; expected a whole number from 1 to 10"},
    {"Edge", "1.5", "found '1.5' for 'Edge'; expected a number from 0 to 1"},
    {"Mode", "Hipass",
     "found 'Hipass' for 'Mode'; expected one of LowPass and HiPass, or an index from 0 to 1; did you mean "
     "HiPass?"},
    {"Mode", "2", "found '2' for 'Mode'; expected one of LowPass and HiPass, or an index from 0 to 1"},
    {"Mode", "-1", "found '-1' for 'Mode'; expected one of LowPass and HiPass, or an index from 0 to 1"},
    {"Mode", "[a]", "found a list for 'Mode'; expected one of LowPass and HiPass, or an index from 0 to 1"},
    {"Go", "1", "found '1' for 'Go'; expected a setting: a command has no value"},
    {"Text", "a", "found 'a' for 'Text'; expected a setting that this program can write"},
    {"Locked", "1",
     "found '1' for 'Locked'; expected a number that the block takes (Property 'Locked' is not writable)"},
    {"Shy", "1", "found '1' for 'Shy'; expected a whole number that the block takes (not\\nnow)"},
};

TEST(PropertyWriter, RefusesInOneSentence) {
    for (const Refused& row : kRefused) {
        KnobBlock block;
        EXPECT_EQ(refusalOf(block, row.name, row.yaml), std::string("a.yaml:1:1: ") + row.text) << row.name;
    }
}

TEST(PropertyWriter, LeavesWhatIsRefusedAsItWas) {
    KnobBlock block;
    block.order.setValue(4);
    EXPECT_NE(refusalOf(block, "Order", "0"), "");
    EXPECT_EQ(block.order.getValue(), 4);
}

TEST(PropertyWriter, TriesAgainBehindASettingThatMovesTheLimits) {
    struct Mover final : Quillmere::Core::Filter {
        Mover() : Filter("mover", true) {
            low.setRange(0.0, 1.0, 0.0);
            high.setChangeHandler(this, &Mover::move);
        }
        void process() override {}
        const char* getTypeName() const override { return "Mover"; }
        void move() { low.setRange(0.0, high.getValue(), 0.0); }
        Quillmere::Core::RangeProperty<double> low{"Low", &getPropertyBag()};
        Quillmere::Core::ValueProperty<double> high{"High", &getPropertyBag()};
    } block;
    Complaints complaints;
    const auto five = readValueText("5", "a.yaml", true, complaints);
    const auto nine = readValueText("9", "a.yaml", true, complaints);
    writeProperties({{&block.low, &*five}, {&block.high, &*nine}}, complaints);
    EXPECT_TRUE(complaints.isEmpty());
    EXPECT_EQ(block.low.getValue(), 5.0);
    EXPECT_EQ(block.high.getValue(), 9.0);
}

} // namespace
