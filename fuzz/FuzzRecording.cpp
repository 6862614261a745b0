// SPDX-License-Identifier: MIT
// Recordings under every setting of a source: a line with the settings as `{time: t, pins: {x: x}}`, and
// behind it the recording.
#include "fuzz/Kit.h"
#include "host/description/ValueReader.h"
#include "host/ends/RecordingException.h"
#include "host/recording/RecordingSource.h"

#include <algorithm>
#include <optional>

using namespace Quillmere::Host;

namespace {
constexpr int kMostSamples = 2000;

GraphDescription::Block blockOf(const Value& settings, const std::string& path) {
    using Setting = GraphDescription::Setting;
    GraphDescription::Block block;
    block.id = "in";
    block.type = RecordingSource::kTypeName;
    for (const Value::Entry& entry : settings.entries)
        if (entry.key != "file")
            block.settings.push_back({entry.key, entry.where, entry.value, Setting::Origin::File});
    Value file;
    file.kind = Value::Kind::Scalar;
    file.text = path;
    block.settings.push_back({"file", {}, file, Setting::Origin::Caller});
    return block;
}

void readAll(RecordingSource& source, bool asItComes) {
    try {
        for (int sample = 0; sample < kMostSamples; ++sample) {
            if (asItComes && !source.getIsPrepared()) return;
            if (!source.prepare()) return;
            static_cast<void>(source.getNextTimeStamp());
            source.release();
            source.process();
        }
    } catch (const RecordingException&) {
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Fuzz::MemoryFile file;
    const std::string_view text = Fuzz::textOf(data, size);
    const std::size_t end = std::min(text.find('\n'), text.size());
    Complaints complaints;
    const std::optional<Value> settings =
        readValueText(std::string(text.substr(0, end)), "settings", false, complaints);
    if (!settings) return 0;
    const std::string_view recording = text.substr(std::min(end + 1, text.size()));
    // What libhdf5 makes of damaged files is its own matter, and it isn't made for them.
    if (recording.starts_with("\x89HDF") || recording.starts_with("MATLAB 7.3")) return 0;
    file.write(recording);
    for (const bool asItComes : {false, true}) {
        Complaints own;
        RecordingSource source("in");
        source.configure(blockOf(*settings, file.getPath()), "", own);
        if (!own.isEmpty()) return 0;
        source.open(own);
        if (!own.isEmpty()) return 0;
        static_cast<void>(source.lookAhead(10));
        readAll(source, asItComes);
        static_cast<void>(source.getAccount());
    }
    return 0;
}
