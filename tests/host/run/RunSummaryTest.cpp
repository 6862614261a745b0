// SPDX-License-Identifier: MIT
#include "host/run/Job.h"

#include "host/recording/ResultFile.h"
#include "tests/host/kit/GraphFixture.h"

#include <filesystem>
#include <string>

namespace {

using namespace Quillmere::Host;

const std::string kGraph =
    "format: 1\nblocks:\n"
    "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
    "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
    "connections: [{from: in, to: out.x}]\n";

class RunSummaryTest : public Support::GraphFixture {
protected:
    Job jobWith(const std::string& summary, const std::string& text = kGraph, bool overwrites = false) {
        JobOptions options;
        options.summary = summary;
        options.overwrites = overwrites;
        options.isStrict = isStrict;
        return Job::fromFile(folder.write("g.yaml", text), catalogue, options);
    }
    /// What is complained of when the summary has this name.
    std::string refusalOf(const std::string& name, bool overwrites = false) {
        Job job = jobWith(name == "-" ? name : folder.path(name), kGraph, overwrites);
        std::string lines;
        for (const Complaint& complaint : job.check().getSorted())
            lines += withoutFolder(complaint.getText()) + "\n";
        return lines;
    }
    bool summaryHas(const std::string& text) const {
        return folder.read("s.json").find(text) != std::string::npos;
    }
};

TEST_F(RunSummaryTest, HasItsNameWhenItIsWhole) {
    Job job = jobWith(folder.path("s.json"));
    job.check();
    EXPECT_FALSE(folder.has("s.json.partial")) << "a check touches nothing";
    EXPECT_TRUE(job.run().getIsWhole());
    EXPECT_TRUE(summaryHas("\"state\": \"whole\""));
    EXPECT_TRUE(folder.read("s.json").ends_with("\n}\n"));
    EXPECT_FALSE(folder.has("s.json.partial"));
    EXPECT_TRUE(jobWith(folder.path("s.json")).run().getIsWhole()) << "a run's own is replaced";
    EXPECT_FALSE(jobWith("").run().hasBegun == false) << "and nobody has to want one";
}

TEST_F(RunSummaryTest, ReplacesNothingThatIsNoSummary) {
    folder.write("mine.json", "{}\n");
    EXPECT_EQ(refusalOf("mine.json"),
              "summary: found the file 'mine.json', which no run has written; expected another name, or "
              "--overwrite to replace it\n");
    EXPECT_EQ(refusalOf("mine.json", true), "");
    EXPECT_TRUE(jobWith(folder.path("s.json")).run().getIsWhole());
    folder.write("copy.json", folder.read("s.json"));
    EXPECT_EQ(refusalOf("copy.json"), "") << "by its begin";
}

TEST_F(RunSummaryTest, IsNoFileThatTheRunHasForSomethingElse) {
    const auto refused = [](const std::string& file, const std::string& use) {
        return "summary: found the file '" + file + "', " + use +
               "; expected a file that the run has for nothing else\n";
    };
    EXPECT_EQ(refusalOf("in.csv"), refused("in.csv", "which 'in' reads"));
    EXPECT_EQ(refusalOf("in.csv", true), refused("in.csv", "which 'in' reads")) << "whatever may be replaced";
    EXPECT_EQ(refusalOf("g.yaml"), refused("g.yaml", "which is the graph that runs"));
    EXPECT_EQ(refusalOf("out.csv"), refused("out.csv", "which 'out' writes"));
    EXPECT_EQ(refusalOf("out.csv.partial"), refused("out.csv.partial", "which 'out' writes"));
    std::filesystem::create_hard_link(folder.path("in.csv"), folder.path("other.csv"));
    EXPECT_EQ(refusalOf("other.csv"), refused("other.csv", "which 'in' reads"));
    const std::string plugin = VELMARIND_PLUGIN;
    Job job = jobWith(plugin);
    EXPECT_EQ(job.check().getSorted().at(0).found,
              "the file '" + plugin + "', which is a plug-in of the run");
    EXPECT_EQ(job.getDescription().blocks.size(), 2u);
}

TEST_F(RunSummaryTest, SharesStandardOutputWithNoResult) {
    Job job = jobWith("-", "format: 1\nblocks:\n  - {id: gen, type: FilterFunctionGenerator}\n"
                           "  - {id: out, type: RecordingSink, properties: {file: '-'}}\n"
                           "connections: [{from: gen, to: out.x}]\n");
    EXPECT_EQ(job.check(RunMode::Live).getSorted().at(0).getText(),
              "summary: found the file 'standard output', which 'out' writes; expected a file that the run "
              "has for nothing else");
    EXPECT_EQ(refusalOf("-"), "");
}

TEST_F(RunSummaryTest, TellsOfARunThatFailedAndOfOneThatIsRefused) {
    folder.write("in.csv", "t,x\n0,1\n0.5,2\n1,three\n");
    EXPECT_FALSE(jobWith(folder.path("s.json")).run().getIsWhole());
    EXPECT_TRUE(summaryHas("\"state\": \"failed\""));
    EXPECT_TRUE(summaryHas("out.csv.partial"));
    EXPECT_TRUE(summaryHas("\"block\": \"in\""));
    EXPECT_THROW(jobWith(folder.path("s.json"), "format: 1\nblocks:\n  - {id: g, type: FilterGian}\n").run(),
                 GraphException);
    EXPECT_TRUE(summaryHas("\"state\": \"refused\""));
    EXPECT_TRUE(summaryHas("\"nearest\": \"FilterGain\""));
    isStrict = true;
    EXPECT_THROW(jobWith(folder.path("s.json"), kGraph.substr(0, kGraph.find("  - {id: out"))).run(),
                 GraphException);
    EXPECT_TRUE(summaryHas("\"expected\": \"nothing to warn of, since warnings are taken for errors\""));
}

TEST_F(RunSummaryTest, ThatCantBeBegunKeepsTheRunFromBeginning) {
    const ResultFile others(folder.path("s.json"));
    Job job = jobWith(folder.path("s.json"));
    const RunOutcome refused = job.run();
    EXPECT_FALSE(refused.hasBegun);
    EXPECT_EQ(withoutFolder(refused.failure), "s.json.partial: another run is writing this result");
    EXPECT_FALSE(folder.has("out.csv")) << "and nothing is touched";
    EXPECT_FALSE(folder.has("out.csv.partial"));
}

TEST_F(RunSummaryTest, ThatCantBeWrittenFailsARunWhoseResultsAreWhole) {
    const RunOutcome unwritten = jobWith("/dev/full").run();
    EXPECT_EQ(unwritten.failure, "/dev/full: cannot be written: No space left on device");
    EXPECT_TRUE(unwritten.results.at(0).isComplete);
    EXPECT_TRUE(folder.has("out.csv"));
    folder.write("in.csv", "t,x\n0,one\n");
    const RunOutcome failed = jobWith("/dev/full").run();
    EXPECT_NE(failed.failure.find("one"), std::string::npos) << "what failed first is told";
    ASSERT_EQ(failed.warnings.size(), 1u);
    EXPECT_EQ(failed.warnings.back().getText(),
              "summary: warning: /dev/full: cannot be written: No space left on device");
    try {
        jobWith("/dev/full", "format: 1\nblocks:\n  - {id: g, type: FilterGian}\n").run();
        ADD_FAILURE() << "nothing is raised";
    } catch (const GraphException& exception) {
        EXPECT_NE(std::string(exception.what())
                      .find("summary: found no summary (/dev/full: cannot be written: No space left on "
                            "device); expected a place where it can be written"),
                  std::string::npos)
            << exception.what();
    }
}

} // namespace
