// SPDX-License-Identifier: MIT
#include "host/batch/StudyTable.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Strings = std::vector<std::string>;

class StudyTableTest : public testing::Test {
protected:
    StudyTable read(const std::string& text) {
        complaints = {};
        return StudyTable(folder.write("participants.csv", text), complaints);
    }
    /// The name of the row of a recording below `study`; empty for none.
    std::string rowOf(const StudyTable& table, const std::string& name) {
        const auto row = table.findRow("study/" + name, name, complaints);
        return row ? table.getName(*row) : "";
    }
    /// Behind the file's name.
    std::string complaint() const {
        if (complaints.isEmpty()) return "";
        const std::string text = complaints.getSorted().front().getText();
        const std::string file = folder.path("participants.csv");
        return text.starts_with(file) ? text.substr(file.size()) : text;
    }

    Support::TemporaryFolder folder;
    Complaints complaints;
};

TEST_F(StudyTableTest, CellsHaveQuotesOrNone) {
    EXPECT_EQ(tableCells("a,\"b,c\",\"d \"\"e\"\"\",", ','), (Strings{"a", "b,c", "d \"e\"", ""}));
    EXPECT_EQ(tableCells("a\tb c", '\t'), (Strings{"a", "b c"}));
    EXPECT_EQ(tableCell("plain"), "plain");
    for (const std::string text : {"a,b", "\"", "x"})
        EXPECT_EQ(tableCells(tableCell(text), ','), Strings{text});
}

TEST_F(StudyTableTest, RowsAreFoundById) {
    const StudyTable table =
        read("\xEF\xBB\xBFparticipant_id,age,set:band.Order\r\nsub-01,34,4\r\nsub-02,,\r\n");
    EXPECT_EQ(table.getColumns(), (Strings{"age", "set:band.Order"}));
    EXPECT_EQ(table.getCells(0), (Strings{"34", "4"}));
    EXPECT_EQ(rowOf(table, "sub-01/motion/day1.csv"), "sub-01") << "a folder on the way";
    EXPECT_EQ(rowOf(table, "all/sub-02_day1.csv.gz"), "sub-02") << "the begin of the name";
    EXPECT_EQ(rowOf(table, "sub-02.csv"), "sub-02");
    EXPECT_EQ(rowOf(table, "sub-021.csv"), "") << "another one";
    EXPECT_EQ(complaint(), "");
}

TEST_F(StudyTableTest, AQuoteInACellIsALetter) {
    EXPECT_EQ(tableCells("5\",\"6\"7\",8", ','), (Strings{"5\"", "67\"", "8"}));
    const StudyTable table = read("\xEF\xBB\xBF\"id\",height,age\np03,5\",8\np04,6\",9\n");
    EXPECT_EQ(complaint(), "");
    EXPECT_EQ(table.getCells(0), (Strings{"5\"", "8"}));
    EXPECT_EQ(table.getCells(1), (Strings{"6\"", "9"}));
}

TEST_F(StudyTableTest, LettersBeyondAsciiEndNoName) {
    const StudyTable table = read("id,age\nJ,1\nJ\xC3\xB6rg,2\n");
    EXPECT_EQ(rowOf(table, "J\xC3\xB6rg-left.csv"), "J\xC3\xB6rg");
    EXPECT_EQ(rowOf(table, "J\xC3\xBCrgen.csv"), "");
    EXPECT_EQ(rowOf(table, "J_1.csv"), "J");
    EXPECT_EQ(complaint(), "");
}

TEST_F(StudyTableTest, RowsAreFoundByPath) {
    const StudyTable table = read("age;path\n1;a/x.csv\n2;./study/b/x.csv\n3;c/x\n");
    EXPECT_EQ(rowOf(table, "a/x.csv"), "a/x.csv");
    EXPECT_EQ(rowOf(table, "b/x.csv"), "./study/b/x.csv");
    EXPECT_EQ(rowOf(table, "c/x.mat"), "c/x");
    EXPECT_EQ(rowOf(table, "d/x.csv"), "");
}

TEST_F(StudyTableTest, APartOfAStudyIsFoundAsTheWholeIs) {
    const StudyTable table = read("id,age\np1,3\nstudies,4\n");
    const auto row = table.findRow("/home/studies/p1/day/a.csv", "a.csv", complaints);
    ASSERT_TRUE(row);
    EXPECT_EQ(table.getName(*row), "p1") << "the deepest one above the recordings";
    EXPECT_FALSE(table.findRow("p2/a.csv", "a.csv", complaints));
}

TEST_F(StudyTableTest, NamesAndCellsAreWithoutBlanksAround) {
    const StudyTable table = read(" id , Set: band.Order,age,\np1 , 4,\"two\nlines\",\n,,,\n");
    EXPECT_EQ(complaint(), "");
    EXPECT_EQ(table.getColumns(), (Strings{"set:band.Order", "age", ""}));
    ASSERT_EQ(table.getRows(), 1u) << "an empty row is none";
    EXPECT_EQ(table.getCells(0), (Strings{"4", "two lines", ""}));
    EXPECT_EQ(rowOf(table, "p1.csv"), "p1");
}

TEST_F(StudyTableTest, ColumnsHaveNamesOfTheirOwn) {
    read("id,age, age\np1,3,4\n");
    EXPECT_EQ(complaint(),
              ":1:1: found a second time the column 'age'; expected a name of its own for each column");
    read("id,a=b\np1,3\n");
    EXPECT_EQ(complaint(), ":1:1: found the column 'a=b'; expected a name without =");
    read("id,\np1,3\n");
    EXPECT_EQ(complaint(), ":2:1: found '3' in a column without a name; expected a name in line 1");
    read("id,age\np1,\"3\np2,4\n");
    EXPECT_EQ(complaint(), ":2:1: found a quote that isn't closed; expected another one");
}

TEST_F(StudyTableTest, TwoRowsForOneAreRefused) {
    const StudyTable table = read("id,age\np1,3\nday1,4\n");
    rowOf(table, "p1/day1.csv");
    EXPECT_EQ(complaint(),
              ":3:1: found a second row for 'study/p1/day1.csv', beside that in line 2; expected "
              "one row for each recording");
}

TEST_F(StudyTableTest, WhatIsNoSuchTableIsComplainedOf) {
    read("name,age\nx,1\n");
    EXPECT_EQ(complaint(),
              ":1:1: found no column that names recordings; expected one called path, id or participant_id");
    read("id,age\nx,1,2\n");
    EXPECT_EQ(complaint(), ":2:1: found 3 cells; expected 2, as there are names");
    read("id,set:Order\nx,1\n");
    EXPECT_EQ(complaint(), ":1:1: found the column 'set:Order'; expected set:BLOCK.PROPERTY");
    read("");
    EXPECT_EQ(complaint(), ":1:1: found nothing; expected a row of names, one of which is path or id");
    complaints = {};
    const StudyTable none("/nowhere/table.csv", complaints);
    EXPECT_EQ(complaint(), "/nowhere/table.csv: cannot be opened: No such file or directory");
}

} // namespace
