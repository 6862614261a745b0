// SPDX-License-Identifier: MIT
#include "host/graph/BlockJson.h"

#include "tests/host/kit/KnobBlock.h"

#include <gtest/gtest.h>

namespace {

using namespace Quillmere::Host;

TEST(BlockJson, TellsWhatASettingHolds) {
    EXPECT_EQ(Json::heldValue(true), "true");
    EXPECT_EQ(Json::heldValue(std::int64_t{-3}), "-3");
    EXPECT_EQ(Json::heldValue(2.0), "2.0");
    EXPECT_EQ(Json::heldValue(std::monostate()), "null");
    EXPECT_EQ(Json::heldValue(KnobBlock::MatrixXd::Constant(1, 2, 0.5).eval()),
              "[\n  [\n    0.5,\n    0.5\n  ]\n]");
}

TEST(BlockJson, TellsASettingWithKindLimitsAndLabels) {
    KnobBlock block;
    EXPECT_EQ(Json::setting(describe(block.edge)), R"({
  "name": "Edge",
  "kind": "number",
  "default": 0.0,
  "minimum": 0.0,
  "maximum": 1.0,
  "step": 0.25,
  "writable": true,
  "readable": true
})");
    EXPECT_EQ(Json::setting(describe(block.mode)), R"({
  "name": "Mode",
  "kind": "choice",
  "default": 0,
  "defaultLabel": "LowPass",
  "labels": [
    "LowPass",
    "HiPass"
  ],
  "writable": true,
  "readable": true
})");
    EXPECT_EQ(Json::setting(describe(block.command)), R"({
  "name": "Go",
  "kind": "command",
  "writable": false,
  "readable": false
})");
}

TEST(BlockJson, TellsABlockWithPinsAndPlugin) {
    KnobBlock block;
    BlockDescription description = describe(block);
    description.properties.clear();
    EXPECT_EQ(Json::block(description, "Own"), R"({
  "type": "KnobBlock",
  "inputs": [
    {
      "name": "in",
      "blocking": true
    },
    {
      "name": "reset",
      "blocking": false
    }
  ],
  "outputs": [
    {
      "name": "out"
    }
  ],
  "properties": [],
  "plugin": "Own"
})");
}

} // namespace
