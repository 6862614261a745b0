// SPDX-License-Identifier: MIT
#include "host/recording/CsvReader.h"

#include "host/ends/RecordingException.h"
#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/TemporaryFolder.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace {

using Quillmere::Host::CsvReader;
using Quillmere::Host::RecordingException;
using Support::agree;
using Support::same;
using namespace std::string_literals;
using Quillmere::Host::InterruptedException;
using Strings = std::vector<std::string>;
using Rows = std::vector<std::vector<double>>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kUntouched = -77.0;

Rows readAll(CsvReader& reader, const std::vector<std::size_t>& chosen) {
    reader.select(chosen);
    Rows rows;
    std::vector<double> row(chosen.size(), kUntouched);
    while (reader.readRow(row.data())) {
        rows.push_back(row);
        std::fill(row.begin(), row.end(), kUntouched);
    }
    return rows;
}

std::vector<std::size_t> all(const CsvReader& reader) {
    std::vector<std::size_t> chosen;
    for (std::size_t i = 0; i < reader.getColumns().size(); ++i)
        chosen.push_back(i);
    return chosen;
}

void expectRows(const Rows& got, const Rows& wanted, const std::string& name) {
    ASSERT_EQ(got.size(), wanted.size()) << name;
    for (std::size_t row = 0; row < got.size(); ++row) {
        ASSERT_EQ(got[row].size(), wanted[row].size()) << name << " row " << row;
        for (std::size_t i = 0; i < got[row].size(); ++i)
            EXPECT_TRUE(agree(got[row][i], wanted[row][i], same)) << name << " row " << row << " value " << i;
    }
}

struct TextRow {
    std::string name;
    std::string text;
    Strings columns;
    Rows rows;
};

const TextRow kTexts[] = {
    {.name = "plain",
     .text = "t,x\n0,1\n0.5,-2.5e3\n",
     .columns = {"t", "x"},
     .rows = {{0, 1}, {0.5, -2500}}},
    {.name = "header alone", .text = "t,x\n", .columns = {"t", "x"}, .rows = {}},
    {.name = "header without a line end", .text = "t,x", .columns = {"t", "x"}, .rows = {}},
    {.name = "last row without a line end", .text = "t,x\n1,2", .columns = {"t", "x"}, .rows = {{1, 2}}},
    {.name = "CRLF", .text = "t,x\r\n1,2\r\n3,4\r\n", .columns = {"t", "x"}, .rows = {{1, 2}, {3, 4}}},
    {.name = "byte order mark", .text = "\xEF\xBB\xBFt,x\n1,2\n", .columns = {"t", "x"}, .rows = {{1, 2}}},
    {.name = "comments first", .text = "# made up\n#\nt,x\n1,2\n", .columns = {"t", "x"}, .rows = {{1, 2}}},
    {.name = "blank lines",
     .text = "\nt,x\n\n1,2\n\n\n3,4\n\n",
     .columns = {"t", "x"},
     .rows = {{1, 2}, {3, 4}}},
    {.name = "blanks around", .text = " t ,\tx\n 1 , 2\t\n", .columns = {"t", "x"}, .rows = {{1, 2}}},
    {.name = "quotes",
     .text = "\"a,b\",\"say \"\"x\"\"\"\n\"1\",\" 2\"\n",
     .columns = {"a,b", "say \"x\""},
     .rows = {{1, 2}}},
    {.name = "plus sign", .text = "t\n+1.5\n", .columns = {"t"}, .rows = {{1.5}}},
    {.name = "leading zeros", .text = "t\n010\n-00.5\n", .columns = {"t"}, .rows = {{10}, {-0.5}}},
    {.name = "minus zero", .text = "t\n-0\n", .columns = {"t"}, .rows = {{-0.0}}},
    {.name = "not a number and infinities",
     .text = "t\nnan\nNaN\n-inf\nInfinity\n",
     .columns = {"t"},
     .rows = {{kNan}, {kNan}, {-kInfinity}, {kInfinity}}},
    {.name = "the smallest and the largest",
     .text = "t\n5e-324\n-1.7976931348623157e308\n",
     .columns = {"t"},
     .rows = {{std::numeric_limits<double>::denorm_min()}, {std::numeric_limits<double>::lowest()}}},
    {.name = "one column, a blank line is an empty cell",
     .text = "x\n1\n\n2\n",
     .columns = {"x"},
     .rows = {{1}, {kUntouched}, {2}}},
};

