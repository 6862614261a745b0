// SPDX-License-Identifier: MIT
// Runs whose reading and writing other threads do: what comes of them is what comes of one thread.
#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

std::string graph(const std::string& settings) {
    return "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: rows.csv, " +
           settings +
           ", pins: {p: [x, y], q: z}}}\n"
           "  - {id: f, type: FilterButterworth}\n"
           "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
           "  - {id: more, type: RecordingSink, properties: {file: more.csv}}\n"
           "connections: [{from: in.p, to: f.in}, {from: f.out, to: out.a}, {from: in.q, to: out.b}, "
           "{from: in.q, to: more.b}]\n";
}

class SharedWorkTest : public Support::GraphFixture {
protected:
    void writeRows(int count, int between, const std::string& odd) const {
        std::string text = "t,x,y,z\n";
        for (int i = 0; i < count; ++i) {
            const bool isOdd = i % between == between - 1;
            text += std::to_string(0.01 * i) + "," + std::to_string(std::sin(0.1 * i)) + "," +
                    (isOdd ? odd : std::to_string(i % 11)) + "," + std::to_string(1.0 / (1.0 + i)) + "\n";
        }
        folder.write("rows.csv", text);
    }

    /// What a run leaves and tells.
    std::vector<std::string> resultsOf(const std::string& text, std::size_t threads) {
        Job job = Job::fromFile(folder.write("g.yaml", text), catalogue, {.threads = threads});
        outcome = job.run(stop.get_token());
        std::vector<std::string> results{outcome.failure, warningsOfRun()};
        for (const Complaint& complaint : outcome.complaints)
            results.push_back(complaint.getText());
        for (const char* const name : {"out.csv", "more.csv"})
            results.push_back(folder.read(outcome.getIsWhole() ? name : name + std::string(".partial")));
        return results;
    }

    void expectTheSame(const std::string& text) {
        const std::vector<std::string> expected = resultsOf(text, 1);
        for (const std::size_t threads : {2u, 3u, 8u}) {
            const std::vector<std::string> results = resultsOf(text, threads);
            ASSERT_EQ(results.size(), expected.size());
            for (std::size_t i = 0; i < results.size(); ++i)
                EXPECT_TRUE(results[i] == expected[i]) << threads << " threads: " << results[i].substr(0, 300)
                                                       << "\ninstead of " << expected[i].substr(0, 300);
        }
    }
};

TEST_F(SharedWorkTest, ResultsAreTheSameToTheByte) {
    writeRows(50000, 1000000, "");
    expectTheSame(graph("time: t"));
    expectTheSame(graph("time: t, frame: 16, hop: 8"));
    expectTheSame(graph("time: t, resample: 50 Hz"));
}

TEST_F(SharedWorkTest, BadRowsAreToldAlike) {
    writeRows(50000, 7919, "bad");
    expectTheSame(graph("time: t, onBadRow: skip"));
    expectTheSame(graph("time: t, onBadRow: nan"));
    writeRows(5000, 3, "");
    expectTheSame(graph("time: t, onBadRow: skip"));
}

TEST_F(SharedWorkTest, ARowThatEndsTheRunLeavesTheSamePartOfTheResults) {
    writeRows(50000, 34567, "bad");
    expectTheSame(graph("time: t"));
    EXPECT_FALSE(outcome.getIsWhole());
}

TEST_F(SharedWorkTest, ADiskThatIsFullEndsTheRun) {
    writeRows(50000, 1000000, "");
    std::string text = graph("time: t");
    text.replace(text.find("more.csv"), 8, "/dev/full");
    std::string failure;
    for (const std::size_t threads : {1u, 2u, 3u, 8u}) {
        Job job = Job::fromFile(folder.write("g.yaml", text), catalogue, {.threads = threads});
        outcome = job.run(stop.get_token());
        if (threads == 1) failure = outcome.failure;
        EXPECT_EQ(outcome.failure, failure) << "in a step or at the end, whichever comes first";
        ASSERT_TRUE(outcome.failedBlock);
        EXPECT_EQ(outcome.failedBlock->block, "more");
    }
    EXPECT_TRUE(failure.starts_with("block 'more' (RecordingSink) at ")) << failure;
    EXPECT_TRUE(failure.ends_with("No space left on device")) << failure;
    EXPECT_FALSE(folder.has("out.csv"));
    EXPECT_TRUE(folder.has("out.csv.partial"));
}

} // namespace
