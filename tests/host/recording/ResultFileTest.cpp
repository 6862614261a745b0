// SPDX-License-Identifier: MIT
#include "host/recording/ResultFile.h"

#include "host/ends/RecordingException.h"
#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/RefusalText.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>

namespace {

using Quillmere::Host::RecordingException;
using Quillmere::Host::ResultFile;
using Quillmere::Host::ResultOptions;
using Support::TemporaryFolder;
namespace fs = std::filesystem;

/// Texts that begin with `old` are results to these tests.
const ResultOptions kOptions{.overwrites = false,
                             .looksOwn = [](std::string_view head) { return head.starts_with("old"); }};

std::string refusal(const std::string& path, const ResultOptions& options = kOptions) {
    try {
        ResultFile file(path, options);
    } catch (const RecordingException& exception) {
        return Support::refusalText(exception);
    }
    return "";
}

std::string failureToComplete(ResultFile& file) {
    try {
        file.complete();
    } catch (const RecordingException& exception) {
        return Support::refusalText(exception);
    }
    return "";
}

void writeResult(const std::string& path, const std::string& text) {
    ResultFile file(path, kOptions);
    file.write(text.data(), text.size());
    file.complete();
}

fs::perms modeOf(const std::string& path) {
    return fs::status(path).permissions();
}

/// Whether this file system keeps marks; where it doesn't, some files can't be told apart.
bool keepsMarks(const std::string& path) {
    const std::string value = "1";
    return ::setxattr(path.c_str(), "user.quillmere.test", value.data(), value.size(), 0) == 0;
}

TEST(ResultFile, HasItsFinalNameOnlyWhenComplete) {
    const TemporaryFolder folder;
    folder.write("out.csv", "old result");
    {
        ResultFile file(folder.path("out.csv"), kOptions);
        file.write("new", 3);
        EXPECT_EQ(folder.read("out.csv"), "old result");
        EXPECT_EQ(folder.read("out.csv.partial"), "new");
        file.finish();
        EXPECT_EQ(folder.read("out.csv"), "old result");
        file.complete();
    }
    EXPECT_EQ(folder.read("out.csv"), "new");
    EXPECT_EQ(folder.count(), 1);
}

TEST(ResultFile, LeavesThePartialFileWhenItIsGivenUp) {
    const TemporaryFolder folder;
    folder.write("out.csv", "old result");
    { ResultFile(folder.path("out.csv"), kOptions).write("half", 4); }
    EXPECT_EQ(folder.read("out.csv"), "old result");
    EXPECT_EQ(folder.read("out.csv.partial"), "half");
}

TEST(ResultFile, DiscardLeavesNothing) {
    const TemporaryFolder folder;
    ResultFile file(folder.path("out.csv"));
    file.write("half", 4);
    file.discard();
    EXPECT_EQ(folder.count(), 0);
}

TEST(ResultFile, StartsEmptyOverWhatARunHasLeft) {
    const TemporaryFolder folder;
    folder.write("out.csv.partial", "old run that failed");
    { ResultFile(folder.path("out.csv"), kOptions).write("half", 4); }
    EXPECT_EQ(folder.read("out.csv.partial"), "half");
    folder.write("out.csv.partial.widened", "");
    writeResult(folder.path("out.csv"), "x");
    EXPECT_EQ(folder.read("out.csv"), "x");
    EXPECT_EQ(folder.count(), 1) << "nothing of a run that was killed stays";
}

TEST(ResultFile, ReplacesNothingThatNoRunHasMade) {
    const TemporaryFolder folder;
    const std::string path = folder.write("out.csv", "what a user had");
    EXPECT_EQ(refusal(path),
              "found the file '" + path +
                  "', which no run has written; expected another name, or 'overwrite: true' or "
                  "--overwrite to replace it");
    EXPECT_EQ(folder.read("out.csv"), "what a user had");
    EXPECT_EQ(folder.count(), 1);
    EXPECT_EQ(refusal(path, {.overwrites = true, .looksOwn = {}}), "");
}

TEST(ResultFile, ReplacesAnEarlierResultWhateverStandsInIt) {
    const TemporaryFolder folder;
    const std::string path = folder.path("out.csv");
    writeResult(path, "first");
    if (!keepsMarks(path)) GTEST_SKIP() << "no marks here";
    writeResult(path, "second");
    EXPECT_EQ(folder.read("out.csv"), "second");
    folder.write("out.csv", "second, and a user's notes");
    EXPECT_EQ(refusal(path), "found the file '" + path +
                                 "', which was changed after a run had written it; expected another name, or "
                                 "'overwrite: true' or --overwrite to replace it");
}

TEST(ResultFile, AWriteProtectedResultStays) {
    const TemporaryFolder folder;
    const std::string path = folder.write("out.csv", "old result");
    fs::permissions(path, fs::perms(0444));
    EXPECT_EQ(refusal(path),
              "found the file '" + path +
                  "', which is write-protected; expected another name, or 'overwrite: true' or "
                  "--overwrite to replace it");
}

TEST(ResultFile, KeepsTheModeOfWhatItReplaces) {
    const TemporaryFolder folder;
    const std::string path = folder.write("out.csv", "old result");
    fs::permissions(path, fs::perms(0640));
    ResultFile file(path, kOptions);
    EXPECT_EQ(modeOf(path + ".partial"), fs::perms(0640)) << "from the begin";
    fs::permissions(path, fs::perms(0600));
    file.complete();
    EXPECT_EQ(modeOf(path), fs::perms(0600));
}

TEST(ResultFile, RefusesALinkAndLeavesItsTarget) {
    const TemporaryFolder folder;
    folder.write("real.csv", "old result");
    fs::create_symlink("real.csv", folder.path("link.csv"));
    fs::create_symlink("none.csv", folder.path("loose.csv"));
    for (const char* const name : {"link.csv", "loose.csv"}) {
        const std::string path = folder.path(name);
        const std::string expected =
            "found the link '" + path + "' to '" + fs::read_symlink(path).string() +
            "'; expected the name of the file itself, since a result takes the place "
            "of what has its name";
        EXPECT_EQ(refusal(path), expected);
        EXPECT_EQ(refusal(path, {.overwrites = true, .looksOwn = {}}), expected);
    }
    EXPECT_EQ(folder.read("real.csv"), "old result");
    EXPECT_EQ(folder.count(), 3);
}

/// Puts something where a partial file would be, and says what is found there.
struct PlantedRow {
    std::string found;
    std::function<void(const std::string& path, const std::string& victim)> plant;
};

TEST(ResultFile, WhatIsPlantedUnderAPartialNameIsNeitherFollowedNorEmptied) {
    const auto text = [](const std::string& path, const std::string&) { std::ofstream(path) << "my data"; };
    const auto link = [](const std::string& path, const std::string& to) { fs::create_symlink(to, path); };
    const auto loose = [](const std::string& path, const std::string& to) {
        fs::create_symlink(to + ".none", path);
    };
    const auto hard = [](const std::string& path, const std::string& to) { fs::create_hard_link(to, path); };
    const auto folderThere = [](const std::string& path, const std::string&) { fs::create_directory(path); };
    const auto pipe = [](const std::string& path, const std::string&) {
        ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    };
    const auto socket = [](const std::string& path, const std::string&) {
        ASSERT_EQ(::mknod(path.c_str(), S_IFSOCK | 0600, 0), 0);
    };
    const PlantedRow rows[] = {{"the file 'PATH', which no run has written", text},
                               {"the link 'PATH'", link},
                               {"the link 'PATH'", loose},
                               {"the file 'PATH', which has another name too", hard},
                               {"the folder 'PATH'", folderThere},
                               {"the named pipe 'PATH'", pipe},
                               {"the socket 'PATH'", socket}};
    for (const char* const ending : {".partial", ".partial.widened"})
        for (const PlantedRow& row : rows) {
            const TemporaryFolder folder;
            const std::string victim = folder.write("victim", "old and dear");
            const std::string planted = folder.path("out.csv") + ending;
            row.plant(planted, victim);
            std::string found = row.found;
            found.replace(found.find("PATH"), 4, planted);
            for (const bool overwrites : {false, true})
                EXPECT_EQ(refusal(folder.path("out.csv"),
                                  {.overwrites = overwrites, .looksOwn = kOptions.looksOwn}),
                          "found " + found +
                              "; expected nothing there but what a run has left, since the result is written "
                              "there first: move it away, or name the result otherwise");
            EXPECT_EQ(folder.read("victim"), "old and dear");
            EXPECT_TRUE(folder.has("out.csv" + std::string(ending))) << "it is still there";
            EXPECT_FALSE(folder.has("victim.none"));
            EXPECT_EQ(folder.count(), 2) << found;
        }
}

TEST(ResultFile, WhatComesUnderItsNameMeanwhileStays) {
    const TemporaryFolder folder;
    ResultFile file(folder.path("out.csv"), kOptions);
    file.write("new", 3);
    folder.write("out.csv", "what a user has put there");
    EXPECT_NE(failureToComplete(file).find("which no run has written"), std::string::npos);
    EXPECT_EQ(folder.read("out.csv"), "what a user has put there");
    EXPECT_EQ(folder.read("out.csv.partial"), "new");
}

TEST(ResultFile, APartialFileThatWasReplacedGetsNoName) {
    const TemporaryFolder folder;
    ResultFile file(folder.path("out.csv"), kOptions);
    fs::remove(folder.path("out.csv.partial"));
    ResultFile other(folder.path("out.csv"), kOptions);
    EXPECT_EQ(failureToComplete(file),
              folder.path("out.csv.partial") + ": was moved, removed or replaced while it was written");
    file.discard();
    EXPECT_TRUE(folder.has("out.csv.partial")) << "the other's";
    EXPECT_EQ(failureToComplete(other), "");
}

TEST(ResultFile, ACopyTakesThePlaceAndTheLock) {
    const TemporaryFolder folder;
    ResultFile file(folder.path("out.csv"), kOptions);
    file.write("narrow", 6);
    const std::unique_ptr<ResultFile> copy = file.beginCopy();
    copy->write("wide", 4);
    file.adopt(*copy);
    EXPECT_EQ(folder.read("out.csv.partial"), "wide");
    EXPECT_EQ(refusal(folder.path("out.csv")),
              folder.path("out.csv.partial") + ": another run is writing this result");
    file.complete();
    EXPECT_EQ(folder.read("out.csv"), "wide");
    EXPECT_EQ(folder.count(), 1);
}

TEST(ResultFile, AnOpenDescriptorIsWrittenWhereItIs) {
    const TemporaryFolder folder;
    const std::string path = folder.write("log", "");
    const int log = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    ASSERT_GE(log, 0);
    EXPECT_EQ(::write(log, "before ", 7), 7);
    fs::create_symlink("/dev/fd/" + std::to_string(log), folder.path("link"));
    for (const std::string& name : {"/dev/fd/" + std::to_string(log), folder.path("link")}) {
        ResultFile file(name);
        EXPECT_TRUE(file.getIsDirect());
        file.write("row ", 4);
        file.complete();
    }
    EXPECT_EQ(::write(log, "behind", 6), 6) << "it stays open";
    ::close(log);
    EXPECT_EQ(folder.read("log"), "before row row behind");
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
              "found the folder '" + folder.path(".") + "'; expected the name of a file");
    EXPECT_EQ(refusal(folder.path("no/such/out.csv")),
              "found the file '" + folder.path("no/such/out.csv") +
                  "' in a folder that isn't there; expected a folder that is");
    const Support::TemporaryFolder other;
    ASSERT_EQ(::mknod(other.path("socket").c_str(), S_IFSOCK | 0600, 0), 0);
    EXPECT_EQ(refusal(other.path("socket")),
              "found the socket '" + other.path("socket") +
                  "'; expected the name of a file, a pipe or a device that takes "
                  "text");
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
        return Support::refusalText(exception);
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

/// Requests a stop a little later, when another thread waits.
class LateStop {
public:
    LateStop()
        : thread([this] {
              std::this_thread::sleep_for(std::chrono::milliseconds(20));
              source.request_stop();
          }) {}
    ~LateStop() { thread.join(); }
    std::stop_token getToken() const { return source.get_token(); }

private:
    std::stop_source source;
    std::thread thread;
};

TEST(ResultFile, AWishToStopEndsTheWaitForAReader) {
    const TemporaryFolder folder;
    const Support::Fifo reader(folder.path("pipe"));
    const LateStop stop;
    ResultFile file(folder.path("pipe"), {}, stop.getToken());
    const std::string much(1'000'000, 'x');
    EXPECT_THROW(file.write(much.data(), much.size()), Quillmere::Host::InterruptedException);
}

TEST(ResultFile, AWishToStopEndsTheWaitForOneWhoOpensThePipe) {
    const TemporaryFolder folder;
    Support::Fifo reader(folder.path("pipe"));
    const LateStop stop;
    reader.close(); // the test has no end of it any more
    EXPECT_THROW(ResultFile(folder.path("pipe"), {}, stop.getToken()), Quillmere::Host::InterruptedException);
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
