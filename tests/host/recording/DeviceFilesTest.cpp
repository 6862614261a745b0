// SPDX-License-Identifier: MIT
// A graph over the files of devices.
#include "host/recording/RecordingSource.h"

#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class DeviceFilesTest : public Support::GraphFixture {
protected:
    std::string result(const std::string& properties) {
        const std::string failure =
            run("format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.csv, " +
                properties +
                "}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv, units: false}}\n"
                "connections: [{from: in, to: out.p}]\n");
        return failure.empty() ? folder.read("out.csv") : failure;
    }
};

TEST_F(DeviceFilesTest, RowsThatARecorderWroteTwiceAreDropped) {
    folder.write("in.csv", "Time (s),Gyroscope X (deg/s),Accelerometer X (g),Magnetometer X (uT)\n"
                           "0,1,2,9\n0.01,2,2,9\n0.01,2,2,9\n0.02,3,2,8\n0.02,3,2,8\n0.03,4,2,8\n");
    EXPECT_EQ(result("duplicates: drop, pins: {p: [gyr*, mag*]}"),
              "t,p[0],p[1]\n0,1,9\n0.01,2,9\n0.02,3,8\n0.03,4,8\n");
    EXPECT_EQ(result("pins: {p: mag*}"), "t,p[0]\n0,9\n0.01,9\n0.01,9\n0.02,8\n0.02,8\n0.03,8\n");
}

TEST_F(DeviceFilesTest, AxesGoByTheirLettersWhereverTheyStand) {
    folder.write("in.csv", "time,seconds_elapsed,z,y,x\n1565087150000000000,0.25,3,2,1\n"
                           "1565087150010000000,0.26,6,5,4\n");
    EXPECT_EQ(result("pins: {p: [x, y, z]}"), "t,p[0],p[1],p[2]\n0.25,1,2,3\n0.26,4,5,6\n");
    folder.write("in.csv", "time,seconds_elapsed,accelerometer_z,accelerometer_y,accelerometer_x,gyroscope_z,"
                           "gyroscope_y,gyroscope_x\n"
                           "1565087150000000000,0.25,3,2,1,6,5,4\n1565087150010000000,0.26,3,2,1,6,5,4\n");
    EXPECT_EQ(result("pins: {p: acc*}"), "t,p[0],p[1],p[2]\n0.25,1,2,3\n0.26,1,2,3\n");
    EXPECT_EQ(result("pins: {p: gyr*}"), "t,p[0],p[1],p[2]\n0.25,4,5,6\n0.26,4,5,6\n");
}

} // namespace
