// SPDX-License-Identifier: MIT
#pragma once

#include "host/description/GraphDescription.h"
#include "host/ends/MemoryEnds.h"
#include "host/plugins/BlockCatalogue.h"
#include "host/text/Complaint.h"
#include "python/extension/FeedSource.h"
#include "python/extension/TableSink.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Python {

/// What of a graph's ends is in memory for one run: what sources send, rows that are fed, tables that are
/// kept.
class RunEnds {
public:
    void setData(const std::string& source, Quillmere::Host::MemoryRecording recording);
    void setFeed(const std::string& source, std::shared_ptr<Feed> feed);
    /// Keeps the tables of these sinks, or of all.
    void keep(const std::vector<std::string>& sinks);
    void keepAll() { keepsAll = true; }

    /// The graph with these ends in place of its own. Complains of ids that it hasn't, or of blocks that are
    /// no such ends.
    Quillmere::Host::GraphDescription applyTo(Quillmere::Host::GraphDescription description,
                                              Quillmere::Host::Complaints& complaints);
    /// The process's block types, and those of these ends. [setup]
    Quillmere::Host::BlockCatalogue makeCatalogue() const;

    const std::map<std::string, std::shared_ptr<TableResult>>& getTables() const { return tables; }
    const std::map<std::string, std::shared_ptr<Feed>>& getFeeds() const { return feeds; }

private:
    using Block = Quillmere::Host::GraphDescription::Block;

    Block* find(Quillmere::Host::GraphDescription& description, const std::string& id, const char* what,
                Quillmere::Host::Complaints& complaints) const;
    void keepTable(Block& block);

    Quillmere::Host::MemoryEnds memory;
    std::vector<std::string> given; ///< Ids of sources in memory.
    std::map<std::string, std::shared_ptr<Feed>> feeds;
    std::vector<std::string> wanted; ///< Ids of sinks.
    bool keepsAll = false;
    std::map<std::string, std::shared_ptr<TableResult>> tables;
};

} // namespace Python
