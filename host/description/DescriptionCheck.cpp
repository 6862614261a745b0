// SPDX-License-Identifier: MIT
#include "host/description/DescriptionCheck.h"

#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
std::string inQuotes(const std::string& name) {
    return std::string("'").append(printable(name, kLongestName)) + "'";
}

/// Words that some YAML readers take for a yes, a no or a nothing.
bool isYamlWord(std::string_view text) {
    std::string word;
    for (const char c : text)
        word += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    static const std::vector<std::string> kWords{"on", "off", "yes", "no", "true", "false", "null"};
    return std::find(kWords.begin(), kWords.end(), word) != kWords.end();
}

/// A text with every letter that an id can't have made one that it can.
std::string asId(std::string text) {
    for (char& c : text)
        if (!GraphDescription::getIsId({&c, 1})) c = '_';
    return text;
}

/// In which line the first of two stands, as far as that is known.
std::string oneEach(const std::string& one, const Place& first) {
    return first.line == 0 ? one : one + " (the first is in line " + std::to_string(first.line) + ")";
}
} // namespace

const std::string DescriptionCheck::kOnlyLayout = "main";

bool DescriptionCheck::checkParameter(const GraphDescription::Parameter& parameter) {
    const bool isId = GraphDescription::getIsId(parameter.name);
    if (!isId)
        complaints.add(parameter.where, "the parameter name " + inQuotes(parameter.name),
                       GraphDescription::kIdLetters, asId(parameter.name));
    const Value& value = parameter.value;
    const bool isValue = !value.isScalar() || value.text.find("${") == std::string::npos;
    if (!isValue) complaints.add(value.where, value.describe(), "a value, not another parameter");
    return isId && isValue;
}

bool DescriptionCheck::checkLayout(const GraphDescription::Layout& layout) {
    if (!checkId(layout.id, layout.where, "layout")) return false;
    if (layouts.add(layout.id, layoutIds.size())) {
        layoutIds.push_back(layout.id);
        layoutPlaces.push_back(layout.where);
        return true;
    }
    complaints.add(layout.where, "the layout '" + layout.id + "' a second time",
                   oneEach("an id of its own for each layout", layoutPlaces[*layouts.find(layout.id)]));
    return false;
}

bool DescriptionCheck::checkBlockId(const GraphDescription::Block& block) {
    if (!checkId(block.id, block.where, "block")) return false;
    if (addBlock(block)) return true;
    complaints.add(block.where, "the id '" + block.id + "' a second time",
                   oneEach("an id of its own for each block", blockPlaces[*blocks.find(block.id)]));
    return false;
}

bool DescriptionCheck::addBlock(const GraphDescription::Block& block) {
    if (!GraphDescription::getIsId(block.id) || isYamlWord(block.id)) return false;
    if (!blocks.add(block.id, blockIds.size())) return false;
    blockIds.push_back(block.id);
    blockPlaces.push_back(block.where);
    return true;
}

bool DescriptionCheck::checkId(const std::string& id, const Place& where, const std::string& what) {
    if (id.empty())
        complaints.add(where, "a " + what + " without an id", "'id:' and a name");
    else if (!GraphDescription::getIsId(id))
        complaints.add(where, "the id " + inQuotes(id), GraphDescription::kIdLetters, asId(id));
    else if (isYamlWord(id))
        complaints.add(where, "the id '" + id + "'",
                       "a word that no YAML reader takes for a yes, a no or a nothing", id + "_");
    else
        return true;
    return false;
}

bool DescriptionCheck::checkType(const GraphDescription::Block& block) {
    if (!block.type.empty()) return true;
    complaints.add(block.typeWhere, "a block without a type", "'type:' and the name of a block type");
    return false;
}

bool DescriptionCheck::checkLayoutOf(const GraphDescription::Block& block) {
    if (block.layout.empty() || layouts.find(block.layout) != nullptr) return true;
    if (layoutIds.empty() && block.layout == kOnlyLayout) return true;
    refuseName(complaints, block.layoutWhere, block.layout, "the layout " + inQuotes(block.layout),
               "one of the graph's layouts: ", [&] {
                   return layoutIds.empty() ? std::vector<std::string>{kOnlyLayout} : layoutIds;
               });
    return false;
}

bool DescriptionCheck::checkEnd(const GraphDescription::Endpoint& end) {
    if (getIsBlock(end.block)) return true;
    refuseBlock(end.where, end.block);
    return false;
}

bool DescriptionCheck::checkTarget(const GraphDescription::TimelineChange& change) {
    if (getIsBlock(change.block)) return true;
    refuseBlock(change.where, change.block);
    return false;
}

void DescriptionCheck::refuseBlock(const Place& where, const std::string& id) {
    refuseName(complaints, where, id, "the block " + inQuotes(id),
               "the id of a block: ", [&] { return blockIds; });
}

} // namespace Quillmere::Host
