// SPDX-License-Identifier: MIT
#include "host/graph/RateValues.h"

#include "host/description/Quantity.h"
#include "host/graph/SettingUnits.h"
#include "host/text/Printable.h"
#include "host/text/ShortestText.h"

#include <cmath>
#include <numbers>

namespace Quillmere::Host {

namespace {
using RelativeTo = BlockManual::RelativeTo;

std::optional<RelativeTo> relationOf(const BlockManual& manual, const RateValues::Target& target) {
    const auto& relations = target.isInput ? manual.inputs : manual.settings;
    const auto found = relations.find(target.name);
    return found == relations.end() ? std::nullopt : std::optional(found->second);
}

double numberOf(RelativeTo relation, double quantity, double rate) {
    switch (relation) {
    case RelativeTo::Nyquist:
        return quantity / (rate / 2.0);
    case RelativeTo::Radians:
        return 2.0 * std::numbers::pi * quantity / rate;
    case RelativeTo::Samples:
        return std::round(quantity * rate);
    }
    return 0.0;
}

/// What is wrong with a quantity whatever the block says; empty when nothing is.
std::string expectedOf(RelativeTo relation, const Quantity& quantity, const FoundRate& found) {
    const double rate = found.rate->perSecond;
    if (relation == RelativeTo::Samples) {
        const bool isNothing = quantity.number > 0.0 && std::round(quantity.number * rate) == 0.0;
        return isNothing ? "a time of one sample at least, at " + textOf(found) : "";
    }
    if (quantity.number <= rate / 2.0) return "";
    return "at most " + shortestText(rate / 2.0) + " Hz, half of " + textOf(found);
}
} // namespace

std::string RateConversion::getText() const {
    return (at ? "at " + shortestText(*at) + " s " : "") + written + " is " + shortestText(number) + " " +
           meaning + (rate.empty() ? "" : " (" + rate + ")");
}

Value RateConversion::getValue(const Value& quantity) const {
    Value value = valueOf(number);
    value.where = quantity.where;
    value.madeOf = quantity.text;
    return value;
}

std::string RateValues::Target::describe(const Value& value) const {
    return value.describe() + " for '" + name + "' of '" + block.getName() + "' (" + type + ")";
}

std::optional<RateConversion> RateValues::convert(const Target& target, const Value& value,
                                                  Complaints& complaints) {
    const auto refuse = [&](const std::string& expected) {
        complaints.add(value.where, target.describe(value), expected);
        return std::nullopt;
    };
    const Quantity quantity = *toQuantity(value);
    const BlockManual& manual = finder.getManual(target.type);
    if (const auto unit = target.isInput ? std::nullopt : unitOf(manual, target))
        return inUnit(*unit, target, value, complaints);
    const auto relation = relationOf(manual, target);
    if (!relation)
        return refuse(
            "a number without a unit, since nothing says that it is relative to the rate of samples");
    const auto kind = *relation == RelativeTo::Samples ? Quantity::Kind::Time : Quantity::Kind::Frequency;
    if (quantity.kind != kind)
        return refuse(kind == Quantity::Kind::Time ? "a time, as 0.2 s, or a number of samples"
                                                   : "a frequency, as 5 Hz, or a number without a unit");
    const FoundRate& found = finder.rateAt(target.block);
    if (!found.rate || !found.rate->getIsSteady())
        return refuse("a number without a unit, since there is no rate to convert it with: " + found.reason +
                      (found.remedy.empty() ? "" : "; " + found.remedy));
    if (const std::string expected = expectedOf(*relation, quantity, found); !expected.empty())
        return refuse(expected);
    return RateConversion{.target = target.block.getName() + "." + target.name,
                          .written = printable(value.text, kLongestName),
                          .number = numberOf(*relation, quantity.number, found.rate->perSecond),
                          .meaning = meaningOf(*relation),
                          .rate = textOf(found),
                          .at = {},
                          .source = found.output == nullptr ? "" : nameOf(*found.output)};
}

} // namespace Quillmere::Host
