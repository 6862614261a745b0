// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/description/GraphDescription.h"
#include "host/description/IdIndex.h"

#include <string>
#include <vector>

namespace Quillmere::Host {

/// What a graph must fulfil that needs no block: ids, types, and whom they refer to. It goes through a graph
/// from layouts to blocks and to what is between them; who reads a file does so part by part, as the parts
/// come. Every operation complains of what is wrong and says whether nothing is.
class DescriptionCheck {
public:
    explicit DescriptionCheck(Complaints& complaintList) : complaints(complaintList) {}

    bool checkParameter(const GraphDescription::Parameter& parameter);
    /// An id that is good and new is known from then on.
    bool checkLayout(const GraphDescription::Layout& layout);
    bool checkBlockId(const GraphDescription::Block& block);
    bool checkType(const GraphDescription::Block& block);
    bool checkLayoutOf(const GraphDescription::Block& block);
    bool checkEnd(const GraphDescription::Endpoint& end);
    /// Of a change in the timeline.
    bool checkTarget(const GraphDescription::TimelineChange& change);

    /// Makes an id known, if it is good and new, and says whether it is.
    bool addBlock(const GraphDescription::Block& block);
    bool getIsBlock(const std::string& id) const { return blocks.find(id) != nullptr; }
    void refuseBlock(const Place& where, const std::string& id);
    /// The layout of blocks that name none.
    const std::string& getFirstLayout() const { return layoutIds.empty() ? kOnlyLayout : layoutIds.front(); }

private:
    /// Where a graph names none.
    static const std::string kOnlyLayout;

    bool checkId(const std::string& id, const Place& where, const std::string& what);

    Complaints& complaints;
    IdIndex layouts;
    IdIndex blocks;
    std::vector<std::string> layoutIds;
    std::vector<std::string> blockIds;
    std::vector<Place> layoutPlaces;
    std::vector<Place> blockPlaces;
};

} // namespace Quillmere::Host
