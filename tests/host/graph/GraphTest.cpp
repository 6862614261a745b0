// SPDX-License-Identifier: MIT
#include "host/graph/Graph.h"

#include "framework/Quillmere.h"
#include "host/graph/BlockDescription.h"
#include "tests/host/kit/GraphFixture.h"
#include "tests/host/kit/WithoutRights.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Strings = std::vector<std::string>;

constexpr const char* kHead = R"yaml(format: 1
blocks:
  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: [x], xy: [x, y]}}}
  - {id: out, type: RecordingSink, properties: {file: out.csv}}
)yaml";

class GraphTest : public Support::GraphFixture {
protected:
    /// Builds a graph with one `OddSettings` of the given properties and reads them back.
    std::string valuesOf(const std::string& properties, const Strings& names) {
        const std::string text =
            std::string(kHead) + "  - {id: odd, type: OddSettings, properties: " + properties +
            "}\nconnections:\n  - {from: in.x, to: odd.main in.put}\n  - {from: odd.a, to: out.a}\n";
        Complaints complaints;
        const GraphDescription description =
            GraphDescription::fromFile(folder.write("g.yaml", text), complaints);
        const Graph graph(description, catalogue, complaints);
        std::string values;
        for (const std::string& name : names)
            values += valueText(describe(graph.getNodes().at(2).block->getProperty(name))) + " ";
        for (const Complaint& complaint : complaints.getSorted())
            values += withoutFolder(complaint.getText()) + "\n";
        return values;
    }

    /// What is complained of a graph with the given further blocks and connections behind source and sink.
    std::string wrong(const std::string& blocks, const std::string& connections) {
        return complaintsOf(std::string(kHead) + blocks + "connections:\n" + connections);
    }

    Strings runOrder(const std::string& text) {
        Complaints complaints;
        const GraphDescription description =
            GraphDescription::fromFile(folder.write("g.yaml", text), complaints);
        const Graph graph(description, catalogue, complaints);
        complaints.raise();
        Strings ids;
        for (const Graph::Node* node : graph.getRunOrder())
            ids.push_back(node->description->id);
        return ids;
    }
};

TEST_F(GraphTest, ABlockCutLooseHasNeitherLinksNorLayout) {
    const std::string text = std::string(kHead) +
                             "  - {id: odd, type: OddSettings}\nconnections:\n"
                             "  - {from: in.x, to: odd.main in.put}\n"
                             "  - {from: odd.a, to: out.a}\n  - {from: in.xy, to: out.b}\n";
    Complaints complaints;
    const GraphDescription description = GraphDescription::fromFile(folder.write("g.yaml", text), complaints);
    Graph graph(description, catalogue, complaints);
    complaints.raise();
    Quillmere::Core::Filter& odd = *graph.getNodes().at(2).block;
    const auto links = [](const Quillmere::Core::Filter& block) {
        int attached = 0;
        for (const auto* const pin : block.getInputPins())
            attached += pin->isAttached() ? 1 : 0;
        for (const auto* const pin : block.getOutputPins())
            attached += pin->isAttached() ? 1 : 0;
        return attached;
    };
    ASSERT_EQ(links(odd), 2);
    graph.cutLoose(odd);
    EXPECT_EQ(links(odd), 0);
    EXPECT_EQ(odd.getManager(), nullptr);
    EXPECT_EQ(links(*graph.getNodes().at(0).block), 1) << "the others keep their own";
    EXPECT_EQ(graph.getLayout().getFilters().size(), 2u);
}

TEST_F(GraphTest, SettingsAreWrittenInTheirOwnType) {
    EXPECT_EQ(
        valuesOf(
            "{flag: true, whole: -7, count: 4294967295, number: 1e-3, ranged whole: 10, ranged.number: 1.5, "
            "choice: HiPass, matrix: [[1, 2], [3, 4.5]]}",
            {"flag", "whole", "count", "number", "ranged whole", "ranged.number", "choice", "matrix"}),
        "true -7 4294967295 0.001 10 1.5 HiPass [[1, 2], [3, 4.5]] ");
}

