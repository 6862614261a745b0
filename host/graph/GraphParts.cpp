// SPDX-License-Identifier: MIT
#include "host/graph/GraphParts.h"

#include "host/ends/StandardStream.h"

namespace Quillmere::Host {

GraphParts::GraphParts(const GraphDescription& description)
    : index(description.blocks), layout(description.getName()) {}

GraphParts::Node* GraphParts::find(const std::string& id) {
    const std::size_t* const place = index.find(id);
    return place == nullptr ? nullptr : &nodes[*place];
}

const GraphParts::Node* GraphParts::find(const std::string& id) const {
    const std::size_t* const place = index.find(id);
    return place == nullptr ? nullptr : &nodes[*place];
}

std::string GraphParts::Node::getQuoted() const {
    return "'" + description->id + "' (" + description->type + ")";
}

std::string GraphParts::Node::getEndName() const {
    if (file == nullptr) return "'" + description->id + "'";
    return getIsStandardStream(file->getPath()) ? "standard input" : file->getPath();
}

const Place& GraphParts::Node::getEndPlace() const {
    return file != nullptr ? file->getPathPlace() : description->where;
}

} // namespace Quillmere::Host
