// SPDX-License-Identifier: MIT
// What a graph is as a value: put together in code, written down, read back, compared, changed.
#include "host/description/GraphDescription.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Quillmere::Core::MatrixXd;
using Quillmere::Host::Complaint;
using Quillmere::Host::Complaints;
using Quillmere::Host::GraphChanges;
using Quillmere::Host::GraphDescription;
using Quillmere::Host::Overflow;
using Quillmere::Host::Value;
using Quillmere::Host::valueOf;
using Change = GraphDescription::TimelineChange;

std::string textOf(const Complaints& complaints) {
    std::string lines;
    for (const Complaint& complaint : complaints.getSorted())
        lines += complaint.getText() + "\n";
    return lines;
}

GraphDescription read(const std::string& text) {
    Complaints complaints;
    GraphDescription graph = GraphDescription::fromText(text, "g.yaml", complaints);
    EXPECT_EQ(textOf(complaints), "") << text;
    return graph;
}

void expectReadsBack(const GraphDescription& graph) {
    const std::string text = graph.toText();
    const GraphDescription back = read(text);
    EXPECT_TRUE(back == graph) << text;
    EXPECT_EQ(back.toText(), text) << "a text that was written is written again alike";
}

constexpr const char* kEverything = R"yaml(format: 1
name: calm wrist
clock: stream
plugins: [mine/libMine.so]
parameters: {cutoff: 0.080, rec: null}
layouts:
  - {id: slow}
  - {id: fast, view: {y: 1}}
blocks:
  - {id: wrist, type: RecordingSource, properties: {file: "${rec}", pins: {accel: [ax, ay]}}, view: [1]}
  - {id: odd, type: Nobody.Knows, layout: fast, properties: {"On": "0.5", M: [[1, -.inf], [.nan, 1e300]]}}
connections:
  - {from: wrist.accel, to: odd.in (rad/s), buffer: 4, order: newest, overflow: wait, view: {c: red}}
  - {from: wrist, to: "odd.#2", buffer: "${cutoff}"}
timeline:
  - {at: 2.5, set: {odd.M: 0.2, odd.On: "${cutoff}"}, fire: odd.Reset, send: {odd.x: [[1]]}}
  - {at: "${cutoff}", fire: [odd.Reset, odd.Start]}
view: {zoom: 2, "0": ""}
)yaml";

TEST(GraphTextTest, TheCanonicalFileIsWrittenAsItIsRead) {
    const GraphDescription graph = read(kEverything);
    EXPECT_EQ(graph.toText(), kEverything);
    expectReadsBack(graph);
}

TEST(GraphTextTest, WhatSaysNothingIsLeftOut) {
    EXPECT_EQ(read(R"({"timeline": [], "clock": "wall", "connections": [], "blocks": [
        {"type": "T", "id": "a", "properties": {}, "view": null}], "parameters": {}, "format": 1})")
                  .toText(),
              "format: 1\nblocks:\n  - {id: a, type: T}\n");
}

TEST(GraphTextTest, WhatIsLongHasLinesOfItsOwn) {
    const std::string row = "[1.000000000000001, 2.000000000000002, 3.000000000000003, 4.000000000000004]";
    EXPECT_EQ(
        read("format: 1\nblocks: [{id: a, type: T, properties: {M: [" + row + ", " + row + "], B: 1}}]\n")
            .toText(),
        "format: 1\nblocks:\n  - id: a\n    type: T\n    properties:\n      M:\n        - " + row +
            "\n        - " + row + "\n      B: 1\n");
}