TEST_F(GraphTest, AChoiceTakesItsLabelOrItsIndex) {
    EXPECT_EQ(valuesOf("{choice: 1}", {"choice"}), "HiPass ");
    EXPECT_EQ(valuesOf("{choice: LowPass}", {"choice"}), "LowPass ");
    EXPECT_EQ(valuesOf("{choice: 0}", {"choice"}), "0 ") << "a label goes before an index";
    EXPECT_EQ(valuesOf("{choice: hipass}", {}), "g.yaml:5:55: found 'hipass' for 'choice'; expected one of "
                                                "LowPass, HiPass and 0, or an index from 0 to 2; "
                                                "did you mean HiPass?\n");
    EXPECT_EQ(valuesOf("{choice: 3}", {"choice"}), "LowPass g.yaml:5:55: found '3' for 'choice'; expected "
                                                   "one of LowPass, HiPass and 0, or an index from 0 to 2\n");
    EXPECT_EQ(valuesOf("{choice: -1}", {}), "g.yaml:5:55: found '-1' for 'choice'; expected one of LowPass, "
                                            "HiPass and 0, or an index from 0 to 2\n");
}

TEST_F(GraphTest, ASettingMayMakeAnotherWritableWhateverTheirOrder) {
    EXPECT_EQ(valuesOf("{locked: 2, unlock: true}", {"locked"}), "2 ");
    EXPECT_EQ(valuesOf("{unlock: true, locked: 2}", {"locked"}), "2 ");
    EXPECT_EQ(valuesOf("{locked: 2}", {"locked"}), "0 g.yaml:5:55: found '2' for 'locked'; expected a number "
                                                   "that the block takes (Property 'locked' is not "
                                                   "writable)\n");
}

struct RefusalRow {
    std::string properties;
    std::string complaint; ///< Behind `g.yaml:5:`.
};

TEST_F(GraphTest, RefusedSettingsSayWhatWouldDo) {
    const RefusalRow rows[] = {
        {"{ranged whole: 11}", "61: found '11' for 'ranged whole'; expected a whole number from -3 to 10\n"},
        {"{ranged.number: 0.25}",
         "62: found '0.25' for 'ranged.number'; expected a number from 0.5 to 1.5\n"},
        {"{ranged.number: .nan}",
         "62: found '.nan' for 'ranged.number'; expected a number from 0.5 to 1.5\n"},
        {"{whole: 2147483648}",
         "54: found '2147483648' for 'whole'; expected a whole number that fits in 32 bits\n"},
        {"{whole: 1.5}", "54: found '1.5'; expected a whole number\n"},
        {"{count: -1}", "54: found '-1' for 'count'; expected a whole number from 0 to 4294967295\n"},
        {"{matrix: []}",
         "55: found a list for 'matrix'; expected a matrix that the block takes (a row at least)\n"},
        {"{Reset: 1}", "54: found '1' for 'Reset'; expected a setting: a command has no value\n"},
        {"{flags: true}", "47: found the property 'flags' of 'odd' (OddSettings); expected one of flag, "
                          "whole, count, number, ranged whole, "
                          "ranged.number, choice, matrix, locked, unlock and Reset; did you mean flag?\n"},
    };
    for (const RefusalRow& row : rows)
        EXPECT_EQ(valuesOf(row.properties, {}), "g.yaml:5:" + row.complaint) << row.properties;
}

TEST_F(GraphTest, WhatABlockRaisesWhenItHearsOfASettingIsTold) {
    EXPECT_EQ(
        wrong("  - {id: odd, type: OddFailing, properties: {good: -2, strange: true}}\n",
              "  - {from: in.x, to: odd}\n  - {from: odd, to: out.a}\n"),
        "g.yaml:5:52: found '-2' for 'good'; expected a whole number that the block takes (no sample at "
        "all)\n");
}

