// SPDX-License-Identifier: MIT
#include "host/recording/ResultFile.h"

#include "host/recording/RecordingException.h"
#include "tests/host/Fifo.h"
#include "tests/host/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>

namespace {

using Quillmere::Host::RecordingException;
using Quillmere::Host::ResultFile;
using Support::TemporaryFolder;

std::string refusal(const std::string& path) {
    try {
        ResultFile file(path);
    } catch (const RecordingException& exception) {
        return exception.what();
    }
    return "";
}

TEST(ResultFile, HasItsFinalNameOnlyWhenComplete) {
    const TemporaryFolder folder;
    folder.write("out.csv", "what a user had");
    {
        ResultFile file(folder.path("out.csv"));
        file.write("new", 3);
        EXPECT_EQ(folder.read("out.csv"), "what a user had");
        EXPECT_EQ(folder.read("out.csv.partial"), "new");
        file.complete();
    }
    EXPECT_EQ(folder.read("out.csv"), "new");
    EXPECT_EQ(folder.count(), 1);
}

TEST(ResultFile, LeavesThePartialFileWhenItIsGivenUp) {
    const TemporaryFolder folder;
    folder.write("out.csv", "what a user had");
    { ResultFile(folder.path("out.csv")).write("half", 4); }
    EXPECT_EQ(folder.read("out.csv"), "what a user had");
    EXPECT_EQ(folder.read("out.csv.partial"), "half");
}

TEST(ResultFile, DiscardLeavesNothing) {
    const TemporaryFolder folder;
    ResultFile file(folder.path("out.csv"));
    file.write("half", 4);
    file.discard();
    EXPECT_EQ(folder.count(), 0);
}

TEST(ResultFile, StartsEmptyOverAnEarlierPartialFile) {
    const TemporaryFolder folder;
    folder.write("out.csv.partial", "from a run that failed");
    ResultFile file(folder.path("out.csv"));
    file.write("x", 1);
    file.complete();
    EXPECT_EQ(folder.read("out.csv"), "x");
}

TEST(ResultFile, FollowsALinkAndKeepsIt) {
    const TemporaryFolder folder;
    folder.write("real.csv", "old");
    std::filesystem::create_symlink("real.csv", folder.path("link.csv"));
    ResultFile file(folder.path("link.csv"));
    file.write("new", 3);
    file.complete();
    EXPECT_EQ(folder.read("real.csv"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link.csv")));
    EXPECT_EQ(folder.count(), 2);
}

TEST(ResultFile, FollowsALinkToAFileThatIsNotThereYet) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("real.csv", folder.path("link.csv"));
    ResultFile file(folder.path("link.csv"));
    EXPECT_EQ(file.getPath(), folder.path("real.csv"));
    file.complete();
    EXPECT_TRUE(folder.has("real.csv"));
}

TEST(ResultFile, WritesADeviceStraight) {
    ResultFile file("/dev/null");
    file.write("x", 1);
    file.complete();
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    EXPECT_FALSE(std::filesystem::exists("/dev/null.partial"));
}

TEST(ResultFile, RefusesASecondWriterWithoutHarmToTheFirst) {
    const TemporaryFolder folder;
    ResultFile first(folder.path("out.csv"));
    first.write("abc", 3);
    EXPECT_EQ(refusal(folder.path("out.csv")),
              folder.path("out.csv.partial") + ": another run is writing this result");
    EXPECT_EQ(folder.read("out.csv.partial"), "abc");
}

TEST(ResultFile, RefusesWhatCannotBeWritten) {
    const TemporaryFolder folder;
    EXPECT_EQ(refusal(folder.path(".")),
              folder.path(".") + ": found a directory; expected the name of a file to write");
    EXPECT_EQ(refusal(folder.path("no/such/out.csv")),
              folder.path("no/such/out.csv.partial") + ": cannot be written: No such file or directory");
}

TEST(ResultFile, AFullDiskIsAFailure) {
    ResultFile file("/dev/full");
    try {
        file.write("x", 1);
        FAIL();
    } catch (const RecordingException& exception) {
        EXPECT_STREQ(exception.what(), "/dev/full: cannot be written: No space left on device");
    }
}

TEST(ResultFile, WritesAPipeStraight) {
    const TemporaryFolder folder;
    const Support::Fifo reader(folder.path("pipe"));
    ResultFile file(folder.path("pipe"));
    EXPECT_TRUE(file.getIsDirect());
    EXPECT_EQ(file.getPartialPath(), folder.path("pipe"));
    file.write("one\ntwo", 7);
    EXPECT_EQ(reader.readLine(), "one\n");
    file.write("\n", 1);
    EXPECT_EQ(reader.readLine(), "two\n");
    file.complete();
    EXPECT_EQ(folder.count(), 1) << "the pipe alone";
}

TEST(ResultFile, ADiscardedPipeIsStillThere) {
    const TemporaryFolder folder;
    const Support::Fifo reader(folder.path("pipe"));
    ResultFile(folder.path("pipe")).discard();
    EXPECT_TRUE(folder.has("pipe"));
}

TEST(ResultFile, ADashIsStandardOutput) {
    Support::StandardPipe output(STDOUT_FILENO);
    {
        ResultFile file("-");
        EXPECT_TRUE(file.getIsDirect());
        EXPECT_EQ(file.getPath(), "standard output");
        EXPECT_EQ(file.getPartialPath(), "standard output");
        file.write("a row\n", 6);
        file.complete();
    }
    EXPECT_EQ(::write(STDOUT_FILENO, "and on\n", 7), 7) << "the program's own stays open";
    EXPECT_EQ(output.readAll(), "a row\nand on\n");
    EXPECT_FALSE(std::filesystem::exists("-"));
}

TEST(ResultFile, AFileMayBeNamedLikeStandardOutputInItsFolder) {
    const TemporaryFolder folder;
    ResultFile file(folder.path("-"));
    EXPECT_FALSE(file.getIsDirect());
    file.complete();
    EXPECT_TRUE(folder.has("-"));
}

std::string failureToWrite(ResultFile& file, const std::string& text) {
    try {
        file.write(text.data(), text.size());
    } catch (const RecordingException& exception) {
        return exception.what();
    }
    return "";
}

TEST(ResultFile, APipeWhoseReaderIsGoneIsAFailure) {
    std::signal(SIGPIPE, SIG_IGN);
    Support::StandardPipe output(STDOUT_FILENO);
    ResultFile file("-");
    output.close();
    EXPECT_EQ(failureToWrite(file, "x"), "standard output: cannot be written: Broken pipe");
}

TEST(ResultFile, WhoHasGivenUpWaitsForNoReader) {
    const TemporaryFolder folder;
    const Support::Fifo reader(folder.path("pipe"));
    ResultFile file(folder.path("pipe"));
    file.giveUp();
    EXPECT_EQ(failureToWrite(file, "there is room\n"), "") << "what can be written is";
    EXPECT_EQ(failureToWrite(file, std::string(1000000, 'x')),
              folder.path("pipe") + ": cannot be written: nobody reads it");
    EXPECT_EQ(reader.readLine(), "there is room\n");
}

/// Sets a flag a little later, when another thread waits.
class LateStop {
public:
    LateStop()
        : thread([this] {
              std::this_thread::sleep_for(std::chrono::milliseconds(20));
              flag = true;
          }) {}
    ~LateStop() { thread.join(); }
    std::atomic<bool> flag{false};

private:
    std::thread thread;
};

TEST(ResultFile, AWishToStopEndsTheWaitForAReader) {
    const TemporaryFolder folder;
    const Support::Fifo reader(folder.path("pipe"));
    LateStop stop;
    ResultFile file(folder.path("pipe"), &stop.flag);
    const std::string much(1'000'000, 'x');
    EXPECT_THROW(file.write(much.data(), much.size()), Quillmere::Host::InterruptedException);
}

TEST(ResultFile, AWishToStopEndsTheWaitForOneWhoOpensThePipe) {
    const TemporaryFolder folder;
    Support::Fifo reader(folder.path("pipe"));
    LateStop stop;
    reader.close(); // the test has no end of it any more
    EXPECT_THROW(ResultFile(folder.path("pipe"), &stop.flag), Quillmere::Host::InterruptedException);
}

TEST(ResultFile, WaitsForOneWhoOpensThePipeLater) {
    const TemporaryFolder folder;
    std::string text;
    Support::Fifo pipe(folder.path("pipe"));
    pipe.close();
    std::thread reader([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        text = folder.read("pipe");
    });
    {
        ResultFile file(folder.path("pipe"));
        const std::string much(1'000'000, 'x');
        file.write(much.data(), much.size()); // more than a pipe holds
    }
    reader.join();
    EXPECT_EQ(text.size(), 1'000'000u);
}

} // namespace
