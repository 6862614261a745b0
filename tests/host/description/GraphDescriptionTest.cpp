// SPDX-License-Identifier: MIT
#include "host/description/GraphDescription.h"

#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Quillmere::Host::Complaints;
using Quillmere::Host::GraphChanges;
using Quillmere::Host::GraphDescription;
using Quillmere::Host::GraphException;
using Quillmere::Host::Value;
using Support::TemporaryFolder;
using Origin = GraphDescription::Setting::Origin;

constexpr const char* kCalm = R"yaml(format: 1
name: calm wrist
parameters: {cutoff: 0.08}
blocks:
  - {id: wrist,  type: RecordingSource, properties: {file: wrist.csv, time: t, pins: {accel: [ax, ay, az]}}}
  - {id: smooth, type: FilterButterworth, layout: fast, properties: {Order: 2, RelativeCutOffFreq: "${cutoff}"}}
  - {id: result, type: RecordingSink, properties: {file: calm.csv}, view: {x: 3}}
connections:
  - {from: wrist.accel, to: smooth.in, buffer: 4, order: oldest}
  - {from: smooth, to: "result.Low Cutoff Freq. (relative)"
}
view: {zoom: 2}
layouts: [{id: slow}, {id: fast, view: {y: 1}}]
)yaml";

class GraphDescriptionTest : public testing::Test {
protected:
    /// What `text` says, in a file, with `changes` and its parameters filled in.
    GraphDescription read(const std::string& text, const GraphChanges& changes = {}) {
        return GraphDescription::fromFile(folder.write("g.yaml", text), complaints)
            .with(changes, complaints)
            .resolved(complaints);
    }

    /// What is wrong with `text`, the file named `g.yaml`, a line each.
    std::string complaintsOf(const std::string& text, const GraphChanges& changes = {}) {
        complaints = {};
        read(text, changes);
        return getText();
    }

    std::string getText() const {
        std::string lines;
        for (auto complaint : complaints.getSorted()) {
            if (complaint.where.file == folder.path("g.yaml")) complaint.where.file = "g.yaml";
            lines += complaint.getText() + "\n";
        }
        return lines;
    }

    TemporaryFolder folder;
    Complaints complaints;
};

TEST_F(GraphDescriptionTest, HoldsWhatTheFileSays) {
    const GraphDescription graph = read(kCalm);
    EXPECT_EQ(getText(), "");
    EXPECT_TRUE(graph.isUsable);
    EXPECT_EQ(graph.getName(), "calm wrist");
    EXPECT_EQ(graph.getFolder() + "/g.yaml", folder.path("g.yaml"));
    ASSERT_EQ(graph.blocks.size(), 3u);
    const GraphDescription::Block& smooth = *graph.findBlock("smooth");
    EXPECT_EQ(smooth.type, "FilterButterworth");
    EXPECT_EQ(smooth.layout, "fast");
    EXPECT_EQ(graph.findBlock("wrist")->layout, "slow") << "the first layout is the default";
    ASSERT_EQ(graph.layouts.size(), 2u);
    EXPECT_EQ(graph.layouts[1].id, "fast");
    EXPECT_EQ(graph.layouts[1].where.line, 13);
    ASSERT_EQ(smooth.settings.size(), 2u);
    EXPECT_EQ(smooth.settings[1].name, "RelativeCutOffFreq");
    EXPECT_EQ(smooth.settings[1].value.text, "0.08");
    EXPECT_EQ(smooth.settings[1].value.parameter, "cutoff");
    EXPECT_EQ(smooth.settings[1].value.where.line, 6);
    ASSERT_EQ(graph.connections.size(), 2u);
    const GraphDescription::Connection& first = graph.connections[0];
    EXPECT_EQ(first.from.block, "wrist");
    EXPECT_EQ(first.from.pin, "accel");
    EXPECT_EQ(first.buffer.value, 4u);
    EXPECT_EQ(first.isNewestFirst.value, false);
    const GraphDescription::Connection& second = graph.connections[1];
    EXPECT_FALSE(second.from.hasPin);
    EXPECT_EQ(second.to.pin, "Low Cutoff Freq. (relative)") << "split at the first dot";
    EXPECT_FALSE(second.buffer.value.has_value());
}

TEST_F(GraphDescriptionTest, AFileWithoutANameIsNamedAfterItself) {
    EXPECT_EQ(read("format: 1\nblocks: [{id: a, type: T}]\n").getName(), "g");
    EXPECT_EQ(getText(), "");
}

TEST_F(GraphDescriptionTest, AGraphWithoutLayoutsHasOne) {
    const GraphDescription graph = read("format: 1\nblocks: [{id: a, type: T}]\n");
    EXPECT_EQ(getText(), "");
    ASSERT_EQ(graph.layouts.size(), 1u);
    EXPECT_EQ(graph.layouts[0].id, "main");
    EXPECT_EQ(graph.findBlock("a")->layout, "main");
}