TEST_F(GraphTest, ComplaintsByTheThousandAreCountedBeyondFifty) {
    std::string text = "format: 1\nblocks:\n";
    for (int i = 0; i < 20000; ++i)
        text += "  - {id: g" + std::to_string(i) + ", type: FilterGain}\n";
    text += "connections:\n";
    for (int i = 0; i < 50000; ++i)
        text += "  - {from: x" + std::to_string(i) + ", to: y" + std::to_string(i) + "}\n";
    Complaints complaints;
    const std::clock_t begin = std::clock();
    GraphDescription::fromFile(folder.write("g.yaml", text), complaints);
    // Each of them would compare itself with twenty thousand names: minutes.
    EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, 20.0);
    EXPECT_EQ(complaints.getSorted().size(), 50u);
    try {
        complaints.raise();
        ADD_FAILURE() << "nothing raised";
    } catch (const GraphException& exception) {
        EXPECT_TRUE(std::string(exception.what()).ends_with("\nand 99950 more")) << exception.what();
    }
}

TEST_F(GraphTest, ParametersThatUnfoldToTooMuchAreRefused) {
    std::string text = "format: 1\nparameters: {p: [";
    for (int i = 0; i < 100000; ++i)
        text += "1, ";
    text += "1]}\nblocks:\n";
    for (int i = 0; i < 50; ++i)
        text += "  - {id: g" + std::to_string(i) + ", type: FilterGain, properties: {Gain: \"${p}\"}}\n";
    const std::string complaints = complaintsOf(text);
    EXPECT_NE(
        complaints.find("g.yaml:13:51: found parameters that unfold to more than a million values; expected "
                        "a smaller graph\n"),
        std::string::npos)
        << complaints;
}

TEST_F(GraphTest, ALongChainIsBuiltAndRunsInItsOrder) {
    constexpr int kBlocks = 5000;
    std::string text = std::string(kHead);
    for (int i = kBlocks; i-- > 0;) // from the last to the first, so that the order isn't the file's
        text += "  - {id: g" + std::to_string(i) + ", type: FilterGain}\n";
    text += "connections:\n  - {from: in.x, to: g0}\n";
    for (int i = 1; i < kBlocks; ++i)
        text += "  - {from: g" + std::to_string(i - 1) + ", to: g" + std::to_string(i) + "}\n";
    text += "  - {from: g" + std::to_string(kBlocks - 1) + ", to: out.x}\n";
    const Strings order = runOrder(text);
    ASSERT_EQ(order.size(), static_cast<std::size_t>(kBlocks) + 2);
    EXPECT_EQ(order.at(1), "g0");
    EXPECT_EQ(order.at(kBlocks), "g" + std::to_string(kBlocks - 1));
    EXPECT_EQ(order.back(), "out");
}

