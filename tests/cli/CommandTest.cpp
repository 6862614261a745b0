// SPDX-License-Identifier: MIT
#include "tests/cli/GainFixture.h"
#include "tests/support/Numbers.h"
#include "tests/host/kit/Plugins.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <thread>
#include <vector>

namespace {

using Support::Ended;
using Strings = std::vector<std::string>;

constexpr const char* kGraph = R"yaml(format: 1
name: the test
parameters: {factor: 2}
blocks:
  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: [x]}}}
  - {id: gain, type: FilterGain, properties: {Gain: "${factor}"}}
  - {id: out, type: RecordingSink, properties: {file: out.csv}}
connections:
  - {from: in, to: gain}
  - {from: gain, to: out.x}
)yaml";

class Command : public Support::GainFixture {
protected:
    Command() : GainFixture(kGraph) {}
};

struct ValueRow {
    std::string value;
    std::string refusal; ///< Behind the option; empty for a value that is taken.
};

const ValueRow kValues[] = {
    {.value = "0.5", .refusal = ""},
    {.value = "&x [*x]",
     .refusal = ": found a value that contains itself; expected a reference to a value that has ended\n"},
    {.value = "[1],2",
     .refusal = ": found more text behind the end of the first value; expected one value; a list stands in "
                "brackets\n"},
    {.value = std::string(2000, '[') + std::string(2000, ']'),
     .refusal = ": found lists or maps more than 100 levels deep; expected fewer\n"},
};

/// What a message repeats of an option's text.
std::string shownOf(const std::string& text) {
    return text.size() <= 80 ? text : text.substr(0, 80) + "...";
}

TEST_F(Command, ValuesOfOptionsGoTheRoadOfThoseInAFile) {
    for (const ValueRow& row : kValues) {
        const int expected = row.refusal.empty() ? 0 : 2;
        const Ended set = call({"check", "g.yaml", "--set", "gain.Gain=" + row.value});
        EXPECT_EQ(set.exitCode, expected) << row.value;
        EXPECT_EQ(set.err,
                  row.refusal.empty() ? "" : "--set " + shownOf("gain.Gain=" + row.value) + row.refusal);
        const Ended param = call({"check", "g.yaml", "--param", "factor=" + row.value});
        EXPECT_EQ(param.exitCode, expected) << row.value;
        EXPECT_EQ(param.err,
                  row.refusal.empty() ? "" : "--param " + shownOf("factor=" + row.value) + row.refusal);
        const Ended response = call({"response", "FilterGain", "--set", "Gain=" + row.value});
        EXPECT_EQ(response.exitCode, expected) << row.value;
        EXPECT_EQ(response.err,
                  row.refusal.empty() ? "" : "--set " + shownOf("Gain=" + row.value) + row.refusal);
    }
    const Ended matrix = call({"response", "FilterIIR", "--set", "XCoeffs=[[0.5, 0.5]]", "--points", "2"});
    EXPECT_EQ(matrix.exitCode, 0) << matrix.err;
    const Ended row = call({"response", "FilterIIR", "--set", "XCoeffs=[0.5, 0.5]"});
    EXPECT_EQ(row.exitCode, 2);
    EXPECT_NE(row.err.find("did you mean double brackets"), std::string::npos) << row.err;
}

