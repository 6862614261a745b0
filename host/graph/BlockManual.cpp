// SPDX-License-Identifier: MIT
#include "host/graph/BlockManual.h"

#include "host/description/Unit.h"
#include "host/description/ValueReader.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <string>

namespace Quillmere::Host {

namespace {
using RelativeTo = BlockManual::RelativeTo;
using OutputRate = BlockManual::OutputRate;
using TimeUnit = BlockManual::TimeUnit;

constexpr const char* kKeyLetters = "abcdefghijklmnopqrstuvwxyz";

struct Relation {
    const char* word; ///< In a manual.
    RelativeTo relation;
    const char* meaning;
};
constexpr std::array<Relation, 3> kRelations{{{"nyquist", RelativeTo::Nyquist, "of half the rate"},
                                              {"radians", RelativeTo::Radians, "radians a sample"},
                                              {"samples", RelativeTo::Samples, "samples"}}};

/// Takes the parts `rate` and `units` of a manual to pieces.
class ManualReader {
public:
    ManualReader(BlockManual& target, Complaints& list) : manual(target), complaints(list) {}

    void take(const Value& file) {
        const Value::Entry* const rate = file.find("rate");
        if (rate != nullptr && getIsMap(rate->value)) takeRate(rate->value);
        const Value::Entry* const units = file.find("units");
        if (units != nullptr && getIsMap(units->value)) takeUnits(units->value);
    }

private:
    void takeRate(const Value& rate) {
        for (const Value::Entry& entry : rate.entries) {
            if (entry.key == "settings")
                takeRelations(entry.value, manual.settings);
            else if (entry.key == "inputs")
                takeRelations(entry.value, manual.inputs);
            else if (entry.key == "outputs")
                takeOutputs(entry.value);
            else if (entry.key == "times")
                takeTimes(entry.value);
            else if (entry.key == "rows")
                takeRows(entry.value);
            else
                complaints.add(entry.where, "the key '" + entry.key + "'",
                               "settings, inputs, outputs, times or rows");
        }
    }

    void takeUnits(const Value& units) {
        for (const Value::Entry& entry : units.entries) {
            if (entry.key == "inputs")
                takeInputUnits(entry.value);
            else if (entry.key == "outputs")
                takeOutputUnits(entry.value);
            else if (entry.key == "settings")
                takeSettingUnits(entry.value);
            else
                complaints.add(entry.where, "the key '" + entry.key + "'", "settings, inputs or outputs");
        }
    }

    void takeInputUnits(const Value& value) {
        if (!getIsMap(value)) return;
        for (const Value::Entry& entry : value.entries) {
            if (entry.value.isScalar() && findUnit(entry.value.text) != nullptr)
                manual.inputUnits.emplace(entry.key, entry.value.text);
            else
                complaints.add(entry.value.where, entry.value.describe(), kSomeUnits);
        }
    }

    void takeOutputUnits(const Value& value) {
        if (!getIsMap(value)) return;
        for (const Value::Entry& entry : value.entries) {
            const Value::Entry* const input = entry.value.find("as");
            if (input != nullptr && input->value.isScalar())
                manual.outputUnits.emplace(entry.key, BlockManual::OutputUnit{input->value.text});
            else if (entry.value.isScalar() && entry.value.text == "same")
                manual.outputUnits.emplace(entry.key, BlockManual::OutputUnit{});
            else
                complaints.add(entry.value.where, entry.value.describe(), "same or {as: INPUT}");
        }
    }

    void takeSettingUnits(const Value& value) {
        if (!getIsMap(value)) return;
        for (const Value::Entry& entry : value.entries) {
            BlockManual::SettingUnit unit;
            const bool isByChoice =
                entry.value.entries.size() == 1 && entry.value.entries.front().value.kind == Value::Kind::Map;
            if (isByChoice) unit.setting = entry.value.entries.front().key;
            if (isByChoice ? takeChoices(entry.value.entries.front().value, unit.choices)
                           : takeUnit(entry.value, unit.unit))
                manual.settingUnits.emplace(entry.key, std::move(unit));
        }
    }

    bool takeChoices(const Value& value, std::map<std::string, TimeUnit>& choices) {
        for (const Value::Entry& entry : value.entries)
            if (!takeUnit(entry.value, choices[entry.key])) return false;
        return true;
    }

    bool takeUnit(const Value& value, TimeUnit& unit) {
        for (const TimeUnit known : {TimeUnit::Seconds, TimeUnit::Hertz}) {
            if (!value.isScalar() || value.text != wordOf(known)) continue;
            unit = known;
            return true;
        }
        complaints.add(value.where, value.describe(), "s, Hz or {SETTING: {CHOICE: s, CHOICE: Hz}}");
        return false;
    }

    void takeTimes(const Value& value) {
        manual.takesAnyTimes = value.isScalar() && value.text == "any";
        if (!manual.takesAnyTimes && !(value.isScalar() && value.text == "even"))
            complaints.add(value.where, value.describe(), "even or any");
    }

    bool getIsMap(const Value& value) {
        if (value.kind == Value::Kind::Map) return true;
        complaints.add(value.where, value.describe(), "a map");
        return false;
    }

