// SPDX-License-Identifier: MIT
#include "host/description/GraphReader.h"

#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Quillmere::Host::Complaints;
using Quillmere::Host::GraphDescription;
using Quillmere::Host::GraphReader;
using Quillmere::Host::Overflow;
using Quillmere::Host::Place;
using Quillmere::Host::Value;

/// `line:column` of something that stands in `g.yaml`.
std::string at(const Place& where) {
    return (where.file == "g.yaml" ? "" : where.file + ":") + std::to_string(where.line) + ":" +
           std::to_string(where.column);
}

class GraphReaderTest : public testing::Test {
protected:
    GraphDescription read(const std::string& text) {
        return GraphReader("g.yaml", complaints).readText(text);
    }

    /// What is complained of, each `line:column`, by place.
    std::string getFaults() const {
        std::string places;
        for (const auto& complaint : complaints.getSorted())
            places += at(complaint.where) + " ";
        return places;
    }

    Complaints complaints;
};

TEST_F(GraphReaderTest, EverythingHasThePlaceAtWhichItStands) {
    const GraphDescription graph = read("format: 1\n"
                                        "clock: stream\n"
                                        "plugins: [a.so]\n"
                                        "parameters: {p: 5}\n"
                                        "layouts: [{id: fast}]\n"
                                        "blocks: [{id: x, type: T, layout: fast, properties: {A: 7}}]\n"
                                        "connections: [{from: x.o, to: x.i, buffer: 2, order: newest}]\n"
                                        "timeline: [{at: 1, set: {x.A: 3}}]\n");
    ASSERT_EQ(getFaults(), "");
    EXPECT_EQ(at(graph.where), "1:1");
    EXPECT_EQ(at(graph.clockPlace), "2:8");
    EXPECT_EQ(at(graph.plugins.at(0).where), "3:11");
    EXPECT_EQ(at(graph.parameters.at(0).where), "4:14");
    EXPECT_EQ(at(graph.parameters.at(0).value.where), "4:17");
    EXPECT_EQ(at(graph.layouts.at(0).where), "5:16");
    const GraphDescription::Block& block = graph.blocks.at(0);
    EXPECT_EQ(at(block.where), "6:15") << "its id's";
    EXPECT_EQ(at(block.typeWhere), "6:24");
    EXPECT_EQ(at(block.layoutWhere), "6:35");
    EXPECT_EQ(at(block.settings.at(0).where), "6:54");
    EXPECT_EQ(at(block.settings.at(0).value.where), "6:57");
    const GraphDescription::Connection& connection = graph.connections.at(0);
    EXPECT_EQ(at(connection.where), "7:15");
    EXPECT_EQ(at(connection.from.where), "7:22");
    EXPECT_EQ(at(connection.to.where), "7:31");
    EXPECT_EQ(at(connection.buffer.where), "7:44");
    EXPECT_EQ(at(connection.isNewestFirst.where), "7:54");
    EXPECT_EQ(at(graph.timeline.at(0).where), "8:12");
    EXPECT_EQ(at(graph.timeline.at(0).changes.at(0).where), "8:26");
}

TEST_F(GraphReaderTest, WhatIsNotSaidGetsNoDefault) {
    const GraphDescription graph =
        read("format: 1\nblocks: [{id: x, type: T}]\nconnections: [{from: x.o, to: x}]\n");
    ASSERT_EQ(getFaults(), "");
    EXPECT_TRUE(graph.layouts.empty());
    EXPECT_EQ(graph.blocks.at(0).layout, "");
    EXPECT_EQ(at(graph.clockPlace), ":0:0") << "nowhere";
    const GraphDescription::Connection& connection = graph.connections.at(0);
    EXPECT_FALSE(connection.to.hasPin);
    for (const Value& written : {connection.buffer.written, connection.overflow.written, graph.view})
        EXPECT_EQ(written.kind, Value::Kind::Null);
    EXPECT_FALSE(connection.buffer.value.has_value());
    EXPECT_FALSE(connection.overflow.value.has_value());
}

