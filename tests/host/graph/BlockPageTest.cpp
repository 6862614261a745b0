// SPDX-License-Identifier: MIT
#include "host/graph/BlockPage.h"

#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

constexpr const char* kPage = R"yaml(category: gains
purpose: Doubles.
text: |
  One line
  and another.
formula: y = 2 * x
inputs:
  in: {meaning: What is doubled., shape: any, unit: m}
outputs:
  out: {meaning: The double.}
settings:
  Window: {meaning: How many., unit: samples, default: 5 is enough.}
  Reset: {meaning: Forgets.}
odd: [Twice is not thrice.]
mistakes: [One., Two.]
example:
  text: Three rows.
  files: {in.csv: "x\n1\n"}
  graph: "format: 1\n"
  arguments: [--steps, 3]
  results: {out.csv: "y\n2\n"}
related: [Halves]
rate: {settings: {Window: samples}, outputs: {out: same}}
units: {outputs: {out: same}}
)yaml";

class BlockPageTest : public Support::GraphFixture {
protected:
    BlockPage pageOf(const std::string& text) {
        complaints = {};
        return BlockPage::fromFile(folder.write("Own.yaml", text), complaints);
    }
    std::string complaintsOfPage(const std::string& text) {
        pageOf(text);
        return complaints.isEmpty() ? "" : withoutFolder(GraphException(complaints.getSorted()).what());
    }

    Complaints complaints;
};

TEST_F(BlockPageTest, HoldsWhatAFileSays) {
    const BlockPage page = pageOf(kPage);
    EXPECT_TRUE(complaints.isEmpty());
    EXPECT_EQ(page.category, "gains");
    EXPECT_EQ(page.purpose, "Doubles.");
    EXPECT_EQ(page.text, "One line\nand another.\n");
    EXPECT_EQ(page.formula, "y = 2 * x");
    ASSERT_NE(page.findInput("in"), nullptr);
    EXPECT_EQ(page.findInput("out"), nullptr);
    EXPECT_EQ(page.findInput("in")->meaning, "What is doubled.");
    EXPECT_EQ(page.findInput("in")->shape, "any");
    EXPECT_EQ(page.findInput("in")->unit, "m");
    ASSERT_NE(page.findOutput("out"), nullptr);
    EXPECT_EQ(page.findOutput("out")->unit, "");
    ASSERT_EQ(page.settings.size(), 2u);
    EXPECT_EQ(page.findSetting("Window")->unit, "samples");
    EXPECT_EQ(page.findSetting("Window")->why, "5 is enough.");
    EXPECT_EQ(page.settings.back().name, "Reset");
    EXPECT_EQ(page.odd, std::vector<std::string>{"Twice is not thrice."});
    EXPECT_EQ(page.mistakes, (std::vector<std::string>{"One.", "Two."}));
    EXPECT_EQ(page.related, std::vector<std::string>{"Halves"});
    EXPECT_EQ(page.relations.settings.at("Window"), BlockManual::RelativeTo::Samples);
    EXPECT_TRUE(page.relations.outputUnits.contains("out"));
}

TEST_F(BlockPageTest, HoldsAnExample) {
    const BlockPage::Example example = pageOf(kPage).example;
    EXPECT_EQ(example.text, "Three rows.");
    ASSERT_EQ(example.files.size(), 1u);
    EXPECT_EQ(example.files.front().name, "in.csv");
    EXPECT_EQ(example.files.front().text, "x\n1\n");
    EXPECT_EQ(example.graph, "format: 1\n");
    EXPECT_EQ(example.arguments, (std::vector<std::string>{"--steps", "3"}));
    ASSERT_EQ(example.results.size(), 1u);
    EXPECT_EQ(example.results.front().name, "out.csv");
}

TEST_F(BlockPageTest, WhatNoPageSaysIsComplainedOf) {
    const struct {
        const char* text;
        const char* complaint;
    } rows[] = {
        {"[a]", "Own.yaml:1:1: found a list; expected a map"},
        {"purpos: x",
         "Own.yaml:1:1: found the key 'purpos'; expected one of category, purpose, text and 10 more; "
         "did you mean purpose?"},
        {"purpose: [x]", "Own.yaml:1:10: found a list; expected a text"},
        {"odd: x", "Own.yaml:1:6: found 'x'; expected a list of texts"},
        {"odd: [[x]]", "Own.yaml:1:7: found a list; expected a text"},
        {"inputs: {in: any}", "Own.yaml:1:14: found 'any'; expected a map"},
        {"outputs: {out: {unti: m}}",
         "Own.yaml:1:17: found the key 'unti'; expected one of meaning, shape and unit; did you mean unit?"},
        {"settings: {A: {shape: any}}",
         "Own.yaml:1:16: found the key 'shape'; expected one of meaning, unit and default"},
        {"example: {files: {a.csv: [1]}}", "Own.yaml:1:26: found a list; expected a text"},
        {"example: {grap: x}", "Own.yaml:1:11: found the key 'grap'; expected one of text, files, graph, "
                               "arguments and results; did you mean graph?"},
        {"rate: {settings: {A: hertz}}",
         "Own.yaml:1:22: found 'hertz'; expected nyquist, radians or samples"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(complaintsOfPage(row.text), row.complaint) << row.text;
    EXPECT_EQ(pageOf("purpose: [x]\ncategory: c\n").category, "c") << "the rest is there";
}

TEST_F(BlockPageTest, ATypeOfTheHostSaysItsPurposeItself) {
    const auto page = BlockPage::read("RecordingSink", catalogue, complaints);
    ASSERT_TRUE(page);
    EXPECT_EQ(page->purpose, "Writes what comes to its pins to a CSV table, a row for each time.");
    EXPECT_FALSE(BlockPage::read("OddSettings", catalogue, complaints)) << "its plug-in has no manual";
}

} // namespace