TEST(GraphTextTest, BlocksAndConnectionsCanBePutTogetherInCode) {
    GraphDescription graph;
    graph.parameters.push_back({"cutoff", {}, valueOf(0.1)});
    graph.layouts.push_back({"only", {}, {}});
    graph.addBlock("wrist", "RecordingSource").set("file", valueOf("wrist.csv")).set("rate", valueOf(100));
    graph.addBlock("smooth", "FilterButterworth").set("Order", valueOf(2)).set("Order", valueOf(4));
    graph.connect("wrist.accel", "smooth").buffer = 8;
    graph.connections.back().overflow = Overflow::Drop;
    graph.timeline.push_back(
        {.at = 1.5, .changes = {{.block = "smooth", .name = "Order", .value = valueOf(3)}}});
    EXPECT_EQ(graph.toText(),
              "format: 1\nparameters: {cutoff: 0.1}\nlayouts:\n  - {id: only}\nblocks:\n"
              "  - {id: wrist, type: RecordingSource, properties: {file: \"wrist.csv\", rate: 100}}\n"
              "  - {id: smooth, type: FilterButterworth, properties: {Order: 4}}\n"
              "connections:\n"
              "  - {from: wrist.accel, to: smooth, buffer: 8, overflow: drop}\n"
              "timeline:\n  - {at: 1.5, set: {smooth.Order: 3}}\n");
    expectReadsBack(graph);
    Complaints complaints;
    const GraphDescription resolved = graph.resolved(complaints);
    EXPECT_EQ(textOf(complaints), "");
    EXPECT_EQ(resolved.blocks.at(0).layout, "only");
}

TEST(GraphTextTest, WhatIsWrongInCodeIsToldLikeInAFile) {
    GraphDescription graph;
    graph.addBlock("a.b", "T");
    graph.addBlock("x", "").layout = "fast";
    graph.addBlock("x", "T");
    graph.connect("x.out", "y.in").buffer = 0;
    graph.timeline.push_back({.at = std::numeric_limits<double>::infinity(), .changes = {{.block = "z"}}});
    Complaints complaints;
    const GraphDescription resolved = graph.resolved(complaints);
    EXPECT_EQ(textOf(complaints),
              "found the id 'a.b'; expected letters, digits, '_' and '-'; did you mean a_b?\n"
              "found a block without a type; expected 'type:' and the name of a block type\n"
              "found the layout 'fast'; expected one of the graph's layouts: main\n"
              "found the id 'x' a second time; expected an id of its own for each block\n"
              "found the block 'y'; expected the id of a block: x\n"
              "found a buffer of 0; expected 1 to 2147483647 samples\n"
              "found the time inf; expected seconds of stream time\n"
              "found the block 'z'; expected the id of a block: x\n");
    EXPECT_EQ(resolved.blocks.size(), 1u) << "one of each id, and none without";
    EXPECT_TRUE(resolved.timeline.empty());
    Complaints again;
    static_cast<void>(resolved.resolved(again));
    EXPECT_EQ(textOf(again), "") << "nothing is told twice";
}

TEST(GraphTextTest, ParametersStayAsTheyAreWrittenUntilTheyAreFilledIn) {
    const GraphDescription graph = read("format: 1\nparameters: {a: 1, when: [{at: 1, fire: x.C}]}\n"
                                        "blocks: [{id: x, type: T, properties: {P: \"${a}\"}}]\n"
                                        "timeline: \"${when}\"\n");
    EXPECT_EQ(graph.blocks.at(0).settings.at(0).value.text, "${a}");
    EXPECT_TRUE(graph.timeline.empty());
    expectReadsBack(graph);
    Complaints complaints;
    const GraphDescription changed = graph.with({.parameters = {{"a", "2", "--param a=2"}}}, complaints);
    expectReadsBack(changed);
    EXPECT_FALSE(changed == graph);
    const GraphDescription resolved = changed.resolved(complaints);
    EXPECT_EQ(textOf(complaints), "");
    EXPECT_EQ(resolved.blocks.at(0).settings.at(0).value.text, "2");
    ASSERT_EQ(resolved.timeline.size(), 1u);
    EXPECT_EQ(resolved.timeline[0].changes.at(0).name, "C");
    EXPECT_EQ(graph.resolved(complaints).blocks.at(0).settings.at(0).value.text, "1") << "a value is a value";
}

