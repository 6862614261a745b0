// SPDX-License-Identifier: MIT
#include "host/recording/BidsReader.h"

#include "host/ends/RecordingException.h"
#include "host/recording/RecordingForms.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

using Quillmere::Host::openRecording;
using Quillmere::Host::RecordingException;
using Quillmere::Host::RecordingReader;
using Strings = std::vector<std::string>;

class BidsReader : public testing::Test {
protected:
    BidsReader() {
        folder.write("walk_channels.tsv", "name\tcomponent\ttype\ttracked_point\tunits\n"
                                          "acc_x\tx\tACCEL\tback\tm/s^2\n"
                                          "acc_y\ty\tACCEL\tback\tm/s^2\n"
                                          "temp\tn/a\tMISC\tback\tn/a\n");
        folder.write("walk_motion.json", "{\n\t\"TaskName\": \"walk\",\n\t\"SamplingFrequency\": 62.5\n}\n");
    }

    std::unique_ptr<RecordingReader> open(const std::string& text) const {
        return openRecording(folder.write("walk_motion.tsv", text));
    }
    /// What is said behind the folder's name.
    std::string refusal(const std::string& text) const {
        try {
            const auto reader = open(text);
            reader->select({0, 1});
            double row[2];
            while (reader->takeRow(row) != RecordingReader::Row::End) {
            }
        } catch (const RecordingException& exception) {
            return std::string(exception.what()).substr(folder.path("").size());
        }
        return "";
    }
    /// What is wrong with the first row.
    std::string faultOf(const std::string& text) const {
        const auto reader = open(text);
        reader->select({0, 1});
        double row[2];
        EXPECT_EQ(reader->takeRow(row), RecordingReader::Row::Faulty) << text;
        return reader->getFault().getText().substr(folder.path("").size());
    }

    const Support::TemporaryFolder folder;
};

TEST_F(BidsReader, NamesUnitsAndRateStandBesideIt) {
    const auto reader = open("0.5\t1\t20\n-0.25\t2\tn/a\r\n");
    EXPECT_EQ(reader->getColumnNames(), (Strings{"acc_x", "acc_y", "temp"}));
    EXPECT_EQ(reader->getColumns()[0].unit, "m/s^2");
    EXPECT_EQ(reader->getColumns()[2].unit, "");
    EXPECT_EQ(reader->getRate(), 62.5);
    reader->select({2, 0});
    double row[2];
    ASSERT_EQ(reader->takeRow(row), RecordingReader::Row::Sound);
    EXPECT_EQ(row[0], 20.0);
    EXPECT_EQ(row[1], 0.5);
    EXPECT_EQ(reader->getMissingCells(), 0u);
    ASSERT_EQ(reader->takeRow(row), RecordingReader::Row::Sound);
    EXPECT_TRUE(std::isnan(row[0]));
    EXPECT_TRUE(reader->getIsMissing(0));
    EXPECT_FALSE(reader->getIsMissing(1));
    EXPECT_EQ(row[1], -0.25);
    EXPECT_EQ(reader->getLine(), 2u);
    EXPECT_EQ(reader->takeRow(row), RecordingReader::Row::End);
    EXPECT_EQ(reader->getBytesRead(), reader->getSize());
}

TEST_F(BidsReader, AChannelOfTimesGoesBeforeTheRate) {
    folder.write("walk_channels.tsv",
                 "\xEF\xBB\xBFname\ttype\tunits\r\nlatency\tLATENCY\ts\r\nx\tACCEL\tg\r\n");
    const auto reader = open("0\t1\n");
    EXPECT_EQ(reader->getColumnNames(), (Strings{"latency", "x"}));
    EXPECT_EQ(reader->getColumns()[0].kind, RecordingReader::Column::Kind::Time);
    EXPECT_FALSE(reader->getRate());
    EXPECT_EQ(reader->getTimeColumn(), 0u);
    folder.write("walk_channels.tsv", "name\ttype\tunits\nlatency\tLATENCY\tms\nx\tACCEL\tg\n");
    EXPECT_FALSE(open("0\t1\n")->getTimeColumn()) << "not in seconds";
}

