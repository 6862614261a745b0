// SPDX-License-Identifier: MIT
#include "host/text/ComplaintJson.h"

#include <string>

namespace Quillmere::Host::Json {

namespace {
Text wordsOrNull(const std::string& words) {
    return words.empty() ? null() : text(words);
}

Text countedFromOne(int number) {
    return number > 0 ? std::to_string(number) : null();
}

Text sentence(const char* severity, const Complaint& parts, const std::string& whole) {
    Members members{{"severity", text(severity)}};
    for (const auto& member : place(parts.where))
        members.push_back(member);
    members.emplace_back("part", wordsOrNull(parts.part));
    members.emplace_back("found", text(parts.found));
    members.emplace_back("expected", wordsOrNull(parts.expected));
    members.emplace_back("nearest", wordsOrNull(parts.suggestion));
    members.emplace_back("sentence", text(whole));
    return object(members);
}
} // namespace

Members place(const Place& where) {
    return {{"file", wordsOrNull(where.file)},
            {"line", countedFromOne(where.line)},
            {"column", countedFromOne(where.column)}};
}

Text complaint(const Complaint& complaint) {
    return sentence("error", complaint, complaint.getText());
}

Text warning(const Warning& warning) {
    return sentence("warning", {warning.where, warning.text, ""}, warning.getText());
}

Text complaints(const std::vector<Complaint>& complaints) {
    std::vector<Text> texts;
    for (const Complaint& one : complaints)
        texts.push_back(complaint(one));
    return list(texts);
}

Text warnings(const std::vector<Warning>& warnings) {
    std::vector<Text> texts;
    for (const Warning& one : warnings)
        texts.push_back(warning(one));
    return list(texts);
}

} // namespace Quillmere::Host::Json
