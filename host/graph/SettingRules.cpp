// SPDX-License-Identifier: MIT
#include "host/graph/SettingRules.h"

#include "framework/Quillmere.h"
#include "host/graph/ClockWarnings.h"
#include "host/ends/MainInput.h"
#include "host/plugins/KnownTypes.h"
#include "host/text/Printable.h"
#include "host/graph/ShapeWarnings.h"
#include "host/graph/BlockDescription.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace Quillmere::Host {

namespace {
bool isNotBelow(double first, double second) {
    return first >= second;
}
bool isAbove(double first, double second) {
    return first > second;
}
bool isZero(double first, double) {
    return first == 0.0;
}
bool isNegative(double first, double) {
    return first < 0.0;
}
bool isSet(double first, double) {
    return first != 0.0;
}
bool isZeroUnderAnOrder(double cutOff, double order) {
    return cutOff == 0.0 && order > 0.0;
}
bool isNegativeOnMagnitudes(double threshold, double isAbsolute) {
    return threshold < 0.0 && isAbsolute != 0.0;
}
bool takesEverything(double first, double second) {
    return first + second >= 100.0;
}
bool isDeeperThan(double passRipple, double stopRipple) {
    return passRipple >= -stopRipple;
}
bool isProductOneOrMore(double first, double second) {
    return first * second >= 1.0;
}
bool isAboveAnEnd(double first, double end) {
    return end != 0.0 && first > end;
}
bool isBelowTwo(double first, double) {
    return first < 2.0;
}

constexpr const char* kEdges = "the low edge has to lie below the high one, or there is no band";
constexpr const char* kNoDesign = "a cut-off of 0 has no design, and everything becomes not-a-number";
constexpr const char* kPaused = "a block that is paused sends nothing";
} // namespace

std::span<const SettingRule> getSettingRules() {
    static constexpr SettingRule rules[]{
        {"FilterButterworth", "RelativeCutOffFreq", "Order", isZeroUnderAnOrder, kNoDesign},
        {"FilterButterworth_v2", "RelativeCutOffFreq", "Order", isZeroUnderAnOrder,
         "at a cut-off of 0 the output stays at its first value"},
        {"FilterBandPass", "Low Cutoff Freq. (relative)", "Order", isZeroUnderAnOrder, kNoDesign},
        {"FilterBandPass", "High Cutoff Freq. (relative)", "Order", isZeroUnderAnOrder, kNoDesign},
        {"FilterBandPass", "Low Cutoff Freq. (relative)", "High Cutoff Freq. (relative)", isNotBelow, kEdges},
        {"FilterBessel", "LowRelativeCutOffFreq", "HighRelativeCutOffFreq", isNotBelow, kEdges, true},
        {"FilterButterworthV2", "LowRelativeCutOffFreq", "HighRelativeCutOffFreq", isNotBelow, kEdges, true},
        {"FilterChebyshev", "LowRelativeCutOffFreq", "HighRelativeCutOffFreq", isNotBelow, kEdges, true},
        {"FilterEllipticV1", "LowRelFreq", "HighRelFreq", isNotBelow, kEdges, true},
        {"FilterEllipticV1", "Ripple BandPass", "Ripple BandStop", isDeeperThan,
         "what is stopped has to be lowered by more than the ripple of what passes"},
        {"FilterHysteresis", "LowThreshold", "HighThreshold", isAbove,
         "the low threshold lies above the high one, and the block swaps them"},
        {"FilterSaturationDetector", "Threshold Low", "Threshold High", isNotBelow,
         "the low threshold has to lie below the high one, or every value is flagged"},
        {"FilterSmartSaturationDetector", "MinThreshold", "MaxThreshold", isNotBelow,
         "the low threshold has to lie below the high one, or every value may be flagged"},
        {"FilterDeadband", "Threshold", "Absolute", isNegativeOnMagnitudes,
         "a threshold below 0 lets every magnitude through"},
        {"FilterRelativeErode", "LeftErode (%)", "RightErode (%)", takesEverything, "no column is left"},
        {"FilterRelativeErode", "TopErode (%)", "BottomErode (%)", takesEverything, "no row is left"},
        {"FilterPeriodCounter", "Absolute Tolerance", nullptr, isNegative,
         "with a negative tolerance there is no band, and every value between counts as below it"},
        {"FilterInvGain", "invGain", nullptr, isZero, "a division by 0 has no finite result"},
        {"FilterFlagStatic", "FlagThreshold", nullptr, isZero,
         "with a threshold of 0 nothing counts as rest"},
        {"FilterFlagStatic", "StdDevIni", nullptr, isZero,
         "from 0 no noise can be learned, and nothing counts as rest"},
        {"FilterFlagStatic", "Windows Size", nullptr, isBelowTwo, "a deviation needs two rows at least"},
        {"Peaks", "From", "To", isAboveAnEnd, "the band has to begin below its end, or no peak lies in it"},
        {"FilterWFLC", "Mu", "Order", isProductOneOrMore,
         "their product has to stay below 1, or the weights grow without end"},
        {"FilterFFT", "Pause", nullptr, isSet, kPaused},
        {"FilterFastFourierTransform", "Pause", nullptr, isSet, kPaused},
    };
    return rules;
}

