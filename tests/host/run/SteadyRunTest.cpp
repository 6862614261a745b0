// SPDX-License-Identifier: MIT
// Memory of a whole run, from the file that is read to the file that is written: what is allocated doesn't
// grow with the rows.
#include "tests/host/kit/GraphFixture.h"
#include "tests/support/Allocations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdint>
#include <string>

namespace {

using Quillmere::Host::Job;

struct Row {
    std::string name;
    std::string source; ///< Settings of the source beside file and pins.
    std::string pins = "p: [x, y], q: z";
    std::string time = "num"; ///< How times are written: `num`, `date`, `odd` with repeats and gaps, `none`.
    std::string holes = "";   ///< What stands in each 7th cell of y.
    std::string filter = "FilterButterworth";
};

const Row kRows[] = {
    {.name = "times in seconds", .source = "time: t"},
    {.name = "a rate", .source = "rate: 100", .time = "none"},
    {.name = "frames", .source = "time: t, frame: 16, hop: 8", .filter = "FilterFFT"},
    {.name = "pins without samples in some rows", .source = "time: t", .pins = "p: x, q: y", .holes = ","},
    {.name = "missing values", .source = "time: t, missing: [NA]", .holes = "NA,"},
    {.name = "bad rows", .source = "time: t, onBadRow: skip", .holes = "bad,"},
    {.name = "bad rows taken", .source = "time: t, onBadRow: nan", .holes = "bad,"},
    {.name = "units",
     .source = "time: t, units: {x: mg, y: mg}",
     .pins = "p: {columns: [x, y], unit: m/s^2}, q: z"},
    {.name = "times that are repaired",
     .source = "time: t, duplicates: drop, backwards: drop, gaps: hold, gapLimit: 0.03",
     .time = "odd"},
    {.name = "times that are resampled",
     .source = "time: t, resample: 50 Hz, duplicates: drop",
     .time = "odd"},
    {.name = "dates", .source = "time: t", .time = "date"},
};

class SteadyRunTest : public Support::GraphFixture {
protected:
    static std::string timeText(const Row& row, int i) {
        const double seconds = 0.01 * i;
        if (row.time == "odd") {
            const int kept = i % 50 == 7 ? i - 1 : i;
            return std::to_string(0.01 * kept + (i / 1000) * 0.05);
        }
        if (row.time != "date") return std::to_string(seconds);
        char text[64];
        std::snprintf(text, sizeof text, "2026-05-04 10:%02d:%06.3f", i / 6000, std::fmod(seconds, 60.0));
        return text;
    }

    std::uint64_t allocationsOf(const Row& row, int rows) {
        std::string text = row.time == "none" ? "x,y,z\n" : "t,x,y,z\n";
        for (int i = 0; i < rows; ++i) {
            if (row.time != "none") text += timeText(row, i) + ",";
            text += std::to_string(std::sin(0.1 * i)) + ",";
            text += !row.holes.empty() && i % 7 == 3 ? row.holes : std::to_string(i % 11) + ",";
            text += std::to_string(1.0 / (1.0 + i)) + "\n";
        }
        folder.write("in.csv", text);
        Job job =
            jobOf("format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.csv, " +
                  row.source + ", pins: {" + row.pins + "}}}\n  - {id: f, type: " + row.filter +
                  "}\n  - {id: g, type: FilterGain}\n"
                  "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
                  "connections: [{from: in.p, to: f.in}, {from: f.out, to: out.a}, "
                  "{from: in.q, to: g}, {from: g, to: out.b}]\n");
        const Support::AllocationCounter counter;
        const std::string failure = job.run(stop.get_token()).failure;
        const std::uint64_t count = counter.count();
        EXPECT_EQ(failure, "") << row.name;
        EXPECT_GT(count, 0u) << "nobody counts";
        return count;
    }
};

TEST_F(SteadyRunTest, ARowAllocatesNothingFromFileToFile) {
    for (const Row& row : kRows) {
        const auto few = allocationsOf(row, 7000);
        const auto many = allocationsOf(row, 21000);
        EXPECT_EQ(few, many) << row.name;
    }
}

} // namespace
