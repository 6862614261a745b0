// SPDX-License-Identifier: MIT
#include "host/recording/Gunzip.h"

#include "host/ends/RecordingException.h"
#include "host/recording/RecordingForms.h"
#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

using namespace std::string_literals;
using Quillmere::Host::openRecording;
using Quillmere::Host::RecordingException;
using Quillmere::Host::RecordingReader;

std::string gzipped(std::string text) {
    z_stream state{};
    if (deflateInit2(&state, 9, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK) return {};
    std::string packed(text.size() + 100, ' ');
    state.next_in = reinterpret_cast<Bytef*>(text.data());
    state.avail_in = static_cast<uInt>(text.size());
    state.next_out = reinterpret_cast<Bytef*>(packed.data());
    state.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&state, Z_FINISH), Z_STREAM_END);
    packed.resize(state.total_out);
    deflateEnd(&state);
    return packed;
}

/// The first column of every row.
std::vector<double> firstColumn(RecordingReader& reader) {
    reader.select({0});
    std::vector<double> values;
    double value = 0.0;
    while (reader.takeRow(&value) != RecordingReader::Row::End)
        values.push_back(value);
    return values;
}

/// What is said about the file behind its name, or how many rows it has.
std::string told(const std::string& path) {
    try {
        return std::to_string(firstColumn(*openRecording(path)).size()) + " rows";
    } catch (const RecordingException& exception) {
        return std::string(exception.what()).substr(path.size());
    }
}

