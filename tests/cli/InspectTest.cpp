// SPDX-License-Identifier: MIT
#include "tests/cli/Program.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace {

using Support::Ended;
using Strings = std::vector<std::string>;

constexpr const char* kWalk = "time,acc_x,acc_y,acc_z,level\n"
                              "0,0,0,9.81,3\n0.01,0,9.81,0,3\n0.02,9.81,0,0,3\n0.03,0,0,9.81,3\n";

class InspectCommand : public testing::Test {
protected:
    InspectCommand() { folder.write("walk.csv", kWalk); }
    Ended call(Strings arguments, const Support::Streams& streams = {}) const {
        arguments.insert(arguments.begin(), {QUILLMERE, "inspect"});
        return Support::runProgram(arguments, folder.path(""), streams);
    }
    Ended run(const std::string& graph) const {
        return Support::runProgram({QUILLMERE, "run", "--quiet", graph}, folder.path(""));
    }
    Support::TemporaryFolder folder;
};

TEST_F(InspectCommand, TellsWhatIsInARecording) {
    const Ended ended = call({"walk.csv"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.out, "walk.csv: 4 rows, 5 columns, 0.03 s\n"
                         "  form   a table of the plain form: commas, one row of column names\n"
                         "  times  column 'time', from 0 s to 0.03 s\n"
                         "  rate   none stated, 100 rows/s measured\n"
                         "  steps  5 % up to 0.01 s, median 0.01 s, 95 % up to 0.01 s, largest 0.01 s\n"
                         "  odd    0 time stamps equal to the ones before\n"
                         "         0 time stamps that go back\n"
                         "         0 gaps of more than ten median steps\n"
                         "\n"
                         "  column  unit  smallest  largest  missing\n"
                         "  time    -     0         0.03              times\n"
                         "  acc_x   -     0         9.81                        __\"_\n"
                         "  acc_y   -     0         9.81                        _\"__\n"
                         "  acc_z   -     0         9.81                        \"__\"\n"
                         "  level   -     3         3                 constant  ----\n"
                         "\n"
                         "  no unit is stated for acc, whose median length is 9.81: m/s^2?\n");
    EXPECT_EQ(folder.count(), 1) << "nothing is written unasked";
}

TEST_F(InspectCommand, TellsTheSameAsData) {
    const Ended ended = call({"walk.csv", "--json"});
    EXPECT_EQ(ended.exitCode, 0);
    const auto told = nlohmann::json::parse(ended.out);
    EXPECT_EQ(told["rows"], 4);
    EXPECT_EQ(told["times"]["measuredRate"], 100.0);
    EXPECT_EQ(told["times"]["gaps"]["count"], 0);
    EXPECT_EQ(told["columns"][1]["name"], "acc_x");
    EXPECT_EQ(told["columns"][1]["unit"], nullptr);
    EXPECT_EQ(told["columns"][1]["picture"]["largest"].size(), 4U);
    EXPECT_EQ(told["groups"][0]["guessedUnit"], "m/s^2");
}

TEST_F(InspectCommand, WritesAGraphThatRuns) {
    ASSERT_EQ(call({"walk.csv", "--graph", "walk.yaml", "--profile", "profile.yaml"}).exitCode, 0);
    EXPECT_TRUE(folder.read("profile.yaml")
                    .ends_with("file: walk.csv\npins: {acc: [acc_x, acc_y, acc_z], level: [level]}\n"))
        << folder.read("profile.yaml");
    const Ended ran = run("walk.yaml");
    EXPECT_EQ(ran.exitCode, 0) << ran.err;
    EXPECT_TRUE(folder.read("walk-result.csv").find("\n0.02,9.81,0,0,3\n") != std::string::npos)
        << folder.read("walk-result.csv");
    // Its own files may be written again, others not.
    EXPECT_EQ(call({"walk.csv", "--graph", "walk.yaml"}).exitCode, 0);
    folder.write("mine.yaml", "mine: 1\n");
    const Ended refused = call({"walk.csv", "--graph", "mine.yaml"});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_EQ(refused.out, "");
    EXPECT_TRUE(refused.err.starts_with("quillmere: --graph: found the file 'mine.yaml'")) << refused.err;
    EXPECT_EQ(folder.read("mine.yaml"), "mine: 1\n");
    EXPECT_EQ(call({"walk.csv", "--graph", "mine.yaml", "--overwrite"}).exitCode, 0);
}

TEST_F(InspectCommand, TakesUnitsThatTheFileDoesNotState) {
    const Strings said{"walk.csv", "--set", "units={acc*: m/s^2}", "--graph", "walk.yaml"};
    const Ended told = call(said);
    EXPECT_EQ(told.exitCode, 0) << told.err;
    EXPECT_NE(told.out.find("acc_x   m/s^2  0 "), std::string::npos) << told.out;
    EXPECT_EQ(told.out.find("no unit is stated for acc"), std::string::npos) << told.out;
    EXPECT_EQ(run("walk.yaml").exitCode, 0);
    EXPECT_TRUE(folder.read("walk-result.csv").starts_with("t,acc[0] [m/s^2],acc[1] [m/s^2],acc[2] [m/s^2],"))
        << folder.read("walk-result.csv");
    const Ended slip = call({"walk.csv", "--set", "units={bcc*: g}"});
    EXPECT_EQ(slip.exitCode, 2);
    EXPECT_TRUE(slip.err.ends_with("found no column that fits 'bcc*'; expected one of walk.csv: time, acc_x, "
                                   "acc_y, acc_z and level\n"))
        << slip.err;
}

TEST_F(InspectCommand, WritesAGraphThatRunsOverABadRecording) {
    folder.write("bad.csv",
                 "time,x,y,z,e\n0,1,2,3,4\n0.1,1,,3,4\n0.2,oops,2,3,4\n0.3,1\nnan,1,2,3,4\n0.1,1,2,3,\n");
    EXPECT_EQ(call({"bad.csv", "--graph", "bad.yaml"}).exitCode, 0);
    const Ended ran = run("bad.yaml");
    EXPECT_EQ(ran.exitCode, 0) << ran.err;
}

TEST_F(InspectCommand, NeverReplacesTheRecording) {
    const Ended ended = call({"walk.csv", "--graph", "./walk.csv", "--overwrite"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.err,
              "quillmere: --graph: found the recording 'walk.csv'; expected a file that isn't read\n");
    EXPECT_EQ(folder.read("walk.csv"), kWalk);
    EXPECT_EQ(call({"walk.csv", "--graph", "a.yaml", "--profile", "a.yaml"}).exitCode, 2);
}

TEST_F(InspectCommand, AsksForARateWhereAGraphNeedsOne) {
    folder.write("a.csv", "a,b\n1,2\n3,4\n");
    const Ended ended = call({"a.csv", "--graph", "a.yaml"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.err,
              "quillmere: a.csv: found no column of times, and no rate; expected '--set time=COLUMN' or "
              "'--set rate=N' with rows a second\n");
    EXPECT_FALSE(folder.has("a.yaml"));
    EXPECT_EQ(call({"a.csv", "--graph", "a.yaml", "--set", "rate=50"}).exitCode, 0);
    EXPECT_EQ(run("a.yaml").exitCode, 0);
    EXPECT_EQ(call({"a.csv", "--set", "speed=50"}).exitCode, 2);
    EXPECT_EQ(call({"a.csv", "--set", "rate"}).exitCode, 2);
}

TEST_F(InspectCommand, ReadsStandardInput) {
    const Ended ended = call({"-"}, {.in = "walk.csv", .out = {}});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_TRUE(ended.out.starts_with("standard input: 4 rows, ")) << ended.out;
}

TEST_F(InspectCommand, PrintsTheGraphAlone) {
    const Ended ended = call({"walk.csv", "--graph", "-"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_TRUE(ended.out.starts_with("# Written by 'quillmere inspect'.\n")) << ended.out;
    EXPECT_TRUE(ended.err.starts_with("walk.csv: 4 rows")) << ended.err;
}

TEST_F(InspectCommand, RefusesWhatIsNoRecording) {
    EXPECT_EQ(call({"nothing.csv"}).exitCode, 2);
    EXPECT_EQ(call({"."}).exitCode, 2);
    folder.write("empty.csv", "");
    EXPECT_EQ(call({"empty.csv"}).exitCode, 2);
    EXPECT_EQ(call({}).exitCode, 2);
    for (const char* const begin : {"\x89PNG\r\n\x1A\n", "\xFF\xD8\xFF\xE0", "GIF89a", "<svg xmlns=''>\n"}) {
        folder.write("walk.dat", begin + std::string(200, ','));
        const Ended picture = call({"walk.dat"});
        EXPECT_EQ(picture.exitCode, 2);
        EXPECT_EQ(picture.err, "walk.dat: found a picture; expected a recording\n");
    }
    folder.write("r.html", "<!DOCTYPE html>\n<html>\n");
    EXPECT_EQ(call({"r.html"}).err, "r.html: found a page for a browser; expected a recording\n");
}

TEST_F(InspectCommand, ReplacesNothingThatIsNotItsOwn) {
    folder.write("mine.yaml", "mine: 1\n");
    EXPECT_EQ(call({"walk.csv", "--graph", "mine.yaml"}).err,
              "quillmere: --graph: found the file 'mine.yaml', which no run has written; expected another "
              "name, or --overwrite to replace it\n");
    EXPECT_EQ(folder.read("mine.yaml"), "mine: 1\n");
}

TEST_F(InspectCommand, TellsHowToSettleWhatIsUnclear) {
    folder.write("odd.csv", "t,a\n0,1\n1,2\n");
    const Ended ended = call({"odd.csv"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.err,
              "odd.csv: column 't': found steps of 1 without a unit, which may count rows; expected "
              "'timeUnit:' and s, ms, us or ns, or 'rate:' and rows a second\n"
              "quillmere: here a property is given by '--set PROPERTY=VALUE'\n");
    EXPECT_EQ(call({"odd.csv", "--set", "timeUnit=s"}).exitCode, 0);
}

TEST_F(InspectCommand, LetsNoNameMoveTheCursor) {
    folder.write("odd.csv", "time,a\x1b[31m\n0,1\n0.1,2\n");
    const Ended ended = call({"odd.csv"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.out.find('\x1b'), std::string::npos);
    EXPECT_NE(ended.out.find("a\\x1b[31m"), std::string::npos) << ended.out;
}

} // namespace
