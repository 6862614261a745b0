// SPDX-License-Identifier: MIT
#include "host/description/TimelineReader.h"

#include "host/text/Address.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#include "host/description/GivenValues.h"
#include "host/description/ParameterValues.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
const std::vector<std::string> kEntryKeys{"at", "set", "fire", "send"};
constexpr const char* kExpectedEntry = "an entry as in {at: 2.5, set: {block.Property: value}}";
} // namespace

TimelineReader::TimelineReader(DescriptionCheck& descriptionCheck, Complaints& list)
    : check(descriptionCheck), complaints(list) {}

bool TimelineReader::getIsReadable(const Value& list) {
    if (list.kind != Value::Kind::List) return !getHoldsParameter(list);
    const auto isReadable = [](const Value::Entry& part) {
        if (part.key == "at") return true;
        const bool hasValues =
            (part.key == "set" || part.key == "send") && part.value.kind == Value::Kind::Map;
        return hasValues || !getHoldsParameter(part.value);
    };
    return std::all_of(list.items.begin(), list.items.end(), [&](const Value& item) {
        return item.kind == Value::Kind::Map
                   ? std::all_of(item.entries.begin(), item.entries.end(), isReadable)
                   : !getHoldsParameter(item);
    });
}

std::vector<GraphDescription::TimelineEntry> TimelineReader::read(const Value& list, bool isFilledIn) {
    if (list.isMissing()) return {};
    isWithoutParameters = isFilledIn;
    if (list.kind == Value::Kind::List)
        for (const Value& item : list.items)
            readEntry(item);
    else
        complaints.add(list.where, list.describe(),
                       "a list of entries, each as in {at: 2.5, fire: block.Command}");
    return std::move(entries);
}

void TimelineReader::readEntry(const Value& value) {
    if (value.isMissing()) return;
    if (value.kind != Value::Kind::Map) {
        complaints.add(value.where, value.describe(), kExpectedEntry);
        return;
    }
    Entry entry;
    entry.where = value.where;
    entry.isRefused = !readTime(value, entry);
    bool hasChange = false;
    for (const Value::Entry& part : value.entries) {
        if (part.key == "set" || part.key == "send") {
            readValues(part.value, part.key == "set" ? Change::Kind::Set : Change::Kind::Send, entry);
        } else if (part.key == "fire") {
            readCommands(part.value, entry);
        } else if (part.key != "at") {
            refuseName(complaints, part.where, part.key,
                       "the key '" + printable(part.key, kLongestName) + "'", "one of ",
                       [] { return kEntryKeys; });
        }
        hasChange = hasChange || part.key != "at";
    }
    if (!hasChange) complaints.add(value.where, "an entry that does nothing", "'set:', 'fire:' or 'send:'");
    entries.push_back(std::move(entry));
}

bool TimelineReader::readTime(const Value& value, Entry& entry) {
    const Value::Entry* const at = value.find("at");
    if (at == nullptr) {
        complaints.add(value.where, "an entry without a time", "'at:' and seconds of stream time");
        return false;
    }
    entry.at.where = at->value.where;
    if (!isWithoutParameters && getHoldsParameter(at->value)) {
        entry.at.written = at->value;
        return true;
    }
    entry.at.value = toStreamTime(at->value, complaints);
    return entry.at.value.has_value();
}

/// `{block.Property: value, ...}`
void TimelineReader::readValues(const Value& map, Change::Kind kind, Entry& entry) {
    if (map.isMissing()) return;
    const bool isSet = kind == Change::Kind::Set;
    if (map.kind != Value::Kind::Map || map.entries.empty()) {
        complaints.add(map.where, map.kind == Value::Kind::Map ? "an empty map" : map.describe(),
                       isSet ? "settings as in {block.Property: value}" : "values as in {block.pin: value}");
        return;
    }
    for (const Value::Entry& part : map.entries) {
        Change change;
        change.kind = kind;
        change.value = part.value;
        addChange(part.key, part.where, std::move(change), entry);
    }
}

/// `block.Command`, or a list of such.
void TimelineReader::readCommands(const Value& value, Entry& entry) {
    if (value.isMissing()) return;
    const bool isList = value.kind == Value::Kind::List && !value.items.empty();
    const std::vector<Value> commands = isList ? value.items : std::vector<Value>{value};
    for (const Value& command : commands) {
        if (command.isMissing()) continue;
        if (!command.isScalar()) {
            complaints.add(command.where, command.describe(), "'block.Command' or a list of such");
            continue;
        }
        Change change;
        change.kind = Change::Kind::Fire;
        addChange(command.text, command.where, std::move(change), entry);
    }
}

void TimelineReader::addChange(const std::string& target, const Place& where, Change change, Entry& entry) {
    const Address address(target);
    change.block = address.block;
    change.name = address.member;
    change.where = where;
    change.isRefused = !check.checkTarget(change);
    if (!change.isRefused && !address.hasMember) {
        complaints.add(where, "'" + target + "' alone", "'" + target + ".' and what of it");
        change.isRefused = true;
    }
    entry.changes.push_back(std::move(change));
}

} // namespace Quillmere::Host