    void takeRelations(const Value& value, std::map<std::string, RelativeTo>& relations) {
        if (!getIsMap(value)) return;
        for (const Value::Entry& entry : value.entries) {
            const auto known =
                std::find_if(kRelations.begin(), kRelations.end(), [&](const Relation& relation) {
                    return entry.value.isScalar() && entry.value.text == relation.word;
                });
            if (known == kRelations.end())
                complaints.add(entry.value.where, entry.value.describe(), "nyquist, radians or samples");
            else
                relations.emplace(entry.key, known->relation);
        }
    }

    void takeOutputs(const Value& value) {
        if (!getIsMap(value)) return;
        for (const Value::Entry& entry : value.entries) {
            const Value::Entry* const step = entry.value.find("step");
            const Value::Entry* const rate = entry.value.find("rate");
            if (step != nullptr && step->value.isScalar())
                manual.outputs.emplace(entry.key, OutputRate{OutputRate::Kind::Step, step->value.text});
            else if (rate != nullptr && rate->value.isScalar())
                manual.outputs.emplace(entry.key, OutputRate{OutputRate::Kind::Rate, rate->value.text});
            else if (entry.value.isScalar() && entry.value.text == "same")
                manual.outputs.emplace(entry.key, OutputRate{OutputRate::Kind::Same});
            else if (entry.value.isScalar() && entry.value.text == "none")
                manual.outputs.emplace(entry.key, OutputRate{OutputRate::Kind::None});
            else
                complaints.add(entry.value.where, entry.value.describe(),
                               "same, none, {step: SETTING} or {rate: SETTING}");
        }
    }

    void takeRows(const Value& value) {
        if (!getIsMap(value)) return;
        for (const Value::Entry& entry : value.entries) {
            const std::string word = entry.value.isScalar() ? entry.value.text : "";
            if (word == "same")
                manual.outputRows.emplace(entry.key, BlockManual::OutputRows::Same);
            else if (word == "frequencies")
                manual.outputRows.emplace(entry.key, BlockManual::OutputRows::Frequencies);
            else
                complaints.add(entry.value.where, entry.value.describe(), "same or frequencies");
        }
    }

    BlockManual& manual;
    Complaints& complaints;
};
} // namespace

namespace {
const Relation& find(RelativeTo relation) {
    return *std::find_if(kRelations.begin(), kRelations.end(),
                         [&](const Relation& known) { return known.relation == relation; });
}
} // namespace

const char* wordOf(BlockManual::TimeUnit unit) {
    return unit == BlockManual::TimeUnit::Seconds ? "s" : "Hz";
}

const char* meaningOf(RelativeTo relation) {
    return find(relation).meaning;
}

const char* wordOf(RelativeTo relation) {
    return find(relation).word;
}

std::string BlockManual::folderOf(const std::string& type, const BlockCatalogue& catalogue) {
    const std::string plugin = catalogue.getPluginPath(type);
    return plugin.empty() ? ""
                          : std::filesystem::path(plugin).replace_extension(QUILLMERE_MANUAL_ENDING).string();
}

std::string BlockManual::fileOf(const std::string& type, const BlockCatalogue& catalogue) {
    const std::string folder = folderOf(type, catalogue);
    if (folder.empty()) return {};
    const std::filesystem::path path = std::filesystem::path(folder) / (type + ".yaml");
    std::error_code isNowhere;
    return std::filesystem::exists(path, isNowhere) ? path.string() : std::string();
}

BlockManual BlockManual::fromValue(const Value& file, Complaints& complaints) {
    BlockManual manual;
    ManualReader(manual, complaints).take(file);
    return manual;
}

namespace {
/// Whether the line of a page begins one of its keys; a page in another style, as JSON, has none such.
bool isKey(const std::string& line) {
    const std::size_t end = std::min(line.find_first_not_of(kKeyLetters), line.size());
    return end > 0 && line.compare(end, 1, ":") == 0;
}

/// The text of a page with nothing on the lines that graphs don't need, so that places stay. Most of a page
/// is for people, and a graph would wait for it. Empty where it isn't sure what belongs to what.
std::string partForGraphs(std::istream& page) {
    std::string part;
    bool isNeeded = false;
    for (std::string line; std::getline(page, line); part += '\n') {
        const bool goesOn =
            line.empty() || line.front() == ' ' || line.front() == '#' || line.front() == '\r';
        if (!goesOn && !isKey(line)) return {};
        if (!goesOn) isNeeded = line.starts_with("rate:") || line.starts_with("units:");
        if (isNeeded) part += line;
    }
    const bool hasReferences = part.find('*') != std::string::npos;
    return hasReferences ? std::string() : part;
}
} // namespace

BlockManual BlockManual::fromFile(const std::string& path, Complaints& complaints) {
    std::ifstream page(path);
    const std::string part = partForGraphs(page);
    const auto file =
        part.empty() ? readValueFile(path, complaints) : readValueText(part, path, true, complaints);
    return file ? fromValue(*file, complaints) : BlockManual{};
}

BlockManual BlockManual::read(const std::string& type, const BlockCatalogue& catalogue,
                              Complaints& complaints) {
    const std::string path = fileOf(type, catalogue);
    return path.empty() ? BlockManual{} : fromFile(path, complaints);
}

} // namespace Quillmere::Host