TEST_F(GraphTest, UnknownTypesPinsAndBlocksAreAllToldAtOnce) {
    EXPECT_EQ(wrong("  - {id: a, type: FilterGian}\n  - {id: b, type: OddSettings}\n",
                    "  - {from: in.x, to: a.input}\n"
                    "  - {from: in.z, to: b.main in.put}\n"
                    "  - {from: in, to: b.aux}\n"
                    "  - {from: b.c, to: out.c}\n"
                    "  - {from: b, to: out.d}\n"
                    "  - {from: in.x, to: b}\n"
                    "  - {from: in.x, to: b.main}\n"
                    "  - {from: in.x, to: in.x}\n"
                    "  - {from: in.x, to: out}\n")
                  .substr(0, 63),
              "g.yaml:5:19: found the block type 'FilterGian'; expected one of");
    const std::string rest = wrong("  - {id: b, type: OddSettings}\n", "  - {from: in.z, to: b.main in.put}\n"
                                                                       "  - {from: in, to: b.aux}\n"
                                                                       "  - {from: b.c, to: out.c}\n"
                                                                       "  - {from: b, to: out.d}\n"
                                                                       "  - {from: in.x, to: b}\n"
                                                                       "  - {from: in.x, to: b.main}\n"
                                                                       "  - {from: in.x, to: in.x}\n"
                                                                       "  - {from: in.x, to: out}\n");
    EXPECT_EQ(
        rest,
        "g.yaml:7:12: found the output 'z' of 'in' (RecordingSource); expected one of x and xy\n"
        "g.yaml:8:12: found no output of 'in' (RecordingSource); expected 'in.' and one of x and xy\n"
        "g.yaml:9:12: found the output 'c' of 'b' (OddSettings); expected one of a and b\n"
        "g.yaml:10:12: found no output of 'b' (OddSettings); expected 'b.' and one of a and b\n"
        "g.yaml:11:22: found no input of 'b' (OddSettings); expected 'b.' and one of aux and main in.put\n"
        "g.yaml:12:22: found the input 'main' of 'b' (OddSettings); expected one of aux and main in.put; did "
        "you mean main in.put?\n"
        "g.yaml:13:22: found the input 'x' of 'in' (RecordingSource); expected a block that has some\n"
        "g.yaml:14:22: found no input of 'out' (RecordingSink); expected 'out.' and a name for the "
        "columns\n");
}

TEST_F(GraphTest, APinMayBeLeftOutWhereThereIsOne) {
    EXPECT_EQ(wrong("  - {id: g, type: FilterGain}\n", "  - {from: in.x, to: g}\n  - {from: g, to: out.x}\n"),
              "");
}

TEST_F(GraphTest, AnInputTakesOneConnection) {
    EXPECT_EQ(wrong("  - {id: g, type: FilterGain}\n",
                    "  - {from: in.x, to: g}\n  - {from: in.xy, to: g.input}\n  - {from: g, to: out.a}\n  - "
                    "{from: in.x, to: "
                    "out.a}\n"),
              "g.yaml:8:23: found a second connection to 'g.input'; expected one for each input (the first "
              "is in line 7)\n"
              "g.yaml:10:22: found a second connection to 'out.a'; expected one for each input (the first is "
              "in line 9)\n");
}

TEST_F(GraphTest, TheMainInputMustBeConnected) {
    EXPECT_EQ(wrong("  - {id: b, type: OddSettings}\n",
                    "  - {from: in.x, to: b.aux}\n  - {from: b.a, to: out.a}\n"),
              "g.yaml:5:10: found the main input 'main in.put' of 'b' (OddSettings) open; expected a "
              "connection to 'b.main "
              "in.put'\n");
    EXPECT_EQ(wrong("", "  []\n"),
              "g.yaml:4:10: found 'out' (RecordingSink) without a connection; expected one at least\n");
}

TEST_F(GraphTest, AFileHasOneWriterAndNoReaderInTheSameRun) {
    EXPECT_EQ(wrong("  - {id: o2, type: RecordingSink, properties: {file: ./sub/../out.csv}}\n",
                    "  - {from: in.x, to: out.x}\n  - {from: in.x, to: o2.x}\n"),
              "g.yaml:5:54: found the file 'out.csv', which 'out' writes too; expected a file of its own for "
              "each sink\n");
    std::filesystem::create_symlink("in.csv", folder.path("link.csv"));
    EXPECT_EQ(wrong("  - {id: o2, type: RecordingSink, properties: {file: link.csv}}\n",
                    "  - {from: in.x, to: out.x}\n  - {from: in.x, to: o2.x}\n"),
              "g.yaml:3:56: found the file 'in.csv', which 'o2' writes; expected a recording that the run "
              "doesn't write "
              "over\n");
}

