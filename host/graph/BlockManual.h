// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/plugins/BlockCatalogue.h"
#include "host/text/Complaint.h"

#include <map>
#include <string>

namespace Quillmere::Host {

struct Value;

/// What graphs need of a block type's page: what of it is relative to the rate at which samples come, and
/// which units it takes and keeps. What people read on it is a `BlockPage`.
struct QUILLMERE_API BlockManual {
    /// What a number is told in.
    enum class RelativeTo { Nyquist, Radians, Samples };
    /// How often an output sends.
    struct OutputRate {
        enum class Kind { Same, None, Step, Rate };

        Kind kind = Kind::None;   ///< As often as samples come to the main input; at no rate; by a setting,
        std::string setting = {}; ///< which is the time from one sample to the next, or how many a second.
    };

    /// What a setting that is a time or a frequency is told in.
    enum class TimeUnit { Seconds, Hertz };
    struct SettingUnit {
        TimeUnit unit = TimeUnit::Seconds;
        std::string setting = {}; ///< A choice by which the unit goes; empty where it is always the same.
        std::map<std::string, TimeUnit> choices = {};
    };

    /// What the rows are of a sample that an output sends.
    enum class OutputRows {
        Same,       ///< Row k stands for what row k of the main input's sample does.
        Frequencies ///< Of a frame: row k of m for k times the rate of the frame's rows over 2 m.
    };

    /// The unit of what an output sends.
    struct OutputUnit {
        std::string input = {}; ///< That of what comes there; empty for the main input.
    };

    std::map<std::string, RelativeTo> settings = {};
    std::map<std::string, RelativeTo> inputs = {};
    std::map<std::string, OutputRate> outputs = {};
    bool takesAnyTimes = false; ///< Whether samples needn't come evenly, though a setting counts them.
    std::map<std::string, SettingUnit> settingUnits = {}; ///< Of settings in seconds or hertz.
    std::map<std::string, OutputRows> outputRows = {};    ///< Of outputs that anything is told of.
    std::map<std::string, OutputUnit> outputUnits = {};   ///< Of outputs that keep a unit.
    std::map<std::string, std::string> inputUnits = {};   ///< Of inputs that take one unit only.

    /// The manual of a type, from the file `TYPE.yaml` in the folder of its plug-in's manual; empty when the
    /// plug-in has none, which it doesn't need. What is wrong with it is complained of. [setup]
    static BlockManual read(const std::string& type, const BlockCatalogue& catalogue, Complaints& complaints);
    /// The same of one file, and of what was read of one. [setup]
    static BlockManual fromFile(const std::string& path, Complaints& complaints);
    static BlockManual fromValue(const Value& file, Complaints& complaints);
    /// Beside the plug-in, under its name: `libOwn.manual` beside `libOwn.so`. Empty for a type of the host.
    static std::string folderOf(const std::string& type, const BlockCatalogue& catalogue);
    /// The file of a type; empty when there is none.
    static std::string fileOf(const std::string& type, const BlockCatalogue& catalogue);
};

/// As a manual says it: `s`, `Hz`.
QUILLMERE_API const char* wordOf(BlockManual::TimeUnit unit);
/// Behind a number: `of half the rate`, `radians a sample`, `samples`.
QUILLMERE_API const char* meaningOf(BlockManual::RelativeTo relation);
/// As a manual says it: `nyquist`, `radians`, `samples`.
QUILLMERE_API const char* wordOf(BlockManual::RelativeTo relation);

} // namespace Quillmere::Host
