// SPDX-License-Identifier: MIT
#include "tests/host/kit/FedPipe.h"
#include "tests/host/kit/GraphFixture.h"

#include "host/live/ControlException.h"
#include "host/live/LiveClock.h"
#include "host/live/LiveRun.h"

#include <chrono>
#include <functional>
#include <optional>
#include <sstream>
#include <thread>

// What a change of links or layouts while a graph runs must not lose.

namespace {

using namespace Quillmere::Host;
using Quillmere::Core::Synchronizer;

constexpr std::chrono::seconds kPatience{20};
constexpr const char* kLayouts = "format: 1\nlayouts: [{id: a}, {id: b}]\n";
constexpr const char* kPipe =
    "  - {id: in, type: RecordingSource, layout: a, properties: {file: pipe, time: t, "
    "pins: {x: [x]}}}\n";

class LiveChangesTest : public Support::GraphFixture {
protected:
    /// Builds the graph and starts it.
    void start(const std::string& text) {
        live.emplace(jobOf(text), LiveOptions{.speed = LiveClock::kMaximum});
        live->start();
    }
    /// A row for each number, the number being its time and its value.
    static std::string rows(int begin, int end) {
        std::string text;
        for (int i = begin; i < end; ++i)
            text += std::to_string(i) + "," + std::to_string(i) + "\n";
        return text;
    }
    void feed(const std::string& text) {
        ASSERT_TRUE(pipe.write(text, [this] { return !live || live->getState() < LiveRun::State::Ended; }));
    }
    void waitUntil(const std::function<bool()>& isSo) {
        const auto end = std::chrono::steady_clock::now() + kPatience;
        while (!isSo() && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_TRUE(isSo());
    }
    /// Waits for the end and returns the rows of the result.
    std::vector<std::string> linesOfResult() {
        EXPECT_TRUE(live->waitFor(kPatience));
        live->wait();
        std::vector<std::string> lines;
        std::istringstream text(folder.read("out.csv"));
        for (std::string line; std::getline(text, line);)
            lines.push_back(line);
        return lines;
    }
    Synchronizer& gateOf(const std::string& id) {
        for (const Graph::Node& node : live->getJob().getGraph().getNodes())
            if (node.description->id == id) return *node.block->getSynchronizer();
        throw std::out_of_range(id);
    }

    Support::FedPipe pipe{folder.path("pipe")};
    std::optional<LiveRun> live;
};

TEST_F(LiveChangesTest, ABufferThatIsMadeMeanwhileIsEmptiedAtTheEnd) {
    constexpr int kRows = 500;
    feed("t,x\n");
    start(std::string(kLayouts) + "blocks:\n" + kPipe +
          "  - {id: gain, type: FilterGain, layout: b}\n"
          "  - {id: out, type: RecordingSink, layout: b, properties: {file: out.csv}}\n"
          "connections:\n  - {from: in, to: gain}\n  - {from: gain, to: out.x}\n");
    live->getStructure().detach("gain.input");
    live->getStructure().attach(
        {.from = "in.x", .to = "gain.input", .buffer = kRows, .isNewestFirst = false});
    {
        // Its reader stands still until all has come and the run is over.
        const Synchronizer::DisablerLocker guard(&gateOf("gain"), nullptr);
        feed(rows(0, kRows));
        pipe.close();
        waitUntil([&] { return live->getState() == LiveRun::State::Ending; });
    }
    const std::vector<std::string> lines = linesOfResult();
    ASSERT_EQ(lines.size(), 1u + kRows);
    EXPECT_EQ(lines.back(), "499,499");
}

TEST_F(LiveChangesTest, TheTimelineGoesWithTheSourceThatTellsItsTime) {
    feed("t,x\n");
    start(std::string(kLayouts) + "blocks:\n" + kPipe +
          "  - {id: gain, type: FilterGain, layout: b}\n"
          "  - {id: out, type: RecordingSink, layout: a, properties: {file: out.csv}}\n"
          "connections:\n  - {from: in, to: gain}\n  - {from: gain, to: out.x}\n"
          "timeline:\n  - {at: 1, set: {gain.Gain: 2}}\n  - {at: 3, set: {gain.Gain: 3}}\n");
    feed(rows(0, 2));
    waitUntil([&] { return live->getSettings().read("gain.Gain").value == "2"; });
    live->getStructure().move("in", "b");
    feed(rows(2, 4));
    waitUntil([&] { return live->getSettings().read("gain.Gain").value == "3"; });
    pipe.close();
    EXPECT_EQ(linesOfResult().back(), "3,9");
}

TEST_F(LiveChangesTest, ASourceThatIsMovedKeepsOneAccountOfWhatIsNotFinite) {
    feed("t,x\n");
    start(std::string(kLayouts) + "blocks:\n" + kPipe +
          "  - {id: out, type: RecordingSink, layout: a, properties: {file: out.csv}}\n"
          "connections:\n  - {from: in, to: out.x}\n");
    feed("0,0\n1,nan\n");
    waitUntil([&] { return live->getProgress().rounds == 2; });
    live->getStructure().move("in", "b");
    feed("2,nan\n3,nan\n");
    pipe.close();
    linesOfResult();
    outcome = live->getOutcome();
    EXPECT_EQ(outcome.recordings[0].nonFiniteValues, 3u);
    std::vector<std::string> read; // a sample on its way may have been lost by the move, which is told too
    for (const Warning& warning : outcome.warnings)
        if (warning.text.starts_with("'in' read")) read.push_back(warning.text);
    EXPECT_EQ(read, std::vector<std::string>{
                        "'in' read 3 values that aren't finite, the first in row 2 (1 s), column 'x'"});
}

TEST_F(LiveChangesTest, ARowHasTheTimeOfItsSamplesThroughHoweverManyBlocksTheyCome) {
    // The source of the sink's own layout is at another time.
    folder.write(
        "other.csv", "t,x\n" + [] {
            std::string text;
            for (int i = 0; i < 2000; ++i)
                text += std::to_string(100000 + i) + ",1\n";
            return text;
        }());
    feed("t,x\n" + rows(0, 1000));
    start(
        std::string(kLayouts) + "blocks:\n" + kPipe +
        "  - {id: other, type: RecordingSource, layout: b, properties: {file: other.csv, time: t, pins: {x: "
        "[x]}}}\n"
        "  - {id: first, type: FilterGain, layout: b}\n  - {id: second, type: FilterGain, layout: b}\n"
        "  - {id: unrelated, type: FilterGain, layout: b}\n"
        "  - {id: out, type: RecordingSink, layout: b, properties: {file: out.csv}}\n"
        "connections:\n  - {from: in, to: first, buffer: 1000}\n  - {from: first, to: second}\n"
        "  - {from: second, to: out.x}\n  - {from: other, to: unrelated}\n");
    pipe.close();
    const std::vector<std::string> lines = linesOfResult();
    ASSERT_EQ(lines.size(), 1001u);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(lines[static_cast<std::size_t>(i + 1)], std::to_string(i) + "," + std::to_string(i));
}

} // namespace