TEST_F(Command, ARecordingGivenAsTheGraphIsToldInOneShortLine) {
    std::string recording = "t,x\n";
    for (int i = 0; i < 100000; ++i)
        recording += "0.5,1\n";
    folder.write("wrist.csv", recording);
    const Ended ended = call({"run", "wrist.csv"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.err,
              "wrist.csv:1:1: found a table, as recordings are, that begins 't,x'; expected a graph "
              "file, which names its recordings by 'file:'\n");
}

TEST_F(Command, RunsAGraphAndSumsUp) {
    const Ended ended = call({"run", "g.yaml"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.err, "") << "no progress where there is no terminal";
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,2\n0.5,4\n1,6\n");
    EXPECT_TRUE(std::regex_match(ended.out, std::regex("the test: 3 rows \\(in [0-9.]+ s, [0-9]+ rows/s\\)\n"
                                                       "  in   3 rows from in\\.csv, 1 s at 2 rows/s\n"
                                                       "  out  3 rows to out\\.csv\n")))
        << ended.out;
    EXPECT_EQ(folder.count(), 3);
}

TEST_F(Command, WhatTheWayOfRunningDecidesIsToldByThatWay) {
    const std::string blocks = R"yaml(
blocks:
  - {id: noise, type: FilterGaussianWhiteNoiseGenerator}
  - {id: count, type: FilterPeriodCounter}
  - {id: out, type: RecordingSink, properties: {file: noise.csv}}
connections:
  - {from: noise, to: count}
  - {from: count.Nb Period, to: out.x}
)yaml";
    folder.write("noise.yaml", "format: 1\nclock: stream" + blocks);
    folder.write("wall.yaml", "format: 1\nclock: wall" + blocks);
    const std::string refusal = "noise.yaml:2:8: found 'noise'";
    const std::string idle = ".yaml:5:10: warning: 'count' (FilterPeriodCounter) counts nothing";
    const std::string live = "and this one is live\n";
    for (const Strings& offline : {Strings{"check", "noise.yaml"}, {"run", "noise.yaml", "--steps", "3"}}) {
        const Ended ended = call(offline);
        EXPECT_EQ(ended.exitCode, 2) << offline.front();
        EXPECT_NE(ended.err.find(refusal), std::string::npos) << ended.err;
    }
    const Ended wall = call({"check", "wall.yaml"});
    EXPECT_EQ(wall.exitCode, 0);
    EXPECT_NE(wall.err.find(idle), std::string::npos) << wall.err;
    const Ended ended = call({"run", "--live", "noise.yaml", "--steps", "3"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.err.find(refusal), std::string::npos) << ended.err;
    EXPECT_NE(ended.err.find(live), std::string::npos) << ended.err;
    EXPECT_NE(ended.err.find(idle), std::string::npos) << ended.err;
    const Ended controlled = call({"run", "--live", "noise.yaml", "--steps", "3", "--control", "console"});
    EXPECT_EQ(controlled.err.find(idle), std::string::npos) << "somebody may fire it: " << controlled.err;
}

TEST_F(Command, QuietPrintsNothing) {
    const Ended ended = call({"run", "--quiet", "g.yaml"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.out + ended.err, "");
}

TEST_F(Command, OptionsChangeTheGraphForOneCall) {
    folder.write("other.csv", "t,x\n7,1\n");
    EXPECT_EQ(
        call({"run", "--param", "factor=-1", "--input", "in=other.csv", "g.yaml", "--output", "out=o.csv"})
            .exitCode,
        0);
    EXPECT_EQ(folder.read("o.csv"), "t,x[0]\n7,-1\n");
    EXPECT_FALSE(folder.has("out.csv"));
    const Ended twoClocks = call({"run", "--set=in.rate=4", "g.yaml"});
    EXPECT_EQ(twoClocks.exitCode, 2);
    EXPECT_EQ(
        twoClocks.err,
        "g.yaml:5:10: found the RecordingSource 'in' with two clocks; expected either 'time:' and a column "
        "or 'rate:' and rows a second; '--set in.time=null' takes the graph's away\n");
    for (const char* const away : {"in.time=null", "in.time=", "in.time=~"}) {
        EXPECT_EQ(call({"run", "--set=in.rate=4", "--set", away, "g.yaml"}).exitCode, 0) << away;
        EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,2\n0.25,4\n0.5,6\n") << away;
    }
    EXPECT_EQ(call({"run", "--set", "gain.Gain=null", "g.yaml"}).exitCode, 0);
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1\n0.5,2\n1,3\n") << "the block's own value";
    EXPECT_EQ(
        call({"check", "--set", "in.tiem=null", "g.yaml"}).err,
        "--set in.tiem=null: found no value for 'tiem', which the graph doesn't set; expected a value, or "
        "one of those that it sets: file, time and pins; did you mean time?\n");
    EXPECT_EQ(call({"run", "--set", "gain.Gain=0.5", "g.yaml"}).exitCode, 0);
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,0.5\n0.5,1\n1,1.5\n");
}

TEST_F(Command, PathsAreRelativeToTheGraphOrToTheCaller) {
    std::filesystem::create_directory(folder.path("sub"));
    std::filesystem::rename(folder.path("g.yaml"), folder.path("sub/g.yaml"));
    std::filesystem::rename(folder.path("in.csv"), folder.path("sub/in.csv"));
    EXPECT_EQ(call({"run", "sub/g.yaml"}).exitCode, 0);
    EXPECT_TRUE(folder.has("sub/out.csv"));
    EXPECT_EQ(call({"run", "sub/g.yaml", "--input", "in=sub/out.csv", "--set", "in.pins={x: ['x[0]']}",
                    "--output", "out=out.csv"})
                  .exitCode,
              0);
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,4\n0.5,8\n1,12\n");
}

TEST_F(Command, AWrongGraphIsToldOnTheErrorOutputAndNothingRuns) {
    folder.write("out.csv", "t,x[0]\n-1,-2\n");
    const Ended ended =
        call({"run", "g.yaml", "--set", "gain.Gian=2", "--set", "gain.Gain=high", "--param", "fcator=1"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "--param fcator=1: found the parameter 'fcator'; expected one of the graph's "
                         "parameters: factor; did you mean "
                         "factor?\n"
                         "--set gain.Gian=2: found the property 'Gian' of 'gain' (FilterGain); expected one "
                         "of Gain; did you mean "
                         "Gain?\n"
                         "--set gain.Gain=high: found 'high'; expected a number\n");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n-1,-2\n");
    EXPECT_EQ(folder.count(), 3);
}

TEST_F(Command, CheckTellsTheSameAsRunAndTouchesNothing) {
    const Ended good = call({"check", "g.yaml"});
    EXPECT_EQ(good.exitCode, 0);
    EXPECT_EQ(good.out, "the test: 3 blocks, 2 connections, ready to run\n");
    EXPECT_EQ(folder.count(), 2);
    std::filesystem::remove(folder.path("in.csv"));
    const Ended bad = call({"check", "g.yaml"});
    EXPECT_EQ(bad.exitCode, 2);
    EXPECT_EQ(bad.err,
              "g.yaml:5:56: found no recording that can be read (in.csv: cannot be opened: No such file or "
              "directory); expected a recording, such as a CSV file with a row of column names\n");
    EXPECT_EQ(call({"run", "g.yaml"}).err, bad.err);
}

TEST_F(Command, CheckLeavesAPipeToTheRun) {
    const std::string unread =
        "the test: 3 blocks, 2 connections, ready to run; what comes through a pipe to "
        "'in' is left unread\n";
    const auto inShell = [&](const std::string& line) {
        return Support::runProgram({"/bin/sh", "-c", line}, folder.path(""));
    };
    const Ended piped = inShell("cat in.csv | (" QUILLMERE " check g.yaml --input in=- && cat > left.csv)");
    EXPECT_EQ(piped.exitCode, 0) << piped.err;
    EXPECT_EQ(piped.out, unread);
    EXPECT_EQ(folder.read("left.csv"), folder.read("in.csv"));
    if (::mkfifo(folder.path("pipe").c_str(), 0600) != 0) FAIL() << "no FIFO can be made";
    EXPECT_EQ(call({"check", "g.yaml", "--input", "in=pipe"}).out, unread) << "nobody writes it";
    folder.write("other.csv", "t,y\n0,1\n");
    const Ended file = inShell(QUILLMERE " check g.yaml --input in=- < other.csv");
    EXPECT_EQ(file.exitCode, 2) << "a file can be looked at";
    EXPECT_NE(file.err.find("'x'"), std::string::npos) << file.err;
}

TEST_F(Command, OneOfSomethingIsToldAsOne) {
    folder.write("one.yaml", "format: 1\nname: one\nblocks:\n"
                             "  - {id: in, type: RecordingSource, properties: {file: one.csv, time: t, pins: "
                             "{x: x}, missing: [NA]}}\n"
                             "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
                             "connections: [{from: in, to: out.x}]\n");
    folder.write("one.csv", "t,x\n0,NA\n");
    EXPECT_EQ(call({"check", "one.yaml"}).out, "one: 2 blocks, 1 connection, ready to run\n");
    const Ended ended = call({"run", "one.yaml"});
    EXPECT_TRUE(ended.out.starts_with("one: 1 row (in ")) << ended.out;
    EXPECT_NE(
        ended.out.find(" rows/s)\n  in   1 row from one.csv, 1 cell missing\n  out  1 row to out.csv\n"),
        std::string::npos)
        << ended.out;
}

TEST_F(Command, ADesignWithoutDigitsIsAWarningAndStrictlyAnError) {
    std::string graph = kGraph;
    const auto replace = [&](const std::string& what, const std::string& by) {
        graph.replace(graph.find(what), what.size(), by);
    };
    replace("FilterGain", "FilterBessel");
    replace("Gain:", "Order: 10, LowRelativeCutOffFreq:");
    replace("to: gain", "to: gain.in");
    replace("from: gain", "from: gain.out");
    folder.write("g.yaml", graph);
    const std::string warning =
        "g.yaml:6:10: warning: found the design of 'gain' (FilterBessel) with no digit left of 16";
    for (const char* const command : {"check", "run"}) {
        const Ended ended = call({command, "g.yaml", "--param", "factor=0.01"});
        EXPECT_EQ(ended.exitCode, 0) << command;
        EXPECT_EQ(ended.err.substr(0, warning.size()), warning) << command;
        EXPECT_EQ(call({command, "g.yaml", "--param", "factor=0.2"}).err, "") << command;
        const Ended strict = call({command, "g.yaml", "--param", "factor=0.01", "--strict"});
        EXPECT_EQ(strict.exitCode, 2) << command;
        EXPECT_NE(strict.err.find("with no digit left of 16"), std::string::npos) << strict.err;
    }
}

TEST_F(Command, ARunThatFailsMidwayKeepsWhatItWrote) {
    folder.write("in.csv", "t,x\n0,1\n0.5,two\n");
    folder.write("out.csv", "t,x[0]\n-1,-2\n");
    const Ended ended = call({"run", "g.yaml"});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(
        ended.err,
        "quillmere: block 'in' (RecordingSource) at 0 s: in.csv:3: column 'x': found \"two\"; expected a "
        "number\n  incomplete: 1 row in out.csv.partial\n");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n-1,-2\n");
    EXPECT_EQ(folder.read("out.csv.partial"), "t,x[0]\n0,2\n");
    folder.write("in.csv", "t,x\n0,1\n");
    EXPECT_EQ(call({"run", "g.yaml"}).exitCode, 0);
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,2\n");
    EXPECT_FALSE(folder.has("out.csv.partial"));
}

TEST_F(Command, WarningsOfARunGoToStandardErrorAndStrictMakesThemAFailure) {
    folder.write("loss.yaml",
                 "format: 1\nblocks:\n"
                 "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
                 "  - {id: thrice, type: OddThrice}\n"
                 "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
                 "connections: [{from: in, to: thrice}, {from: thrice, to: out.x}]\n");
    const std::string warning =
        "loss.yaml:6:39: warning: 6 of the 9 samples that 'thrice.out' sent to 'out.x' were "
        "lost, since it took them too late\n";
    const Ended strict = call({"run", "--strict", "loss.yaml", "--plugin", ODD_PLUGIN});
    EXPECT_EQ(strict.exitCode, 1);
    EXPECT_EQ(strict.err, warning + "quillmere: ended with a warning, taken for an error\n"
                                    "  incomplete: 3 rows in out.csv.partial\n");
    EXPECT_FALSE(folder.has("out.csv"));
    const Ended ended = call({"run", "--quiet", "loss.yaml", "--plugin", ODD_PLUGIN});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.err, warning) << "also when quiet";
    EXPECT_EQ(ended.out, "");
    EXPECT_TRUE(folder.has("out.csv"));
}

TEST_F(Command, WarningsOfARunByTheHundredAreCountedBeyondFifty) {
    std::string text =
        "format: 1\nblocks:\n"
        "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
        "  - {id: thrice, type: OddThrice}\n"
        "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
        "connections:\n  - {from: in, to: thrice}\n";
    for (int i = 0; i < 60; ++i)
        text += "  - {from: thrice, to: out.x" + std::to_string(i) + "}\n";
    folder.write("losses.yaml", text);
    const Ended ended = call({"run", "--quiet", "losses.yaml", "--plugin", ODD_PLUGIN});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(std::count(ended.err.begin(), ended.err.end(), '\n'), 51);
    EXPECT_TRUE(ended.err.starts_with("losses.yaml:8:5: warning: ")) << ended.err;
    EXPECT_TRUE(ended.err.ends_with("\nand 10 more warnings\n")) << ended.err;
}

TEST_F(Command, AFullDiskIsAFailureMidway) {
    const Ended ended = call({"run", "g.yaml", "--output", "out=/dev/full"});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_NE(ended.err.find("/dev/full: cannot be written: No space left on device"), std::string::npos)
        << ended.err;
}

/// A recording of which more comes only when the test says so.
class Interrupted : public Command {
protected:
    Interrupted() {
        std::filesystem::remove(folder.path("in.csv"));
        if (::mkfifo(folder.path("in.csv").c_str(), 0600) != 0)
            throw std::runtime_error("no FIFO can be made");
    }
};

TEST_F(Interrupted, ControlCEndsTheRunAsAFailureMidway) {
    Support::Program program({QUILLMERE, "run", "g.yaml"}, folder.path(""));
    std::signal(SIGPIPE, SIG_IGN); // the program goes before all rows are written
    std::ofstream rows(folder.path("in.csv"));
    // More than the reader takes at once, so that it is midway when the signal comes.
    rows << "t,x\n" << std::flush;
    for (int i = 0; i < 60000; ++i)
        rows << i << ",1\n";
    rows.flush();
    while (!folder.has("out.csv.partial") || folder.read("out.csv.partial").empty())
        std::this_thread::yield();
    program.signal(SIGINT);
    // Rows come until nobody reads them: on a busy machine the signal may be slower than thousands of them.
    for (int i = 60000; rows && i < 20000000; ++i)
        rows << i << ",1\n";
    rows.close();
    const Ended ended = program.wait();
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_TRUE(
        std::regex_search(ended.err, std::regex("^quillmere: at [0-9.e+]+ s: interrupted\n(  in: [0-9]+ rows "
                                                "read, [0-9]+ processed\n)?  incomplete: [0-9]+ rows in "
                                                ".*out\\.csv\\.partial\n$")))
        << ended.err;
    EXPECT_FALSE(folder.has("out.csv"));
    const std::string partial = folder.read("out.csv.partial");
    EXPECT_TRUE(partial.starts_with("t,x[0]\n0,2\n1,2\n"));
    EXPECT_TRUE(partial.ends_with(",2\n")) << "whole rows";
}

/// Nothing is read from a pipe that wakes the reader, so the signal alone does.
TEST_F(Interrupted, ControlCEndsARunThatWaitsForRows) {
    Support::Program program({QUILLMERE, "run", "g.yaml"}, folder.path(""));
    std::ofstream rows(folder.path("in.csv"));
    rows << "t,x\n0.5,1\n" << std::flush;
    while (!folder.has("out.csv.partial"))
        std::this_thread::yield();
    program.signal(SIGINT);
    const Ended ended = program.wait(); // the pipe is still open
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_TRUE(std::regex_search(ended.err, std::regex("^quillmere: at 0(\\.5)? s: interrupted\n")))
        << ended.err;
    EXPECT_TRUE(folder.has("out.csv.partial"));
    EXPECT_FALSE(folder.has("out.csv"));
}

/// Nobody writes the pipe yet, or somebody has opened it and sent nothing.
TEST_F(Interrupted, ControlCEndsWhatWaitsForTheBeginOfARecording) {
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"run", "g.yaml", "--summary-json", "s.json"},
          {"run", "g.yaml", "--live", "--summary-json", "s.json"},
          {"inspect", "in.csv"}})
        for (const bool isOpened : {false, true}) {
            std::vector<std::string> arguments{QUILLMERE};
            arguments.insert(arguments.end(), words.begin(), words.end());
            Support::Program program(arguments, folder.path(""));
            std::ofstream rows;
            if (isOpened) rows.open(folder.path("in.csv"));
            program.waitUntilItCatches(SIGINT);
            std::this_thread::sleep_for(std::chrono::milliseconds(500)); // so that it mostly waits by then
            program.signal(SIGINT);
            const Ended ended = program.wait();
            EXPECT_EQ(ended.exitCode, 1) << words.front() << " " << isOpened;
            EXPECT_EQ(ended.err, "quillmere: interrupted\n");
            EXPECT_FALSE(folder.has("out.csv.partial"));
            if (words.front() == "inspect") continue;
            const std::string summary = folder.read("s.json");
            EXPECT_NE(summary.find("\"state\": \"refused\",\n  \"interrupted\": true"), std::string::npos)
                << summary;
            std::filesystem::remove(folder.path("s.json"));
        }
}

