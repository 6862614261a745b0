// SPDX-License-Identifier: MIT
// A source and a sink that a plug-in brings, of which the host knows nothing.
#include "tests/host/kit/LiveFixture.h"

#include "host/graph/BlockJson.h"

#include <string>

namespace {

class EndPluginTest : public Support::LiveFixture {
protected:
    EndPluginTest() { catalogue.load(END_PLUGIN); }

    static std::string graph(const std::string& source, const std::string& sink = "into: sum.txt",
                             const std::string& from = "in.count", const std::string& to = "out.terms") {
        return "format: 1\nblocks:\n  - {id: in, type: CountingSource, properties: {" + source +
               "}}\n  - {id: g, type: FilterGain, properties: {Gain: 2}}\n"
               "  - {id: out, type: SummingSink, properties: {" +
               sink + "}}\nconnections:\n  - {from: " + from + ", to: g}\n  - {from: g, to: " + to + "}\n";
    }
};

TEST_F(EndPluginTest, AGraphRunsFromOneToTheOther) {
    ASSERT_EQ(run(graph("to: 100")), "");
    EXPECT_EQ(folder.read("sum.txt"), "10100\n");
    ASSERT_EQ(outcome.recordings.size(), 1u);
    EXPECT_EQ(outcome.recordings[0].id, "in");
    EXPECT_EQ(outcome.recordings[0].path, "");
    EXPECT_EQ(outcome.recordings[0].rows, 100u) << "samples that it sent";
    EXPECT_EQ(outcome.progress.rows, 100u);
    EXPECT_EQ(outcome.progress.streamTime, 10.0);
    EXPECT_EQ(outcome.results.at(0).rows, 100u);
    EXPECT_TRUE(outcome.results.at(0).isComplete);
    EXPECT_EQ(warningsOfRun(), "");
}

TEST_F(EndPluginTest, LiveToo) {
    ASSERT_EQ(runLive(graph("from: 11, to: 100", "into: sum.txt", "in", "out")), "")
        << "pins may be left out";
    EXPECT_EQ(folder.read("sum.txt"), "9990\n");
    EXPECT_EQ(liveRun->getOutcome().recordings.at(0).rows, 90u);
}

TEST_F(EndPluginTest, ComplaintsAreThoseOfTheHostsOwn) {
    EXPECT_EQ(
        complaintsOf(graph("too: 3")),
        "g.yaml:3:10: found a CountingSource without 'to'; expected the last number\n"
        "g.yaml:3:49: found the property 'too' of CountingSource; expected one of from and to; did you mean "
        "to?\n");
    EXPECT_EQ(complaintsOf(graph("to: 3", "into: s", "in.x")),
              "g.yaml:7:12: found the output 'x' of 'in' (CountingSource); expected one of count\n");
    EXPECT_EQ(complaintsOf(graph("to: 3", "into: s", "in", "out.x")),
              "g.yaml:8:19: found the input 'x' of 'out' (SummingSink); expected one of terms\n");
}

TEST_F(EndPluginTest, JsonNamesWhereTheyComeFrom) {
    const auto block = catalogue.create("CountingSource", "in");
    const std::string plugin = catalogue.getPluginName("CountingSource");
    ASSERT_FALSE(plugin.empty());
    const std::string json =
        Quillmere::Host::Json::hostBlock(dynamic_cast<const Quillmere::Host::HostBlock&>(*block), plugin);
    EXPECT_NE(json.find("\"plugin\": \"" + plugin + "\""), std::string::npos) << json;
}

TEST_F(EndPluginTest, AFailureNamesTheBlock) {
    EXPECT_EQ(withoutFolder(run(graph("from: 1e6, to: 2e6"))).substr(0, 12), "block 'out' ");
    EXPECT_FALSE(outcome.results.at(0).isComplete);
    EXPECT_EQ(outcome.results.at(0).partialPath, "");
}

TEST_F(EndPluginTest, NeitherIsAddedToARunThatIsOn) {
    prepare(graph("to: 3"));
    for (const std::string type : {"CountingSource", "SummingSink"})
        try {
            liveRun->getStructure().add("more", type, "main");
            ADD_FAILURE() << type;
        } catch (const Quillmere::Host::HostException& exception) {
            EXPECT_EQ(exception.what(),
                      "found the block type '" + type +
                          "', which is a source or a sink; expected another, since they are told "
                          "what they read and write before a run");
        }
    liveRun->start();
    EXPECT_EQ(end(), "");
}

} // namespace
