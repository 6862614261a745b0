// SPDX-License-Identifier: MIT
// Two recordings of different rates in one graph: a gyroscope and an accelerometer at 100 Hz, a magnetometer
// at 10 Hz.
#include "host/run/Job.h"

#include "host/text/ShortestText.h"
#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

constexpr int kRows = 500;
constexpr int kFastToSlow = 10;

class TwoRatesTest : public Support::GraphFixture {
protected:
    TwoRatesTest() {
        std::string fast = "t,ax,ay,az,gx,gy,gz\n";
        std::string slow = "t,mx,my,mz\n";
        std::string both = "t,ax,ay,az,gx,gy,gz,mx,my,mz\n";
        for (int i = 0; i < kRows; ++i) {
            const double t = i / 100.0;
            const std::string row =
                line({t, std::sin(t), 0.1 * std::cos(3 * t), 1.0, 0.2 * std::sin(5 * t), 0.3, t});
            const std::string field = line({0.4 + 0.01 * std::sin(t), -0.1, 0.2 * std::cos(t)});
            fast += row + "\n";
            if (i % kFastToSlow == 0) slow += shortestText(t) + "," + field + "\n";
            both += row + "," + (i % kFastToSlow == 0 ? field : ",,") + "\n";
        }
        folder.write("imu.csv", fast);
        folder.write("mag.csv", slow);
        folder.write("both.csv", both);
    }

    static std::string line(const std::vector<double>& numbers) {
        std::string text;
        for (const double number : numbers) {
            text += text.empty() ? "" : ",";
            text += shortestText(number);
        }
        return text;
    }
    static std::string source(const std::string& id, const std::string& file, const std::string& pins,
                              const std::string& more = "") {
        return "  - {id: " + id + ", type: RecordingSource, properties: {file: " + file +
               ", time: t, pins: {" + pins + "}" + more + "}}\n";
    }
    /// An estimate of the orientation from pins of `imu` and `mag`, which may be one source.
    static std::string fusion(const std::string& sources, const std::string& mag,
                              const std::string& blocks = "", const std::string& connections = "") {
        return "format: 1\nblocks:\n" + sources +
               "  - {id: earth, type: FilterSphericalFiltering, properties: {Use Timestamp: true}}\n" +
               blocks +
               "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\nconnections:\n"
               "  - {from: imu.gyr, to: earth.3g}\n  - {from: imu.acc, to: earth.3a}\n  - {from: " +
               mag +
               ", to: earth.3m}\n  - {from: earth.3m_Terre, to: out.earth}\n  - {from: imu.acc, to: "
               "out.acc}\n"
               "  - {from: " +
               mag + ", to: out.mag}\n" + connections;
    }

    std::vector<std::string> rowsOf(const std::string& file) {
        std::istringstream lines(folder.read(file));
        std::vector<std::string> rows;
        std::string row;
        std::getline(lines, row); // the names
        while (std::getline(lines, row))
            rows.push_back(row);
        return rows;
    }
    /// Cells from `first` on, up to `end`.
    static std::string cellsOf(const std::string& row, std::size_t first, std::size_t end = 100) {
        std::istringstream cells(row);
        std::string text;
        std::string cell;
        for (std::size_t i = 0; i < end && std::getline(cells, cell, ','); ++i)
            if (i >= first) text += cell + ",";
        return text;
    }

    const std::string kImu = source("imu", "imu.csv", "acc: [ax, ay, az], gyr: [gx, gy, gz]");
    const std::string kMag = source("mag", "mag.csv", "mag: [mx, my, mz]");
};