TEST_F(Command, ControlCEndsARunWhoseResultNobodyReads) {
    if (::mkfifo(folder.path("out.csv").c_str(), 0600) != 0) FAIL() << "no FIFO can be made";
    std::string text = "t,x\n";
    for (int i = 0; i < 20000; ++i) // more than a pipe holds
        text += std::to_string(i) + ",0.123456\n";
    folder.write("in.csv", text);
    Support::Program program({QUILLMERE, "run", "g.yaml"}, folder.path(""));
    std::ifstream out(folder.path("out.csv"));
    std::string line;
    std::getline(out, line);
    EXPECT_EQ(line, "t,x[0]");
    program.signal(SIGINT);
    const Ended ended = program.wait();
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_TRUE(std::regex_search(ended.err, std::regex("^quillmere: at [0-9.e+]+ s: interrupted\n")))
        << ended.err;
}

TEST_F(Command, ControlCEndsARunWhoseResultNobodyOpens) {
    if (::mkfifo(folder.path("pipe").c_str(), 0600) != 0) FAIL() << "no FIFO can be made";
    for (const bool isLive : {false, true}) {
        std::vector<std::string> arguments{QUILLMERE, "run", "g.yaml", "--output", "out=pipe"};
        if (isLive) arguments.insert(arguments.end(), {"--live", "--control", "control"});
        Support::Program program(arguments, folder.path(""));
        program.waitUntilItCatches(SIGTERM);
        std::this_thread::sleep_for(std::chrono::milliseconds(500)); // so that it mostly waits by then
        program.signal(SIGTERM);
        const Ended ended = program.wait();
        EXPECT_EQ(ended.exitCode, 1);
        EXPECT_EQ(ended.err, "quillmere: interrupted\n");
    }
}

