// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Quillmere::Host {

/// Finds the columns of a recording by name, with the unit in it or without; there may be a hundred
/// thousand.
class ColumnFinder {
public:
    /// `path` is for complaints. Requires: `columnNames` outlives the finder.
    ColumnFinder(std::string path, const std::vector<std::string>& columnNames);

    /// The place of the column; nothing, with a complaint, when none has that name. A name that several have
    /// is a complaint.
    std::optional<std::size_t> find(const std::string& name, const Place& where,
                                    Complaints& complaints) const;

private:
    struct Found {
        std::size_t place = 0;
        bool isTwice = false;
    };

    void refuse(const std::string& name, const Place& where, Complaints& complaints) const;

    std::string path;
    const std::vector<std::string>& names;
    std::unordered_map<std::string_view, Found> columns;
    std::unordered_map<std::string, Found> labels; ///< Names without their units.
};

} // namespace Quillmere::Host
