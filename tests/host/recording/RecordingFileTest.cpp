// SPDX-License-Identifier: MIT
#include "host/recording/RecordingFile.h"
#include "host/recording/RecordingForms.h"

#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <string>
#include <vector>

namespace {

using Quillmere::Host::openRecording;
using Quillmere::Host::RecordingFile;

/// All that is left to read, in pieces of `size`.
std::string restOf(RecordingFile& file, std::size_t size) {
    std::string text;
    std::string piece(size, ' ');
    while (const std::size_t count = file.read(piece.data(), size))
        text.append(piece, 0, count);
    return text;
}

TEST(RecordingFile, WhatWasLookedAtStaysToBeRead) {
    const Support::TemporaryFolder folder;
    const std::string path = folder.write("in.csv", "t,x\n1,2\n");
    for (const std::size_t piece : {1u, 3u, 100u}) {
        RecordingFile file(path);
        EXPECT_EQ(file.lookAhead(2), "t,");
        EXPECT_EQ(file.lookAhead(5), "t,x\n1") << "further than before";
        EXPECT_EQ(file.lookAhead(3), "t,x") << "less far";
        EXPECT_EQ(restOf(file, piece), "t,x\n1,2\n");
    }
    RecordingFile file(path);
    EXPECT_EQ(file.lookAhead(100), "t,x\n1,2\n");
    EXPECT_EQ(restOf(file, 100), "t,x\n1,2\n");
}

TEST(RecordingFile, OfAPipeTooAndItIsReadableMeanwhile) {
    Support::StandardPipe input(STDIN_FILENO);
    input.write("t,x\n1,2\n");
    RecordingFile file("-");
    EXPECT_EQ(file.lookAhead(8), "t,x\n1,2\n");
    EXPECT_TRUE(file.getIsReadable()) << "although the pipe is empty";
    input.close();
    EXPECT_EQ(restOf(file, 5), "t,x\n1,2\n");
}

TEST(RecordingForms, OfAPipeAnotherDialectIsFoundOutByItsFirstRows) {
    Support::StandardPipe input(STDIN_FILENO);
    std::string text = "Device Type,A\nRate,50.0 Hz\nSerial,7\n";
    for (int i = 10; i < 30; ++i)
        text += "2019-08-06 10:25:50:0" + std::to_string(i) + ",1,2,3\n";
    input.write(text); // and the pipe stays open: nobody waits for more than ten rows
    Quillmere::Host::ReadingWishes wishes;
    wishes.findsTimes = true;
    const auto reader = openRecording("-", wishes);
    EXPECT_EQ(reader->getColumnNames(), (std::vector<std::string>{"time", "x", "y", "z"}));
    EXPECT_TRUE(reader->getHasOwnTimes());
    reader->select({1, 3});
    double row[2] = {};
    ASSERT_EQ(reader->takeRow(row), Quillmere::Host::RecordingReader::Row::Sound);
    EXPECT_EQ(row[1], 3.0);
    EXPECT_EQ(reader->getLine(), 4u);
}

TEST(RecordingForms, OfAPipeThePlainHeaderIsEnoughForWhoKnowsItsColumns) {
    Support::StandardPipe input(STDIN_FILENO);
    input.write("t,x\n");
    Quillmere::Host::ReadingWishes wishes;
    wishes.time = wishes.names = {"t"};
    EXPECT_EQ(openRecording("-", wishes)->getColumnNames(), (std::vector<std::string>{"t", "x"}));
}

TEST(RecordingForms, AReaderSaysWhatItsColumnsAre) {
    const Support::TemporaryFolder folder;
    const auto reader = openRecording(folder.write("in.csv", "t,x\n1,2\n"));
    EXPECT_EQ(reader->getColumnNames(), (std::vector<std::string>{"t", "x"}));
    EXPECT_FALSE(reader->getRate());
    EXPECT_FALSE(reader->getIsPiped());
}

} // namespace