TEST_F(GraphTest, TwoNamesOfOneFileAreOneFile) {
    const std::string links = "  - {from: in.x, to: out.x}\n  - {from: in.x, to: o2.x}\n";
    const auto sink = [](const std::string& file) {
        return "  - {id: o2, type: RecordingSink, properties: {file: " + file + "}}\n";
    };
    folder.write("out.csv", "t,x[0]\n");
    std::filesystem::create_hard_link(folder.path("out.csv"), folder.path("hard.csv"));
    EXPECT_EQ(
        wrong(sink("hard.csv"), links),
        "g.yaml:5:54: found the file 'hard.csv', which 'out' writes too; expected a file of its own for "
        "each sink\n");
    std::filesystem::create_hard_link(folder.path("in.csv"), folder.path("hard-in.csv"));
    EXPECT_EQ(wrong(sink("hard-in.csv"), links),
              "g.yaml:3:56: found the file 'in.csv', which 'o2' writes; expected a recording that the run "
              "doesn't write over\n");
}

TEST_F(GraphTest, AResultTakesItsPartialNamesToo) {
    const std::string links = "  - {from: in.x, to: out.x}\n  - {from: in.x, to: o2.x}\n";
    for (const char* const name : {"out.csv.partial", "out.csv.partial.widened"})
        EXPECT_EQ(wrong("  - {id: o2, type: RecordingSink, properties: {file: " + std::string(name) + "}}\n",
                        links),
                  "g.yaml:5:54: found the file '" + std::string(name) +
                      "', which 'out' writes too; expected a file of its own for each sink\n");
    const GraphChanges changes{.parameters = {},
                               .settings = {},
                               .inputs = {{"in", folder.path("out.csv.partial"), "--input"}},
                               .outputs = {}};
    folder.write("out.csv.partial", "t,x,y\n0,1,2\n");
    EXPECT_EQ(
        complaintsOf(std::string(kHead) + "connections:\n  - {from: in.x, to: out.x}\n", changes),
        "--input: found the file 'out.csv.partial', which 'out' writes; expected a recording that the run "
        "doesn't write over\n");
}

TEST_F(GraphTest, TheGraphAndItsPluginsAreNoPlaceForAResult) {
    const auto complaintsOfOutput = [&](const std::string& path) {
        const GraphChanges changes{
            .parameters = {}, .settings = {}, .inputs = {}, .outputs = {{"out", path, "--output"}}};
        return complaintsOf(std::string(kHead) + "connections:\n  - {from: in.x, to: out.x}\n", changes);
    };
    const std::string expected = "; expected a file that the run doesn't read\n";
    EXPECT_EQ(complaintsOfOutput(folder.path("g.yaml")),
              "--output: found the file 'g.yaml', which is the graph that runs" + expected);
    folder.write("g.yaml", ""); // so that there is something to link to
    std::filesystem::create_hard_link(folder.path("g.yaml"), folder.path("other.yaml.partial"));
    EXPECT_EQ(complaintsOfOutput(folder.path("other.yaml")),
              "--output: found the file 'other.yaml.partial', which is the graph that runs" + expected);
    const std::string plugin = catalogue.getPluginPaths().front();
    EXPECT_EQ(complaintsOfOutput(plugin),
              "--output: found the file '" + plugin + "', which is a plug-in of the run" + expected);
}

TEST_F(GraphTest, ALinkIsNoPlaceForAResultUnlessItLeadsToADevice) {
    const auto complaintsOfOutput = [&](const std::string& name) {
        const GraphChanges changes{.parameters = {},
                                   .settings = {},
                                   .inputs = {},
                                   .outputs = {{"out", folder.path(name), "--output"}}};
        return complaintsOf(std::string(kHead) + "connections:\n  - {from: in.x, to: out.x}\n", changes);
    };
    folder.write("real.csv", "t,x[0]\n");
    std::filesystem::create_symlink("real.csv", folder.path("link.csv"));
    std::filesystem::create_symlink("none.csv", folder.path("loose.csv"));
    std::filesystem::create_symlink("/dev/null", folder.path("null"));
    std::filesystem::create_symlink("/dev/stdout", folder.path("stdout"));
    EXPECT_EQ(
        complaintsOfOutput("link.csv"),
        "--output: found the link 'link.csv' to 'real.csv'; expected the name of the file itself, since a "
        "result takes the place of what has its name\n");
    EXPECT_NE(complaintsOfOutput("loose.csv"), "");
    EXPECT_EQ(complaintsOfOutput("null"), "");
    EXPECT_EQ(complaintsOfOutput("stdout"), "");
}

