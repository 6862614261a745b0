// SPDX-License-Identifier: MIT
#pragma once

#include "tests/cli/Program.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Support {

inline constexpr const char* kGainGraph = R"yaml(format: 1
name: the test
blocks:
  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: [x]}}}
  - {id: gain, type: FilterGain}
  - {id: out, type: RecordingSink, properties: {file: out.csv}}
connections:
  - {from: in, to: gain}
  - {from: gain, to: out.x}
)yaml";

/// A folder with that graph, `g.yaml`, which reads three rows, `in.csv`, through a gain of 1 into `out.csv`.
class GainFixture : public testing::Test {
protected:
    GainFixture() : GainFixture(kGainGraph) {}
    /// With another graph over these rows.
    explicit GainFixture(const std::string& graph) {
        folder.write("g.yaml", graph);
        folder.write("in.csv", "t,x\n0,1\n0.5,2\n1,3\n");
    }

    /// Calls the command there.
    Ended call(std::vector<std::string> arguments, const std::string& output = {}) const;

    TemporaryFolder folder;
};

} // namespace Support
