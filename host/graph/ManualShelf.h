// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/BlockManual.h"
#include "host/plugins/BlockCatalogue.h"
#include "host/text/Complaint.h"

#include <map>
#include <string>

namespace Quillmere::Host {

/// Manuals of block types, each read once. Requires: the catalogue outlives it.
class ManualShelf {
public:
    explicit ManualShelf(const BlockCatalogue& blockCatalogue) : catalogue(blockCatalogue) {}

    const BlockManual& get(const std::string& type) {
        const auto known = manuals.find(type);
        if (known != manuals.end()) return known->second;
        return manuals.emplace(type, BlockManual::read(type, catalogue, complaints)).first->second;
    }
    /// What was wrong with those that were read.
    const Complaints& getComplaints() const { return complaints; }

private:
    const BlockCatalogue& catalogue;
    Complaints complaints;
    std::map<std::string, BlockManual> manuals;
};

} // namespace Quillmere::Host
