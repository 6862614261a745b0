// SPDX-License-Identifier: MIT
#include "tests/cli/Program.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Support::Ended;

class ResponseCommand : public testing::Test {
protected:
    ResponseCommand() {
        folder.write("g.yaml", R"yaml(format: 1
parameters: {factor: 2}
blocks:
  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: [x]}}}
  - {id: gain, type: FilterGain, properties: {Gain: "${factor}"}}
  - {id: out, type: RecordingSink, properties: {file: out.csv}}
connections:
  - {from: in, to: gain}
  - {from: gain, to: out.x}
)yaml");
    }
    Ended call(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {QUILLMERE, "response"});
        return Support::runProgram(arguments, folder.path(""));
    }
    Support::TemporaryFolder folder;
};

constexpr const char* kHeader = "relative_frequency,sine_gain,sine_phase,impulse_gain,impulse_phase";

TEST_F(ResponseCommand, MeasuresABlockType) {
    const Ended ended = call({"FilterGain", "--points", "2", "--set", "Gain=-3"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.out, std::string(kHeader) + "\n0,3,180,3,180\n0.5,3,180,3,180\n1,3,180,3,180\n");
    EXPECT_EQ(ended.err, "");
}

TEST_F(ResponseCommand, MeasuresABlockOfAGraphWithoutItsRecording) {
    const Ended ended = call({"g.yaml", "gain", "--points", "1", "--param", "factor=5"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.out, std::string(kHeader) + "\n0,5,0,5,0\n1,5,0,5,0\n");
    EXPECT_EQ(call({"g.yaml", "gain", "--points", "1", "--set", "gain.Gain=7"}).out,
              std::string(kHeader) + "\n0,7,0,7,0\n1,7,0,7,0\n");
    EXPECT_FALSE(folder.has("out.csv"));
    EXPECT_FALSE(folder.has("out.csv.partial"));
}

TEST_F(ResponseCommand, ShowsWhatADesignPromises) {
    const Ended ended = call({"FilterButterworthV2", "--points", "4", "--set", "HighRelativeCutOffFreq=0.6",
                              "--set", "Mode=BandPass", "--set", "Order=4"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.out.substr(0, ended.out.find('\n')), std::string(kHeader) + ",design_gain,design_phase");
}

TEST_F(ResponseCommand, SaysWhereNothingCouldBeMeasured) {
    const Ended ended = call({"FilterButterworthV2", "--points", "4", "--set", "Mode=HighPass", "--set",
                              "Order=6", "--set", "LowRelativeCutOffFreq=0.9"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.err,
              "at 5 of 5 frequencies the output grows without bound, doesn't settle or isn't finite\n");
}

TEST_F(ResponseCommand, WritesAPicture) {
    EXPECT_EQ(call({"FilterGain", "--points", "4", "--picture", "gain.svg"}).exitCode, 0);
    folder.write("copy.svg", folder.read("gain.svg"));
    folder.write("mine.svg", "<svg>what a user had</svg>");
    for (const char* const known : {"gain.svg", "copy.svg"})
        EXPECT_EQ(call({"FilterGain", "--points", "4", "--picture", known}).exitCode, 0);
    const Ended refused = call({"FilterGain", "--points", "4", "--picture", "mine.svg"});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err,
              "quillmere: --picture: found the file 'mine.svg', which no run has written; expected "
              "another name, or --overwrite to replace it\n");
    EXPECT_EQ(folder.read("mine.svg"), "<svg>what a user had</svg>");
    EXPECT_EQ(call({"FilterGain", "--points", "4", "--overwrite", "--picture", "mine.svg"}).exitCode, 0);
    const std::string svg = folder.read("gain.svg");
    EXPECT_TRUE(svg.starts_with("<svg "));
    for (const char* const text :
         {"<title>FilterGain</title>", ">gain</text>", ">phase</text>", ">dB</text>"})
        EXPECT_NE(svg.find(text), std::string::npos) << text;
    EXPECT_FALSE(folder.has("gain.svg.partial"));
}

TEST_F(ResponseCommand, APictureThatSomebodyHasWorkedOnStays) {
    EXPECT_EQ(call({"FilterGain", "--points", "4", "--picture", "gain.svg"}).exitCode, 0);
    folder.write("gain.svg", folder.read("gain.svg") + "<!-- mine -->");
    EXPECT_EQ(call({"FilterGain", "--points", "4", "--picture", "gain.svg"}).exitCode, 2);
    EXPECT_TRUE(folder.read("gain.svg").ends_with("<!-- mine -->"));
}

TEST_F(ResponseCommand, ThePicturesNameTellsItsForm) {
    const Ended refused = call({"FilterGain", "--points", "4", "--picture", "gain.pdf"});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_TRUE(refused.err.starts_with(
        "quillmere: --picture: found the picture 'gain.pdf'; expected a name that ends in .svg"))
        << refused.err;
    const std::string built = Support::runProgram({QUILLMERE, "--version"}, folder.path("")).out;
    if (built.find("PNG") == std::string::npos) GTEST_SKIP() << "this build draws no PNG";
    EXPECT_EQ(call({"FilterGain", "--points", "4", "--picture", "gain.png"}).exitCode, 0);
    EXPECT_TRUE(folder.read("gain.png").starts_with("\x89PNG"));
}

TEST_F(ResponseCommand, APictureNeverReplacesTheGraph) {
    const std::string graph = "format: 1\nblocks: [{id: gain, type: FilterGain}]\n";
    folder.write("g.svg", graph);
    const Ended ended = call({"g.svg", "gain", "--points", "4", "--overwrite", "--picture", "./g.svg"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.err, "quillmere: --picture: found the graph 'g.svg'; expected a file that isn't read\n");
    EXPECT_EQ(folder.read("g.svg"), graph);
}

TEST_F(ResponseCommand, RefusesWhatItCannotMeasure) {
    struct Row {
        std::vector<std::string> arguments;
        std::string message;
    };
    const Row rows[] = {
        {{"g.yaml", "gian"},
         "quillmere: found the block 'gian'; expected one of in, gain and out; did you mean gain?\n"},
        {{"FilterGain", "--set", "Gian=2"},
         "--set Gian=2: found the property 'Gian' of FilterGain; expected one of Gain; did you mean Gain?\n"},
        {{"FilterGain", "--set", "Gain"}, "quillmere: --set: found 'Gain'; expected PROPERTY=VALUE\n"},
        {{"FilterGain", "--param", "a=1"},
         "quillmere: --param: found a block type; expected a graph file and a BLOCK\n"},
        {{"FilterGain", "--from", "side"}, "found no input 'side'; expected one of input\n"},
        {{"FilterFFT"},
         "found that 'FilterFFT' (FilterFFT) sent nothing for a sample of one element; expected a block that "
         "sends one such sample for each that it gets, as filters do\n"},
    };
    for (const Row& row : rows) {
        const Ended ended = call(row.arguments);
        EXPECT_EQ(ended.exitCode, 2) << row.message;
        EXPECT_EQ(ended.out, "") << row.message;
        EXPECT_EQ(ended.err, row.message);
    }
}

} // namespace
