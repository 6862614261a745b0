// SPDX-License-Identifier: MIT
#include "host/description/ParameterValues.h"

#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#include "host/description/ValueReader.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
std::string inQuotes(const std::string& name) {
    return std::string("'").append(printable(name, kLongestName)) + "'";
}

/// The parameter's name in a `${name}`, or an empty text.
std::string parameterName(const std::string& text) {
    if (text.size() < 4 || !text.starts_with("${") || text.find('}') != text.size() - 1) return {};
    return text.substr(2, text.size() - 3);
}
} // namespace

bool getHoldsParameter(const Value& value) {
    if (!value.parameter.empty()) return false;
    return (value.isScalar() && value.text.find("${") != std::string::npos) ||
           std::any_of(value.items.begin(), value.items.end(), getHoldsParameter) ||
           std::any_of(value.entries.begin(), value.entries.end(),
                       [](const Value::Entry& entry) { return getHoldsParameter(entry.value); });
}

void refuseParameter(const Place& where, const std::string& wanted,
                     const std::vector<GraphDescription::Parameter>& known, Complaints& complaints) {
    const auto names = [&] {
        std::vector<std::string> list;
        for (const GraphDescription::Parameter& parameter : known)
            list.push_back(parameter.name);
        std::sort(list.begin(), list.end());
        return list;
    };
    refuseName(complaints, where, wanted, "the parameter " + inQuotes(wanted),
               "one of the graph's parameters: ", names);
}

ParameterValues::ParameterValues(const std::vector<GraphDescription::Parameter>& parameters,
                                 Complaints& complaintList)
    : list(parameters), complaints(complaintList) {
    for (const GraphDescription::Parameter& parameter : list)
        values[parameter.name] = &parameter.value;
}

void ParameterValues::fillIn(Value& value) {
    if (!value.parameter.empty()) return;
    if (value.isScalar()) {
        if (value.text.find("${") != std::string::npos) value = parameterFor(value);
        return;
    }
    for (Value& item : value.items)
        fillIn(item);
    for (Value::Entry& entry : value.entries)
        fillIn(entry.value);
}

Value ParameterValues::parameterFor(const Value& value) {
    const std::string name = parameterName(value.text);
    Value nothing;
    nothing.where = value.where;
    nothing.parameter = value.text; // so that nobody complains of it again
    if (name.empty()) {
        complaints.add(value.where, value.describe(), "'${name}' as the whole value and nothing beside it");
        return nothing;
    }
    const auto found = values.find(name);
    if (found == values.end()) {
        refuseParameter(value.where, name, list, complaints);
        return nothing;
    }
    // A large parameter in a thousand places would fill the memory.
    if (!holdsTooMuch) filledIn += found->second->count();
    if (!holdsTooMuch && filledIn > kMostValues) {
        holdsTooMuch = true;
        complaints.add(value.where, "parameters that unfold to more than a million values",
                       "a smaller graph");
    }
    if (holdsTooMuch) return nothing;
    Value copy = *found->second;
    copy.where = value.where;
    copy.parameter = name;
    if (copy.kind == Value::Kind::Null)
        complaints.add(value.where, "the parameter " + inQuotes(name) + " without a value",
                       "one from the graph or the caller");
    return copy;
}

} // namespace Quillmere::Host