TEST(CsvReader, ReadsWhatTablesLookLike) {
    const Support::TemporaryFolder folder;
    for (const TextRow& row : kTexts) {
        CsvReader reader(folder.write("in.csv", row.text));
        EXPECT_EQ(reader.getColumnNames(), row.columns) << row.name;
        expectRows(readAll(reader, all(reader)), row.rows, row.name);
    }
}

TEST(CsvReader, GivesTheChosenColumnsInTheChosenOrder) {
    const Support::TemporaryFolder folder;
    CsvReader reader(folder.write("in.csv", "t,note,x,y\n1,what,3,4\n5,\"a, b\",7,8\n"));
    expectRows(readAll(reader, {3, 0}), {{4, 1}, {8, 5}}, "y, t");
}

TEST(CsvReader, TellsWhichCellsWereEmpty) {
    const Support::TemporaryFolder folder;
    CsvReader reader(folder.write("in.csv", "t,x,y\n1,,3\n2, ,\"\"\n4,5,6\n"));
    reader.select({0, 1, 2});
    double row[3] = {};
    ASSERT_TRUE(reader.readRow(row));
    EXPECT_TRUE(reader.getHasEmptyCells());
    EXPECT_FALSE(reader.getIsEmpty(0));
    EXPECT_TRUE(reader.getIsEmpty(1));
    EXPECT_FALSE(reader.getIsEmpty(2));
    ASSERT_TRUE(reader.readRow(row));
    EXPECT_TRUE(reader.getIsEmpty(1));
    ASSERT_TRUE(reader.readRow(row));
    EXPECT_FALSE(reader.getHasEmptyCells());
    EXPECT_FALSE(reader.getIsEmpty(1));
    EXPECT_FALSE(reader.readRow(row));
    EXPECT_FALSE(reader.readRow(row)) << "the end is the end";
}

TEST(CsvReader, RowsAcrossThePiecesInMemoryComeWhole) {
    const Support::TemporaryFolder folder;
    std::string text = "t,x\n";
    Rows wanted;
    for (int i = 0; i < 60000; ++i) { // about 1 MB, four pieces
        text += std::to_string(i) + "," + std::to_string(i) + ".25\n";
        wanted.push_back({static_cast<double>(i), i + 0.25});
    }
    CsvReader reader(folder.write("in.csv", text));
    expectRows(readAll(reader, {0, 1}), wanted, "long");
    EXPECT_EQ(reader.getLine(), 60001u);
    EXPECT_EQ(reader.getBytesRead(), text.size());
    EXPECT_EQ(reader.getSize(), text.size());
}

TEST(CsvReader, ARowLongerThanAPieceIsRead) {
    const Support::TemporaryFolder folder;
    std::string header = "t";
    std::string row = "1";
    for (int i = 0; i < 100000; ++i) {
        header += ",x" + std::to_string(i);
        row += ",0.125";
    }
    CsvReader reader(folder.write("in.csv", header + "\n" + row + "\n" + row));
    ASSERT_EQ(reader.getColumns().size(), 100001u);
    expectRows(readAll(reader, {0, 100000}), {{1, 0.125}, {1, 0.125}}, "wide");
}

struct RefusalRow {
    std::string name;
    std::string text;
    std::string complaint; ///< Behind the path.
};

