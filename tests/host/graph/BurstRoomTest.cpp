// SPDX-License-Identifier: MIT
#include "host/graph/BurstRoom.h"

#include "framework/Quillmere.h"
#include "tests/host/kit/GraphFixture.h"

#include <string>

namespace {

using namespace Quillmere::Host;

class BurstRoomTest : public Support::GraphFixture {
protected:
    /// How many samples the link to an input keeps.
    std::uint32_t roomOf(const std::string& block, const std::string& pin, const std::string& connections) {
        const auto job =
            jobOf("format: 1\nlayouts: [{id: a}, {id: b}]\nblocks:\n"
                  "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
                  "  - {id: rows, type: Unframe}\n  - {id: even, type: Resample}\n"
                  "  - {id: gain, type: FilterGain}\n  - {id: far, type: FilterGain, layout: b}\n"
                  "  - {id: sum, type: OddSum}\n"
                  "connections:\n  - {from: in, to: rows}\n  - {from: in, to: even}\n" +
                  connections);
        const Graph::Node* const node = job.getGraph().find(block);
        return node->block->getInputPin(pin).getBufferCapacity();
    }
};

TEST_F(BurstRoomTest, IsForAllOfAStepWhereNobodySaysOtherwise) {
    EXPECT_EQ(roomOf("gain", "input", "  - {from: rows, to: gain}\n"), kSamplesOfAStep);
    EXPECT_EQ(roomOf("gain", "input", "  - {from: rows, to: gain, buffer: 5}\n"), 5U);
    EXPECT_EQ(roomOf("rows", "in", ""), 1U) << "in front of it";
    EXPECT_EQ(roomOf("far", "input", "  - {from: rows, to: far}\n"), kSamplesThatWait) << "another thread's";
}

TEST_F(BurstRoomTest, IsForThoseThatWaitForOthersInTurn) {
    EXPECT_EQ(roomOf("sum", "back", "  - {from: rows, to: sum.back}\n  - {from: even, to: sum.in}\n"),
              kSamplesThatWait);
    EXPECT_EQ(roomOf("sum", "back", "  - {from: rows, to: sum.back}\n  - {from: in, to: sum.in}\n"),
              kSamplesOfAStep)
        << "whose rounds bring one each";
    EXPECT_EQ(roomOf("sum", "in", "  - {from: rows, to: sum.back}\n  - {from: even, to: sum.in}\n"),
              kSamplesOfAStep)
        << "which a control input doesn't hold up";
}

} // namespace
