// SPDX-License-Identifier: MIT
#include "python/extension/RunEnds.h"

#include "host/ends/MemorySink.h"
#include "host/ends/MemorySource.h"
#include "host/recording/RecordingSink.h"
#include "python/extension/Catalogue.h"

#include <utility>

namespace Python {

using namespace Quillmere::Host;

namespace {
/// What is left of a block that another one stands in for. A graph that names a plug-in's type keeps it.
void replaceType(GraphDescription::Block& block, const char* type) {
    block.type = type;
    block.settings.clear();
    block.replaced.clear();
}

bool getIsResult(const GraphDescription::Block& block) {
    return block.type == RecordingSink::kTypeName || block.type == MemorySink::kTypeName;
}
} // namespace

void RunEnds::setData(const std::string& source, MemoryRecording recording) {
    memory.setRecording(source, std::move(recording));
    given.push_back(source);
}

void RunEnds::setFeed(const std::string& source, std::shared_ptr<Feed> feed) {
    feeds[source] = std::move(feed);
}

void RunEnds::keep(const std::vector<std::string>& sinks) {
    wanted.insert(wanted.end(), sinks.begin(), sinks.end());
}

RunEnds::Block* RunEnds::find(GraphDescription& description, const std::string& id, const char* what,
                              Complaints& complaints) const {
    std::vector<std::string> ids;
    for (Block& block : description.blocks) {
        if (block.id == id) return &block;
        ids.push_back(block.id);
    }
    complaints.add(
        Complaint::unknown({}, what + (" '" + id + "'"), id, ids, "one of ", "a graph with blocks"));
    return nullptr;
}

void RunEnds::keepTable(Block& block) {
    block.type = TableSink::kTypeName;
    tables[block.id] = std::make_shared<TableResult>();
}

GraphDescription RunEnds::applyTo(GraphDescription description, Complaints& complaints) {
    for (const std::string& id : given)
        if (Block* const block = find(description, id, "data for the source", complaints))
            replaceType(*block, MemorySource::kTypeName);
    for (const auto& [id, feed] : feeds)
        if (Block* const block = find(description, id, "a feed for the source", complaints))
            replaceType(*block, FeedSource::kTypeName);
    for (const std::string& id : wanted)
        if (Block* const block = find(description, id, "a table of the sink", complaints)) {
            if (getIsResult(*block))
                keepTable(*block);
            else if (tables.find(id) == tables.end())
                complaints.add(block->where, "a table of '" + id + "' (" + block->type + ")",
                               "a RecordingSink or a MemorySink");
        }
    if (keepsAll)
        for (Block& block : description.blocks)
            if (getIsResult(block)) keepTable(block);
    return description;
}

BlockCatalogue RunEnds::makeCatalogue() const {
    BlockCatalogue catalogue = getCatalogue();
    memory.addTo(catalogue);
    catalogue.add(TableSink::kTypeName, [kept = tables](const std::string& name) -> Quillmere::Core::Filter* {
        const auto found = kept.find(name);
        return new TableSink(name, found != kept.end() ? found->second : std::make_shared<TableResult>());
    });
    catalogue.add(FeedSource::kTypeName, [fed = feeds](const std::string& name) -> Quillmere::Core::Filter* {
        const auto found = fed.find(name);
        return new FeedSource(name, found != fed.end()
                                        ? found->second
                                        : std::make_shared<Feed>(std::vector<Feed::Pin>{}, std::nullopt));
    });
    return catalogue;
}

} // namespace Python
