// SPDX-License-Identifier: MIT
#include "tests/host/kit/LiveFixture.h"

#include <stdexcept>

namespace Support {

using namespace Quillmere::Host;

Hold::Hold(LiveRun& run, const std::string& setting, const std::string& value) {
    watch = run.getSettings().observe(setting,
                                      [this, waitsFor = released.get_future().share()](const SettingState&) {
                                          entered.set_value();
                                          waitsFor.wait();
                                      });
    writer = std::thread([&run, setting, value] { run.getSettings().write(setting, value); });
    entered.get_future().wait();
}

void Hold::release() {
    if (!writer.joinable()) return;
    released.set_value();
    writer.join();
    watch.reset();
}

LiveRun& LiveFixture::prepare(const std::string& text, const LiveOptions& options, const RunLimit& limit) {
    liveRun.reset();
    liveRun = std::make_unique<LiveRun>(jobOf(text, {}, limit), options);
    return *liveRun;
}

LiveRun& LiveFixture::start(const std::string& text, const LiveOptions& options, const RunLimit& limit) {
    prepare(text, options, limit).start();
    return *liveRun;
}

std::string LiveFixture::end() {
    if (!liveRun->waitFor(kPatience)) {
        ADD_FAILURE() << "the run doesn't end";
        liveRun->interrupt("the test is out of patience");
    }
    try {
        liveRun->wait();
    } catch (const RunException& exception) {
        return withoutFolder(exception.what());
    }
    return "";
}

std::string LiveFixture::runLive(const std::string& text, const LiveOptions& options, const RunLimit& limit) {
    start(text, options, limit);
    return end();
}

LiveStatistics::Block LiveFixture::blockStatistics(const std::string& id) {
    for (const LiveStatistics::Block& block : liveRun->getStatistics().blocks)
        if (block.id == id) return block;
    throw std::runtime_error("no statistics of " + id);
}

LiveStatistics::Link LiveFixture::linkStatistics(const std::string& to) {
    for (const LiveStatistics::Link& link : liveRun->getStatistics().links)
        if (link.to == to) return link;
    throw std::runtime_error("no statistics of a link to " + to);
}

namespace {
std::string layoutKey(const std::string& layout) {
    return layout.empty() ? "" : ", layout: " + layout;
}
} // namespace

std::string sourceLine(const std::string& id, const std::string& file, const std::string& pins,
                       const std::string& layout) {
    return "  - {id: " + id + layoutKey(layout) + ", type: RecordingSource, properties: {file: \"" + file +
           "\", time: t, pins: {" + pins + "}}}\n";
}

std::string sinkLine(const std::string& id, const std::string& file, const std::string& layout) {
    return "  - {id: " + id + layoutKey(layout) + ", type: RecordingSink, properties: {file: \"" + file +
           "\"}}\n";
}

} // namespace Support
