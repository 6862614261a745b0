// SPDX-License-Identifier: MIT
#include "tests/cli/Program.h"
#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <regex>
#include <string>
#include <vector>

namespace {

using Support::Ended;
using Support::Fifo;
using Support::Streams;
using Support::waitUntil;
using Strings = std::vector<std::string>;

constexpr const char* kGraph = R"yaml(format: 1
name: the test
blocks:
  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: [x]}}}
  - {id: gain, type: FilterGain, properties: {Gain: 2}}
  - {id: count, type: FilterPeriodCounter}
  - {id: out, type: RecordingSink, properties: {file: out.csv}}
connections:
  - {from: in, to: gain}
  - {from: in, to: count}
  - {from: gain, to: out.x}
)yaml";

/// `quillmere run --live` with pipes whose other ends are the test.
class LiveCommand : public testing::Test {
protected:
    LiveCommand() {
        folder.write("g.yaml", kGraph);
        folder.write("in.csv", "t,x\n0,1\n0.5,2\n1,3\n");
    }

    static Strings quillmere(Strings arguments) {
        arguments.insert(arguments.begin(), QUILLMERE);
        return arguments;
    }
    Ended call(const Strings& arguments, const Streams& streams = {}) const {
        return Support::runProgram(quillmere(arguments), folder.path(""), streams);
    }
    void start(const Strings& arguments, const Streams& streams = {}) {
        program.emplace(quillmere(arguments), folder.path(""), streams);
    }
    /// Starts a run that reads standard input and listens at `control`, and waits until it answers.
    void startControlled(const Strings& more = {}) {
        input.emplace(folder.path("input"));
        input->write("t,x\n");
        Strings arguments{"run", "--live", "g.yaml", "--input", "in=-", "--control", "control"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        start(arguments, {.in = "input", .out = ""});
        EXPECT_TRUE(waitUntil([&] { return ctl({"state"}).exitCode == 0; }));
    }
    Ended ctl(Strings request, const std::string& path = "control") const {
        request.insert(request.begin(), {"ctl", path});
        return call(request);
    }
    /// Waits until the program has written `text` to a file.
    bool waitForFile(const std::string& name, const std::string& text) const {
        return waitUntil([&] { return folder.has(name) && folder.read(name) == text; });
    }

    Support::TemporaryFolder folder;
    std::optional<Fifo> input;
    std::optional<Support::Program> program;
};

const std::regex kSummary("the test: [0-9]+ rows? \\(in [0-9.]+ s, [0-9]+ rows/s\\)\n"
                          "  in   ([0-9]+) rows? from ([^,]*)(?:, .*)?\n"
                          "  out  ([0-9]+) rows? to (.*)\n");

TEST_F(LiveCommand, PipesStandardInputToStandardOutputRowByRow) {
    Fifo in(folder.path("input"));
    const Fifo out(folder.path("output"));
    in.write("t,x\n");
    start({"run", "--live", "g.yaml", "--input", "in=-", "--output", "out=-"},
          {.in = "input", .out = "output"});
    in.write("0,1\n");
    EXPECT_EQ(out.readLine(), "t,x[0]\n");
    EXPECT_EQ(out.readLine(), "0,2\n") << "before the next row has come";
    in.write("0.25,");
    in.write("-3\n");
    EXPECT_EQ(out.readLine(), "0.25,-6\n");
    in.close();
    const Ended ended = program->wait();
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    std::smatch summary;
    ASSERT_TRUE(std::regex_match(ended.err, summary, kSummary)) << "not among the rows, but: " << ended.err;
    EXPECT_EQ(summary[2], "standard input");
    EXPECT_EQ(summary[3], "2");
    EXPECT_EQ(summary[4], "standard output");
    EXPECT_EQ(folder.count(), 4) << "no file beside them";
}

TEST_F(LiveCommand, ReadsAndWritesNamedPipes) {
    Fifo in(folder.path("input"));
    const Fifo out(folder.path("output"));
    in.write("t,x\n5,1\n");
    start({"run", "--live", "g.yaml", "--input", "in=input", "--output", "out=output"});
    EXPECT_EQ(out.readLine(), "t,x[0]\n");
    EXPECT_EQ(out.readLine(), "5,2\n");
    in.close();
    const Ended ended = program->wait();
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_TRUE(std::regex_match(ended.out, kSummary)) << ended.out;
    EXPECT_EQ(ended.err, "");
}

TEST_F(LiveCommand, StandardInputMayBeALongFileThatAnotherHasReadTheBeginOf) {
    std::string rows = "not of the recording\nt,x\n", results = "t,x[0]\n"; // more than is read in one piece
    for (int row = 0; row < 50000; ++row) {
        rows += std::to_string(row) + ",1.25\n";
        results += std::to_string(row) + ",2.5\n";
    }
    folder.write("rows", rows);
    for (const std::string live : {"", " --live --speed max"}) {
        const std::string command =
            "read line; exec " QUILLMERE " run g.yaml --quiet --input in=- --output out=-" + live;
        const Ended ended =
            Support::runProgram({"/bin/sh", "-c", command}, folder.path(""), {.in = "rows", .out = ""});
        EXPECT_EQ(ended.exitCode, 0) << ended.err;
        EXPECT_EQ(ended.err, "") << live;
        EXPECT_TRUE(ended.out == results) << live << ": " << ended.out.size() << " bytes";
    }
}

TEST_F(LiveCommand, StandardInputMayBeAFileAndTheRunAnOfflineOne) {
    folder.write("rows", "t,x\n0,1\n1,2\n");
    for (const Strings& live : {Strings{}, Strings{"--live", "--speed", "max"}}) {
        Strings arguments{"run", "g.yaml", "--input", "in=-", "--output", "out=-"};
        arguments.insert(arguments.end(), live.begin(), live.end());
        const Ended ended = call(arguments, {.in = "rows", .out = ""});
        EXPECT_EQ(ended.exitCode, 0) << ended.err;
        EXPECT_EQ(ended.out, "t,x[0]\n0,2\n1,4\n");
        EXPECT_TRUE(std::regex_match(ended.err, kSummary)) << ended.err;
    }
}

TEST_F(LiveCommand, SpeedIsAFactorOrTheMaximum) {
    for (const char* const speed : {"max", "1000", "1e3", "0.5e4"}) {
        const Ended ended = call({"run", "--live", "g.yaml", "--speed", speed, "--quiet"});
        EXPECT_EQ(ended.exitCode, 0) << speed << ": " << ended.err;
        EXPECT_EQ(ended.out + ended.err, "") << speed;
        EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,2\n0.5,4\n1,6\n") << speed;
        std::filesystem::remove(folder.path("out.csv"));
    }
    for (const char* const speed : {"0", "-1", "nan", "inf", "1e400", "fast", "2x", "+2", " 2", ""}) {
        const Ended ended = call({"run", "--live", "g.yaml", std::string("--speed=") + speed});
        EXPECT_EQ(ended.exitCode, 2) << speed;
        EXPECT_NE(ended.err, "") << speed;
        EXPECT_FALSE(folder.has("out.csv")) << speed;
    }
    EXPECT_NE(call({"run", "--live", "g.yaml", "--speed", "fast"})
                  .err.find("found 'fast'; expected a factor above 0, or max"),
              std::string::npos);
}

TEST_F(LiveCommand, ATimeColumnOfAPipeThatIsNamedForAnotherUnitIsToldAtTheEnd) {
    const Ended ended = Support::runProgram({"/bin/sh", "-c",
                                             "printf 'time_ms,x\\n0,1\\n10,2\\n' | " QUILLMERE
                                             " run --quiet g.yaml --input in=- --set in.time=time_ms"},
                                            folder.path(""));
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(
        ended.err,
        "standard input: warning: the time stamps of the column 'time_ms', whose name says milliseconds, are "
        "taken for seconds, which gives a median rate of 0.1 rows a second; if the name is right, divide "
        "them, or 'rate: 100' in place of 'time' counts rows instead\n");
}

TEST_F(LiveCommand, WhatBelongsToLiveRunsIsRefusedWithoutLive) {
    for (const Strings& options :
         {Strings{"--speed", "2"}, Strings{"--control", "control"}, Strings{"--stats"}}) {
        Strings arguments{"run", "g.yaml"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Ended ended = call(arguments);
        EXPECT_EQ(ended.exitCode, 2) << options.front();
        EXPECT_EQ(ended.err,
                  "quillmere: found " + options.front() + " without --live; expected both, or neither\n");
        EXPECT_EQ(folder.count(), 2) << options.front();
    }
}

TEST_F(LiveCommand, StatisticsArePrintedAtTheEnd) {
    const Ended ended = call({"run", "--live", "g.yaml", "--speed", "max", "--stats", "--quiet"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_TRUE(std::regex_match(
        ended.out, std::regex("block  type                 layout  steps  in  out  lost     ms\n"
                              "in     RecordingSource      main        3   0    3     0  [0-9.]+\n"
                              "gain   FilterGain           main        3   3    3     0  [0-9.]+\n"
                              "count  FilterPeriodCounter  main        3   3    6     0  [0-9.]+\n"
                              "out    RecordingSink        main        3   3    0     0  [0-9.]+\n"
                              "\n"
                              "link                        received  taken  waiting  lost\n"
                              "in.x         -> gain.input         3      3        0     0\n"
                              "in.x         -> count.in           3      3        0     0\n"
                              "gain.output  -> out.x              3      3        0     0\n")))
        << ended.out;
    EXPECT_EQ(ended.err, "");
}

TEST_F(LiveCommand, WhatAFailedRunHasDoneIsPrintedToo) {
    folder.write("in.csv", "t,x\n0,1\n1,oops\n");
    const Ended ended = call({"run", "--live", "g.yaml", "--speed", "max", "--stats"});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_TRUE(ended.out.starts_with("block  type")) << ended.out;
    EXPECT_EQ(ended.err,
              "quillmere: block 'in' (RecordingSource) at 0 s: in.csv:3: column 'x': found \"oops\"; "
              "expected a number\n  incomplete: 1 row in out.csv.partial\n");
}

TEST_F(LiveCommand, StatisticsDoNotGoAmongTheRows) {
    const Ended ended =
        call({"run", "--live", "g.yaml", "--speed", "max", "--stats", "--output", "out=-", "--quiet"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.out, "t,x[0]\n0,2\n0.5,4\n1,6\n");
    EXPECT_TRUE(ended.err.starts_with("block  type")) << ended.err;
}

TEST_F(LiveCommand, AGeneratorRunsUntilItsLimit) {
    folder.write("gen.yaml", "format: 1\nname: ramp\nblocks:\n"
                             "  - {id: gen, type: FilterFunctionGenerator, properties: {Mode: triangular, "
                             "SignalPeriod: 4, SignalAmplitude: 1, SampleRate: 1}}\n"
                             "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
                             "connections: [{from: gen, to: out.x}]\n");
    EXPECT_EQ(call({"run", "--live", "gen.yaml", "--steps", "3", "--speed", "max"}).exitCode, 0);
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n1,-1\n2,-0.5\n3,0\n");
    EXPECT_EQ(call({"run", "--live", "gen.yaml", "--duration", "2", "--speed", "100"}).exitCode, 0);
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n1,-1\n2,-0.5\n");
    start({"run", "--live", "gen.yaml", "--control", "control", "--speed", "100"});
    ASSERT_TRUE(waitUntil([&] { return ctl({"stop"}).exitCode == 0; }))
        << "without a limit, until it is told";
    EXPECT_EQ(program->wait().exitCode, 0);
    EXPECT_EQ(call({"run", "--live", "g.yaml", "--steps", "3"}).exitCode, 2) << "the recording ends it";
}

// Control from outside

TEST_F(LiveCommand, SettingsAreReadAndTurnedWhileItRuns) {
    startControlled();
    EXPECT_EQ(ctl({"get", "gain.Gain"}).out, "2\n");
    const Ended set = ctl({"set", "gain.Gain", "-2.5"});
    EXPECT_EQ(set.exitCode, 0);
    EXPECT_EQ(set.out + set.err, "");
    EXPECT_EQ(ctl({"get", "gain.Gain"}).out, "-2.5\n") << "a value that looks like an option";
    EXPECT_EQ(ctl({"list", "gain.*"}).out, "gain.Gain = -2.5  (a number)\n");
    EXPECT_EQ(ctl({"fire", "count.Reset"}).exitCode, 0);
    EXPECT_TRUE(ctl({"list"}).out.find("count.Reset  (command)\n") != std::string::npos);
    input->write("0,2\n");
    ASSERT_TRUE(waitForFile("out.csv.partial", "t,x[0]\n0,-5\n"));
    EXPECT_EQ(ctl({"state"}).out, "running, 1 row, 1 round\n");
    EXPECT_TRUE(ctl({"stats"}).out.starts_with("block  type ")) << "an empty line within it is no end";
    EXPECT_NE(ctl({"stats"}).out.find("\n\nlink "), std::string::npos);
    EXPECT_EQ(ctl({"stop"}).exitCode, 0);
    const Ended ended = program->wait();
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,-5\n");
    EXPECT_FALSE(folder.has("control"));
    EXPECT_FALSE(folder.has("control.lock"));
}

TEST_F(LiveCommand, ARefusalGoesToTheErrorOutputWithExitCodeOne) {
    startControlled();
    const struct {
        Strings request;
        const char* refusal;
    } rows[] = {
        {{"set", "gain.Gain", "high"}, "found 'high'; expected a number"},
        {{"set", "gain.Gian", "1"},
         "found the setting 'Gian' of 'gain'; expected one of Gain; did you mean Gain?"},
        {{"set", "gain.Gain"}, "found no value for 'gain.Gain'; expected 'set BLOCK.SETTING VALUE'"},
        {{"get", "gian.Gain"},
         "found the block 'gian'; expected one of in, gain, count and out; did you mean gain?"},
        {{"sing"}, "found 'sing'; expected one of set, get, fire, list, watch, stats, state, stop and help"},
        {{"watch", "none.*"}, "found no setting that 'none.*' matches; expected one at least"},
    };
    for (const auto& row : rows) {
        const Ended ended = ctl(row.request);
        EXPECT_EQ(ended.exitCode, 1) << row.refusal;
        EXPECT_EQ(ended.err, "quillmere: " + std::string(row.refusal) + "\n");
        EXPECT_EQ(ended.out, "");
    }
    EXPECT_EQ(ctl({"stop"}).exitCode, 0);
}

TEST_F(LiveCommand, AWatchTellsChangesUntilTheRunEnds) {
    startControlled();
    const Fifo watched(folder.path("watched"));
    Support::Program watch(quillmere({"ctl", "control", "watch", "gain.*"}), folder.path(""),
                           {.in = "", .out = "watched"});
    EXPECT_EQ(watched.readLine(), "gain.Gain = 2\n");
    EXPECT_EQ(ctl({"set", "gain.Gain", "3"}).exitCode, 0);
    EXPECT_EQ(watched.readLine(), "gain.Gain = 3\n");
    EXPECT_EQ(ctl({"set", "gain.Gain", "4"}).exitCode, 0);
    EXPECT_EQ(watched.readLine(), "gain.Gain = 4\n");
    input->close();
    EXPECT_EQ(program->wait().exitCode, 0);
    EXPECT_EQ(watch.wait().exitCode, 0);
}

TEST_F(LiveCommand, NamesWithBlanksNeedNoMoreThanTheShellsQuotes) {
    folder.write("g.yaml", std::regex_replace(std::string(kGraph), std::regex("type: FilterPeriodCounter"),
                                              "type: FilterBandPass"));
    startControlled();
    const std::string name = "count.Low Cutoff Freq. (relative)";
    EXPECT_EQ(ctl({"set", name, "0.125"}).exitCode, 0);
    EXPECT_EQ(ctl({"get", name}).out, "0.125\n");
    EXPECT_EQ(ctl({"list", name}).out.substr(0, name.size() + 8), name + " = 0.125");
    EXPECT_EQ(ctl({"set", name, "0.25", " "}).exitCode, 0) << "what is left over is blank";
    EXPECT_EQ(ctl({"stop"}).exitCode, 0);
}

TEST_F(LiveCommand, WordsInBracketsAreAMatrix) {
    const std::string text =
        std::regex_replace(std::string(kGraph), std::regex("FilterPeriodCounter"), "FilterIIR");
    folder.write("g.yaml", std::regex_replace(text, std::regex("to: count"), "to: count.in"));
    startControlled();
    for (const std::string value : {"[[1, 2]]", "[[1.5]]", "[[1, 2, 3, 4]]"}) {
        const Ended set = ctl({"set", "count.XCoeffs", value});
        EXPECT_EQ(set.exitCode, 0) << set.err;
        EXPECT_EQ(ctl({"get", "count.XCoeffs"}).out, value + "\n");
    }
    EXPECT_EQ(ctl({"set", "count.XCoeffs", "[[5,", "6]]"}).exitCode, 0) << "in two words";
    EXPECT_EQ(ctl({"get", "count.XCoeffs"}).out, "[[5, 6]]\n");
    EXPECT_EQ(ctl({"stop"}).exitCode, 0);
}

TEST_F(LiveCommand, ARunThatDoesNotAnswerIsNotWaitedForForEver) {
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = folder.path("mute");
    path.copy(address.sun_path, path.size());
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(listener, 4), 0);
    const Ended ended = call({"ctl", "--timeout", "1", "mute", "state"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.err, "mute: found no answer within 1 s; expected one sooner, or a longer --timeout\n");
    start({"ctl", "mute", "state"});
    // The first is gone by now, and still in the queue.
    ::close(::accept(listener, nullptr, nullptr));
    const int client = ::accept(listener, nullptr, nullptr);
    const std::string piece(std::size_t{1} << 20, 'x');
    ssize_t sent = 0;
    std::size_t all = 0;
    while (all < (std::size_t{1} << 28) &&
           (sent = ::send(client, piece.data(), piece.size(), MSG_NOSIGNAL)) > 0)
        all += static_cast<std::size_t>(sent);
    EXPECT_LT(all, std::size_t{1} << 28) << "it kept everything";
    ::close(client);
    ::close(listener);
    const Ended flooded = program->wait();
    EXPECT_EQ(flooded.exitCode, 2);
    EXPECT_EQ(flooded.err,
              "mute: found a line of more than 67108864 bytes; expected the --control of a run\n");
}

TEST_F(LiveCommand, WithoutARunNothingIsAsked) {
    const Ended ended = ctl({"state"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.err, "control: found no run there; expected the --control of one that runs\n");
    EXPECT_EQ(call({"ctl"}).exitCode, 2);
    EXPECT_EQ(call({"ctl", "control"}).exitCode, 2);
    EXPECT_EQ(ctl({"set", "a.b", "1\n2"}).exitCode, 2) << "one request is one line";
    EXPECT_EQ(call({"ctl", "--help"}).exitCode, 0);
    EXPECT_TRUE(call({"ctl", "--version"}).out.starts_with("quillmere " QUILLMERE_VERSION "\n"));
}

TEST_F(LiveCommand, OneRunAtATimeIsControlledAtAPath) {
    startControlled();
    struct stat facts {};
    ASSERT_EQ(::stat(folder.path("control").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 07777u, 0600u);
    const Ended second =
        call({"run", "--live", "g.yaml", "--control", "control", "--output", "out=other.csv"});
    EXPECT_EQ(second.exitCode, 2);
    EXPECT_EQ(second.err, "control: another run is controlled there; expected a name of its own\n");
    EXPECT_FALSE(folder.has("other.csv.partial"));
    EXPECT_EQ(ctl({"state"}).exitCode, 0) << "the first goes on";
    program->signal(SIGKILL);
    EXPECT_EQ(program->wait().exitCode, -SIGKILL);
    EXPECT_TRUE(folder.has("control"));
    EXPECT_EQ(ctl({"state"}).exitCode, 2);
    input.reset();
    startControlled();
    EXPECT_EQ(ctl({"stop"}).exitCode, 0) << "what it left is taken over";
    EXPECT_EQ(program->wait().exitCode, 0);
    EXPECT_FALSE(folder.has("control"));
}

TEST_F(LiveCommand, AnEmptyControlIsRefused) {
    const Ended ended = call({"run", "--live", "g.yaml", "--control", ""});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.err, "'': found a name of 0 bytes for a socket; expected 1 to 107\n");
    EXPECT_EQ(folder.count(), 2) << "no result is begun";
}

TEST_F(LiveCommand, AFileIsNeverTakenForAControlSocket) {
    const Ended ended = call({"run", "--live", "g.yaml", "--control", "in.csv"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.err, "in.csv: found something that is no socket; expected a name that is free\n");
    EXPECT_EQ(folder.read("in.csv"), "t,x\n0,1\n0.5,2\n1,3\n");
    EXPECT_EQ(folder.count(), 2);
}

// Ends

TEST_F(LiveCommand, SignalsEndTheRunAndKeepWhatWasWritten) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        startControlled();
        input->write("0,1\n");
        ASSERT_TRUE(waitForFile("out.csv.partial", "t,x[0]\n0,2\n"));
        program->signal(signal);
        const Ended ended = program->wait();
        EXPECT_EQ(ended.exitCode, 1) << signal;
        EXPECT_EQ(ended.err, "quillmere: interrupted\n  incomplete: 1 row in out.csv.partial\n");
        EXPECT_EQ(folder.read("out.csv.partial"), "t,x[0]\n0,2\n");
        EXPECT_FALSE(folder.has("out.csv"));
        EXPECT_FALSE(folder.has("control")) << signal;
        input.reset();
    }
}

TEST_F(LiveCommand, AReaderThatGoesAwayEndsTheRun) {
    Fifo in(folder.path("input"));
    Fifo out(folder.path("output"));
    in.write("t,x\n0,1\n");
    start({"run", "--live", "g.yaml", "--input", "in=-", "--output", "out=-"},
          {.in = "input", .out = "output"});
    EXPECT_EQ(out.readLine(), "t,x[0]\n");
    EXPECT_EQ(out.readLine(), "0,2\n");
    out.close();
    in.write("1,2\n");
    const Ended ended = program->wait();
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(ended.err, "quillmere: block 'out' (RecordingSink) at 1 s: standard output: cannot be written: "
                         "Broken pipe\n  incomplete: 1 row in standard output\n");
}

TEST_F(LiveCommand, ControlCEndsARunThatNobodyReads) {
    std::string text = "t,x\n";
    for (int i = 0; i < 20000; ++i)
        text += std::to_string(i) + ",0.123456\n";
    folder.write("in.csv", text);
    const Fifo out(folder.path("output"));
    start({"run", "--live", "g.yaml", "--speed", "max", "--output", "out=-", "--control", "control"},
          {.in = "", .out = "output"});
    // It answers as long as it isn't asked for what the step holds.
    ASSERT_TRUE(waitUntil([&] { return ctl({"help"}).exitCode == 0; }));
    EXPECT_EQ(out.readLine(), "t,x[0]\n");
    program->signal(SIGINT);
    const Ended ended = program->wait();
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_TRUE(ended.err.starts_with("quillmere: interrupted\n")) << ended.err;
}

TEST_F(LiveCommand, AFullDiskEndsTheRun) {
    const Ended ended = call({"run", "--live", "g.yaml", "--speed", "max", "--output", "out=/dev/full"});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(ended.err,
              "quillmere: block 'out' (RecordingSink) at 0 s: /dev/full: cannot be written: No space "
              "left on device\n  incomplete: 0 rows in /dev/full\n");
}

TEST_F(LiveCommand, AResultMayGoNowhere) {
    const Ended ended = call({"run", "--live", "g.yaml", "--speed", "max", "--output", "out=/dev/null"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_TRUE(std::regex_match(ended.out, kSummary)) << ended.out;
}

TEST_F(LiveCommand, ABlockThatRaisesNamesItselfInItsLayout) {
    folder.write("g.yaml",
                 "format: 1\nlayouts: [{id: one}, {id: two}]\nblocks:\n"
                 "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
                 "  - {id: hot, type: OddFailing, layout: two, properties: {good: 2}}\n"
                 "  - {id: out, type: RecordingSink, layout: two, properties: {file: out.csv}}\n"
                 "connections: [{from: in, to: hot, buffer: 9}, {from: hot, to: out.x}]\n");
    const Ended ended = call({"run", "--live", "g.yaml", "--speed", "max", "--plugin", ODD_PLUGIN});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(ended.err, "quillmere: block 'hot' (OddFailing of " +
                             std::filesystem::canonical(ODD_PLUGIN).string() +
                             ") at 1 s: Runtime exception: overheated\n"
                             "  incomplete: 2 rows in out.csv.partial\n");
    EXPECT_EQ(folder.read("out.csv.partial"), "t,x[0]\n0,1\n0.5,2\n");
}

} // namespace
