// SPDX-License-Identifier: MIT
#include "host/graph/ShapeWarnings.h"

#include "tests/host/kit/GraphFixture.h"

#include <string>

namespace {

using namespace Quillmere::Host;

class ShapeWarningsTest : public Support::GraphFixture {
protected:
    /// Of a source with a pin and a frame, and two blocks behind each other.
    std::string warningsOf(const std::string& source, const std::string& first, const std::string& second) {
        Complaints complaints;
        const GraphDescription description = GraphDescription::fromFile(
            folder.write("g.yaml",
                         "format: 1\nblocks:\n"
                         "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, " +
                             source + "}}\n  - {id: a, type: " + first + "}\n  - {id: b, type: " + second +
                             "}\nconnections:\n  - {from: in, to: a}\n  - {from: a, to: b}\n"),
            complaints);
        const Graph graph(description, catalogue, complaints);
        EXPECT_TRUE(complaints.isEmpty()) << GraphException(complaints.getSorted()).what();
        std::string lines;
        for (const Warning& warning : complaints.getSortedWarnings())
            lines += withoutFolder(warning.getText()) + "\n";
        return lines;
    }
};

constexpr const char* kTransform = "FilterFFT, properties: {Pause: false}";
constexpr const char* kThreeColumns = "pins: {accel: [ax, ay, az]}";
constexpr const char* kThreeColumnsInFrames = "frame: 200, pins: {accel: [ax, ay, az]}";

TEST_F(ShapeWarningsTest, SeveralColumnsInAFrameAreNoSignal) {
    EXPECT_EQ(warningsOf(kThreeColumnsInFrames, kTransform, "FilterGain"),
              "g.yaml:7:5: warning: found frames of 3 columns from 'in.accel' for 'a' (FilterFFT); expected "
              "one column: give 'in' a pin of its own for each axis; it would take the values of all of "
              "them, row by row, for one signal\n");
    EXPECT_EQ(warningsOf(kThreeColumnsInFrames, "FilterHammingWindow", "FilterFastFourierTransform"),
              "g.yaml:7:5: warning: found frames of 3 columns from 'in.accel' for 'a' "
              "(FilterHammingWindow); expected one column: give 'in' a pin of its own for each axis; it "
              "tapers one signal, and sends nothing for several\n")
        << "once";
    EXPECT_NE(warningsOf(kThreeColumnsInFrames, "FilterGain", kTransform).find("g.yaml:8:5: warning: found"),
              std::string::npos);
    EXPECT_EQ(warningsOf(kThreeColumnsInFrames, "FilterGain", "FilterDeadband"), "") << "any shape does";
    EXPECT_EQ(warningsOf("frame: 200, pins: {up: [az]}", "FilterHanningWindow", kTransform), "");
}

TEST_F(ShapeWarningsTest, RowsThatNoFrameGathersAreNoSignal) {
    EXPECT_EQ(warningsOf("pins: {up: [az]}", kTransform, "FilterGain"),
              "g.yaml:7:5: warning: found samples of one row with 1 column from 'in.up' for 'a' "
              "(FilterFFT); expected 'frame: N' in 'in', which makes one sample of N rows; it sends nothing "
              "for a single row\n");
    EXPECT_NE(warningsOf("pins: {up: [az]}, frame: 1", "FilterHanningWindow", kTransform)
                  .find("it sends nothing for a single value\n"),
              std::string::npos);
    EXPECT_EQ(warningsOf(kThreeColumns, "FilterHanningWindow", "FilterGain"),
              "g.yaml:7:5: warning: found samples of one row with 3 columns from 'in.accel' for 'a' "
              "(FilterHanningWindow); expected 'frame: N' in 'in', which makes one sample of N rows, and a "
              "pin of its own for each axis; it would taper the columns of each row\n");
}

} // namespace
