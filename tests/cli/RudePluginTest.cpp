// SPDX-License-Identifier: MIT
// What the command says of plug-ins that misbehave: it names the file and the block, and ends in order.
#include "tests/cli/Program.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using Support::Ended;
using Strings = std::vector<std::string>;

class RudeCommand : public testing::Test {
protected:
    RudeCommand() {
        folder.write("in.csv", "t,x\n0,1\n0.5,2\n");
        writeGraph("RudeStep", "");
    }
    ~RudeCommand() override { ::unsetenv("RUDE"); }

    void writeGraph(const std::string& type, const std::string& settings) const {
        folder.write(
            "g.yaml",
            "format: 1\nblocks:\n"
            "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: [x]}}}\n"
            "  - {id: number, type: " +
                type + ", properties: {" + settings +
                "}}\n"
                "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
                "connections:\n  - {from: in, to: number}\n  - {from: number, to: out.x}\n");
    }
    Ended call(Strings arguments) const {
        arguments.insert(arguments.begin(), QUILLMERE);
        arguments.insert(arguments.end(), {"--plugin", RUDE_PLUGIN});
        return Support::runProgram(arguments, folder.path(""));
    }

    Support::TemporaryFolder folder;
    std::string file = std::filesystem::canonical(RUDE_PLUGIN).string();
    const std::string noException = "something that is no std::exception";
};

TEST_F(RudeCommand, AStepThatRaisesEndsTheRunInOrder) {
    for (const Strings& way :
         {Strings{"run", "g.yaml"}, Strings{"run", "--live", "--speed", "max", "g.yaml"}}) {
        for (const bool isNumber : {false, true}) {
            writeGraph("RudeStep", isNumber ? "Number: true" : "");
            const Ended ended = call(way);
            EXPECT_EQ(ended.exitCode, 1);
            const std::string words = isNumber ? noException : "a trouble of its own";
            EXPECT_NE(ended.err.find("block 'number' (RudeStep of " + file + ") at 0 s: " + words),
                      std::string::npos)
                << ended.err;
        }
    }
}

TEST_F(RudeCommand, AStepThatRaisesEndsAResponse) {
    for (const char* const number : {"0", "1"}) {
        const Ended ended = call(
            {"response", "RudeStep", "--set", std::string("Number=") + (*number == '1' ? "true" : "false")});
        EXPECT_EQ(ended.exitCode, 2);
        EXPECT_EQ(ended.err, "block 'RudeStep' (RudeStep of " + file +
                                 "): " + (*number == '1' ? noException : "a trouble of its own") + "\n");
    }
}

TEST_F(RudeCommand, ABlockThatCannotBeMadeIsAComplaintWithItsPlace) {
    for (const char* const type : {"RudeMade", "RudeNull"}) {
        writeGraph(type, "");
        for (const char* const command : {"check", "run"}) {
            const Ended ended = call({command, "g.yaml"});
            EXPECT_EQ(ended.exitCode, 2) << ended.err;
            EXPECT_TRUE(ended.err.starts_with("g.yaml:4:")) << ended.err;
            EXPECT_NE(ended.err.find(file), std::string::npos) << ended.err;
            EXPECT_NE(ended.err.find("'number' (" + std::string(type) + ")"), std::string::npos) << ended.err;
        }
        const Ended shown = call({"blocks", type});
        EXPECT_EQ(shown.exitCode, 2);
        EXPECT_TRUE(shown.err.starts_with(file + ": ")) << shown.err;
    }
}

TEST_F(RudeCommand, ABlockThatCannotBeMadeDoesNotHideTheOthers) {
    const Ended listed = call({"blocks", "--json"});
    EXPECT_EQ(listed.exitCode, 0) << listed.err;
    const std::size_t made = listed.out.find("\"type\": \"RudeMade\"");
    ASSERT_NE(made, std::string::npos);
    EXPECT_LT(listed.out.find("\"failure\": ", made) - made, 100u);
    EXPECT_NE(listed.out.find("\"type\": \"RudeStep\""), std::string::npos);
}

TEST_F(RudeCommand, AHandlerThatRaisesAtASettingEndsInOrder) {
    for (const char* const number : {"false", "true"}) {
        const Ended ended =
            call({"response", "RudeStep", "--set", std::string("Number=") + number, "--set", "Fire=true"});
        EXPECT_EQ(ended.exitCode, 2) << ended.err;
        EXPECT_NE(ended.err, "");
    }
}

TEST_F(RudeCommand, AStartThatRaisesIsToldAndAStopIsAWarning) {
    ::setenv("RUDE", "start by number", 1);
    const Ended started = call({"blocks"});
    EXPECT_EQ(started.exitCode, 2);
    EXPECT_TRUE(started.err.starts_with(file + ": found a plug-in that raised when it was started"))
        << started.err;
    ::setenv("RUDE", "stop", 1);
    const Ended stopped = call({"blocks"});
    EXPECT_EQ(stopped.exitCode, 0);
    EXPECT_EQ(stopped.err,
              file + ": warning: the plug-in raised when it was stopped: a trouble of its own\n");
}

TEST_F(RudeCommand, ATypeThatIsThereTwiceIsRefusedWithBothFiles) {
    ::setenv("RUDE", "name of Velmarind's", 1);
    const Ended ended = call({"check", "g.yaml"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_NE(ended.err.find(file), std::string::npos) << ended.err;
    EXPECT_NE(ended.err.find(std::filesystem::canonical(VELMARIND_PLUGIN).string()), std::string::npos)
        << ended.err;
}

} // namespace
