// SPDX-License-Identifier: MIT
// An allocation that fails, wherever it is, ends the command with a message and exit code 1 or 2: never in an
// abort, a crash or a hang. ShortMemory.cpp, preloaded, lets them fail one after the other.
#include "tests/cli/Program.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Support::Ended;
using Support::Program;
using Strings = std::vector<std::string>;

/// A variable of the environment for the programs that are started meanwhile.
class Variable {
public:
    Variable(const char* variable, const std::string& value) : name(variable) {
        ::setenv(name, value.c_str(), 1);
    }
    ~Variable() { ::unsetenv(name); }

private:
    const char* name;
};

class ShortMemory : public testing::Test {
protected:
    ShortMemory() {
        folder.write("in.csv", "t,x,y\n0,1,2\n0.5,2,3\n1,3,5\n");
        // Two layouts, so that live runs have threads and locked links; a loop's worth of what graphs can
        // say.
        folder.write("g.yaml",
                     "format: 1\nname: short\nparameters: {factor: 2}\n"
                     "layouts: [{id: one}, {id: two}]\nblocks:\n"
                     "  - {id: in, layout: one, type: RecordingSource,"
                     " properties: {file: in.csv, time: t, pins: {xy: [x, y]}}}\n"
                     "  - {id: gain, layout: one, type: FilterGain, properties: {Gain: \"${factor}\"}}\n"
                     "  - {id: band, layout: two, type: FilterBandPass}\n"
                     "  - {id: out, layout: two, type: RecordingSink, properties: {file: out.csv}}\n"
                     "connections:\n  - {from: in, to: gain}\n"
                     "  - {from: gain, to: band, buffer: 9}\n  - {from: band, to: out.xy}\n"
                     "timeline: [{at: 0.5, set: {gain.Gain: 3}}]\n");
    }

    /// How the allocations of a call fail: each `every`th by itself in a child that is forked there, or all
    /// behind it, too.
    struct Way {
        Strings arguments;
        unsigned every = 1;
        bool isLasting = false;
    };

    /// Returns how many children there were.
    std::size_t failEach(const Way& way) const {
        const Variable preload("LD_PRELOAD", SHORT_MEMORY);
        const Variable report("SHORT_MEMORY_REPORT", folder.path("report"));
        const Variable every("SHORT_MEMORY_EVERY", std::to_string(way.every));
        const Variable lasting("SHORT_MEMORY_LASTS", way.isLasting ? "1" : "");
        folder.write("report", "");
        Strings arguments = way.arguments;
        arguments.insert(arguments.begin(), QUILLMERE);
        const Ended ended = Support::runProgram(arguments, folder.path(""));
        // A child that could do without may have given the result its final name already.
        EXPECT_TRUE(ended.exitCode == 0 || ended.exitCode == 1) << ended.err;
        return judge(way);
    }

    /// Raises a failure for each child that didn't end in order.
    std::size_t judge(const Way& way) const {
        std::istringstream report(folder.read("report"));
        std::string line;
        std::size_t children = 0;
        std::size_t refused = 0;
        while (std::getline(report, line)) {
            ++children;
            std::istringstream words(line);
            unsigned long number = 0;
            std::string how;
            int code = 0;
            std::string said;
            words >> number >> how >> code >> said;
            const bool isDone = how == "exit" && code == 0; // the C++ library can do without, here and there
            const bool isRefused = how == "exit" && (code == 1 || code == 2) && said == "told";
            refused += isRefused ? 1 : 0;
            EXPECT_TRUE(isDone || isRefused)
                << way.arguments[0] << (way.isLasting ? ", from" : ", at") << " allocation " << line;
        }
        EXPECT_GT(refused, children / 2) << "failures are noticed";
        return children;
    }

    Support::TemporaryFolder folder;
};

TEST_F(ShortMemory, ARunNeverCrashesWhereverItFails) {
    EXPECT_GT(failEach({.arguments = {"run", "g.yaml", "--output", "out=-"}}), 1500u);
}

TEST_F(ShortMemory, ARunNeverCrashesFromWhereverAllFails) {
    EXPECT_GT(failEach({.arguments = {"run", "g.yaml"}, .every = 7, .isLasting = true}), 200u);
}

// What the commands have in common has failed in the run, one by one.
TEST_F(ShortMemory, NoOtherCommandCrashesWhereverItFails) {
    for (const bool isLasting : {false, true})
        for (const Strings& command :
             {Strings{"check", "g.yaml"}, Strings{"blocks", "FilterBandPass", "--json"},
              Strings{"response", "FilterGain", "--points", "2"}})
            EXPECT_GT(failEach({.arguments = command, .every = 11, .isLasting = isLasting}), 50u)
                << command[0];
}

/// Threads don't survive a fork, so here each failure is a run of its own; so many of them, evenly spread.
TEST_F(ShortMemory, NoLiveRunCrashesWhereverItFails) {
    constexpr unsigned kRuns = 80;
    constexpr unsigned kAtOnce = 4;
    constexpr unsigned long kAllocations = 2700; // about as many as such a run makes
    std::map<int, unsigned> codes;
    const Variable preload("LD_PRELOAD", SHORT_MEMORY);
    for (unsigned first = 0; first < kRuns; first += kAtOnce) {
        std::vector<std::unique_ptr<Program>> programs;
        for (unsigned i = first; i < first + kAtOnce; ++i) {
            const Variable failing("SHORT_MEMORY_FAIL", std::to_string(1 + i * kAllocations / kRuns));
            programs.push_back(std::make_unique<Program>(Strings{QUILLMERE, "run", "--live", "--speed", "max",
                                                                 "--stats", "g.yaml", "--output",
                                                                 "out=out" + std::to_string(i) + ".csv"},
                                                         folder.path("")));
        }
        for (unsigned i = 0; i < kAtOnce; ++i) {
            const Ended ended = programs[i]->wait();
            ++codes[ended.exitCode];
            EXPECT_TRUE(ended.exitCode == 0 ||
                        ((ended.exitCode == 1 || ended.exitCode == 2) && !ended.err.empty()))
                << "run " << first + i << " ended with " << ended.exitCode << " and said: " << ended.err;
        }
    }
    EXPECT_GT(codes[1] + codes[2], kRuns / 3) << "failures are noticed";
}

} // namespace
