// SPDX-License-Identifier: MIT
#pragma once

#include "host/live/LiveRun.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Support {

/// Holds what the blocks of a `LiveTurmoil` have seen against what the statistics of its run have counted,
/// for the blocks and links that were left alone.
class TurmoilCheck {
public:
    /// Requires: the run has ended. With `mayLeaveSome`, samples may wait in its links.
    TurmoilCheck(Quillmere::Host::LiveRun& liveRun, std::uint64_t samplesOfSource, bool mayLeaveSome);

    /// The rows of the result have what the block in front of it sent, in order.
    void checkTable(const TemporaryFolder& folder);

    const std::vector<std::string>& getComplaints() const { return complaints; }
    /// Samples lost on the links that were left alone.
    std::uint64_t getLost() const { return lost; }

private:
    void checkSums();
    void checkReader(const std::string& reader, std::uint64_t sent, std::uint64_t sentToSide);
    void expect(const std::string& what, std::uint64_t found, std::uint64_t expected);
    std::uint64_t sentBy(const std::string& block) const;
    Quillmere::Host::LiveStatistics::Link linkTo(const std::string& input) const;
    std::uint64_t shownBy(const std::string& setting);

    Quillmere::Host::LiveRun& run;
    const std::uint64_t samples;
    const bool leavesSome;
    Quillmere::Host::LiveStatistics statistics;
    std::vector<std::string> complaints;
    std::uint64_t lost = 0;
};

} // namespace Support