std::string manyRows() {
    std::string text = "x,y\n";
    for (int i = 0; i < 100'000; ++i)
        text += std::to_string(i * 0.37) + "," + std::to_string(i % 7) + "\n";
    return text;
}

TEST(Gunzip, RowsAreThoseOfTheTableInIt) {
    const Support::TemporaryFolder folder;
    const std::string text = manyRows();
    const auto plain = openRecording(folder.write("in.csv", text));
    const std::string packedText = gzipped(text);
    const auto packed = openRecording(folder.write("in.csv.gz", packedText));
    EXPECT_EQ(packed->getColumnNames(), plain->getColumnNames());
    EXPECT_EQ(packed->getSize(), packedText.size());
    EXPECT_LT(packed->getBytesRead(), packedText.size()) << "it is read piece by piece";
    EXPECT_EQ(firstColumn(*packed), firstColumn(*plain));
    EXPECT_EQ(packed->getBytesRead(), packedText.size()) << "progress goes by the file's own bytes";
    EXPECT_EQ(packed->getLine(), plain->getLine());
    EXPECT_FALSE(packed->getIsChanged());
}

TEST(Gunzip, AFileIsKnownByItsBytesAndNotByItsName) {
    const Support::TemporaryFolder folder;
    EXPECT_EQ(told(folder.write("in.csv", gzipped("x\n1\n2\n"))), "2 rows");
    EXPECT_EQ(told(folder.write("in.csv.gz", "x\n1\n2\n")), "2 rows");
}

TEST(Gunzip, FilesOneBehindTheOtherAreOne) {
    const Support::TemporaryFolder folder;
    EXPECT_EQ(told(folder.write("in.gz", gzipped("x\n1\n") + gzipped("2\n") + gzipped("") + gzipped("3\n"))),
              "3 rows");
    EXPECT_EQ(told(folder.write("in.gz", gzipped("x\n1\n") + std::string(100'000, '\0'))), "1 rows");
    const std::string one = gzipped("x\n1\n");
    const std::string place = std::to_string(one.size());
    const std::string whole = "; expected the whole file, as gzip wrote it";
    EXPECT_EQ(told(folder.write("in.gz", one + "more")),
              ": found something else at byte " + place + ", behind the end of the gzip data" + whole);
    EXPECT_EQ(told(folder.write("in.gz", one + "\0"s + one)),
              ": found something else at byte " + std::to_string(one.size() + 1) +
                  ", behind the end of the gzip data" + whole);
}

TEST(Gunzip, ACutFileIsToldWhereverItIsCut) {
    const Support::TemporaryFolder folder;
    const std::string packed = gzipped("x,y\n0.5,1\n0.25,2\n");
    for (std::size_t length = 2; length < packed.size(); ++length)
        EXPECT_EQ(told(folder.write("in.csv.gz", packed.substr(0, length))),
                  ": found its end behind " + std::to_string(length) +
                      " bytes, in the midst of the gzip data; expected the whole file, as gzip wrote it");
    EXPECT_EQ(told(folder.write("in.csv.gz", packed)), "2 rows");
}

TEST(Gunzip, RowsInFrontOfTheCutAreGivenFirst) {
    const Support::TemporaryFolder folder;
    const std::string packed = gzipped(manyRows());
    const auto reader = openRecording(folder.write("in.csv.gz", packed.substr(0, packed.size() - 1)));
    reader->select({0});
    double value = 0.0;
    int rows = 0;
    EXPECT_THROW(while (reader->takeRow(&value) != RecordingReader::Row::End)++ rows, RecordingException);
    EXPECT_GT(rows, 90'000);
}

TEST(Gunzip, AFlippedBitNeverChangesANumber) {
    const Support::TemporaryFolder folder;
    const std::string text = "x,y\n0.5,1\n0.25,2\n0.125,3\n";
    const std::string packed = gzipped(text);
    int refused = 0;
    for (std::size_t bit = 0; bit < 8 * packed.size(); ++bit) {
        std::string damaged = packed;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
        try {
            const std::vector<double> values =
                firstColumn(*openRecording(folder.write("in.csv.gz", damaged)));
            EXPECT_EQ(values, (std::vector<double>{0.5, 0.25, 0.125})) << "bit " << bit;
        } catch (const RecordingException&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, static_cast<int>(6 * packed.size())) << "but for flags and the time of packing";
    std::string damaged = packed;
    damaged[packed.size() - 8] ^= 1;
    EXPECT_EQ(told(folder.write("in.csv.gz", damaged)),
              ": found gzip data that is damaged at byte " + std::to_string(packed.size() - 4) +
                  " (incorrect data check); expected the whole file, as gzip wrote it");
}

TEST(Gunzip, APipeIsUnpackedAsItComes) {
    const std::string packed = gzipped("x\n1\n") + gzipped("2\n");
    Support::StandardPipe input(STDIN_FILENO);
    input.write(packed.substr(0, packed.size() - 5));
    const auto reader = openRecording("-");
    reader->select({0});
    double value = 0.0;
    ASSERT_TRUE(reader->getIsRowReady());
    EXPECT_EQ(reader->takeRow(&value), RecordingReader::Row::Sound);
    EXPECT_EQ(value, 1.0);
    ASSERT_TRUE(reader->getIsRowReady()) << "all but the check has come";
    EXPECT_EQ(reader->takeRow(&value), RecordingReader::Row::Sound);
    EXPECT_EQ(value, 2.0);
    EXPECT_FALSE(reader->getIsRowReady());
    input.write(packed.substr(packed.size() - 5, 2));
    EXPECT_FALSE(reader->getIsRowReady()) << "what has come unpacks to nothing";
    input.write(packed.substr(packed.size() - 3));
    input.close();
    ASSERT_TRUE(reader->getIsRowReady());
    EXPECT_EQ(reader->takeRow(&value), RecordingReader::Row::End);
}

TEST(Gunzip, WhatIsPackedMustBeATable) {
    const Support::TemporaryFolder folder;
    EXPECT_EQ(told(folder.write("in.gz", gzipped("PK\x03\x04\x14"s))),
              ": found a ZIP archive, as spreadsheets are too; expected a CSV table, exported by the program "
              "that wrote it");
    EXPECT_EQ(told(folder.write("in.gz", gzipped(gzipped("x\n1\n")))),
              ": found a file compressed by gzip; expected the table in it, unpacked");
}

} // namespace