namespace {
std::optional<double> numberOf(const PropertyDescription& property) {
    if (const auto* const number = std::get_if<double>(&property.value)) return *number;
    if (const auto* const whole = std::get_if<std::int64_t>(&property.value))
        return static_cast<double>(*whole);
    if (const auto* const flag = std::get_if<bool>(&property.value)) return *flag ? 1.0 : 0.0;
    return std::nullopt;
}

std::optional<PropertyDescription> settingOf(const Core::Filter& block, const char* name) {
    const Core::AbstractProperty* const property = block.getPropertyBag().find(name);
    return property == nullptr ? std::nullopt : std::optional(describe(*property));
}

bool getIsBandMode(const Core::Filter& block) {
    const auto mode = settingOf(block, "Mode");
    return mode && valueText(*mode).starts_with("Band");
}

/// Where the file sets the first of a rule's settings that it does set; else where the block stands.
Place placeOf(const GraphDescription::Block& block, const SettingRule& rule) {
    for (const GraphDescription::Setting& setting : block.settings)
        if (setting.name == rule.first || (rule.second != nullptr && setting.name == rule.second))
            return setting.where;
    return block.where;
}

/// A setting's value as the user wrote it, which the block may have moved; its default where nobody did.
std::string quoted(const GraphDescription::Block& block, const PropertyDescription& setting) {
    const std::string own = valueText(setting);
    const auto written =
        std::find_if(block.settings.begin(), block.settings.end(),
                     [&](const GraphDescription::Setting& given) { return given.name == setting.name; });
    Complaints none; // the block has taken it
    const auto number = written == block.settings.end() ? std::nullopt : toNumber(written->value, none);
    const bool isMoved = number && number != numberOf(setting);
    return "'" + setting.name + "' at " +
           (isMoved ? printable(written->value.text, kLongestName) + " (moved to " + own + " by the block)"
                    : own);
}

void apply(const SettingRule& rule, const Graph::Node& node, Complaints& complaints) {
    const Core::Filter& block = *node.block;
    if (rule.isOfBands && !getIsBandMode(block)) return;
    const auto first = settingOf(block, rule.first);
    const auto second = rule.second == nullptr ? first : settingOf(block, rule.second);
    const auto firstNumber = first ? numberOf(*first) : std::nullopt;
    const auto secondNumber = second ? numberOf(*second) : std::nullopt;
    if (!firstNumber || !secondNumber || !rule.isBroken(*firstNumber, *secondNumber)) return;
    std::string values = quoted(*node.description, *first);
    if (rule.second != nullptr) values += " and " + quoted(*node.description, *second);
    complaints.warn(placeOf(*node.description, rule),
                    "'" + block.getName() + "' (" + rule.type + ") has " + values + ": " + rule.text);
}

void warnOfLoopToItself(const Graph::Node& node, Complaints& complaints) {
    const Core::AbstractInputPin* const input = mainInputOf(*node.block);
    const Core::AbstractOutputPin* const sender = input == nullptr ? nullptr : input->getConnectedOutput();
    if (sender == nullptr || sender->getManager() != node.block.get()) return;
    complaints.warn(node.description->where,
                    "'" + node.block->getName() + "' waits for what it sends itself");
}

bool getIsFired(const Graph& graph, const std::string& id, const std::string& command) {
    using Change = GraphDescription::TimelineChange;
    const auto& entries = graph.getDescription().timeline;
    return std::any_of(entries.begin(), entries.end(), [&](const auto& entry) {
        return std::any_of(entry.changes.begin(), entry.changes.end(), [&](const Change& change) {
            return change.kind == Change::Kind::Fire && change.block == id && change.name == command;
        });
    });
}
} // namespace

void warnOfContradictions(const Graph& graph, Complaints& complaints) {
    for (const Graph::Node& node : graph.getNodes()) {
        if (node.block == nullptr || node.isFaulty) continue;
        for (const SettingRule& rule : getSettingRules())
            if (node.description->type == rule.type) apply(rule, node, complaints);
        warnOfLoopToItself(node, complaints);
    }
    warnOfShapes(graph, complaints);
    warnOfWallClock(graph, complaints);
}

void warnOfIdleBlocks(const Graph& graph, Complaints& complaints) {
    for (const Graph::Node& node : graph.getNodes()) {
        if (node.block == nullptr || node.isFaulty) continue;
        const char* const command = getKnownType(node.description->type).startedBy;
        if (command == nullptr) continue;
        const auto& pins = node.block->getOutputPins();
        const bool isHeard =
            std::any_of(pins.begin(), pins.end(), [](const auto* pin) { return !pin->getInputs().empty(); });
        const std::string& id = node.description->id;
        if (isHeard && !getIsFired(graph, id, command))
            complaints.warn(node.description->where,
                            node.getQuoted() + " counts nothing until its command '" + command +
                                "' is fired, and no entry of the timeline fires it; 'fire: [" + id + "." +
                                command + "]' would");
    }
}

} // namespace Quillmere::Host
