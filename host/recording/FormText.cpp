// SPDX-License-Identifier: MIT
#include "host/recording/FormText.h"

#include "host/text/Counted.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {

std::string nameOf(char separator) {
    switch (separator) {
    case ',':
        return "commas";
    case ';':
        return "semicolons";
    case '\t':
        return "tabs";
    default:
        return std::string("'") + separator + "'";
    }
}

std::string headerOf(const CsvDialect& dialect) {
    if (!dialect.hasHeader) return "no row of column names";
    const auto isGrouped = [](const std::string& name) { return name.find('.') != std::string::npos; };
    std::string text = std::any_of(dialect.names.begin(), dialect.names.end(), isGrouped)
                           ? "column names, of groups too"
                           : "column names";
    if (!dialect.units.empty()) text += " and a row of units";
    return text;
}

/// What a profile is known by.
std::string fingerprintOf(const RecordingProfile& profile) {
    std::string text;
    const auto add = [&](const std::string& part) { text += (text.empty() ? "" : " and ") + part; };
    if (!profile.preamble.empty()) add(std::string("'").append(profile.preamble) + "' in front of the rows");
    for (const std::string_view column : profile.columns)
        if (!column.empty()) add(std::string("a column '").append(column) + "'");
    if (!profile.kinds.empty()) add("a time and numbers in " + counted(profile.kinds.size(), "column"));
    return text;
}

} // namespace

std::vector<std::string> describeForm(const CsvDialect& dialect, const RecordingProfile* profile,
                                      bool isNamed) {
    std::vector<std::string> parts;
    if (dialect.isPlain) {
        parts.emplace_back("a table of the plain form: commas, one row of column names");
    } else {
        parts.push_back("a table separated by " + nameOf(dialect.separator) + ", with decimal " +
                        (dialect.decimal == ',' ? "commas" : "points"));
        parts.push_back(headerOf(dialect) + "; " + counted(dialect.linesBefore, "line") +
                        " in front of the first row");
    }
    if (profile != nullptr)
        parts.push_back(std::string("profile ").append(profile->name) + ", " +
                        (isNamed ? "as it was told" : "known by " + fingerprintOf(*profile)));
    return parts;
}

} // namespace Quillmere::Host