/// What a caller replaces was the graph's word all the same: one of its parameters without a value is told.
TEST(GraphTextTest, WhatACallerReplacesIsStillChecked) {
    const GraphDescription graph = read(
        "format: 1\nparameters: {a: }\nblocks: [{id: x, type: T, properties: {P: \"${a}\", Q: \"${a}\"}}]\n");
    GraphChanges changes;
    changes.settings = {{"x", "P", "5", "--set x.P=5"}, {"x", "Q", "", "--set x.Q="}};
    Complaints complaints;
    const GraphDescription resolved = graph.with(changes, complaints).resolved(complaints);
    EXPECT_EQ(
        textOf(complaints),
        "g.yaml:3:43: found the parameter 'a' without a value; expected one from the graph or the caller\n"
        "g.yaml:3:54: found the parameter 'a' without a value; expected one from the graph or the caller\n");
    ASSERT_EQ(resolved.blocks.at(0).settings.size(), 1u);
    EXPECT_EQ(resolved.blocks.at(0).settings[0].value.text, "5");
}

TEST(GraphTextTest, ACallersFileIsWrittenInFull) {
    GraphDescription graph = read("format: 1\nblocks: [{id: x, type: RecordingSource}]\n");
    Complaints complaints;
    graph = graph.with({.inputs = {{"x", "mine.csv", "--input"}}}, complaints);
    const std::string full = std::filesystem::absolute("mine.csv").string();
    EXPECT_NE(graph.toText().find("file: \"" + full + "\""), std::string::npos) << graph.toText();
}

TEST(GraphTextTest, EveryTextReadsBackAsWhatItIs) {
    const std::vector<std::string> texts{"",
                                         " ",
                                         "a b",
                                         " a",
                                         "a ",
                                         "null",
                                         "~",
                                         "yes",
                                         "No",
                                         "on",
                                         "0x10",
                                         "010",
                                         "1e5",
                                         "-.inf",
                                         ".nan",
                                         "-0",
                                         "a: b",
                                         "a:",
                                         "a #b",
                                         "#",
                                         "-",
                                         "- a",
                                         "? a",
                                         "[a",
                                         "a]",
                                         "{",
                                         "a, b",
                                         "*a",
                                         "&a b",
                                         "!x y",
                                         "%a",
                                         "@a",
                                         "`a",
                                         "'a'",
                                         "\"a\"",
                                         "\"",
                                         "\\",
                                         "\\n",
                                         "a\nb",
                                         "a\n",
                                         "\n\n a",
                                         "\t",
                                         "\r\n",
                                         "---",
                                         "...",
                                         "ä µ",
                                         "漢字",
                                         "\x01",
                                         "\x04",
                                         "\x7f",
                                         "\xff",
                                         "\xc2",
                                         "\xc2\x85",
                                         "|",
                                         ">",
                                         "🙂",
                                         "=",
                                         "<<",
                                         "${a",
                                         "2001-01-01",
                                         "1_000",
                                         "\xe2\x80\xa8x",
                                         "\xef\xbb\xbf",
                                         std::string(1, '\0'),
                                         std::string(3000, 'k'),
                                         std::string(600, '\x01')};
    for (const std::string& text : texts) {
        for (const bool isQuoted : {true, false}) {
            GraphDescription graph;
            Value value = valueOf(text);
            value.isQuoted = isQuoted;
            Value list;
            list.kind = Value::Kind::List;
            list.items = {value, value};
            Value map;
            map.kind = Value::Kind::Map;
            map.entries = {{text, {}, list}, {text + "2", {}, value}};
            graph.name = text;
            graph.addBlock("x", "T").set("P", value).set("L", list).set("M", map).set(text + "3", value);
            graph.blocks.back().view = map;
            expectReadsBack(graph);
        }
    }
}