TEST_F(BidsReader, ARowOfNamesIsNoRow) {
    const auto reader = open("acc_x\tacc_y\ttemp\n1\t2\t3\n");
    reader->select({0});
    double value = 0.0;
    ASSERT_EQ(reader->takeRow(&value), RecordingReader::Row::Sound);
    EXPECT_EQ(value, 1.0);
    EXPECT_EQ(reader->getLine(), 2u);
}

TEST_F(BidsReader, ManyRowsComeWholeAcrossThePieces) {
    std::string text;
    for (int i = 0; i < 50'000; ++i)
        text += std::to_string(i) + "\t" + std::to_string(i * 0.5) + "\t1\n";
    const auto reader = open(text);
    reader->select({0, 1});
    double row[2];
    for (int i = 0; i < 50'000; ++i) {
        ASSERT_EQ(reader->takeRow(row), RecordingReader::Row::Sound) << i;
        ASSERT_EQ(row[0], i);
        ASSERT_EQ(row[1], i * 0.5);
    }
    EXPECT_EQ(reader->takeRow(row), RecordingReader::Row::End);
    EXPECT_EQ(reader->getBytesRead(), text.size());
}

TEST_F(BidsReader, WhatIsWrongWithARowHasItsPlace) {
    EXPECT_EQ(faultOf("1\tx2\t3\n"),
              "walk_motion.tsv:1: column 'acc_y': found \"x2\"; expected a number, or n/a");
    EXPECT_EQ(faultOf("1\t2\n"),
              "walk_motion.tsv:1: found 2 cells in \"1\\t2\"; expected 3 cells, as it has channels");
    EXPECT_EQ(faultOf("1\t2\t3\t4\n"),
              "walk_motion.tsv:1: found 4 cells in \"1\\t2\\t3\\t4\"; expected 3 cells, as it has channels");
    const auto reader = open("1\t\t3");
    reader->select({0, 1});
    double row[2];
    ASSERT_EQ(reader->takeRow(row), RecordingReader::Row::Sound);
    EXPECT_TRUE(reader->getIsEmpty(1));
    EXPECT_TRUE(reader->getIsCut());
}

TEST_F(BidsReader, WhatIsBesideItMustBeSound) {
    folder.write("walk_motion.json", "{\"SamplingFrequency\": \"fast\"}");
    EXPECT_EQ(refusal("1\t2\t3\n"),
              "walk_motion.json: found the SamplingFrequency 'fast'; expected rows a second, above 0");
    folder.write("walk_motion.json", "{\"TaskName\": ");
    EXPECT_NE(refusal("1\t2\t3\n").find("walk_motion.json:1"), std::string::npos) << refusal("1\t2\t3\n");
    folder.write("walk_motion.json", "{}");
    EXPECT_FALSE(open("1\t2\t3\n")->getRate());
    folder.write("walk_channels.tsv", "channel\nx\n");
    EXPECT_EQ(refusal("1\t2\t3\n"),
              "walk_channels.tsv: found no column 'name' in its first line; expected a row "
              "of column names, and a row for each channel");
    folder.write("walk_channels.tsv", "name\n");
    EXPECT_EQ(refusal("1\t2\t3\n"), "walk_channels.tsv: found no channels; expected a row for each");
    const std::string lone = folder.write("lone_motion.tsv", "1\t2\n");
    EXPECT_THROW(openRecording(lone), RecordingException) << "no channels beside it";
}

TEST_F(BidsReader, CutAndFlippedFilesCrashNothing) {
    const std::string whole = "0.5\t1\t20\n-0.25\t2\tn/a\n";
    for (std::size_t length = 0; length < whole.size(); ++length)
        refusal(whole.substr(0, length));
    for (std::size_t bit = 0; bit < 8 * whole.size(); ++bit) {
        std::string damaged = whole;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
        EXPECT_EQ(refusal(damaged), "") << "bad cells are rows' faults";
    }
}

} // namespace