TEST_F(Command, AGraphWithoutASourceIsToldWhenToEnd) {
    folder.write("gen.yaml", "format: 1\nname: ramp\nblocks:\n"
                             "  - {id: gen, type: FilterFunctionGenerator, properties: {Mode: triangular, "
                             "SignalPeriod: 4, SignalAmplitude: 1, SampleRate: 1}}\n"
                             "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
                             "connections: [{from: gen, to: out.x}]\n");
    const Ended refused = call({"run", "gen.yaml"});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_EQ(refused.err,
              "gen.yaml:1:1: found a graph without a source; expected --duration SECONDS or --steps N "
              "to end its run\n");
    EXPECT_FALSE(folder.has("out.csv"));
    EXPECT_EQ(call({"check", "gen.yaml"}).exitCode, 0);

    const Ended ended = call({"run", "gen.yaml", "--steps", "3"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n1,-1\n2,-0.5\n3,0\n");
    EXPECT_TRUE(std::regex_match(ended.out, std::regex("ramp: 3 rounds \\(in [0-9.]+ s, [0-9]+ rounds/s\\)\n"
                                                       "  out  3 rows to out\\.csv\n")))
        << ended.out;
    EXPECT_EQ(call({"run", "gen.yaml", "--duration", "2"}).exitCode, 0);
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n1,-1\n2,-0.5\n");
}

TEST_F(Command, ARecordingEndsARunByItself) {
    const Ended ended = call({"run", "g.yaml", "--steps", "3"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.err,
              "g.yaml:1:1: found --steps and a graph with a source; expected neither, since the run ends "
              "with the recording\n");
    EXPECT_EQ(folder.count(), 2);
}

TEST_F(Command, WrongUsageRunsNothing) {
    const Strings calls[] = {{},
                             {"runn", "g.yaml"},
                             {"run"},
                             {"run", "g.yaml", "--frobnicate"},
                             {"run", "g.yaml", "extra"},
                             {"run", "g.yaml", "--set", "gain"},
                             {"run", "g.yaml", "--set", "gain=1"},
                             {"run", "g.yaml", "--input", "in"},
                             {"run", "g.yaml", "--param", "=1"},
                             {"run", "none.yaml"},
                             {"run", "g.yaml", "--steps", "0"},
                             {"run", "g.yaml", "--steps", "-1"},
                             {"run", "g.yaml", "--steps", "1.5"},
                             {"run", "g.yaml", "--duration", "0"},
                             {"run", "g.yaml", "--duration", "nan"},
                             {"run", "g.yaml", "--duration", "inf"},
                             {"run", "g.yaml", "--duration", "1", "--steps", "1"},
                             {"run", "g.yaml", "--plugin", "none.so"},
                             {"blocks", "FilterGian"}};
    for (const Strings& arguments : calls) {
        const Ended ended = call(arguments);
        EXPECT_EQ(ended.exitCode, 2) << testing::PrintToString(arguments);
        EXPECT_NE(ended.err, "") << testing::PrintToString(arguments);
        EXPECT_EQ(folder.count(), 2) << testing::PrintToString(arguments);
    }
    EXPECT_EQ(call({"run", "g.yaml", "--set", "gain=1"}).err,
              "quillmere: --set: found 'gain=1'; expected BLOCK.PROPERTY=VALUE\n");
    EXPECT_NE(call({"blocks", "FilterGian"}).err.find("; did you mean FilterGain?\n"), std::string::npos);
}

TEST_F(Command, WrongUsageIsNamedAndGuessed) {
    struct Row {
        Strings words;
        const char* text;
    };
    const char* const commands =
        "expected one of run, batch, check, inspect, plot, blocks, response, ctl and help";
    const Row rows[] = {
        {{}, "found no command; COMMANDS ('quillmere help' tells what they do)"},
        {{"runn", "g.yaml"}, "found the command 'runn'; COMMANDS; did you mean run?"},
        {{"frob"}, "found the command 'frob'; COMMANDS"},
        {{"g.yaml"}, "found the command 'g.yaml'; COMMANDS; did you mean 'quillmere run g.yaml'?"},
        {{"none.yml"}, "found the command 'none.yml'; COMMANDS; did you mean 'quillmere run none.yml'?"},
        {{"help", "chekc"}, "found the command 'chekc'; COMMANDS; did you mean check?"},
        {{"run", "--inputs", "in=x.csv", "g.yaml"},
         "found the option '--inputs'; expected one that 'quillmere run --help' lists; did you mean "
         "--input?"},
        {{"check", "g.yaml", "--parm=a=1"},
         "found the option '--parm'; expected one that 'quillmere check --help' lists; did you mean "
         "--param?"},
        {{"--frobnicate"}, "found the option '--frobnicate'; expected one that 'quillmere --help' lists"},
        {{"run"}, "found no GRAPH; expected one, as 'quillmere run --help' tells"},
        {{"ctl"}, "found no PATH; expected one, as 'quillmere ctl --help' tells"},
        {{"check", "g.yaml", "more.yaml", "x"},
         "found 'more.yaml' behind what was complete; expected no more than 'quillmere check --help' lists"},
        {{"run", "g.yaml", "--steps", "3", "--duration", "2"},
         "found --duration beside --steps; expected one of them"},
        {{"run", "g.yaml", "--speed", "2"}, "found --speed without --live; expected both, or neither"},
        {{"run", "g.yaml", "--set"}, "found --set without a value; expected --set BLOCK.PROPERTY=VALUE"},
        {{"run", "g.yaml", "--steps=1", "--steps=2"}, "found --steps more than once; expected it once"},
        {{"run", "g.yaml", "--live=x"}, "found --live = x; expected --live alone"},
        {{"run", "g.yaml", "--steps", "0"}, "--steps: found '0'; expected a whole number above 0"},
        {{"run", "g.yaml", "--duration", "0"}, "--duration: found '0'; expected a number of seconds above 0"},
        {{"run", "g.yaml", "--duration", "-1"},
         "--duration: found '-1'; expected a number of seconds above 0"},
        {{"run", "g.yaml", "--duration", "nan"},
         "--duration: found 'nan'; expected a number of seconds above 0"},
        {{"run", "g.yaml", "--duration", "inf"},
         "--duration: found 'inf'; expected a number of seconds above 0"},
        {{"run", "g.yaml", "--live", "--speed", "fast"},
         "--speed: found 'fast'; expected a factor above 0, or max"},
        {{"response", "FilterGain", "--points", "1.5"},
         "--points: found '1.5'; expected a whole number from 1 to 10000"},
        {{"ctl", "--timeout", "0", "x", "stats"},
         "--timeout: found '0'; expected a whole number from 1 to 1000000"},
    };
    for (const Row& row : rows) {
        std::string wanted = row.text;
        if (const std::size_t at = wanted.find("COMMANDS"); at != std::string::npos)
            wanted.replace(at, 8, commands);
        const Ended ended = call(row.words);
        EXPECT_EQ(ended.exitCode, 2) << row.text;
        EXPECT_EQ(ended.err, "quillmere: " + wanted + "\n");
    }
}

TEST_F(Command, HelpIsACommandToo) {
    EXPECT_EQ(call({"help"}).out, call({"--help"}).out);
    for (const char* const command : {"run", "check", "inspect", "blocks", "response", "ctl", "help"}) {
        const Ended helped = call({"help", command});
        EXPECT_EQ(helped.exitCode, 0) << helped.err;
        EXPECT_EQ(helped.out, call({command, "--help"}).out);
    }
}

TEST_F(Command, CompletionKnowsEveryCommandAndOption) {
    folder.write("completion.bash", call({"completion"}).out);
    const auto complete = [&](const std::string& words) {
        folder.write("try.bash",
                     ". ./completion.bash\nCOMP_WORDS=(" + words +
                         ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_quillmere\necho \"${COMPREPLY[*]}\"\n");
        const Ended ended = Support::runProgram({"/bin/bash", "try.bash"}, folder.path(""));
        EXPECT_EQ(ended.err, "");
        return ended.out;
    };
    EXPECT_EQ(complete("quillmere ''"),
              "run batch check inspect plot blocks response ctl help --help --version\n");
    EXPECT_EQ(complete("quillmere re"), "response\n");
    EXPECT_EQ(complete("quillmere run --in"), "--input\n");
    EXPECT_EQ(complete("quillmere help c"), "check ctl\n");
    EXPECT_EQ(complete("quillmere ru"), "run\n");
    EXPECT_EQ(complete("quillmere run g"), "g.yaml\n");
    EXPECT_EQ(complete("quillmere run i"), "\n") << "a recording is no graph";
    EXPECT_EQ(complete("quillmere inspect i"), "\n") << "files are the shell's own matter";
    EXPECT_EQ(complete("quillmere run g.yaml --summary-json g"), "\n") << "so are values of options";
    EXPECT_EQ(complete(QUILLMERE " blocks FilterEd"), "FilterEdge\n");
    EXPECT_EQ(complete(QUILLMERE " response FilterButterworthV"), "FilterButterworthV2\n");
    EXPECT_EQ(complete(QUILLMERE " response g"), "g.yaml\n");
    const std::regex option("--[a-z]+");
    for (const std::string command : {"run", "check", "inspect", "blocks", "response", "ctl"}) {
        const std::string known = complete("quillmere " + command + " --");
        const std::string help = call({command, "--help"}).out;
        const std::size_t options = help.find("Options:");
        const std::string listed = help.substr(options, help.find("Behind PATH") - options);
        for (std::sregex_iterator match(listed.begin(), listed.end(), option), end; match != end; ++match)
            EXPECT_NE((" " + known).find(" " + match->str()), std::string::npos)
                << command << " " << match->str();
    }
}

TEST_F(Command, HelpAndVersionAreEverywhere) {
    for (const Strings& command : {Strings{}, Strings{"run"}, Strings{"check"}, Strings{"blocks"}}) {
        Strings help = command;
        help.push_back("--help");
        const Ended helped = call(help);
        EXPECT_EQ(helped.exitCode, 0);
        EXPECT_NE(helped.out.find("Usage: quillmere"), std::string::npos) << helped.out;
        Strings version = command;
        version.push_back("--version");
        const Ended told = call(version);
        EXPECT_EQ(told.exitCode, 0);
        EXPECT_TRUE(told.out.starts_with("quillmere " QUILLMERE_VERSION "\nrecordings: CSV")) << told.out;
        EXPECT_NE(told.out.find("\npictures: SVG"), std::string::npos) << told.out;
        EXPECT_EQ(std::count(told.out.begin(), told.out.end(), '\n'), 3) << told.out;
    }
}

TEST_F(Command, ThePluginOfEverydayBlocksMayBeNamedInTheGraph) {
    folder.write("n.yaml",
                 "format: 1\nplugins: [VelmarindEveryday]\nblocks:\n"
                 "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: [x]}}}\n"
                 "  - {id: n, type: Norm}\n"
                 "  - {id: out, type: RecordingSink, properties: {file: n.csv}}\n"
                 "connections: [{from: in.x, to: n}, {from: n, to: out.x}]\n");
    Ended ended = call({"run", "n.yaml"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    const std::string copy = folder.path("libVelmarindEveryday.so");
    std::filesystem::copy_file(Support::everydayPlugin(), copy);
    ended = call({"run", "n.yaml", "--plugin", copy});
    EXPECT_EQ(ended.exitCode, 0) << "in place of the one beside; " << ended.err;
}

TEST_F(Command, APluginMayBeNamedInPlaceOfTheOneBeside) {
    const std::string copy = folder.path("libVelmarind.so");
    std::filesystem::copy_file(VELMARIND_PLUGIN, copy);
    const Ended ended = call({"run", "g.yaml", "--plugin", copy});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
}

TEST_F(Command, TheExampleRuns) {
    std::string text = "t,ax,ay,az,gx,gy,gz,mx,my,mz\n";
    for (int i = 0; i < 50; ++i)
        text += std::to_string(0.01 * i) + ",0.5,0,1,0,0,0,0.45,0,-0.89\n";
    folder.write("wrist.csv", text);
    const Ended ended = call(
        {"run", EXAMPLES "/calm-wrist.yaml", "--input", "wrist=wrist.csv", "--output", "result=calm.csv"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    const std::string table = folder.read("calm.csv");
    EXPECT_TRUE(table.starts_with("t,accel[0],accel[1],accel[2]\n0,")) << table.substr(0, 100);
    EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 51);
    const double last = std::stod(table.substr(table.rfind("\n0.49,") + 6));
    EXPECT_TRUE(Support::agree(last, 0.5, Support::withinRel(1e-12))) << "a constant passes a low-pass";
}

TEST_F(Command, TwoRunsGiveTheSameBytesAndAGainOfOneGivesThemBack) {
    std::string text = "t,x\n";
    for (int i = 0; i < 2000; ++i)
        text += std::to_string(0.01 * i) + "," + std::to_string(0.7 * i * i - 13.0 * i) + "\n";
    folder.write("in.csv", text);
    const Strings run{"run", "--param", "factor=0.1", "g.yaml"};
    ASSERT_EQ(call(run).exitCode, 0);
    const std::string first = folder.read("out.csv");
    ASSERT_EQ(call(run).exitCode, 0);
    EXPECT_EQ(folder.read("out.csv"), first);
    ASSERT_EQ(call({"run", "--param", "factor=1", "--input", "in=out.csv", "--output", "out=back.csv",
                    "--set", "in.pins={x: ['x[0]']}", "g.yaml"})
                  .exitCode,
              0);
    EXPECT_EQ(folder.read("back.csv"), first);
}

TEST_F(Command, ThreadsThatShareTheWorkChangeNoByte) {
    std::string text = "t,x\n";
    for (int i = 0; i < 40000; ++i)
        text += std::to_string(0.01 * i) + "," + std::to_string(0.7 * i) + "\n";
    folder.write("in.csv", text);
    ASSERT_EQ(call({"run", "g.yaml"}).exitCode, 0);
    const std::string first = folder.read("out.csv");
    const Ended ended = call({"run", "g.yaml", "--threads", "2"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_TRUE(folder.read("out.csv") == first);
    for (const char* const threads : {"0", "-1", "2.5", "many", "257"}) {
        const Ended refused = call({"run", "g.yaml", "--threads", threads});
        EXPECT_EQ(refused.exitCode, 2) << threads;
        EXPECT_NE(refused.err.find("expected a whole number from 1 to 256"), std::string::npos)
            << refused.err;
    }
    const Ended live = call({"run", "g.yaml", "--live", "--threads", "2"});
    EXPECT_EQ(live.exitCode, 2) << "there every layout has a thread";
}

} // namespace