TEST(GraphTextTest, EveryNumberReadsBackToTheSameBits) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    MatrixXd numbers(2, 5);
    numbers << 0.1, -0.0, kInfinity, -kInfinity, std::numeric_limits<double>::quiet_NaN(), 5e-324, 1e300,
        1.0 / 3.0, 1e22, -123456789.0;
    GraphDescription graph;
    graph.addBlock("x", "T").set("M", valueOf(numbers)).set("F", valueOf(true)).set("W", valueOf(-7));
    expectReadsBack(graph);
    Complaints complaints;
    const auto back = toMatrix(read(graph.toText()).blocks.at(0).settings.at(0).value, complaints);
    ASSERT_TRUE(back.has_value());
    for (Eigen::Index i = 0; i < numbers.size(); ++i)
        EXPECT_TRUE(back->data()[i] == numbers.data()[i] || numbers.data()[i] != numbers.data()[i]) << i;
}

TEST(GraphTextTest, ATimelineThatNoMapCanSayGetsMoreEntries) {
    GraphDescription graph;
    graph.addBlock("x", "T");
    const Change set{.block = "x", .name = "P", .value = valueOf(1)};
    const Change fire{.kind = Change::Kind::Fire, .block = "x", .name = "C"};
    graph.timeline.push_back({.at = 1.0, .changes = {set, fire, set, set, fire, fire}});
    EXPECT_EQ(graph.toText(), "format: 1\nblocks:\n  - {id: x, type: T}\ntimeline:\n"
                              "  - {at: 1, set: {x.P: 1}, fire: x.C}\n"
                              "  - {at: 1, set: {x.P: 1}}\n"
                              "  - {at: 1, set: {x.P: 1}, fire: [x.C, x.C]}\n");
    expectReadsBack(graph);
}

TEST(GraphTextTest, GraphsThatSayOtherThingsAreNotEqual) {
    const std::string whole = kEverything;
    const GraphDescription graph = read(whole);
    for (const auto& [from, to] : std::vector<std::pair<std::string, std::string>>{{"calm", "calmer"},
                                                                                   {"stream", "wall"},
                                                                                   {"libMine", "libYours"},
                                                                                   {"0.080", "0.08"},
                                                                                   {"slow", "slower"},
                                                                                   {"y: 1", "y: 2"},
                                                                                   {"ax", "az"},
                                                                                   {"Nobody", "Somebody"},
                                                                                   {"\"0.5\"", "0.5"},
                                                                                   {"[1]}\n", "[2]}\n"},
                                                                                   {"buffer: 4", "buffer: 5"},
                                                                                   {"newest", "oldest"},
                                                                                   {"wait", "drop"},
                                                                                   {"red", "blue"},
                                                                                   {"2.5", "2.6"},
                                                                                   {"odd.Start", "odd.Stop"},
                                                                                   {"zoom", "room"},
                                                                                   {"odd.in", "odd.on"}}) {
        std::string text = whole;
        text.replace(text.find(from), from.size(), to);
        EXPECT_FALSE(read(text) == graph) << from;
    }
}

class Dice {
public:
    explicit Dice(unsigned seed) : engine(seed) {}
    std::size_t below(std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n - 1)(engine); }
    bool oneIn(std::size_t n) { return below(n) == 0; }

    std::string text() {
        static const std::vector<std::string> kPieces{
            "a",  "Z",  "7", ".", "-", " ", ":", "#", ",", "[", "]", "{",    "}",   "'", "\"",  "\\",
            "\n", "\t", "!", "&", "*", "?", "|", ">", "%", "@", "~", "null", "yes", "ü", "\x03"};
        std::string text;
        for (std::size_t n = below(6); n > 0; --n)
            text += kPieces[below(kPieces.size())];
        return text;
    }
    Value value(int depth) {
        Value value;
        const std::size_t kind = below(depth > 0 ? 6 : 4);
        if (kind < 3) value = valueOf(text());
        if (kind == 2) value.isQuoted = false;
        value.kind = kind < 3    ? Value::Kind::Scalar
                     : kind == 4 ? Value::Kind::List
                     : kind == 5 ? Value::Kind::Map
                                 : Value::Kind::Null;
        for (std::size_t n = below(4); n > 0 && kind == 4; --n)
            value.items.push_back(this->value(depth - 1));
        for (std::size_t n = below(4); n > 0 && kind == 5; --n)
            value.entries.push_back({std::to_string(n) + text(), {}, this->value(depth - 1)});
        return value;
    }
    std::string id(const std::string& letter, std::size_t n) { return letter + std::to_string(below(n)); }

