// SPDX-License-Identifier: MIT
#include "tests/cli/Program.h"
#include "tests/host/kit/TemporaryFolder.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Support::Ended;

/// The numbers of a table, without its head.
std::vector<std::vector<double>> numbersOf(const std::string& table) {
    std::vector<std::vector<double>> rows;
    std::istringstream lines(table);
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        std::istringstream cells(line);
        rows.emplace_back();
        for (std::string cell; std::getline(cells, cell, ',');)
            rows.back().push_back(std::stod(cell));
    }
    return rows;
}

/// Eight seconds: gravity, and 0.05 gravities at 5 Hz in the second half.
std::string shakingWrist() {
    std::string text = "t,ax,ay,az,gx,gy,gz,mx,my,mz\n";
    for (int i = 0; i < 800; ++i) {
        const double tremor = i < 400 ? 0.0 : 0.05 * std::sin(2.0 * std::numbers::pi * 5.0 * 0.01 * i);
        char row[128];
        std::snprintf(row, sizeof row, "%.2f,0,0,%.17g,0,0,0,0,0,0\n", 0.01 * i, 1.0 + tremor);
        text += row;
    }
    return text;
}

class Examples : public testing::Test {
protected:
    Ended call(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), QUILLMERE);
        return Support::runProgram(arguments, folder.path(""));
    }
    Support::TemporaryFolder folder;
};

TEST_F(Examples, TheSpectrumShowsATremorAtFiveHertz) {
    folder.write("wrist.csv", shakingWrist());
    const Ended ended = call({"run", EXAMPLES "/wrist-spectrum.yaml", "--input", "wrist=wrist.csv",
                              "--output", "result=spectrum.csv"});
    ASSERT_EQ(ended.exitCode, 0) << ended.err;
    const auto rows = numbersOf(folder.read("spectrum.csv"));
    ASSERT_EQ(rows.size(), 7u) << "frames begin at rows 0, 100, ... 600";
    ASSERT_EQ(rows[0].size(), 101u) << "the time and 100 amplitudes";
    EXPECT_TRUE(Support::agree(rows[0][0], 1.99, Support::same)) << "a frame has the time of its last row";
    // The window's mean is short of 0.5 by less than 1/400 of itself; gravity and the tremor's other rows
    // leak less.
    EXPECT_TRUE(Support::agree(rows[6][1 + 10], 0.05, Support::law(0.05 * 0.01)));
    EXPECT_TRUE(Support::agree(rows[0][1 + 10], 0.0, Support::law(0.0005)));
    for (std::size_t k = 3; k < 100; ++k)
        if (k < 9 || k > 11) {
            EXPECT_LT(rows[6][1 + k], 0.005) << "row " << k;
        }
}

TEST_F(Examples, TheTremorAtRestIsFollowedInHertz) {
    const Ended ended =
        call({"run", EXAMPLES "/rest-tremor.yaml", "--output", "result=" + folder.path("tremor.csv")});
    ASSERT_EQ(ended.exitCode, 0) << ended.err;
    const auto rows = numbersOf(folder.read("tremor.csv"));
    ASSERT_EQ(rows.size(), 862u);
    for (const std::vector<double>& row : rows) {
        const double hertz = row[2] * 92.7743 / (2.0 * std::numbers::pi);
        if (row[0] >= 3.0 && row[0] < 8.0) {
            EXPECT_GT(hertz, 6.2) << "at " << row[0] << " s";
            EXPECT_LT(hertz, 6.85) << "at " << row[0] << " s";
        }
    }
}

TEST_F(Examples, TheSpectrumOfTheTremorAtRestHasItToo) {
    const Ended ended = call(
        {"run", EXAMPLES "/rest-tremor-spectrum.yaml", "--output", "result=" + folder.path("spectrum.csv")});
    ASSERT_EQ(ended.exitCode, 0) << ended.err;
    const auto frames = numbersOf(folder.read("spectrum.csv"));
    ASSERT_EQ(frames.size(), 6u);
    for (const std::vector<double>& frame :
         frames) { // an amplitude every quarter of a hertz, behind the time
        const auto largest = std::max_element(frame.begin() + 1 + 8, frame.end());
        const auto place = largest - (frame.begin() + 1);
        EXPECT_GE(place, 25) << "6.25 Hz";
        EXPECT_LE(place, 29) << "7.25 Hz";
    }
}

TEST_F(Examples, TheStepResponseNeedsNoRecording) {
    const Ended ended =
        call({"run", EXAMPLES "/step-response.yaml", "--steps", "400", "--output", "result=step.csv"});
    ASSERT_EQ(ended.exitCode, 0) << ended.err;
    const std::string table = folder.read("step.csv");
    EXPECT_TRUE(table.starts_with("t,wave,smooth\n1,1,")) << table.substr(0, 60);
    const auto rows = numbersOf(table);
    ASSERT_EQ(rows.size(), 400u);
    // Up for the phases 0 to 100, both included, then down; a low-pass of cut-off 0.1 has settled 90 rounds
    // later.
    EXPECT_TRUE(Support::agree(rows[100][1], 1.0, Support::same));
    EXPECT_TRUE(Support::agree(rows[101][1], -1.0, Support::same));
    EXPECT_TRUE(Support::agree(rows[199][2], -1.0, Support::law(1e-3)));
    EXPECT_TRUE(Support::agree(rows[299][2], 1.0, Support::law(1e-3)));
    EXPECT_LT(rows[102][2], rows[101][2]) << "it has begun to fall";
}