TEST_F(GraphDescriptionTest, LayoutsAreChecked) {
    EXPECT_EQ(complaintsOf("format: 1\nlayouts: [{id: fast}, {id: fast}, {name: x}, {id: a b}, 7]\n"
                           "blocks: [{id: a, type: T, layout: fats}]\n"),
              "g.yaml:2:28: found the layout 'fast' a second time; expected an id of its own for each layout "
              "(the first is in line 2)\n"
              "g.yaml:2:35: found a layout without an id; expected 'id:' and a name\n"
              "g.yaml:2:36: found the key 'name'; expected one of id and view\n"
              "g.yaml:2:51: found the id 'a b'; expected letters, digits, '_' and '-'; did you mean a_b?\n"
              "g.yaml:2:57: found '7'; expected a layout as {id: ...}\n"
              "g.yaml:3:35: found the layout 'fats'; expected one of the graph's layouts: fast; did you mean "
              "fast?\n");
}

TEST_F(GraphDescriptionTest, JsonIsTheSame) {
    const GraphDescription graph = read(R"({"format": 1, "parameters": {"g": 2.5},
 "blocks": [{"id": "a", "type": "T", "properties": {"Gain": "${g}", "List": [["${g}", 1]]}}], "connections": []})");
    EXPECT_EQ(getText(), "");
    const auto& settings = graph.blocks.at(0).settings;
    EXPECT_EQ(settings.at(0).value.text, "2.5");
    EXPECT_FALSE(settings.at(0).value.isQuoted);
    EXPECT_EQ(settings.at(1).value.items.at(0).items.at(0).text, "2.5");
}

TEST_F(GraphDescriptionTest, CallersChangeParametersSettingsAndFiles) {
    const GraphChanges changes{.parameters = {{"cutoff", "0.5", "--param cutoff=0.5"}},
                               .settings = {{"smooth", "Order", "4", "--set smooth.Order=4"},
                                            {"smooth", "Mode", "HiPass", "--set ..."}},
                               .inputs = {{"wrist", "other.csv", "--input wrist=other.csv"}},
                               .outputs = {{"result", "out: [x].csv", "--output ..."}}};
    const GraphDescription graph = read(kCalm, changes);
    EXPECT_EQ(getText(), "");
    const auto& smooth = graph.findBlock("smooth")->settings;
    ASSERT_EQ(smooth.size(), 3u);
    EXPECT_EQ(smooth[0].value.text, "4");
    EXPECT_EQ(smooth[0].origin, Origin::Caller);
    EXPECT_EQ(smooth[1].value.text, "0.5");
    EXPECT_EQ(smooth[1].origin, Origin::File);
    EXPECT_EQ(smooth[2].name, "Mode");
    EXPECT_EQ(graph.findBlock("wrist")->settings[0].value.text, "other.csv");
    EXPECT_EQ(graph.findBlock("wrist")->settings[0].origin, Origin::CallersInput);
    EXPECT_EQ(graph.findBlock("result")->settings[0].value.text, "out: [x].csv") << "a path is no YAML";
    EXPECT_EQ(graph.findBlock("result")->settings[0].origin, Origin::CallersOutput);
}

TEST_F(GraphDescriptionTest, WrongChangesNameTheOption) {
    const GraphChanges changes{.parameters = {{"cutof", "1", "--param cutof=1"}},
                               .settings = {{"smoth", "Order", "4", "--set smoth.Order=4"},
                                            {"smooth", "Order", "[4", "--set smooth.Order=[4"}},
                               .inputs = {{"rist", "x.csv", "--input rist=x.csv"}},
                               .outputs = {}};
    EXPECT_EQ(complaintsOf(kCalm, changes), "--param cutof=1: found the parameter 'cutof'; expected one of "
                                            "the graph's parameters: cutoff; did you mean "
                                            "cutoff?\n"
                                            "--set smoth.Order=4: found the block 'smoth'; expected the id "
                                            "of a block: wrist, smooth and result; did you "
                                            "mean smooth?\n"
                                            "--set smooth.Order=[4: found text that is neither YAML nor JSON "
                                            "(end of sequence flow not found); expected a "
                                            "value in YAML or JSON\n"
                                            "--input rist=x.csv: found the block 'rist'; expected the id of "
                                            "a block: wrist, smooth and result; did you "
                                            "mean wrist?\n");
}

