// SPDX-License-Identifier: MIT
#include "host/recording/TableWriter.h"

#include "host/ends/RecordingException.h"
#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/RefusalText.h"
#include "tests/host/kit/TemporaryFolder.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Quillmere::Core::MatrixXd;
using Quillmere::Host::RecordingException;
using Quillmere::Host::TableWriter;
using Support::matrix;
using Support::TemporaryFolder;
using Groups = std::vector<TableWriter::Group>;

const MatrixXd kRow = matrix({{1, 2, 3}});
const MatrixXd kSquare = matrix({{10, 20}, {30, 40}});
const MatrixXd kOne = matrix({{7}});
const MatrixXd kEmpty = matrix({});

TEST(TableWriter, ARowHoldsTimeAndElementsByRows) {
    const TemporaryFolder folder;
    TableWriter table(folder.path("out.csv"), "t", Groups{{"accel", {}}, {"Nb Period", {}}});
    table.writeRow(0.5, {&kRow, &kSquare});
    table.writeRow(0.75, {&kRow, nullptr});
    table.writeRow(1.0, {nullptr, &kSquare});
    table.complete();
    EXPECT_EQ(folder.read("out.csv"),
              "t,accel[0],accel[1],accel[2],Nb Period[0],Nb Period[1],Nb Period[2],Nb Period[3]\n"
              "0.5,1,2,3,10,20,30,40\n"
              "0.75,1,2,3,,,,\n"
              "1,,,,10,20,30,40\n");
    EXPECT_EQ(table.getRows(), 3u);
    EXPECT_EQ(folder.count(), 1);
}

TEST(TableWriter, NamesOfItsOwnReplaceTheNumbers) {
    const TemporaryFolder folder;
    TableWriter table(folder.path("out.csv"), "seconds",
                      Groups{{"accel", {"x", "y", "z"}}, {"flag", {"still"}}});
    table.writeRow(1, {&kRow, nullptr});
    table.complete();
    EXPECT_EQ(folder.read("out.csv"), "seconds,x,y,z,still\n1,1,2,3,\n");
}

TEST(TableWriter, AGroupThatComesLateGetsItsCellsInTheEarlyRows) {
    const TemporaryFolder folder;
    TableWriter table(folder.path("out.csv"), "t", Groups{{"a", {}}, {"b", {}}, {"c", {}}});
    table.writeRow(1, {nullptr, nullptr, &kOne});
    table.writeRow(2, {nullptr, &kRow, nullptr});
    table.writeRow(3, {&kOne, nullptr, &kOne});
    table.complete();
    EXPECT_EQ(folder.read("out.csv"), "t,a[0],b[0],b[1],b[2],c[0]\n"
                                      "1,,,,,7\n"
                                      "2,,1,2,3,\n"
                                      "3,7,,,,7\n");
    EXPECT_EQ(folder.count(), 1) << "no helper file stays";
}

TEST(TableWriter, AGroupThatGrowsWidensAndASmallerSampleLeavesCellsEmpty) {
    const TemporaryFolder folder;
    TableWriter table(folder.path("out.csv"), "t", Groups{{"a", {}}, {"b", {}}});
    table.writeRow(1, {&kOne, &kOne});
    table.writeRow(2, {&kRow, &kOne});
    table.writeRow(3, {&kOne, &kOne});
    table.writeRow(4, {&kEmpty, nullptr});
    table.complete();
    EXPECT_EQ(folder.read("out.csv"), "t,a[0],a[1],a[2],b[0]\n"
                                      "1,7,,,7\n"
                                      "2,1,2,3,7\n"
                                      "3,7,,,7\n"
                                      "4,,,,\n");
}

TEST(TableWriter, AbandonedTablesAreWideToo) {
    const TemporaryFolder folder;
    TableWriter table(folder.path("out.csv"), "t", Groups{{"a", {}}, {"b", {}}});
    table.writeRow(1, {nullptr, &kOne});
    table.writeRow(2, {&kOne, &kOne});
    table.abandon();
    EXPECT_EQ(folder.read("out.csv.partial"), "t,a[0],b[0]\n1,,7\n2,7,7\n");
    EXPECT_FALSE(folder.has("out.csv"));
}

TEST(TableWriter, ATableWithoutRowsHasAHeader) {
    const TemporaryFolder folder;
    TableWriter table(folder.path("out.csv"), "t", Groups{{"a", {"x"}}, {"b", {}}});
    table.complete();
    EXPECT_EQ(folder.read("out.csv"), "t,x\n");
}

TEST(TableWriter, GroupsThatNeverCameHaveNoColumns) {
    const TemporaryFolder folder;
    TableWriter table(folder.path("out.csv"), "t", Groups{{"a", {}}, {"b", {}}});
    table.writeRow(1, {&kOne, nullptr});
    table.complete();
    EXPECT_EQ(folder.read("out.csv"), "t,a[0]\n1,7\n");
}

