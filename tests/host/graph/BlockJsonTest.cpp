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

TEST(BlockJson, TellsWhatThePageSaysOfEachPartAndOfTheWhole) {
    KnobBlock block;
    BlockDescription description = describe(block);
    description.properties = {describe(block.command)};
    BlockPage page;
    page.category = "knobs";
    page.purpose = "Turns.";
    page.inputs.push_back({.name = "in", .meaning = "What turns.", .shape = "any", .unit = "rad"});
    page.settings.push_back({.name = "Go", .meaning = "Starts."});
    page.odd = {"It squeaks."};
    page.example.graph = "format: 1";
    page.example.results.push_back({.name = "out.csv", .text = "t"});
    page.relations.settings["Go"] = BlockManual::RelativeTo::Nyquist;
    page.relations.inputs["reset"] = BlockManual::RelativeTo::Samples;
    page.relations.outputs["out"] = {BlockManual::OutputRate::Kind::Step, "Edge"};
    EXPECT_EQ(Json::block(description, "Own", &page), R"({
  "type": "KnobBlock",
  "inputs": [
    {
      "name": "in",
      "blocking": true,
      "meaning": "What turns.",
      "shape": "any",
      "unit": "rad"
    },
    {
      "name": "reset",
      "blocking": false,
      "relativeTo": "samples"
    }
  ],
  "outputs": [
    {
      "name": "out",
      "rate": {
        "step": "Edge"
      }
    }
  ],
  "properties": [
    {
      "name": "Go",
      "kind": "command",
      "writable": false,
      "readable": false,
      "meaning": "Starts.",
      "relativeTo": "nyquist"
    }
  ],
  "plugin": "Own",
  "category": "knobs",
  "purpose": "Turns.",
  "odd": [
    "It squeaks."
  ],
  "example": {
    "text": "",
    "files": [],
    "graph": "format: 1",
    "arguments": [],
    "results": [
      {
        "name": "out.csv",
        "text": "t"
      }
    ]
  }
})");
}

} // namespace