TEST_F(GraphReaderTest, AParameterOfAConnectionStaysAsItIsWritten) {
    const GraphDescription graph =
        read("format: 1\nparameters: {n: 4}\nblocks: [{id: x, type: T}]\n"
             "connections: [{from: x.o, to: x.i, buffer: \"${n}\", overflow: wait}]\n");
    ASSERT_EQ(getFaults(), "");
    const GraphDescription::Connection& connection = graph.connections.at(0);
    EXPECT_FALSE(connection.buffer.value.has_value());
    EXPECT_EQ(connection.buffer.written.text, "${n}");
    EXPECT_EQ(at(connection.buffer.where), "4:44");
    EXPECT_EQ(connection.overflow.value, Overflow::Wait);
    EXPECT_EQ(connection.overflow.written.kind, Value::Kind::Null);
}

/// Else the rest of it, and what leads to it, couldn't be checked.
TEST_F(GraphReaderTest, WhatIsRefusedIsKeptAndMarked) {
    const GraphDescription graph = read("format: 1\n"
                                        "parameters: {a b: 1, good: 2}\n"
                                        "blocks:\n"
                                        "  - {id: x, type: T}\n"
                                        "  - {id: x, type: U, properties: {A: 1}}\n"
                                        "  - {id: y}\n"
                                        "  - {id: z, type: T, layout: nowhere}\n"
                                        "connections:\n"
                                        "  - {from: x.o, to: nobody.i}\n"
                                        "timeline:\n"
                                        "  - {at: never, fire: x.Reset}\n"
                                        "  - {at: 1, fire: nobody.Reset}\n");
    EXPECT_EQ(getFaults(), "2:14 5:10 6:5 7:30 9:21 11:10 12:19 ");
    const auto areRefused = [](const auto& things) {
        std::string flags;
        for (const auto& thing : things)
            flags += thing.isRefused ? "x" : ".";
        return flags;
    };
    EXPECT_EQ(areRefused(graph.parameters), "x.");
    EXPECT_EQ(areRefused(graph.blocks), ".xxx");
    EXPECT_EQ(graph.blocks.at(1).settings.size(), 1u);
    ASSERT_EQ(graph.connections.size(), 1u);
    EXPECT_FALSE(graph.connections[0].from.isRefused);
    EXPECT_TRUE(graph.connections[0].to.isRefused);
    EXPECT_EQ(graph.connections[0].to.getText(), "nobody.i");
    EXPECT_EQ(areRefused(graph.timeline), "x.");
    EXPECT_TRUE(graph.timeline.at(1).changes.at(0).isRefused);
    EXPECT_TRUE(graph.isUsable);
}

TEST_F(GraphReaderTest, OnlyAMapIsWorthCheckingFurther) {
    for (const char* const text : {"", "- 1\n", "graph\n", "{format: 1\n"}) {
        complaints = {};
        EXPECT_FALSE(read(text).isUsable) << text;
        EXPECT_NE(getFaults(), "") << text;
    }
    complaints = {};
    EXPECT_TRUE(read("{}\n").isUsable);
    EXPECT_EQ(getFaults(), "1:1 1:1 ") << "neither a format nor blocks";
}

TEST_F(GraphReaderTest, AFileIsReadAsATextIs) {
    const Support::TemporaryFolder folder;
    const std::string text = "format: 1\nname: n\nblocks: [{id: x, type: T}]\nview: {zoom: 2}\n";
    const std::string path = folder.write("file.yaml", text);
    const GraphDescription graph = GraphReader(path, complaints).readFile();
    EXPECT_EQ(getFaults(), "");
    EXPECT_EQ(graph.path, path);
    EXPECT_EQ(graph.blocks.at(0).where.file, path);
    EXPECT_EQ(graph, read(text));
}

} // namespace