TEST_F(Examples, EventsOfATremorBurst) {
    // A turn rate of 0.82 radians a second at 5 Hz from 6 to 16 seconds.
    std::string text = "t,gx\n";
    for (int i = 0; i < 2400; ++i) {
        const bool trembles = i >= 600 && i < 1600;
        char row[64];
        std::snprintf(row, sizeof row, "%.2f,%.17g\n", 0.01 * i,
                      trembles ? 0.82 * std::sin(2.0 * std::numbers::pi * 5.0 * 0.01 * i) : 0.0);
        text += row;
    }
    folder.write("wrist.csv", text);
    const Ended ended =
        call({"run", EXAMPLES "/events.yaml", "--input", "wrist=wrist.csv", "--output", "result=events.csv"});
    ASSERT_EQ(ended.exitCode, 0) << ended.err;
    const std::string table = folder.read("events.csv");
    std::istringstream lines(table);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "t,begin,end,periods,hertz");
    std::vector<std::string> events;
    std::vector<double> times;
    while (std::getline(lines, line)) {
        const std::size_t comma = line.find(',');
        times.push_back(std::stod(line));
        events.push_back(line.substr(comma));
        // Beats are whole rows apart and 5 Hz is 20 rows: the rate is exact but where the band-pass still
        // swings in.
        if (events.back().starts_with(",,,,")) {
            const double hertz = std::stod(events.back().substr(4));
            EXPECT_TRUE(Support::agree(hertz, 5.0, Support::law(0.06))) << line;
            events.back() = ",,,,hertz";
        }
    }
    const std::vector<std::string> wanted{",1,,,",  ",,,,hertz", ",,,10,", ",,,,hertz", ",,,20,", ",,,,hertz",
                                          ",,,30,", ",,,,hertz", ",,,40,", ",,,,hertz", ",,1,,"};
    EXPECT_EQ(events, wanted) << table;
    EXPECT_GT(times.front(), 6.0);
    EXPECT_LT(times.front(), 7.0);
    EXPECT_GT(times.back(), 16.0);
    EXPECT_LT(times.back(), 17.0);
}

/// The simulated wrist beside copies of the scripts that make and judge it.
class SimulatedWrist : public Examples {
protected:
    SimulatedWrist() {
        for (const std::string name : {"simulate_wrist.py", "compare_with_truth.py"})
            std::filesystem::copy(EXAMPLES "/" + name, folder.path(name));
    }
    Ended python(const std::string& script, const std::string& argument) const {
        return Support::runProgram({"/usr/bin/env", "python3", script, argument}, folder.path(""));
    }
    Ended runExample(const std::string& name, const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"run", EXAMPLES "/" + name + ".yaml", "--input",
                                           "wrist=wrist.csv"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return call(arguments);
    }
};

TEST_F(SimulatedWrist, IsTrackedAndJudgedAsTheGuideTells) {
    ASSERT_EQ(python("simulate_wrist.py", ".").exitCode, 0);
    for (const std::string name : {"tremor", "flags", "vectors"}) {
        const Ended ended = runExample(name, {"--output", "result=" + name + ".csv"});
        ASSERT_EQ(ended.exitCode, 0) << name << ": " << ended.err;
    }
    const Ended judged = python("compare_with_truth.py", ".");
    ASSERT_EQ(judged.exitCode, 0) << judged.err;
    std::ifstream file(GUIDES "/motion.md");
    const std::string guide(std::istreambuf_iterator<char>(file), {});
    std::istringstream lines(judged.out);
    std::string line;
    int rows = 0;
    while (std::getline(lines, line)) {
        if (line.empty()) continue;
        ++rows;
        EXPECT_NE(guide.find(line), std::string::npos) << "not in the guide: " << line;
    }
    EXPECT_EQ(rows, 3 * 2 + 4 + 3 + 5) << "three tables with a head of two lines each";
}

TEST_F(SimulatedWrist, IsWatchedInTwoThreadsWithTheSameResult) {
    ASSERT_EQ(python("simulate_wrist.py", ".").exitCode, 0);
    const Ended offline =
        runExample("live-wrist", {"--output", "calm=calm.csv", "--output", "tremor=tremor.csv"});
    ASSERT_EQ(offline.exitCode, 0) << offline.err;
    const Ended live =
        runExample("live-wrist", {"--output", "calm=live-calm.csv", "--output", "tremor=live-tremor.csv",
                                  "--live", "--speed", "120", "--stats"});
    ASSERT_EQ(live.exitCode, 0) << live.err;
    EXPECT_EQ(folder.read("live-calm.csv"), folder.read("calm.csv"));
    EXPECT_EQ(folder.read("live-tremor.csv"), folder.read("tremor.csv"));
    EXPECT_NE(live.out.find("wrist.roll         -> band.in              12000  12000        0     0"),
              std::string::npos)
        << live.out;
    const Ended piped = Support::runProgram(
        {"/bin/sh", "-c",
         "cat wrist.csv | " QUILLMERE " run --live --quiet " EXAMPLES
         "/live-wrist.yaml --input wrist=- --output calm=live-calm.csv --output tremor=live-tremor.csv"},
        folder.path(""));
    EXPECT_EQ(piped.exitCode, 0);
    EXPECT_EQ(piped.err, "") << "nothing is lost, however fast the rows come";
    EXPECT_EQ(folder.read("live-tremor.csv"), folder.read("tremor.csv"));
}

} // namespace