private:
    std::mt19937 engine;
};

GraphDescription randomGraph(unsigned seed) {
    Dice dice(seed);
    GraphDescription graph;
    if (dice.oneIn(2)) graph.name = "n" + dice.text();
    if (dice.oneIn(3)) graph.clock = GraphDescription::Clock::Stream;
    if (dice.oneIn(3)) graph.plugins.push_back({"p" + dice.text(), {}});
    for (std::size_t n = dice.below(3); n > 0; --n)
        graph.parameters.push_back({"p" + std::to_string(n), {}, dice.value(2)});
    for (std::size_t n = 0; n < 2 && dice.oneIn(2); ++n)
        graph.layouts.push_back({"l" + std::to_string(n), {}, dice.value(2)});
    const std::size_t blocks = 1 + dice.below(4);
    for (std::size_t n = 0; n < blocks; ++n) {
        GraphDescription::Block& block = graph.addBlock("b" + std::to_string(n), "t" + dice.text());
        if (!graph.layouts.empty() && dice.oneIn(2)) block.layout = graph.layouts.back().id;
        for (std::size_t m = dice.below(4); m > 0; --m)
            block.set(std::to_string(m) + dice.text(), dice.value(4));
        if (dice.oneIn(3)) block.view = dice.value(3);
    }
    for (std::size_t n = dice.below(4); n > 0; --n) {
        auto& connection = graph.connect(dice.id("b", blocks) + "." + dice.text(), dice.id("b", blocks));
        if (dice.oneIn(2)) connection.buffer = static_cast<std::uint32_t>(1 + dice.below(1000));
        if (dice.oneIn(3)) connection.isNewestFirst = dice.oneIn(2);
        if (dice.oneIn(3)) connection.overflow.written = valueOf("${p1}");
        if (dice.oneIn(3)) connection.view = dice.value(2);
    }
    for (std::size_t n = dice.below(3); n > 0; --n) {
        auto& entry = graph.timeline.emplace_back();
        entry.at = static_cast<double>(dice.below(100)) / 7.0;
        for (std::size_t m = 1 + dice.below(4); m > 0; --m) {
            const auto kind = static_cast<Change::Kind>(dice.below(3));
            Change change{.kind = kind, .block = dice.id("b", blocks), .name = dice.text()};
            if (kind != Change::Kind::Fire) change.value = dice.value(2);
            entry.changes.push_back(std::move(change));
        }
    }
    return graph;
}

/// Of the parameters those that hold another one can't be read.
bool getHasNestedParameter(const GraphDescription& graph) {
    return std::any_of(graph.parameters.begin(), graph.parameters.end(), [](const auto& parameter) {
        return parameter.value.text.find("${") != std::string::npos;
    });
}

TEST(GraphTextTest, RandomGraphsReadBack) {
    for (unsigned seed = 0; seed < 3000 && !HasFailure(); ++seed) {
        const GraphDescription graph = randomGraph(seed);
        if (!getHasNestedParameter(graph)) expectReadsBack(graph);
    }
}

TEST(GraphTextTest, EveryExampleReadsBack) {
    std::size_t graphs = 0;
    for (const auto& file : std::filesystem::recursive_directory_iterator(EXAMPLES)) {
        const bool isPage = file.path().parent_path().filename() == "manual"; // of a block
        if (file.path().extension() != ".yaml" || isPage) continue;
        std::ostringstream text;
        text << std::ifstream(file.path()).rdbuf();
        expectReadsBack(read(text.str()));
        ++graphs;
    }
    EXPECT_GT(graphs, 5u);
}

} // namespace
