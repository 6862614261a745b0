// SPDX-License-Identifier: MIT
#include "host/graph/ShapeWarnings.h"

#include "framework/Quillmere.h"
#include "host/ends/MainInput.h"
#include "host/ends/ShapeGiver.h"
#include "tests/host/kit/GraphFixture.h"

#include <string>

namespace {

using namespace Quillmere::Host;
namespace Core = Quillmere::Core;

/// A block with a sample at its main input.
struct FedBlock {
    FedBlock(const BlockCatalogue& catalogue, const char* type, Eigen::Index rows, Eigen::Index columns)
        : block(catalogue.create(type, "b")), sender("sender", nullptr) {
        sender.attach(*mainInputOf(*block), true);
        Core::AbstractProperty* const pause = block->getPropertyBag().find("Pause");
        if (auto* const flag = dynamic_cast<Core::ValueProperty<bool>*>(pause)) flag->setValue(false);
        sender.data.value = Core::MatrixXd::Ones(rows, columns);
        sender.send(5.0);
        block->process();
    }
    const Core::OutputPin<Core::MatrixXd>& getOutput() const {
        return dynamic_cast<const Core::OutputPin<Core::MatrixXd>&>(*block->getOutputPins().back());
    }
    bool getHasSent() const { return getOutput().data.timeStamp == 5.0; }

    BlockPtr block;
    Core::OutputPin<Core::MatrixXd> sender;
};

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

TEST_F(ShapeWarningsTest, LivingBlocksTreatShapesAsTheTablesSay) {
    for (const char* const type : getWindows()) {
        EXPECT_FALSE(FedBlock(catalogue, type, 8, 3).getHasSent()) << type;
        EXPECT_FALSE(FedBlock(catalogue, type, 1, 1).getHasSent()) << type;
        EXPECT_TRUE(FedBlock(catalogue, type, 1, 3).getHasSent()) << type;
        EXPECT_TRUE(FedBlock(catalogue, type, 8, 1).getHasSent()) << type;
    }
    for (const char* const type : getTransforms()) {
        EXPECT_FALSE(FedBlock(catalogue, type, 1, 3).getHasSent()) << type;
        const FedBlock fed(catalogue, type, 8, 3);
        EXPECT_TRUE(fed.getHasSent()) << type;
        EXPECT_EQ(fed.getOutput().data.value.cols(), 1) << type;
    }
    for (const char* const type : getShapeKeepers()) {
        const FedBlock fed(catalogue, type, 8, 3);
        ASSERT_EQ(fed.block->getOutputPins().size(), 1U) << type;
        EXPECT_TRUE(fed.getHasSent()) << type;
        EXPECT_EQ(fed.getOutput().data.value.rows(), 8) << type;
        EXPECT_EQ(fed.getOutput().data.value.cols(), 3) << type;
    }
}

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
