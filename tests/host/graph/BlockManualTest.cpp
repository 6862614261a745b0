// SPDX-License-Identifier: MIT
#include "host/graph/BlockManual.h"

#include "host/description/Unit.h"
#include "host/graph/BlockDescription.h"
#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <map>
#include <string>

namespace {

using namespace Quillmere::Host;

class BlockManualTest : public Support::GraphFixture {
protected:
    std::string complaintsOfManual(const std::string& text) {
        Complaints complaints;
        BlockManual::fromFile(folder.write("Own.yaml", text), complaints);
        return complaints.isEmpty() ? "" : withoutFolder(GraphException(complaints.getSorted()).what());
    }
};

TEST_F(BlockManualTest, EveryBlockOfThePlugInHasOneThatNamesItsOutputsAndNothingElse) {
    std::map<std::string, std::ptrdiff_t> pages; // in each plug-in's folder
    for (const std::string& type : catalogue.getTypeNames()) {
        if (!catalogue.getPluginName(type).starts_with("Velmarind")) continue;
        Complaints complaints;
        const BlockManual manual = BlockManual::read(type, catalogue, complaints);
        EXPECT_TRUE(complaints.isEmpty()) << type;
        const BlockPtr block = catalogue.create(type, "b");
        EXPECT_EQ(manual.outputs.size(), block->getOutputPins().size()) << type;
        for (const auto* const pin : block->getOutputPins())
            EXPECT_TRUE(manual.outputs.contains(pin->getName())) << type << "." << pin->getName();
        for (const auto& [name, rate] : manual.outputs) {
            if (!rate.setting.empty()) {
                EXPECT_NE(block->getPropertyBag().find(rate.setting), nullptr) << type;
            }
        }
        for (const auto& [name, relation] : manual.settings)
            EXPECT_NE(block->getPropertyBag().find(name), nullptr) << type << "." << name;
        for (const auto& input : manual.inputs) {
            const auto& pins = block->getInputPins();
            EXPECT_TRUE(std::any_of(pins.begin(), pins.end(),
                                    [&](const auto* pin) { return pin->getName() == input.first; }))
                << type << "." << input.first;
        }
        const auto hasInput = [&](const std::string& name) {
            const auto& pins = block->getInputPins();
            return std::any_of(pins.begin(), pins.end(),
                               [&](const auto* pin) { return pin->getName() == name; });
        };
        for (const auto& [name, rows] : manual.outputRows)
            EXPECT_TRUE(manual.outputs.contains(name)) << type << "." << name;
        for (const auto& [name, unit] : manual.outputUnits) {
            EXPECT_TRUE(manual.outputs.contains(name)) << type << "." << name;
            EXPECT_TRUE(unit.input.empty() || hasInput(unit.input)) << type << "." << unit.input;
        }
        for (const auto& [name, unit] : manual.settingUnits) {
            EXPECT_NE(block->getPropertyBag().find(name), nullptr) << type << "." << name;
            EXPECT_FALSE(manual.settings.contains(name)) << type << "." << name << " has two units";
            if (!unit.setting.empty()) {
                const PropertyDescription choice = describe(block->getProperty(unit.setting));
                EXPECT_EQ(unit.choices.size(), choice.labels.size()) << type << "." << name;
                for (const std::string& label : choice.labels)
                    EXPECT_TRUE(unit.choices.contains(label)) << type << "." << name << ": " << label;
            }
        }
        for (const auto& input : manual.inputUnits)
            EXPECT_TRUE(hasInput(input.first)) << type << "." << input.first;
        ++pages[BlockManual::folderOf(type, catalogue)];
    }
    ASSERT_EQ(pages.size(), 2U);
    for (const auto& [folderOfPages, blocks] : pages) {
        const std::filesystem::directory_iterator files(folderOfPages);
        EXPECT_EQ(std::distance(begin(files), end(files)), blocks) << "a page that is no block's";
    }
}

TEST_F(BlockManualTest, APlugInWithoutAFolderHasNone) {
    Complaints complaints;
    EXPECT_TRUE(BlockManual::read("OddSettings", catalogue, complaints).outputs.empty());
    EXPECT_TRUE(BlockManual::read("RecordingSource", catalogue, complaints).outputs.empty());
    EXPECT_TRUE(complaints.isEmpty());
}

TEST_F(BlockManualTest, IsThatPartOfAPageWhateverElseStandsThere) {
    const auto samplesOf = [&](const std::string& text) {
        Complaints complaints;
        const auto manual = BlockManual::fromFile(folder.write("Own.yaml", text), complaints);
        EXPECT_TRUE(complaints.isEmpty()) << text;
        return manual.settings.size();
    };
    const std::string rate = "rate:\n  # a remark\n\n  settings: {A: samples}\n";
    EXPECT_EQ(samplesOf(rate), 1U);
    EXPECT_EQ(samplesOf("text: |\n  rate:\n  settings: {B: samples}\n# rate:\n" + rate + "odd: [x]\n"), 1U);
    EXPECT_EQ(samplesOf("text: |\r\n  x\r\n" + rate), 1U);
    EXPECT_EQ(samplesOf("text: x\n"), 0U);
    EXPECT_EQ(samplesOf("{\"text\": \"x\",\n\"rate\": {\"settings\": {\"A\": \"samples\"}}}\n"), 1U)
        << "JSON";
    EXPECT_EQ(samplesOf("---\nrate: {settings: {A: samples}}\n"), 1U);
    EXPECT_EQ(samplesOf("text: &all {A: samples}\nrate: {settings: *all}\n"), 1U);
    EXPECT_EQ(samplesOf("text: {broken\n" + rate), 1U) << "which is told to who reads the page";
    EXPECT_EQ(complaintsOfManual("text: |\n  x\n\n  y\nrate: {settings: {A: hertz}}\n"),
              "Own.yaml:5:22: found 'hertz'; expected nyquist, radians or samples");
}

TEST_F(BlockManualTest, WhatNoManualSaysIsComplainedOf) {
    EXPECT_EQ(complaintsOfManual(
                  "rate: {settings: {A: samples}, outputs: {x: same, y: {step: A}, z: {rate: A}}}\n"),
              "");
    EXPECT_EQ(complaintsOfManual("rate: {settings: {A: hertz}}\n"),
              "Own.yaml:1:22: found 'hertz'; expected nyquist, radians or samples");
    EXPECT_EQ(complaintsOfManual("rate: {outputs: {A: often}}\n"),
              "Own.yaml:1:21: found 'often'; expected same, none, {step: SETTING} or {rate: SETTING}");
    EXPECT_EQ(complaintsOfManual("rate: same\n"), "Own.yaml:1:7: found 'same'; expected a map");
    EXPECT_EQ(complaintsOfManual("rate: {settings: nyquist}\n"),
              "Own.yaml:1:18: found 'nyquist'; expected a map");
    EXPECT_EQ(complaintsOfManual("rate: {outputs: same}\n"), "Own.yaml:1:17: found 'same'; expected a map");
    EXPECT_EQ(complaintsOfManual("rate: {output: {A: same}}\n"),
              "Own.yaml:1:8: found the key 'output'; expected settings, inputs, outputs, times or rows");
    EXPECT_EQ(complaintsOfManual("rate: {rows: {x: same, y: frequencies}}\n"), "");
    EXPECT_EQ(complaintsOfManual("rate: {rows: {x: hertz}}\n"),
              "Own.yaml:1:18: found 'hertz'; expected same or frequencies");
    EXPECT_EQ(complaintsOfManual("rate: {times: any}\n"), "");
    EXPECT_EQ(complaintsOfManual("rate: {times: odd}\n"), "Own.yaml:1:15: found 'odd'; expected even or any");
    EXPECT_EQ(complaintsOfManual("units: {inputs: {a: rad/s}, outputs: {x: same, y: {as: a}}}\n"), "");
    EXPECT_EQ(complaintsOfManual("units: {inputs: {a: furlongs}}\n"),
              std::string("Own.yaml:1:21: found 'furlongs'; expected ") + kSomeUnits);
    EXPECT_EQ(complaintsOfManual("units: {outputs: {x: a}}\n"),
              "Own.yaml:1:22: found 'a'; expected same or {as: INPUT}");
    EXPECT_EQ(complaintsOfManual("units: {x: same}\n"),
              "Own.yaml:1:9: found the key 'x'; expected settings, inputs or outputs");
    EXPECT_EQ(complaintsOfManual("units: {settings: {a: s, b: Hz, c: {Axis: {Time: s, Frequency: Hz}}}}\n"),
              "");
    const std::string wanted = "expected s, Hz or {SETTING: {CHOICE: s, CHOICE: Hz}}";
    EXPECT_EQ(complaintsOfManual("units: {settings: {a: ms}}\n"), "Own.yaml:1:23: found 'ms'; " + wanted);
    EXPECT_EQ(complaintsOfManual("units: {settings: {a: {Axis: s}}}\n"),
              "Own.yaml:1:23: found a map; " + wanted);
    EXPECT_EQ(complaintsOfManual("units: {settings: {a: {Axis: {Time: ms}}}}\n"),
              "Own.yaml:1:37: found 'ms'; " + wanted);
    EXPECT_EQ(complaintsOfManual("units: {settings: s}\n"), "Own.yaml:1:19: found 's'; expected a map");
    EXPECT_EQ(complaintsOfManual("units: same\n"), "Own.yaml:1:8: found 'same'; expected a map");
}

} // namespace
