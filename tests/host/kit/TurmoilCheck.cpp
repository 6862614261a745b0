// SPDX-License-Identifier: MIT
#include "tests/host/kit/TurmoilCheck.h"

#include <fstream>

namespace Support {

using namespace Quillmere::Host;

TurmoilCheck::TurmoilCheck(LiveRun& liveRun, std::uint64_t samplesOfSource, bool mayLeaveSome)
    : run(liveRun), samples(samplesOfSource), leavesSome(mayLeaveSome) {
    for (const char* const reader : {"near", "far", "last"})
        run.getSettings().fire(std::string(reader) + ".Report");
    statistics = run.getStatistics();
    const std::uint64_t sent = sentBy("src");
    expect("sent by the source", sent, samples);
    checkReader("near", sent, sent);
    checkReader("far", sent, sent);
    checkReader("last", sentBy("far"), sentBy("near"));
    // In the source's own layout a block takes each sample in the round that brings it, whatever else is
    // changed.
    expect("lost by near", linkTo("near.in").lost + linkTo("near.side").lost, 0);
    checkSums();
}

void TurmoilCheck::checkReader(const std::string& reader, std::uint64_t sent, std::uint64_t sentToSide) {
    const LiveStatistics::Link in = linkTo(reader + ".in");
    const LiveStatistics::Link side = linkTo(reader + ".side");
    const std::uint64_t taken = shownBy(reader + ".in taken");
    const std::uint64_t sideTaken = shownBy(reader + ".side taken");
    expect(reader + ", received", in.received, sent);
    expect(reader + ", taken", in.taken, taken);
    expect(reader + ", lost", in.lost, sent - taken - in.waiting);
    expect(reader + ", sent on", sentBy(reader), taken);
    // The newest is never lost, so the last one has come through, through however many blocks.
    if (!leavesSome) {
        expect(reader + ", waiting", in.waiting, 0);
        expect(reader + ", last", shownBy(reader + ".in last"), samples);
    }
    expect(reader + ", received on the side", side.received, sentToSide);
    expect(reader + ", taken on the side", side.taken, sideTaken);
    expect(reader + ", lost on the side", side.lost, sentToSide - sideTaken - side.waiting);
    lost += in.lost + side.lost;
}

/// Counts below 0 would show as enormous ones.
void TurmoilCheck::checkSums() {
    for (const LiveStatistics::Link& link : statistics.links)
        if (link.taken + link.waiting > link.received ||
            link.taken + link.waiting + link.lost != link.received)
            complaints.push_back("the counts of " + link.to + " don't add up");
}

void TurmoilCheck::checkTable(const TemporaryFolder& folder) {
    const LiveStatistics::Link link = linkTo("out.last");
    std::ifstream file(folder.path("out.csv"));
    std::string line;
    std::getline(file, line); // the names of the columns
    std::uint64_t rows = 0;
    double before = -1.0;
    for (; std::getline(file, line); ++rows) {
        const double time = std::stod(line);
        if (!(time > before))
            complaints.push_back("the result has " + line + " behind " + std::to_string(before));
        before = time;
    }
    expect("received by the result", link.received, sentBy("last"));
    expect("rows of the result", rows, link.taken);
    if (!leavesSome) expect("waiting for the result", link.waiting, 0);
}

void TurmoilCheck::expect(const std::string& what, std::uint64_t found, std::uint64_t expected) {
    if (found == expected) return;
    complaints.push_back(what + ": found " + std::to_string(found) + "; expected " +
                         std::to_string(expected));
}

std::uint64_t TurmoilCheck::sentBy(const std::string& block) const {
    for (const LiveStatistics::Block& entry : statistics.blocks)
        if (entry.id == block) return entry.samplesOut;
    return 0;
}

LiveStatistics::Link TurmoilCheck::linkTo(const std::string& input) const {
    for (const LiveStatistics::Link& link : statistics.links)
        if (link.to == input) return link;
    return {};
}

std::uint64_t TurmoilCheck::shownBy(const std::string& setting) {
    return std::stoull(run.getSettings().read(setting).value);
}

} // namespace Support
