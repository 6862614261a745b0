// SPDX-License-Identifier: MIT
#pragma once

#include "tests/cli/Program.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace Support {

/// A folder with a graph, `g.yaml`, that passes `x` of a recording through a block of the crash plug-in and a
/// gain into `out.csv`; and with recordings below `study`.
class BatchFixture : public testing::Test {
protected:
    BatchFixture();

    void writeRecording(const std::string& name, const std::string& rows) const;
    /// So many recordings, each of so many rows that take a millisecond.
    void writeSlow(int recordings, int rows) const;
    static std::vector<std::string> words(std::vector<std::string> arguments);
    Ended call(const std::vector<std::string>& arguments) const;
    /// `batch` over all of them into `results`.
    Ended batch(const std::vector<std::string>& more = {}) const;
    static std::vector<std::string> batchWords(const std::vector<std::string>& more);

    /// The files below a folder that runs make, by name, and what is in them; without what differs from run
    /// to run.
    std::map<std::string, std::string> results(const std::string& below = "results") const;
    /// A member of a status that is a text or a number.
    std::string status(const std::string& name, const std::string& member) const;

    TemporaryFolder folder;
};

} // namespace Support
