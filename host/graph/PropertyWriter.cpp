// SPDX-License-Identifier: MIT
#include "host/graph/PropertyWriter.h"

#include "framework/properties/EnumProperty.h"
#include "host/text/NearestName.h"
#include "host/graph/BlockDescription.h"
#include "host/text/CaughtText.h"

#include <Poco/Any.h>
#include <Poco/Exception.h>

#include <algorithm>
#include <limits>
#include <type_traits>

namespace Quillmere::Host {

namespace {
using Core::AbstractProperty;
using Kind = PropertyDescription::Kind;

/// What a message quotes of a value.
std::string foundText(const Value& value, const AbstractProperty& property) {
    return value.describe() + " for '" + property.getName() + "'";
}

void refuse(const Value& value, const AbstractProperty& property, const std::string& expected,
            Complaints& complaints, const std::string& suggestion = {}) {
    complaints.add(value.where, foundText(value, property), expected, suggestion);
}

/// Writes through the setting's own road.
template <class T>
void write(AbstractProperty& property, const T& number) {
    property.setValueFromAny(Poco::Any(static_cast<const T*>(&number)));
}

template <class T>
void writeWhole(AbstractProperty& property, const Value& value, Complaints& complaints) {
    const auto number = toWhole(value, complaints);
    if (!number) return;
    if (*number >= std::numeric_limits<T>::min() && *number <= std::numeric_limits<T>::max())
        return write(property, static_cast<T>(*number));
    const PropertyDescription description = describe(property);
    const bool saysBounds = description.hasLimits || std::is_unsigned_v<T>;
    refuse(value, property, expectedText(description) + (saysBounds ? "" : " that fits in 32 bits"),
           complaints);
}

void writeChoice(AbstractProperty& property, const Value& value, Complaints& complaints) {
    const auto& labels = dynamic_cast<const Core::EnumProperty<std::string>&>(property).getLabels();
    const auto label = std::find(labels.begin(), labels.end(), value.text);
    if (value.isScalar() && label != labels.end())
        return write(property, static_cast<unsigned>(label - labels.begin()));
    const bool isIndex = value.isScalar() && !value.isQuoted && !value.text.empty() &&
                         value.text.find_first_not_of("+-0123456789.") == std::string::npos;
    if (isIndex)
        writeWhole<unsigned>(property, value, complaints);
    else
        refuse(value, property, expectedText(describe(property)), complaints,
               value.isScalar() ? nearestName(value.text, labels) : "");
}

} // namespace

void writeProperty(AbstractProperty& property, const Value& value, Complaints& complaints) {
    const auto refuseFor = [&](const std::string& reason) {
        refuse(value, property, expectedText(describe(property)) + reason, complaints);
    };
    try {
        writePropertyOrRaise(property, value, complaints);
    } catch (const Poco::RangeException&) {
        refuseFor("");
    } catch (const Poco::Exception& exception) {
        refuseFor(" that the block takes (" + messageOf(exception) + ")");
    } catch (...) { // a plug-in's handler may raise anything
        refuseFor(" that the block takes (" + caughtText() + ")");
    }
}

void writePropertyOrRaise(AbstractProperty& property, const Value& value, Complaints& complaints) {
    switch (kindOf(property)) {
    case Kind::Flag:
        if (const auto flag = toFlag(value, complaints)) write(property, *flag);
        return;
    case Kind::Whole:
        writeWhole<int>(property, value, complaints);
        return;
    case Kind::Count:
        writeWhole<unsigned>(property, value, complaints);
        return;
    case Kind::Number:
        if (const auto number = toNumber(value, complaints)) write(property, *number);
        return;
    case Kind::Matrix:
        if (const auto matrix = toMatrix(value, complaints)) write(property, *matrix);
        return;
    case Kind::Choice:
        writeChoice(property, value, complaints);
        return;
    case Kind::Command:
    case Kind::Unknown:
        refuse(value, property, expectedText(describe(property)), complaints);
        return;
    }
}

void writeProperties(std::vector<PropertyWrite> writes, Complaints& complaints) {
    for (bool hasMoved = true; hasMoved && !writes.empty();) {
        hasMoved = false;
        std::erase_if(writes, [&](const PropertyWrite& write) {
            const std::string before = valueText(describe(*write.property));
            Complaints refusals;
            writeProperty(*write.property, *write.value, refusals);
            // What the checks refuse leaves the old value. A value that is there all the same was told to the
            // block, which raised: written again it would be no change, and nobody would hear of it.
            const bool isStored = !refusals.isEmpty() && valueText(describe(*write.property)) != before;
            if (isStored) complaints.add(refusals);
            hasMoved = hasMoved || isStored || refusals.isEmpty();
            return isStored || refusals.isEmpty();
        });
    }
    for (const PropertyWrite& write : writes)
        writeProperty(*write.property, *write.value, complaints);
}

void fireCommand(Core::CommandProperty& command, const Place& where, Complaints& complaints) {
    const auto refuse = [&](const std::string& reason) {
        complaints.add(where, "the command '" + command.getName() + "' refused (" + reason + ")",
                       "a command that the block takes");
    };
    try {
        command.fire();
    } catch (const Poco::Exception& exception) {
        refuse(messageOf(exception));
    } catch (const std::exception& exception) {
        refuse(exception.what());
    }
}

} // namespace Quillmere::Host
