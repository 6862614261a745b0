// SPDX-License-Identifier: MIT
#include "host/text/Table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Quillmere::Host::Table;
using Lines = std::vector<std::string>;

TEST(Table, PutsCellsBelowEachOther) {
    Table table;
    table.add({"name", "kind"});
    table.add({"a", "number"});
    table.add({"longer", "x"});
    EXPECT_EQ(table.getLines(), (Lines{"name    kind", "a       number", "longer  x"}));
    EXPECT_EQ(table.getText(), "name    kind\na       number\nlonger  x\n");
}

TEST(Table, AlignsNumbersByTheirEnd) {
    Table table(0, 1);
    table.add({"block", "steps", "ms"});
    table.add({"a", "12345678", "0.5"});
    table.add({"wrist", "", "10.25"});
    EXPECT_EQ(table.getLines(),
              (Lines{"block     steps     ms", "a      12345678    0.5", "wrist            10.25"}));
}

TEST(Table, HasNoBlanksAtTheEndOfALine) {
    Table table(2);
    table.add({"a", "", ""});
    table.add({"longer", "", "x"});
    table.add({"", "nothing to y"});
    table.add({"", ""});
    table.add({});
    EXPECT_EQ(table.getLines(),
              (Lines{"  a", "  longer                x", "          nothing to y", "", ""}));
}

TEST(Table, KeepsTheBlanksOfACell) {
    Table table;
    table.add({"a ", "b "});
    EXPECT_EQ(table.getLines(), Lines{"a   b "});
}

TEST(Table, WithoutRowsIsNothing) {
    EXPECT_EQ(Table(2).getLines(), Lines{});
    EXPECT_EQ(Table(2).getText(), "");
}

} // namespace