const RefusalRow kRefusals[] = {
    {.name = "a word",
     .text = "t,x\n1,2\n3,abc\n",
     .complaint = ":3: column 'x': found \"abc\"; expected a number"},
    {.name = "a number and more",
     .text = "t,x\n1,2m\n",
     .complaint = ":2: column 'x': found \"2m\"; expected a number"},
    {.name = "hexadecimal",
     .text = "t,x\n0x10,2\n",
     .complaint = ":2: column 't': found \"0x10\"; expected a number"},
    {.name = "two signs",
     .text = "t,x\n+-1,2\n",
     .complaint = ":2: column 't': found \"+-1\"; expected a number"},
    {.name = "quoted word",
     .text = "t,x\n1,\"no\"\n",
     .complaint = ":2: column 'x': found \"no\"; expected a number"},
    {.name = "decimal comma in quotes",
     .text = "t,x\n0.5,\"2,5\"\n", // else it might be the file's way
     .complaint = ":2: column 'x': found \"2,5\"; expected a number; did you mean 2.5?"},
    {.name = "too large",
     .text = "t,x\n1e999,2\n",
     .complaint = ":2: column 't': found \"1e999\"; expected a number that a 64-bit float can hold"},
    {.name = "too large, with more behind it",
     .text = "t,x\n1e999x,2\n",
     .complaint = ":2: column 't': found \"1e999x\"; expected a number"},
    {.name = "a NUL does not end the message",
     .text = "t,x\n1,2"s + '\0' + "9\n",
     .complaint = ":2: column 'x': found \"2\\x009\"; expected a number"},
    {.name = "nothing moves the cursor",
     .text = "t,x\x1b[2J\n1,\x1b[31mred\n",
     .complaint = ":2: column 'x\\x1b[2J': found \"\\x1b[31mred\"; expected a number"},
    {.name = "a long cell is shortened",
     .text = "t,x\n1," + std::string(100'000, 'x') + "\n",
     .complaint = ":2: column 'x': found \"" + std::string(40, 'x') + "...\"; expected a number"},
    {.name = "a long row is shortened",
     .text = "t\n" + std::string(100'000, ',') + "\n",
     .complaint = ":2: column 't': found more cells behind it in \"" + std::string(40, ',') +
                  "...\"; expected 1 cell, as the header has"},
    {.name = "short row",
     .text = "t,x,y\n1,2,3\n4,5\n",
     .complaint =
         ":3: column 'y': found a row that ends before it, \"4,5\"; expected 3 cells, as the header has"},
    {.name = "long row",
     .text = "t,x\n1,2,3\n",
     .complaint =
         ":2: column 'x': found more cells behind it in \"1,2,3\"; expected 2 cells, as the header has"},
    {.name = "after a comment and a blank line",
     .text = "# c\nt,x\n\n1,-\n",
     .complaint = ":4: column 'x': found \"-\"; expected a number"},
    {.name = "nothing but commas",
     .text = std::string(1'000'000, ','),
     .complaint = ":1: found more than a million columns; expected a table of numbers"},
    {.name = "empty file", .text = "", .complaint = ": found no header row; expected a row of column names"},
    {.name = "comments alone",
     .text = "# c\n",
     .complaint = ": found no header row; expected a row of column names"},
};

TEST(CsvReader, ComplaintsSayWhereAndWhat) {
    const Support::TemporaryFolder folder;
    for (const RefusalRow& row : kRefusals) {
        const std::string path = folder.write("in.csv", row.text);
        try {
            CsvReader reader(path);
            readAll(reader, all(reader));
            ADD_FAILURE() << row.name << ": nothing was refused";
        } catch (const RecordingException& exception) {
            EXPECT_EQ(exception.what(), path + row.complaint) << row.name;
        }
    }
}

TEST(CsvReader, AMissingFileIsNamed) {
    const Support::TemporaryFolder folder;
    try {
        CsvReader reader(folder.path("nowhere.csv"));
        FAIL();
    } catch (const RecordingException& exception) {
        EXPECT_EQ(exception.what(),
                  folder.path("nowhere.csv") + ": cannot be opened: No such file or directory");
    }
}

TEST(CsvReader, ABadCellInAColumnThatNobodyReadsIsNoFault) {
    const Support::TemporaryFolder folder;
    CsvReader reader(folder.write("in.csv", "t,x\n1,abc\n"));
    expectRows(readAll(reader, {0}), {{1}}, "t");
}

/// A pipe with a header in it, and its reader.
class PipedCsvTest : public testing::Test {
protected:
    void open(const std::string& header, const std::vector<std::size_t>& chosen) {
        pipe.write(header);
        reader = std::make_unique<CsvReader>(folder.path("pipe"));
        reader->select(chosen);
    }
    /// The next row's first value. Requires: a row is ready.
    double readRow() {
        double row[2] = {kUntouched, kUntouched};
        EXPECT_TRUE(reader->readRow(row));
        return row[0];
    }

    const Support::TemporaryFolder folder;
    Support::Fifo pipe{folder.path("pipe")};
    std::unique_ptr<CsvReader> reader;
};

TEST_F(PipedCsvTest, ARowIsReadyWhenItsLineHasEnded) {
    open("t,x\n", {0, 1});
    EXPECT_TRUE(reader->getIsPiped());
    EXPECT_EQ(reader->getSize(), 0u);
    EXPECT_FALSE(reader->getIsRowReady());
    pipe.write("1,");
    EXPECT_FALSE(reader->getIsRowReady());
    pipe.write("2");
    EXPECT_FALSE(reader->getIsRowReady()) << "more digits may come";
    pipe.write("0\n3,4\n5");
    EXPECT_TRUE(reader->getIsRowReady());
    EXPECT_TRUE(reader->getIsRowReady()) << "as often as one asks";
    EXPECT_EQ(readRow(), 1.0);
    EXPECT_TRUE(reader->getIsRowReady());
    EXPECT_EQ(readRow(), 3.0);
    EXPECT_FALSE(reader->getIsRowReady());
    EXPECT_FALSE(reader->getIsAtEnd());
}

TEST_F(PipedCsvTest, BlankLinesAreNoRows) {
    open("t,x\n", {0, 1});
    pipe.write("\n\r\n\n");
    EXPECT_FALSE(reader->getIsRowReady());
    pipe.write("\r");
    EXPECT_FALSE(reader->getIsRowReady());
    pipe.write("\n\n7,8\n");
    EXPECT_TRUE(reader->getIsRowReady());
    EXPECT_EQ(readRow(), 7.0);
    EXPECT_EQ(reader->getLine(), 7u) << "they count as lines all the same";
}

TEST_F(PipedCsvTest, InOneColumnABlankLineIsARow) {
    open("x\n", {0});
    EXPECT_FALSE(reader->getIsRowReady());
    pipe.write("\n");
    EXPECT_TRUE(reader->getIsRowReady());
    EXPECT_EQ(readRow(), kUntouched);
    EXPECT_TRUE(reader->getIsEmpty(0));
}

TEST_F(PipedCsvTest, TheEndIsReadyAndSoIsALastRowWithoutALineEnd) {
    open("t,x\n", {0, 1});
    pipe.write("\n1,2");
    EXPECT_FALSE(reader->getIsRowReady());
    pipe.close();
    EXPECT_TRUE(reader->getIsRowReady());
    EXPECT_FALSE(reader->getIsAtEnd()) << "a row is left";
    EXPECT_EQ(readRow(), 1.0);
    EXPECT_TRUE(reader->getIsRowReady());
    EXPECT_TRUE(reader->getIsAtEnd());
    double row[2];
    EXPECT_FALSE(reader->readRow(row));
}

TEST_F(PipedCsvTest, ARowMayComeInManyPieces) {
    open("t,x,note\n", {0, 1});
    pipe.write("1,2,");
    for (int i = 0; i < 20; ++i) { // more than is kept in memory of a file
        pipe.write(std::string(30000, 'n'));
        EXPECT_FALSE(reader->getIsRowReady());
    }
    pipe.write("\n");
    EXPECT_TRUE(reader->getIsRowReady());
    EXPECT_EQ(readRow(), 1.0);
    EXPECT_EQ(reader->getBytesRead(), 9u + 4u + 600000u + 1u);
}

TEST(CsvReader, RowsOfAFileAreReadyAlways) {
    const Support::TemporaryFolder folder;
    CsvReader reader(folder.write("in.csv", "t,x\n\n1,2\n"));
    EXPECT_FALSE(reader.getIsPiped());
    EXPECT_TRUE(reader.getIsRowReady());
    expectRows(readAll(reader, {0, 1}), {{1, 2}}, "file");
    EXPECT_TRUE(reader.getIsRowReady()) << "the end";
    EXPECT_TRUE(reader.getIsAtEnd());
}

TEST(CsvReader, ADashIsStandardInput) {
    Support::StandardPipe input(STDIN_FILENO);
    input.write("t,x\n1,2\n3,oops\n");
    CsvReader reader("-");
    EXPECT_EQ(reader.getPath(), "standard input");
    EXPECT_TRUE(reader.getIsPiped());
    EXPECT_NE(reader.getDescriptor(), STDIN_FILENO) << "closing it closes nobody else's";
    reader.select({1});
    double value = 0.0;
    ASSERT_TRUE(reader.readRow(&value));
    EXPECT_EQ(value, 2.0);
    try {
        reader.readRow(&value);
        ADD_FAILURE() << "nothing was refused";
    } catch (const RecordingException& exception) {
        EXPECT_STREQ(exception.what(), "standard input:3: column 'x': found \"oops\"; expected a number");
    }
}

/// What the reader has to say of a file that it can't read at all, behind the path.
std::string refusalOf(const std::string& path) {
    try {
        CsvReader reader(path);
    } catch (const RecordingException& exception) {
        return std::string(exception.what()).substr(path.size());
    }
    return "";
}

TEST(CsvReader, WhatIsNoTableIsNamed) {
    struct Row {
        std::string head;
        std::string complaint;
    };
    const std::string unpacked = "; expected the table in it, unpacked";
    const std::string exported = "; expected a CSV table, exported by the program that wrote it";
    const std::string inUtf8 = ": found text in UTF-16; expected the same text in UTF-8";
    const Row rows[] = {
        {"\x1F\x8B\x08\0\0"s, ": found a file compressed by gzip" + unpacked},
        {"BZh91AY&SY\x01", ": found a file compressed by bzip2" + unpacked},
        {"\xFD" + "7zXZ\0\0"s, ": found a file compressed by xz" + unpacked},
        {"\x28\xB5\x2F\xFD\x04", ": found a file compressed by zstd" + unpacked},
        {"PK\x03\x04\x14\0"s, ": found a ZIP archive, as spreadsheets are too" + exported},
        {"\x89HDF\r\n\x1A\n\0\0"s, ": found an HDF5 file" + exported},
        {"MATLAB 5.0 MAT-file, Platform", ": found a MAT file" + exported},
        {"%PDF-1.7\n", ": found a PDF document" + exported},
        {"\xFF\xFEt\0,\0x\0\n\0"s, inUtf8},
        {"\xFE\xFF\0t\0,\0x\0\n"s, inUtf8},
        {"t\0,\0x\0\n\0"s, inUtf8},
        {"\0t\0,\0x\0\n"s, inUtf8},
        {"shape\0\x01\n"s, ": found a file that is no text" + exported},
        {"\0\0\0\0"s, ": found a file that is no text" + exported},
        {"t,x\r1,2\r3,4\r", ": found lines that end with CR alone; expected LF or CRLF at the end of each"},
        {"t,x\r" + std::string(70'000'000, '1'), // more than the longest row
         ": found lines that end with CR alone; expected LF or CRLF at the end of each"},
        {"t,x\r\n1,2\r\n", ""},
        {"t,x\r\r\n1,2\r\r\n", ""},
        {"t,x\n1,2\0\n"s, ""},
    };
    const Support::TemporaryFolder folder;
    for (const Row& row : rows)
        EXPECT_EQ(refusalOf(folder.write("in.csv", row.head)), row.complaint) << row.head.substr(0, 20);
}

TEST(CsvReader, AFolderIsNoRecording) {
    const Support::TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("sub"));
    EXPECT_EQ(refusalOf(folder.path("sub")), ": found a folder; expected a file");
}

TEST(CsvReader, FaultsMayBeAskedForInsteadOfRaised) {
    const Support::TemporaryFolder folder;
    const std::string path = folder.write("in.csv", "t,x,y\n0,oops,1e999\n1,2\n3,4,5\n6,a,7,8\n");
    CsvReader reader(path);
    reader.select({0, 1, 2});
    double row[3] = {};
    ASSERT_EQ(reader.takeRow(row), CsvReader::Row::Faulty);
    EXPECT_TRUE(reader.getHasAllCells());
    EXPECT_EQ(reader.getFault().getText(), path + ":2: column 'x': found \"oops\"; expected a number")
        << "the first";
    EXPECT_TRUE(agree(row[0], 0.0, same));
    EXPECT_TRUE(agree(row[1], kNan, same));
    EXPECT_TRUE(agree(row[2], kNan, same));
    ASSERT_EQ(reader.takeRow(row), CsvReader::Row::Faulty);
    EXPECT_FALSE(reader.getHasAllCells());
    ASSERT_EQ(reader.takeRow(row), CsvReader::Row::Sound);
    EXPECT_TRUE(reader.getHasAllCells());
    EXPECT_EQ(row[2], 5.0);
    ASSERT_EQ(reader.takeRow(row), CsvReader::Row::Faulty);
    EXPECT_FALSE(reader.getHasAllCells()) << "although a bad cell was found first";
    EXPECT_EQ(reader.getFault().getText(), path + ":5: column 'x': found \"a\"; expected a number");
    EXPECT_EQ(reader.takeRow(row), CsvReader::Row::End);
}

TEST(CsvReader, MissingValuesHaveTheTextsThatOneSays) {
    const Support::TemporaryFolder folder;
    CsvReader reader(folder.write("in.csv", "t,x,y\n0, NA ,\"\"\n1,\"n/a\",-999\n2,3,-999.0\n"));
    reader.setMissing({"NA", "n/a", "-999"});
    reader.select({0, 1, 2});
    double row[3] = {};
    ASSERT_EQ(reader.takeRow(row), CsvReader::Row::Sound);
    EXPECT_TRUE(agree(row[1], kNan, same));
    EXPECT_TRUE(reader.getIsEmpty(2)) << "the empty text wasn't said";
    EXPECT_EQ(reader.getMissingCells(), 1u);
    ASSERT_EQ(reader.takeRow(row), CsvReader::Row::Sound);
    EXPECT_EQ(reader.getMissingCells(), 2u);
    EXPECT_TRUE(agree(row[2], kNan, same)) << "a number may stand for nothing";
    ASSERT_EQ(reader.takeRow(row), CsvReader::Row::Sound);
    EXPECT_EQ(reader.getMissingCells(), 0u);
    EXPECT_EQ(row[2], -999.0) << "the text counts, not the number";
}

TEST(CsvReader, AnEmptyCellMayBeAMissingValue) {
    const Support::TemporaryFolder folder;
    CsvReader reader(folder.write("in.csv", "t,x,y\n0,,\"\"\n"));
    reader.setMissing({""});
    reader.select({0, 1, 2});
    double row[3] = {};
    ASSERT_EQ(reader.takeRow(row), CsvReader::Row::Sound);
    EXPECT_FALSE(reader.getHasEmptyCells());
    EXPECT_EQ(reader.getMissingCells(), 2u);
    EXPECT_TRUE(agree(row[1], kNan, same));
}

TEST(CsvReader, TellsWhetherTheLastLineMayHaveBeenCut) {
    const Support::TemporaryFolder folder;
    const std::pair<std::string, bool> ends[] = {
        {"1,2\n3,4", true}, {"1,2\n3,4\n", false}, {"1,2\n3,4\r", false}, {"1,2\r\n3,4\r\n", false}};
    for (const auto& [text, isCut] : ends) {
        CsvReader reader(folder.write("in.csv", "t,x\n" + text));
        reader.select({0});
        double time = 0.0;
        ASSERT_TRUE(reader.readRow(&time));
        EXPECT_FALSE(reader.getIsCut());
        ASSERT_TRUE(reader.readRow(&time));
        EXPECT_EQ(reader.getIsCut(), isCut) << text;
    }
}

/// A file of several pieces, which changes when the reader has taken the first one.
class ChangingFileTest : public testing::Test {
protected:
    ChangingFileTest() {
        std::string text = "t,x\n";
        for (int i = 0; i < 100'000; ++i)
            text += "10000000,2\n";
        path = folder.write("in.csv", text);
        reader = std::make_unique<CsvReader>(path);
        reader->select({0});
    }
    /// Why it can't be read to its end.
    std::string readOn() {
        double value = 0.0;
        try {
            while (reader->readRow(&value))
                ++rows;
        } catch (const RecordingException& exception) {
            return exception.what();
        }
        return "";
    }

    const Support::TemporaryFolder folder;
    std::string path;
    std::unique_ptr<CsvReader> reader;
    int rows = 0;
};

TEST_F(ChangingFileTest, StaysAsItIs) {
    EXPECT_EQ(readOn(), "");
    EXPECT_EQ(rows, 100'000);
    EXPECT_FALSE(reader->getIsChanged());
}

TEST_F(ChangingFileTest, OneThatGotShorterIsNotWhole) {
    std::filesystem::resize_file(path, 550'004); // between two rows, so that nothing else is wrong
    EXPECT_EQ(readOn(),
              path + ": found its end behind 550004 of 1100004 bytes: it got shorter while it was read; "
                     "expected a recording that stays as it is");
}

TEST_F(ChangingFileTest, OneThatWasEmptiedIsNotWhole) {
    std::filesystem::resize_file(path, 0);
    EXPECT_NE(readOn(), "");
    EXPECT_LT(rows, 100'000);
}

TEST_F(ChangingFileTest, OneThatWasWrittenAnewAndIsShorterIsNotWhole) {
    std::ofstream(path) << "t,x\n" << std::string(400'000, '1') << ",2\n";
    EXPECT_NE(readOn(), "");
}

TEST_F(ChangingFileTest, WhatWasAppendedBelongsToIt) {
    std::ofstream(path, std::ios::app) << "1,2\n3,4\n";
    EXPECT_EQ(readOn(), "");
    EXPECT_EQ(rows, 100'002);
    EXPECT_TRUE(reader->getIsChanged());
}

TEST_F(ChangingFileTest, AnotherInItsPlaceChangesNothing) {
    std::filesystem::rename(folder.write("other.csv", "t,x\n"), path);
    EXPECT_EQ(readOn(), "");
    EXPECT_EQ(rows, 100'000) << "the file that was opened is read, whatever has its name now";
}

TEST(CsvReader, StandardInputThatDoesNotWaitIsWaitedFor) {
    Support::StandardPipe input(STDIN_FILENO);
    ::fcntl(STDIN_FILENO, F_SETFL, O_NONBLOCK);
    input.write("t,x\n1,2\n3");
    CsvReader reader("-");
    reader.select({0});
    double time = 0.0;
    ASSERT_TRUE(reader.readRow(&time));
    std::thread writer([&] {
        // the reader has met the empty pipe by then
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        input.write("5,6\n");
        input.close();
    });
    EXPECT_TRUE(reader.readRow(&time));
    EXPECT_EQ(time, 35.0);
    EXPECT_FALSE(reader.readRow(&time));
    writer.join();
}

TEST_F(PipedCsvTest, AWishToStopEndsTheWaiting) {
    open("t,x\n", {0, 1});
    std::stop_source stop;
    reader->setStop(stop.get_token());
    pipe.write("1,2\n");
    EXPECT_EQ(readRow(), 1.0);
    std::thread stopper([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        stop.request_stop();
    });
    double row[2];
    EXPECT_THROW(reader->readRow(row), InterruptedException);
    stopper.join();
    pipe.write("3,4\n");
    EXPECT_EQ(readRow(), 3.0) << "what has come is read all the same";
}

} // namespace