TEST(TableWriter, ASampleThatDoesNotFitItsNamesIsRefused) {
    const TemporaryFolder folder;
    TableWriter table(folder.path("out.csv"), "t", Groups{{"a", {"x", "y"}}});
    try {
        table.writeRow(1, {&kRow});
        FAIL();
    } catch (const RecordingException& exception) {
        EXPECT_EQ(exception.what(), folder.path("out.csv") +
                                        ": 'a': found a sample of 3 elements for 2 column names; expected "
                                        "as many names as elements");
    }
}

TEST(TableWriter, DiscardLeavesNothing) {
    const TemporaryFolder folder;
    TableWriter table(folder.path("out.csv"), "t", Groups{{"a", {}}});
    table.discard();
    EXPECT_EQ(folder.count(), 0);
}

TEST(TableWriter, LongTablesAreWidenedAcrossThePiecesInMemory) {
    const TemporaryFolder folder;
    constexpr int kRows = 60000;
    TableWriter table(folder.path("out.csv"), "t", Groups{{"a", {}}, {"b", {}}});
    std::string wanted = "t,a[0],b[0]\n";
    for (int i = 0; i < kRows; ++i) {
        const bool late = i >= kRows / 2;
        table.writeRow(i, {late ? &kOne : nullptr, &kOne});
        wanted += std::to_string(i) + (late ? ",7,7\n" : ",,7\n");
    }
    table.complete();
    EXPECT_EQ(folder.read("out.csv"), wanted);
}

TEST(TableWriter, RowsAreHandedOverWhenTheyAreFlushed) {
    const TemporaryFolder folder;
    TableWriter table(folder.path("out.csv"), "t", Groups{{"a", {}}});
    table.writeRow(1, {&kOne});
    EXPECT_EQ(folder.read("out.csv.partial"), "");
    table.flush();
    EXPECT_EQ(folder.read("out.csv.partial"), "t,a[0]\n1,7\n");
    table.writeRow(2, {&kOne});
    table.flush();
    table.flush();
    EXPECT_EQ(folder.read("out.csv.partial"), "t,a[0]\n1,7\n2,7\n");
    table.writeRow(3, {&kRow});
    table.complete();
    EXPECT_EQ(folder.read("out.csv"), "t,a[0],a[1],a[2]\n1,7,,\n2,7,,\n3,1,2,3\n") << "widened as ever";
}

/// A table whose header can't be mended.
class PipedTableTest : public testing::Test {
protected:
    std::string readLines(int count) const {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += pipe.readLine();
        return text;
    }
    static std::string refusalOf(TableWriter& table, double time,
                                 const std::vector<const MatrixXd*>& samples) {
        try {
            table.writeRow(time, samples);
        } catch (const RecordingException& exception) {
            return Support::refusalText(exception);
        }
        return "";
    }

    const TemporaryFolder folder;
    const std::string path = folder.path("pipe");
    const Support::Fifo pipe{path};
};

TEST_F(PipedTableTest, AGroupThatHasNotComeYetGetsOneColumnOrThoseOfItsNames) {
    TableWriter table(path, "t", Groups{{"a", {}}, {"late", {}}, {"named", {"x", "y", "z"}}});
    table.writeRow(1, {&kRow, nullptr, nullptr});
    table.writeRow(2, {&kOne, &kOne, &kRow});
    table.writeRow(3, {nullptr, &kEmpty, nullptr});
    table.complete();
    EXPECT_EQ(readLines(4), "t,a[0],a[1],a[2],late[0],x,y,z\n"
                            "1,1,2,3,,,,\n"
                            "2,7,,,7,1,2,3\n"
                            "3,,,,,,,\n");
    EXPECT_EQ(folder.count(), 1);
}

TEST_F(PipedTableTest, ASampleThatIsWiderThanItsColumnsIsRefused) {
    TableWriter table(path, "t", Groups{{"a", {}}, {"late", {}}});
    table.writeRow(1, {&kOne, nullptr});
    EXPECT_EQ(refusalOf(table, 2, {&kRow, nullptr}),
              path + ": 'a': found a sample of 3 elements behind a header with 1; expected its "
                     "column names, or a file");
    EXPECT_EQ(refusalOf(table, 2, {nullptr, &kSquare}),
              path + ": 'late': found a sample of 4 elements behind a header with 1; expected its "
                     "column names, or a file");
    EXPECT_EQ(refusalOf(table, 2, {&kOne, &kOne}), "");
    table.abandon();
    EXPECT_EQ(readLines(3), "t,a[0],late[0]\n1,7,\n2,7,7\n");
}

TEST_F(PipedTableTest, ATableWithoutRowsHasAHeaderOfOneColumnEach) {
    TableWriter table(path, "t", Groups{{"a", {}}, {"named", {"x", "y"}}});
    table.complete();
    EXPECT_EQ(readLines(1), "t,a[0],x,y\n");
}

} // namespace