TEST_F(GraphTest, AResultNeedsAFolderThatCanBeWrittenTo) {
    namespace fs = std::filesystem;
    fs::create_directory(folder.path("locked"));
    fs::permissions(folder.path("locked"), fs::perms(0555));
    fs::permissions(folder.path(""), fs::perms(0777));
    const std::string text = std::string(kHead) + "connections:\n  - {from: in.x, to: out.x}\n";
    const Support::WithoutRights lowered;
    if (::geteuid() == 0) GTEST_SKIP() << "no user without rights can be had here";
    EXPECT_EQ(complaintsOf(text), "");
    const GraphChanges changes{.parameters = {},
                               .settings = {},
                               .inputs = {},
                               .outputs = {{"out", folder.path("locked/o.csv"), "--output"}}};
    EXPECT_EQ(
        complaintsOf(text, changes),
        "--output: found the file 'locked/o.csv' in a folder that can't be written to (Permission denied); "
        "expected a folder that can\n");
}

TEST_F(GraphTest, ANameMustLeaveRoomForThoseThatAResultTakesFirst) {
    const auto complaintsOfLength = [&](std::size_t length) {
        const GraphChanges changes{.parameters = {},
                                   .settings = {},
                                   .inputs = {},
                                   .outputs = {{"out", folder.path(std::string(length, 'n')), "--output"}}};
        return complaintsOf(std::string(kHead) + "connections:\n  - {from: in.x, to: out.x}\n", changes);
    };
    EXPECT_EQ(complaintsOfLength(239), "");
    for (const std::size_t length : {240U, 300U})
        EXPECT_EQ(complaintsOfLength(length),
                  "--output: found a name of " + std::to_string(length) + " bytes for a result, '" +
                      std::string(60, 'n') +
                      "...'; expected 239 at most, since it is written as NAME.partial first\n");
}

TEST_F(GraphTest, ResultsNeedAPlace) {
    EXPECT_EQ(
        wrong("  - {id: o2, type: RecordingSink, properties: {file: none/o.csv}}\n"
              "  - {id: o3, type: RecordingSink, properties: {file: .}}\n",
              "  - {from: in.x, to: out.x}\n  - {from: in.x, to: o2.x}\n  - {from: in.x, to: o3.x}\n"),
        "g.yaml:5:54: found the file 'none/o.csv' in a folder that isn't there; expected a folder that is\n"
        "g.yaml:6:54: found the folder ''; expected the name of a file\n");
}

TEST_F(GraphTest, CallersFilesMustFitTheirBlocks) {
    const std::string text = std::string(kHead) + "connections:\n  - {from: in.x, to: out.x}\n";
    const GraphChanges changes{.parameters = {},
                               .settings = {},
                               .inputs = {{"out", "in.csv", "--input out=in.csv"}},
                               .outputs = {{"in", "o.csv", "--output in=o.csv"}}};
    EXPECT_EQ(
        complaintsOf(text, changes),
        "--output in=o.csv: found the block 'in' (RecordingSource); expected a block that writes a result\n"
        "--input out=in.csv: found the block 'out' (RecordingSink); expected a block that reads a "
        "recording\n");
}

TEST_F(GraphTest, NothingIsTouchedByACheck) {
    folder.write("out.csv", "t,x[0]\n-1,-2\n");
    EXPECT_EQ(wrong("", "  - {from: in.x, to: out.x}\n"), "");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n-1,-2\n");
    EXPECT_EQ(folder.count(), 3) << "in.csv, g.yaml, out.csv";
}

