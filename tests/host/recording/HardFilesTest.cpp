// SPDX-License-Identifier: MIT
// Files that are no recordings, or more than can be read.
#include "host/ends/RecordingException.h"
#include "host/recording/RecordingForms.h"

#include "tests/host/kit/TemporaryFolder.h"
#include "tests/host/kit/WithoutRights.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <string>

namespace {

using namespace Quillmere::Host;
namespace fs = std::filesystem;

/// What is complained of until the first row has been read; or that nothing is.
std::string complaintOf(const std::string& path) {
    try {
        const auto reader = openRecording(path, ReadingWishes());
        reader->select({0});
        double cell = 0.0;
        while (reader->takeRow(&cell) == RecordingReader::Row::Sound) {
        }
        return "read";
    } catch (const RecordingException& exception) {
        return exception.what();
    }
}

class HardFilesTest : public testing::Test {
protected:
    const Support::TemporaryFolder folder;
};

TEST_F(HardFilesTest, AFileWithoutAnEndIsNotReadToIt) {
    EXPECT_EQ(complaintOf("/dev/zero"), "/dev/zero: found a file that is no text; expected a CSV table, "
                                        "exported by the program that wrote it");
}

TEST_F(HardFilesTest, ALineOfHundredMegabytesIsRefusedOrNoText) {
    const std::string path = folder.write("in.csv", "t,x\n0,1\n1,");
    fs::resize_file(path, std::size_t{100} << 20); // with a hole, which takes no room
    EXPECT_EQ(complaintOf(path), path + ":3: found a row of more than 64 MiB; expected a table of numbers");
    const std::string first = folder.write("first.csv", "");
    fs::resize_file(first, std::size_t{100} << 20);
    EXPECT_EQ(complaintOf(first), first + ": found a file that is no text; expected a CSV table, exported by "
                                          "the program that wrote it");
}

TEST_F(HardFilesTest, AMillionColumnsAreReadAndNoMore) {
    const std::string header(999'999, ',');
    const std::string path = folder.write("in.csv", header + "\n" + header + "\n");
    EXPECT_EQ(openRecording(path, ReadingWishes())->getColumns().size(), 1'000'000u);
    folder.write("in.csv", header + ",\n" + header + ",\n");
    EXPECT_EQ(complaintOf(path), path + ":1: found more than a million columns; expected a table of numbers");
}

TEST_F(HardFilesTest, AFileThatMayNotBeReadIsToldSo) {
    const std::string path = folder.write("in.csv", "t,x\n0,1\n");
    fs::permissions(folder.path(""), fs::perms(0777));
    fs::permissions(path, fs::perms(0000));
    const Support::WithoutRights lowered;
    ASSERT_NE(::geteuid(), 0U) << "who may read everything sees no refusal";
    EXPECT_EQ(complaintOf(path), path + ": cannot be opened: Permission denied");
}

} // namespace
