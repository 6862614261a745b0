// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/transport/InputPin.h"
#include "host/description/GraphDescription.h"
#include "host/recording/TableWriter.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace Quillmere::Host {

/// What the columns of a result are called: that of the time, and for each pin those of its elements, by
/// names or counted, with units or without.
class QUILLMERE_API ResultColumns {
public:
    using Pins = std::deque<Core::InputPin<Core::MatrixXd>>;

    /// Takes the name of the column of times. Requires: before `take`, since no other may have its name.
    void takeTime(const Value& value, Complaints& complaints);
    /// Takes the setting `columns` or `units`; false for another one. What is wrong with it is complained of.
    bool take(const GraphDescription::Setting& setting, Complaints& complaints);
    /// The unit of what comes to a pin.
    void setUnit(const std::string& pin, const std::string& unit);

    /// Complains of names that don't fit the pins, or that two columns have; `checkUnits` of those that two
    /// have by their units, which are known later. [setup]
    void check(const Pins& pins, Complaints& complaints) const;
    void checkUnits(const Pins& pins, Complaints& complaints) const;

    const std::string& getTime() const { return timeName; }
    /// As a table has them.
    std::vector<TableWriter::Group> getGroups(const Pins& pins) const;
    /// For messages, without a unit.
    std::string getName(const std::string& pin, std::size_t element) const;

private:
    struct NamedColumns {
        std::string pin;
        Place where;
        std::vector<std::string> names;
    };

    void takeNames(const Value& value, Complaints& complaints);
    const NamedColumns* find(const std::string& pin) const;

    std::string timeName = "t";
    Place timePlace;
    std::vector<NamedColumns> columns;
    std::optional<bool> showsUnits; ///< Of all columns or of none; else of those without names of their own.
    std::unordered_map<std::string, std::string> units; ///< Of pins, as far as they are known.
};

} // namespace Quillmere::Host
