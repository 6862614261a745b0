// SPDX-License-Identifier: MIT
#include "tests/cli/GainFixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using Support::Ended;
using Strings = std::vector<std::string>;

constexpr const char* kResult = "t,x[0]\n0,1\n0.5,2\n1,3\n";

/// Two results, one of which gets three elements at a time.
constexpr const char* kTwoSinks = R"yaml(format: 1
name: two results
blocks:
  - {id: in, type: RecordingSource, properties: {file: wide.csv, time: t, pins: {a: [x, y, z], b: [f]}}}
  - {id: gain, type: FilterGain, properties: {Gain: 2}}
  - {id: out, type: RecordingSink, properties: {file: out.csv}}
  - {id: flags, type: RecordingSink, properties: {file: flags.csv, columns: {on: [resting]}}}
connections:
  - {from: in.a, to: gain}
  - {from: gain, to: out.accel}
  - {from: in.b, to: flags.on}
)yaml";

class RunPicture : public Support::GainFixture {
protected:
    Ended run(Strings arguments) const {
        arguments.insert(arguments.begin(), {"run", "--quiet"});
        return call(arguments);
    }
    bool getIsThere(const std::string& name) const { return std::filesystem::exists(folder.path(name)); }
};

TEST_F(RunPicture, ShowsWhatTheSinkGot) {
    const Ended ended = run({"g.yaml", "--picture", "p.svg"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_EQ(folder.read("out.csv"), kResult);
    const std::string svg = folder.read("p.svg");
    EXPECT_NE(svg.find(">the test</text>"), std::string::npos);
    EXPECT_NE(svg.find("x[0], between 1 and 3"), std::string::npos) << svg.substr(0, 500);
    EXPECT_EQ(run({"g.yaml", "--picture", "p.svg"}).exitCode, 0) << "one of its own may go";
}

TEST_F(RunPicture, HasAPartForEachResult) {
    folder.write("two.yaml", kTwoSinks);
    folder.write("wide.csv", "t,x,y,z,f\n0,1,2,3,0\n0.5,4,5,6,1\n1,7,8,9,0\n");
    ASSERT_EQ(run({"two.yaml", "--picture", "p.svg"}).exitCode, 0);
    const std::string svg = folder.read("p.svg");
    EXPECT_NE(svg.find("out: accel: accel[0], accel[1], accel[2], between 2 and 18"), std::string::npos);
    EXPECT_NE(svg.find("flags: resting"), std::string::npos);
}

TEST_F(RunPicture, ShowsWhatWentThroughAPipe) {
    const Ended ended = run({"g.yaml", "--output", "out=-", "--picture", "p.svg"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_EQ(ended.out, kResult);
    EXPECT_NE(folder.read("p.svg").find("between 1 and 3"), std::string::npos);
}

TEST_F(RunPicture, ShowsALiveRun) {
    const Ended ended = run({"g.yaml", "--live", "--speed", "max", "--picture", "p.svg"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_NE(folder.read("p.svg").find("from 0 to 1 s"), std::string::npos);
}

TEST_F(RunPicture, GoesToStandardOutputAlone) {
    const Ended ended = call({"run", "g.yaml", "--picture", "-"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_TRUE(ended.out.starts_with("<svg "));
    EXPECT_TRUE(ended.out.ends_with("</svg>\n"));
    EXPECT_TRUE(ended.err.starts_with("the test: 3 rows")) << ended.err;
}

TEST_F(RunPicture, IsNoFileOfTheRun) {
    folder.write("mine.svg", "mine");
    std::filesystem::create_hard_link(folder.path("in.csv"), folder.path("in.svg"));
    const std::string recording = folder.read("in.csv");
    for (const Strings& arguments :
         {Strings{"g.yaml", "--picture", "mine.svg"}, Strings{"g.yaml", "--picture", "in.svg", "--overwrite"},
          Strings{"g.yaml", "--picture", "p.svg", "--output", "out=p.svg"},
          Strings{"g.yaml", "--picture", "./p.svg", "--summary-json", "p.svg"},
          Strings{"g.yaml", "--picture", "p.svg", "--report", "p.svg"},
          Strings{"g.yaml", "--picture", "-", "--output", "out=-"}, Strings{"g.yaml", "--picture", "p.jpg"},
          Strings{"g.yaml", "--picture", "none/p.svg"}}) {
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.exitCode, 2) << arguments[2] << "\n" << ended.err;
        EXPECT_TRUE(ended.err.starts_with("quillmere: --picture: found ")) << ended.err;
    }
    EXPECT_EQ(run({"g.yaml", "--picture", "mine.svg"}).err,
              "quillmere: --picture: found the file 'mine.svg', which no run has written; expected another "
              "name, or --overwrite to replace it\n");
    EXPECT_EQ(folder.read("mine.svg"), "mine");
    EXPECT_EQ(folder.read("in.csv"), recording);
    EXPECT_FALSE(getIsThere("out.csv")) << "nothing has run";
}

TEST_F(RunPicture, SaysWhichOutputHasItsName) {
    const auto refusal = [](const std::string& name, const std::string& output) {
        return "quillmere: --picture: found the name '" + name + "', which the " + output +
               " has too; expected a name of its own for each output\n";
    };
    EXPECT_EQ(run({"g.yaml", "--picture", "p.png", "--report", "p.png"}).err, refusal("p.png", "report"));
    folder.write("p.png", "");
    EXPECT_EQ(run({"g.yaml", "--picture", "p.png", "--report", "p.png"}).err, refusal("p.png", "report"))
        << "also where there is one";
    EXPECT_EQ(run({"g.yaml", "--picture", "./p.svg", "--summary-json", "p.svg"}).err,
              refusal("p.svg", "summary"));
    EXPECT_EQ(run({"g.yaml", "--picture", "p.svg", "--output", "out=p.svg"}).err, refusal("p.svg", "result"));
    EXPECT_EQ(run({"g.yaml", "--picture", "-", "--report", "-"}).err, refusal("-", "report"));
}

TEST_F(RunPicture, ResultsStayWhereItCantBeWritten) {
    folder.write("in.csv", "t,x\n0,1\n0.5,2\n1,3\n");
    const Ended ended = run({"g.yaml", "--picture", "/dev/full"});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_NE(ended.err.find("/dev/full: cannot be written"), std::string::npos) << ended.err;
    EXPECT_EQ(folder.read("out.csv"), kResult);
}

TEST_F(RunPicture, ThereIsNoneOfARunThatFails) {
    folder.write("in.csv", "t,x\n0,1\n0.5,two\n");
    EXPECT_EQ(run({"g.yaml", "--picture", "p.svg"}).exitCode, 1);
    EXPECT_FALSE(getIsThere("p.svg"));
}

/// Frames of 32 rows at 100 a second: rows of the spectrum are 3.125 Hz apart.
TEST_F(RunPicture, SpectraHaveAnAxisOfHertz) {
    std::string rows = "t,x\n";
    for (int i = 0; i < 256; ++i)
        rows += std::to_string(i / 100.0) + "," + std::to_string(i % 7) + "\n";
    folder.write("in.csv", rows);
    folder.write(
        "s.yaml",
        "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, "
        "frame: 32, hop: 8, pins: {x: [x]}}}\n"
        "  - {id: spectrum, type: FilterFFT, properties: {Pause: false}}\n"
        "  - {id: out, type: RecordingSink, properties: {file: spectrum.csv}}\n"
        "connections: [{from: in, to: spectrum}, {from: spectrum, to: out.x}]\n");
    const Ended ended = run({"s.yaml", "--picture", "s.svg"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    const std::string svg = folder.read("s.svg");
    for (const char* const text : {">Hz</text>", ">40</text>", ">60 dB below</text>"})
        EXPECT_NE(svg.find(text), std::string::npos) << text;
}

} // namespace
