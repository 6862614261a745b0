// SPDX-License-Identifier: MIT
#include "host/text/Address.h"

#include <gtest/gtest.h>

namespace {

using Quillmere::Host::Address;

struct Row {
    const char* text;
    const char* block;
    const char* member;
    bool hasMember;
};

// clang-format off
const Row kRows[] = {
    // text         block     member      has one
    {"smooth.out",  "smooth", "out",      true},
    {"aux.in.put",  "aux",    "in.put",   true},
    {"wrist.ax (g)", "wrist", "ax (g)",   true},
    {"smooth.",     "smooth", "",         true},
    {".out",        "",       "out",      true},
    {"..",          "",       ".",        true},
    {"smooth",      "smooth", "",         false},
    {"",            "",       "",         false},
};
// clang-format on

TEST(Address, IsSplitAtTheFirstDot) {
    for (const Row& row : kRows) {
        const Address address(row.text);
        EXPECT_EQ(address.block, row.block) << row.text;
        EXPECT_EQ(address.member, row.member) << row.text;
        EXPECT_EQ(address.hasMember, row.hasMember) << row.text;
    }
}

TEST(Address, IsWrittenAsItWasRead) {
    for (const Row& row : kRows)
        EXPECT_EQ(Address(row.text).getText(), row.text);
}

TEST(Address, OfTwoNamesIsThatOfTheirText) {
    EXPECT_EQ(Address("aux", "in.put"), Address("aux.in.put"));
    EXPECT_EQ(Address("aux", ""), Address("aux."));
    EXPECT_NE(Address("aux", ""), Address("aux"));
}

} // namespace