TEST_F(GraphTest, ASinkThatCannotStartLeavesNothingOfTheOthers) {
    const std::string text = std::string(kHead) +
                             "  - {id: o2, type: RecordingSink, properties: {file: o2.csv}}\n" +
                             "connections:\n  - {from: in.x, to: out.x}\n  - {from: in.x, to: o2.x}\n";
    std::filesystem::create_directory(folder.path("o2.csv.partial"));
    EXPECT_THROW(run(text), std::exception);
    EXPECT_FALSE(folder.has("out.csv.partial"));
    EXPECT_FALSE(folder.has("out.csv"));
}

TEST_F(GraphTest, SendersRunBeforeReceiversAndTiesAsInTheFile) {
    EXPECT_EQ(runOrder(R"yaml(format: 1
blocks:
  - {id: out, type: RecordingSink, properties: {file: out.csv}}
  - {id: c, type: FilterGain}
  - {id: b, type: FilterGain}
  - {id: a, type: FilterGain}
  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}
connections:
  - {from: in, to: a}
  - {from: in, to: b}
  - {from: a, to: c}
  - {from: c, to: out.c}
  - {from: b, to: out.b}
)yaml"),
              (Strings{"in", "b", "a", "c", "out"}));
}

TEST_F(GraphTest, ALoopRunsAsInTheFile) {
    EXPECT_EQ(runOrder(R"yaml(format: 1
blocks:
  - {id: gain, type: FilterGain}
  - {id: sum, type: OddSum}
  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}
  - {id: out, type: RecordingSink, properties: {file: out.csv}}
connections:
  - {from: in, to: sum.in}
  - {from: sum, to: gain}
  - {from: gain, to: sum.back}
  - {from: sum, to: out.x}
)yaml"),
              (Strings{"in", "gain", "sum", "out"}));
}

TEST_F(GraphTest, BuffersAreSetOnTheReceivingPin) {
    const std::string text = std::string(kHead) +
                             "  - {id: g, type: FilterGain}\nconnections:\n"
                             "  - {from: in.x, to: g, buffer: 5, order: newest}\n  - {from: g, to: out.x}\n";
    Complaints complaints;
    const GraphDescription description = GraphDescription::fromFile(folder.write("g.yaml", text), complaints);
    const Graph graph(description, catalogue, complaints);
    complaints.raise();
    const auto& pin = graph.getNodes().at(2).block->getInputPin("input");
    EXPECT_EQ(pin.getBufferCapacity(), 5u);
    EXPECT_TRUE(pin.getIsLifo());
    EXPECT_EQ(graph.getNodes().at(1).block->getInputPin("x").getBufferCapacity(), 1u);
}

TEST_F(GraphTest, AGraphThatNothingDrivesCannotRun) {
    const auto driveComplaints = [&](const std::string& text) {
        Complaints complaints;
        const GraphDescription description =
            GraphDescription::fromFile(folder.write("g.yaml", "format: 1\n" + text), complaints);
        const Graph graph(description, catalogue, complaints);
        graph.requireDrive(complaints);
        std::string lines;
        for (const Complaint& complaint : complaints.getSorted())
            lines += withoutFolder(complaint.getText()) + "\n";
        return lines;
    };
    EXPECT_EQ(
        driveComplaints("blocks: [{id: a, type: FilterGain}, {id: b, type: FilterGain}]\n"
                        "connections: [{from: a, to: b}, {from: b, to: a}]\n"),
        "g.yaml:1:1: found a graph that nothing drives; expected a block that reads a recording, such as "
        "RecordingSource, or one without inputs\n");
    EXPECT_EQ(driveComplaints("blocks: [{id: g, type: OddGenerator}]\n"), "");
}

} // namespace
