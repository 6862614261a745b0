// SPDX-License-Identifier: MIT
#include "host/recording/RecordingProfile.h"

#include "host/recording/ColumnPattern.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {

constexpr std::array kProfiles{
    // A file of the same columns without such lines is of the smaller device below.
    RecordingProfile{.name = "Xsens MT",
                     .preamble = "//",
                     .columns = {"PacketCounter"},
                     .hasTimes = false}, // SampleTimeFine counts in units that depend on the device
    RecordingProfile{.name = "Movella DOT",
                     .columns = {"PacketCounter", "SampleTimeFine"},
                     .times = {"SampleTimeFine"},
                     .perSecond = 1e6,
                     .counterBits = 32},
    RecordingProfile{.name = "Movella DOT", .columns = {"PacketCounter", "*_X"}, .hasTimes = false},
    RecordingProfile{.name = "Shimmer",
                     .columns = {"*_Timestamp_Unix_CAL"},
                     .times = {"*_Timestamp_Unix_CAL"},
                     .perSecond = 1e3},
    RecordingProfile{.name = "ActiGraph", .preamble = "ActiGraph", .times = {"Timestamp"}},
    RecordingProfile{.name = "GENEActiv",
                     .preamble = "Device Type,GENEActiv",
                     .kinds = "TNNNNNN",
                     .names = {"time", "x", "y", "z", "light", "button", "temperature"},
                     .units = {"", "g", "g", "g", "lux", "", "degC"},
                     .times = {"time"}},
    RecordingProfile{.name = "Axivity",
                     .kinds = "TNNN",
                     .names = {"time", "x", "y", "z"},
                     .units = {"", "g", "g", "g"},
                     .times = {"time"}},
    RecordingProfile{.name = "MbientLab",
                     .columns = {"epo* (ms)", "elapsed (s)"},
                     .times = {"elapsed (s)"},
                     .perSecond = 1.0},
    RecordingProfile{.name = "Sensor Logger",
                     .columns = {"time", "seconds_elapsed"},
                     .times = {"seconds_elapsed"},
                     .perSecond = 1.0},
    RecordingProfile{.name = "x-io",
                     .columns = {"Time (*s)", "Gyroscope X (deg/s)", "Accelerometer X (g)"},
                     .times = {"Time (*s)"}},
    RecordingProfile{.name = "phyphox", .columns = {"Time (s)", "* x (*)"}, .times = {"Time (s)"}},
};

bool getHasFingerprint(const RecordingProfile& profile, const CsvDialect& dialect,
                       const std::vector<std::string>& names, const std::vector<CellKind>& kinds) {
    const auto isIn = [&](const std::string& line) {
        return line.find(profile.preamble) != std::string::npos;
    };
    if (!profile.preamble.empty() && std::none_of(dialect.preamble.begin(), dialect.preamble.end(), isIn))
        return false;
    for (const std::string_view column : profile.columns)
        if (!column.empty() && std::none_of(names.begin(), names.end(), [&](const std::string& name) {
                return getFitsPattern(name, column);
            }))
            return false;
    if (profile.kinds.empty()) return true;
    if (dialect.hasHeader || kinds.size() != profile.kinds.size()) return false;
    return std::equal(kinds.begin(), kinds.end(), profile.kinds.begin(), [](CellKind kind, char wanted) {
        return kind == (wanted == 'T' ? CellKind::Time : CellKind::Number);
    });
}

} // namespace

std::span<const RecordingProfile> recordingProfiles() {
    return kProfiles;
}

const RecordingProfile* findProfile(const std::string& wanted, const CsvDialect& dialect,
                                    const std::vector<std::string>& names,
                                    const std::vector<CellKind>& kinds) {
    if (wanted == "none") return nullptr;
    // Of several entries with the name that is wanted, one that fits is better than another.
    const RecordingProfile* named = nullptr;
    for (const RecordingProfile& profile : kProfiles) {
        if (!wanted.empty() && profile.name != wanted) continue;
        if (getHasFingerprint(profile, dialect, names, kinds)) return &profile;
        if (!wanted.empty() && named == nullptr) named = &profile;
    }
    return named;
}

} // namespace Quillmere::Host
