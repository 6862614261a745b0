// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/description/GraphDescription.h"
#include "host/description/Value.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Whether a `${` stands anywhere in it.
bool getHoldsParameter(const Value& value);

/// Complains of a parameter that isn't among those that there are.
void refuseParameter(const Place& where, const std::string& wanted,
                     const std::vector<GraphDescription::Parameter>& known, Complaints& complaints);

/// The parameters of a graph, put where they are asked for.
class ParameterValues {
public:
    /// Requires: `parameters` stay as they are.
    ParameterValues(const std::vector<GraphDescription::Parameter>& parameters, Complaints& complaints);

    /// Replaces every `${name}` by its parameter. The place stays where the value is used. What a parameter
    /// has brought stays as it is.
    void fillIn(Value& value);

private:
    Value parameterFor(const Value& value);

    const std::vector<GraphDescription::Parameter>& list;
    Complaints& complaints;
    std::map<std::string, const Value*> values;
    std::size_t filledIn = 0;  ///< Values that parameters have brought.
    bool holdsTooMuch = false; ///< They were more than may be, which is a complaint already.
};

} // namespace Quillmere::Host