TEST_F(GraphDescriptionTest, EverythingWrongIsToldAtOnce) {
    EXPECT_EQ(
        complaintsOf(R"yaml(format: 2
paramters: {}
parameters: {a b: 1, unset: , other: "${a}"}
blocks:
  - {id: on, type: T}
  - {id: a.b, type: T}
  - {id: x, typ: T}
  - {id: x, type: T}
  - {type: T}
  - {id: y, type: T, properties: [1]}
  - {id: z, type: T, properties: {A: "1${unset}", B: "${unset}", C: "${nset}"}}
  - y
connections:
  - {from: x.out, to: zz.in, bufer: 2}
  - {from: x.out}
  - {from: x.out, to: y.in, buffer: 0, order: latest}
  - {from: x.out, to: y.in, buffer: 010}
)yaml"),
        "g.yaml:1:9: found format 2; expected format 1\n"
        "g.yaml:2:1: found the key 'paramters'; expected one of format, name, clock, plugins, parameters, "
        "layouts, blocks, "
        "connections, timeline and "
        "view; did you mean parameters?\n"
        "g.yaml:3:14: found the parameter name 'a b'; expected letters, digits, '_' and '-'; did you "
        "mean a_b?\n"
        "g.yaml:3:38: found '${a}'; expected a value, not another parameter\n"
        "g.yaml:5:10: found the id 'on'; expected a word that no YAML reader takes for a yes, a no or "
        "a nothing; did "
        "you mean on_?\n"
        "g.yaml:6:10: found the id 'a.b'; expected letters, digits, '_' and '-'; did you mean a_b?\n"
        "g.yaml:7:5: found a block without a type; expected 'type:' and the name of a block type\n"
        "g.yaml:7:13: found the key 'typ'; expected one of id, type, properties, layout and view; did "
        "you mean type?\n"
        "g.yaml:8:10: found the id 'x' a second time; expected an id of its own for each block (the "
        "first is in line "
        "7)\n"
        "g.yaml:9:5: found a block without an id; expected 'id:' and a name\n"
        "g.yaml:10:34: found a list; expected properties as 'name: value'\n"
        "g.yaml:11:38: found '1${unset}'; expected '${name}' as the whole value and nothing beside it\n"
        "g.yaml:11:54: found the parameter 'unset' without a value; expected one from the graph or the "
        "caller\n"
        "g.yaml:11:69: found the parameter 'nset'; expected one of the graph's parameters: a b, other "
        "and unset; did "
        "you mean unset?\n"
        "g.yaml:12:5: found 'y'; expected a block as {id: ..., type: ...}\n"
        "g.yaml:14:23: found the block 'zz'; expected the id of a block: x, y and z; did you mean z?\n"
        "g.yaml:14:30: found the key 'bufer'; expected one of from, to, buffer, order, overflow and view; "
        "did "
        "you mean buffer?\n"
        "g.yaml:15:5: found a connection without 'to'; expected 'to: block.pin'\n"
        "g.yaml:16:37: found a buffer of 0; expected 1 to 2147483647 samples\n"
        "g.yaml:16:47: found 'latest'; expected newest or oldest\n"
        "g.yaml:17:37: found '010'; expected a whole number without leading zeros (readers disagree "
        "whether they mean "
        "eights); did you mean 10?\n");
}

TEST_F(GraphDescriptionTest, EveryWordForYesAndNoIsNoId) {
    for (const char* word : {"on", "Off", "YES", "no", "true", "False", "null"}) {
        const std::string text = std::string("format: 1\nblocks: [{id: \"") + word + "\", type: T}]\n";
        EXPECT_NE(complaintsOf(text).find("found the id '" + std::string(word) + "'; expected a word"),
                  std::string::npos)
            << word;
    }
    EXPECT_EQ(
        complaintsOf("format: 1\nblocks: [{id: on-1_A, type: T}, {id: 007, type: T}, {id: y, type: T}]\n"),
        "");
}

TEST_F(GraphDescriptionTest, FilesThatAreNoGraphs) {
    EXPECT_EQ(complaintsOf(""),
              "g.yaml:1:1: found nothing; expected a graph with the keys format, name, clock, plugins, "
              "parameters, layouts, blocks, "
              "connections, timeline and view\n");
    EXPECT_EQ(
        complaintsOf("- 1\n"),
        "g.yaml:1:1: found a list; expected a graph with the keys format, name, clock, plugins, parameters, "
        "layouts, blocks, connections, timeline and view\n");
    EXPECT_EQ(complaintsOf("name: x\n"),
              "g.yaml:1:1: found a graph without a format; expected 'format: 1'\n"
              "g.yaml:1:1: found a graph without blocks; expected a list 'blocks:'\n");
    EXPECT_EQ(complaintsOf("format: 1\nblocks: []\n"),
              "g.yaml:2:9: found an empty list of blocks; expected one block at least\n");
    complaints = {};
    GraphDescription::fromFile(folder.path("none.yaml"), complaints);
    EXPECT_EQ(getText(),
              folder.path("none.yaml") +
                  ": found no file that can be read (No such file or directory); expected a graph file\n");
    complaints = {};
    GraphDescription::fromFile(folder.path("."), complaints);
    EXPECT_EQ(getText(), folder.path(".") +
                             ": found no file that can be read (Is a directory); expected a graph file\n");
}

TEST_F(GraphDescriptionTest, ComplaintsCanBeRaised) {
    complaints.raise();
    read("format: 1\n");
    try {
        complaints.raise();
        FAIL();
    } catch (const GraphException& exception) {
        EXPECT_EQ(exception.getComplaints().size(), 1u);
        EXPECT_EQ(exception.what(),
                  folder.path("g.yaml") + ":1:1: found a graph without blocks; expected a list 'blocks:'");
    }
}

} // namespace