/// Of equal times the source that stands first in the graph goes first, so the field is there when the turn
/// rate comes.
TEST_F(TwoRatesTest, TheyAreMergedByTimeAsIfOneFileHadThem) {
    ASSERT_EQ(run(fusion(source("imu", "both.csv", "acc: [ax, ay, az], gyr: [gx, gy, gz], mag: [mx, my, mz]"),
                         "imu.mag")),
              "");
    const std::vector<std::string> one = rowsOf("out.csv");
    ASSERT_EQ(run(fusion(kMag + kImu, "mag.mag")), "");
    const std::vector<std::string> two = rowsOf("out.csv");
    EXPECT_EQ(outcome.recordings[0].rows, 50u);
    EXPECT_EQ(outcome.recordings[1].rows, 500u);
    EXPECT_EQ(outcome.recordings[0].account.getMedianRate(), 10.0);
    ASSERT_EQ(one.size(), 500u);
    ASSERT_EQ(two.size(), 550u);
    std::size_t row = 0;
    for (int i = 0; i < kRows; ++i) {
        const std::string expected = one[static_cast<std::size_t>(i)];
        if (i % kFastToSlow == 0) {
            EXPECT_EQ(cellsOf(two[row], 0, 1), cellsOf(expected, 0, 1));
            EXPECT_EQ(cellsOf(two[row], 7), cellsOf(expected, 7)) << "the field in a row of its own";
            ++row;
        }
        EXPECT_EQ(cellsOf(two[row], 0, 7), cellsOf(expected, 0, 7)) << "the same orientation, bit for bit";
        EXPECT_EQ(std::stod(two[row]), i / 100.0);
        ++row;
    }
}

TEST_F(TwoRatesTest, TimesBetweenTheOthersHaveARoundOfTheirOwn) {
    folder.write("mag.csv", "t,mx,my,mz\n0.005,1,2,3\n0.02,4,5,6\n9,7,8,9\n");
    folder.write("imu.csv", "t,ax,ay,az,gx,gy,gz\n0,1,0,0,0,0,0\n0.01,2,0,0,0,0,0\n0.02,3,0,0,0,0,0\n");
    ASSERT_EQ(run("format: 1\nblocks:\n" + kImu + kMag +
                  "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\nconnections:\n"
                  "  - {from: imu.acc, to: out.a}\n  - {from: mag.mag, to: out.m}\n"),
              "");
    EXPECT_EQ(folder.read("out.csv"),
              "t,a[0],a[1],a[2],m[0],m[1],m[2]\n0,1,0,0,,,\n0.005,,,,1,2,3\n0.01,2,0,0,,,\n"
              "0.02,3,0,0,,,\n0.02,,,,4,5,6\n9,,,,7,8,9\n");
}

TEST_F(TwoRatesTest, HertzAreConvertedByTheRateOfTheirOwn) {
    const std::string filter =
        ", type: FilterButterworth, properties: {Order: 2, RelativeCutOffFreq: 2 Hz}}\n";
    ASSERT_EQ(run(fusion(kImu + kMag, "mag.mag", "  - {id: fast" + filter + "  - {id: slow" + filter,
                         "  - {from: imu.acc, to: fast.in}\n  - {from: mag.mag, to: slow.in}\n"
                         "  - {from: fast.out, to: out.fast}\n  - {from: slow.out, to: out.slow}\n")),
              "");
    ASSERT_EQ(outcome.conversions.size(), 2u);
    EXPECT_EQ(withoutFolder(outcome.conversions[0].getText()),
              "2 Hz is 0.04 of half the rate (100 samples/s, as measured in imu.csv)");
    EXPECT_EQ(withoutFolder(outcome.conversions[1].getText()),
              "2 Hz is 0.4 of half the rate (10 samples/s, as measured in mag.csv)");
}

TEST_F(TwoRatesTest, FromOneStartAndAtOneRateTheyHaveTheSameTimes) {
    const std::string even = ", start: 0.1, end: 2, resample: 50 Hz";
    folder.write("mag.csv", "t,mx,my,mz\n0.03,3,0,0\n1.03,103,0,0\n2.03,203,0,0\n");
    ASSERT_EQ(run(fusion(source("mag", "mag.csv", "mag: [mx, my, mz]", even) +
                             source("imu", "imu.csv", "acc: [ax, ay, az], gyr: [gx, gy, gz]", even),
                         "mag.mag")),
              "");
    EXPECT_EQ(outcome.recordings[0].rows, 95u);
    EXPECT_EQ(outcome.recordings[1].rows, 95u);
    const std::vector<std::string> rows = rowsOf("out.csv");
    ASSERT_EQ(rows.size(), 190u);
    for (std::size_t i = 0; i < rows.size(); ++i)
        EXPECT_EQ(std::stod(rows[i]), 0.1 + static_cast<double>(i / 2) / 50.0);
}

} // namespace
