// SPDX-License-Identifier: MIT
#include "host/batch/RunStatus.h"
#include "host/batch/PeakMemory.h"
#include "host/batch/ResultFolder.h"
#include "host/ends/RecordingException.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/mman.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

class RunStatusTest : public testing::Test {
protected:
    RunStatusTest() {
        status.state = RunStatus::kDone;
        status.recording = "a \"b\" \x1b ü.csv";
        status.command = "quillmere run g.yaml";
        status.notes = {{"age", "34"}, {"hand", ""}};
        status.began = timeText();
        status.seconds = 0.125;
        status.rows = 12;
        status.rate = 99.5;
        status.peakMemory = 1u << 20;
        status.versions = {{"quillmere", "1.2"}};
        status.graphHash = "00ff";
        status.overrides = {"--set", "a.b=1"};
        RunStatus::Input& input = status.inputs.emplace_back();
        input.source = "in";
        input.path = folder.write("in.csv", "t,x\n0,1\n");
        input.facts = *factsOf(input.path);
        input.hash = hashOfFile(input.path);
        folder.write("out.csv", "t,x\n");
        ResultFolder(folder.path("")).addResult(status, "out", "out.csv");
    }
    std::string change() const { return findChange(status, now, folder.path("")); }

    Support::TemporaryFolder folder;
    RunStatus status;
    RunStatus now;
};

TEST_F(RunStatusTest, ReadsBackWhatIsWritten) {
    status.outcome = "{\n  \"state\": \"whole\"\n}";
    writeStatus(folder.path(""), status);
    EXPECT_FALSE(folder.has("status.json.partial"));
    const auto read = readStatus(folder.path("status.json"));
    ASSERT_TRUE(read);
    RunStatus same = *read;
    same.outcome = status.outcome;
    EXPECT_EQ(toJson(same), toJson(status));
    EXPECT_TRUE(read->getIsDone());
    EXPECT_EQ(read->recording, status.recording);
    EXPECT_EQ(read->inputs[0].facts, status.inputs[0].facts);
}

TEST_F(RunStatusTest, WhatIsntThereStaysSo) {
    writeStatus(folder.path(""), RunStatus());
    const auto read = readStatus(folder.path("status.json"));
    ASSERT_TRUE(read);
    EXPECT_FALSE(read->rate);
    EXPECT_EQ(read->failure, "");
    EXPECT_FALSE(read->getIsDone());
}

TEST_F(RunStatusTest, HalfAFileAndOthersAreNoStatus) {
    EXPECT_FALSE(readStatus(folder.path("status.json")));
    const std::string whole = toJson(status);
    for (const std::string& text :
         {std::string(), whole.substr(0, whole.size() / 2), whole.substr(0, whole.size() - 3),
          std::string("{}\n"), std::string("{\n  \"document\": \"x\",\n  \"outcome\": null\n}\n")}) {
        folder.write("status.json", text);
        EXPECT_FALSE(readStatus(folder.path("status.json"))) << text;
    }
}

TEST_F(RunStatusTest, HashesAreThoseOfOthers) {
    // An example of FIPS 180-4, as `printf abc | sha256sum` prints it.
    EXPECT_EQ(hashOfFile(folder.write("abc", "abc")),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(hashOfFile(folder.path("none")), "");
    EXPECT_EQ(hashOfFile("/dev/null"), "") << "no file";
}

TEST_F(RunStatusTest, TellsWhatHasChanged) {
    now = status;
    EXPECT_EQ(change(), "");
    now.graphHash = "01";
    EXPECT_EQ(change(), "the graph has changed");
    now = status;
    now.overrides = {};
    EXPECT_EQ(change(), "the settings have changed");
    now = status;
    now.versions[0].second = "1.3";
    EXPECT_EQ(change(), "the versions of command or plug-ins have changed");
    now = status;
    now.notes = {};
    EXPECT_EQ(change(), "") << "a note changes no result";
}

TEST_F(RunStatusTest, ARecordingHasChangedWhenItsBytesHave) {
    now = status;
    const std::string path = status.inputs[0].path;
    const auto later = std::filesystem::last_write_time(path) + std::chrono::seconds(5);
    std::filesystem::last_write_time(path, later);
    EXPECT_EQ(change(), "") << "touched only";
    folder.write("in.csv", "t,x\n0,2\n");
    std::filesystem::last_write_time(path, later + std::chrono::seconds(5));
    EXPECT_EQ(change(), "the recording '" + path + "' has changed");
    std::filesystem::remove(path);
    EXPECT_EQ(change(), "the recording '" + path + "' has changed");
}

TEST_F(RunStatusTest, AFileMayHaveAnotherName) {
    const std::string source = status.inputs[0].source;
    status.overrides = {"--input", source + "=" + status.inputs[0].path, "--strict"};
    now = status;
    now.overrides[1] = source + "=" + folder.path("./in.csv");
    EXPECT_EQ(change(), "");
    now.overrides[1] = source + "=" + folder.write("other.csv", "t,x\n");
    EXPECT_EQ(change(), "the recording '" + status.inputs[0].path + "' has changed");
    now.overrides[2] = "--overwrite";
    EXPECT_EQ(change(), "the settings have changed");
}

TEST_F(RunStatusTest, AResultThatIsGoneHasToBeMadeAgain) {
    now = status;
    folder.write("out.csv", "t,x\n1");
    EXPECT_EQ(change(), "the result 'out.csv' has changed");
    std::filesystem::remove(folder.path("out.csv"));
    EXPECT_EQ(change(), "the result 'out.csv' is gone");
}

TEST_F(RunStatusTest, AFolderThatCantBeIsAFailure) {
    folder.write("file", "");
    EXPECT_THROW(writeStatus(folder.path("file"), status), RecordingException);
    EXPECT_THROW(ResultFolder(folder.path("file/below")), RecordingException);
    std::filesystem::create_directory(folder.path("status.json"));
    EXPECT_FALSE(readStatus(folder.path("status.json")));
    const ResultFolder looked(folder.path("none"), false);
    EXPECT_FALSE(looked.findStatus());
    EXPECT_FALSE(folder.has("none"));
}

TEST_F(RunStatusTest, BeginningTakesAwayWhatAnEarlierRunHasMade) {
    const std::string result = folder.path("r/out.csv");
    const auto facts = [&](const std::string& text) {
        folder.write("r/out.csv", text);
        const ResultFolder results(folder.path("r"));
        results.begin({});
        EXPECT_FALSE(folder.has("r/status.json"));
        return folder.has("r/out.csv");
    };
    std::filesystem::create_directory(folder.path("r"));
    folder.write("r/out.csv", "1\n");
    RunStatus made;
    ResultFolder(folder.path("r")).addResult(made, "out", "out.csv");
    writeStatus(folder.path("r"), made);
    EXPECT_FALSE(facts("1\n"));
    writeStatus(folder.path("r"), made);
    EXPECT_TRUE(facts("somebody's\n")) << "it isn't that of the run any more";
}

TEST(PeakMemory, BeginsAnew) {
    constexpr std::size_t kMuch = std::size_t{64} << 20;
    restartPeakMemory();
    const auto before = getPeakMemory();
    // Straight from the system, to which it goes back at once.
    void* const much =
        ::mmap(nullptr, kMuch, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    ASSERT_NE(much, MAP_FAILED);
    EXPECT_GE(getPeakMemory(), before + kMuch / 2);
    ::munmap(much, kMuch);
    restartPeakMemory();
    EXPECT_LT(getPeakMemory(), before + kMuch / 2);
}

} // namespace
