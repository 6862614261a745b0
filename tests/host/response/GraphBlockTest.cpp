// SPDX-License-Identifier: MIT
#include "host/response/GraphBlock.h"

#include "host/graph/BlockDescription.h"
#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/GraphFixture.h"
#include "tests/host/kit/RefusalText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Quillmere::Host;

class GraphBlockTest : public Support::GraphFixture {
protected:
    GraphBlockTest() { folder.write("in.csv", "t,x\n0,1\n0.01,2\n0.02,3\n"); }

    GraphDescription described(const std::string& file) {
        return jobOf("format: 1\nblocks:\n"
                     "  - {id: in, type: RecordingSource, properties: {file: " +
                     file +
                     ", time: t, pins: {x: x}}}\n"
                     "  - {id: smooth, type: FilterButterworth, properties: {RelativeCutOffFreq: 5 Hz}}\n"
                     "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
                     "connections: [{from: in, to: smooth.in}, {from: smooth, to: out.x}]\n")
            .getDescription();
    }
    std::string refusalOf(const std::string& file, const std::string& id) {
        try {
            makerOfGraphBlock(described(file), catalogue, id);
        } catch (const ResponseException& exception) {
            return Support::refusalText(exception);
        }
        return "no refusal";
    }
};

TEST_F(GraphBlockTest, EachIsANewOneSetByTheRecordingsRateAndCutLoose) {
    const BlockMaker make = makerOfGraphBlock(described("in.csv"), catalogue, "smooth");
    const auto first = make();
    const auto second = make();
    EXPECT_NE(first, second);
    for (const auto& block : {first, second}) {
        EXPECT_EQ(valueText(describe(block->getProperty("RelativeCutOffFreq"))), "0.1");
        EXPECT_EQ(block->getInputPin("in").getConnectedOutput(), nullptr);
    }
}

TEST_F(GraphBlockTest, WhatTheGraphDoesNotHaveIsRefused) {
    EXPECT_EQ(refusalOf("in.csv", "smoth"),
              "found the block 'smoth'; expected one of in, smooth and out; did you mean smooth?");
    const Support::Fifo pipe(folder.path("pipe"));
    EXPECT_THROW(makerOfGraphBlock(described("pipe"), catalogue, "smooth"), GraphException);
}

} // namespace
