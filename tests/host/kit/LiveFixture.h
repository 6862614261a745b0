// SPDX-License-Identifier: MIT
#pragma once

#include "host/live/LiveRun.h"
#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/GraphFixture.h"

#include <future>
#include <limits>
#include <memory>
#include <string>
#include <thread>

namespace Support {

inline constexpr double kUnpaced = std::numeric_limits<double>::infinity();
/// Holds a layout still: a writer of one of its settings is kept inside its guard, until `release` or the
/// end.
class Hold {
public:
    /// `value` is another one than the setting has.
    Hold(Quillmere::Host::LiveRun& run, const std::string& setting, const std::string& value);
    ~Hold() { release(); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

    void release();

private:
    std::promise<void> entered;
    std::promise<void> released;
    std::unique_ptr<Quillmere::Host::SettingWatch> watch;
    std::thread writer;
};

/// Runs graphs live, with the folder and the catalogue of `GraphFixture`.
class LiveFixture : public GraphFixture {
protected:
    using LiveOptions = Quillmere::Host::LiveOptions;
    using LiveRun = Quillmere::Host::LiveRun;
    using RunLimit = Quillmere::Host::RunLimit;

    /// Builds the graph and its run, which `liveRun` is from then on; nothing has started.
    LiveRun& prepare(const std::string& text, const LiveOptions& options = {.speed = kUnpaced},
                     const RunLimit& limit = {});
    /// The same, and starts it.
    LiveRun& start(const std::string& text, const LiveOptions& options = {.speed = kUnpaced},
                   const RunLimit& limit = {});
    /// Waits for the end. Gives back an empty text, or why the run failed; one that doesn't end fails the
    /// test.
    std::string end();
    /// Runs a graph to its end; what `end` gives back.
    std::string runLive(const std::string& text, const LiveOptions& options = {.speed = kUnpaced},
                        const RunLimit& limit = {});

    /// What the statistics say of a block, or of the link to an input (`block.pin`).
    Quillmere::Host::LiveStatistics::Block blockStatistics(const std::string& id);
    Quillmere::Host::LiveStatistics::Link linkStatistics(const std::string& to);

    /// The graph of `liveRun`.
    Quillmere::Host::Graph& graphOfRun() { return liveRun->getJob().getGraph(); }

    std::unique_ptr<LiveRun> liveRun;
};

/// The lines of a graph file: a RecordingSource with the time column `t`, a RecordingSink; `layout` is one
/// for both.
std::string sourceLine(const std::string& id, const std::string& file, const std::string& pins,
                       const std::string& layout = "");
std::string sinkLine(const std::string& id, const std::string& file, const std::string& layout = "");

} // namespace Support
