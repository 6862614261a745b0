// SPDX-License-Identifier: MIT
#include "host/live/LiveGraph.h"

#include "framework/Quillmere.h"
#include "host/graph/Followers.h"
#include "host/graph/RateValues.h"
#include "host/graph/RunOrder.h"
#include "host/live/ControlException.h"
#include "host/run/RunReview.h"
#include "host/text/Complaint.h"

#include <algorithm>
#include <limits>
#include <set>
#include <utility>

namespace Quillmere::Host {

LiveGraph::Standstill::Standstill(LiveGraph& graph)
    : structure(graph.structure), timeline(graph.drive.timelineMutex) {
    // In the order of their addresses, as every guard takes them.
    std::set<Core::Synchronizer*, std::less<>> gates;
    for (LiveLayout& layout : graph.layouts)
        gates.insert(&layout.getGate());
    for (Core::Synchronizer* const gate : gates)
        guards.emplace_back(gate, nullptr);
}

LiveGraph::LiveGraph(Graph& builtGraph, LiveDrive& liveDrive, std::optional<Overflow> standardOverflow)
    : graph(builtGraph), drive(liveDrive),
      overflows(builtGraph, liveDrive.clock.getIsUnpaced(), standardOverflow) {
    for (const Graph::Node& node : graph.getNodes()) {
        blocks.add(*node.block);
        if (node.source == nullptr) continue;
        sources.push_back({node.source, node.waking});
        drive.addDriver();
    }
    dealOut();
    arrangeAll();
}

LiveGraph::~LiveGraph() = default;

void LiveGraph::dealOut() {
    for (const GraphDescription::Layout& layout : graph.getDescription().layouts) {
        Core::LayoutManager& manager = managers.emplace_back(layout.id);
        layouts.emplace_back(layout.id, manager, drive);
    }
    for (const Graph::Node& node : graph.getNodes())
        getLayout(node.description->layout).getBlocks().add(*node.block);
}

/// The first layout with a source tells the time for the timeline; without sources, the first with a
/// generator.
void LiveGraph::placeTimeline() {
    Core::Filter* const sender = graph.getTimeline().getSender();
    const auto drives = [&](LiveLayout& layout) {
        const auto& held = layout.getBlocks().getFilters();
        return std::any_of(held.begin(), held.end(), [&](const Core::Filter* block) {
            return sources.empty() ? block->getInputPins().empty() && block != sender
                                   : dynamic_cast<const Source*>(block) != nullptr;
        });
    };
    const auto found = std::find_if(layouts.begin(), layouts.end(), drives);
    LiveLayout& teller = found == layouts.end() ? layouts.front() : *found;
    for (LiveLayout& layout : layouts)
        layout.setAppliesTimeline(&layout == &teller);
    if (sender != nullptr && sender->getManager() != &teller.getBlocks()) teller.getBlocks().add(*sender);
}

void LiveGraph::setOnlookers(std::vector<Onlooker*> looking) {
    const Standstill still(*this);
    onlookers = std::move(looking);
    arrangeAll();
}

void LiveGraph::forgetOnlookers() noexcept {
    const std::lock_guard lock(structure);
    onlookers.clear();
}

/// Where what they look at is, which may have been moved: so nothing crosses layouts to them.
void LiveGraph::placeOnlookers() {
    for (Onlooker* const onlooker : onlookers) {
        const Core::AbstractOutputPin* const output = onlooker->getInputPins().front()->getConnectedOutput();
        Core::LayoutManager* const place = output == nullptr ? nullptr : Core::layoutOf(*output);
        if (place != nullptr && onlooker->getManager() != place) place->add(*onlooker);
    }
}

std::vector<Core::Filter*> LiveGraph::getStepped() const {
    std::vector<Core::Filter*> all = blocks.getAll();
    all.insert(all.end(), onlookers.begin(), onlookers.end());
    return all;
}

void LiveGraph::start() {
    const auto isWaking = [](const RunSource& source) { return getComesByItself(source.waking); };
    if (std::any_of(sources.begin(), sources.end(), isWaking)) drive.pipes.start();
    if (!anchorClock()) return;
    for (LiveLayout& layout : layouts)
        layout.start();
}

/// The earliest sample of all recordings is due now. False where one can't be read.
bool LiveGraph::anchorClock() {
    double first = std::numeric_limits<double>::infinity();
    for (const RunSource& source : sources) {
        if (getComesByItself(source.waking)) continue;
        try {
            if (source.source->prepare()) first = std::min(first, source.source->getNextTimeStamp());
        } catch (const std::exception& exception) {
            drive.cut(endingOf(source.source, 0.0, exception));
            return false;
        }
    }
    drive.clock.start(first == std::numeric_limits<double>::infinity() ? 0.0 : first);
    return true;
}

/// Asleep at two looks and never awake in between: then all slept at one time, and nobody was there to wake
/// them.
bool LiveGraph::getIsAtRest() {
    std::vector<std::uint64_t> sleeps;
    for (LiveLayout& layout : layouts) {
        if (!layout.getGate().getIsAsleep()) return false;
        sleeps.push_back(layout.getGate().getSleeps());
    }
    for (std::size_t i = 0; i < layouts.size(); ++i)
        if (!layouts[i].getGate().getIsAsleep() || layouts[i].getGate().getSleeps() != sleeps[i])
            return false;
    return true;
}

void LiveGraph::stir() {
    for (LiveLayout& layout : layouts)
        layout.lookAgain();
}

const std::vector<Finisher>& LiveGraph::findFinishers() {
    const Standstill still(*this);
    finishers = finishersAmong(runOrder(getStepped()));
    return finishers;
}

void LiveGraph::finish(const Finisher& finisher) {
    const Standstill still(*this);
    LiveLayout* const layout = layoutOf(*finisher.block);
    if (layout == nullptr) return;
    finisher.command->fire();
    layout->finish(finisher.stepped);
    layout->lookAgain();
}

void LiveGraph::stop() {
    for (LiveLayout& layout : layouts)
        layout.getGate().shutDown();
    for (LiveLayout& layout : layouts)
        layout.join();
}

RunEnding LiveGraph::endSinks(bool isWhole) {
    const Standstill still(*this);
    return Quillmere::Host::endSinks(graph.getSinks(), isWhole, getStreamTime());
}

/// Of the layout that has come furthest.
double LiveGraph::getStreamTime() const {
    double time = 0.0;
    for (const LiveLayout& layout : layouts)
        time = std::max(time, layout.getStreamTime());
    return time;
}

RunOutcome LiveGraph::getOutcome(RunProgress progress, const RunEnding& ending) const {
    const std::lock_guard lock(structure);
    progress.streamTime = getStreamTime();
    std::vector<FirstNonFinite> nonFinite;
    for (const LiveLayout& layout : layouts)
        nonFinite.insert(nonFinite.end(), layout.getNonFinite().begin(), layout.getNonFinite().end());
    return outcomeOf(graph, blocks.getAll(), nonFinite, progress, ending);
}

std::optional<double> LiveGraph::getTimeOf(const Core::Filter& block) {
    const LiveLayout* const own = layoutOf(block);
    if (own != nullptr && own->getRounds() > 0) return own->getStreamTime();
    std::optional<double> time;
    for (const LiveLayout& layout : layouts)
        if (layout.getRounds() > 0)
            time = std::max(time.value_or(layout.getStreamTime()), layout.getStreamTime());
    return time;
}

std::uint64_t LiveGraph::getRounds() const {
    std::uint64_t rounds = 0;
    for (const LiveLayout& layout : layouts)
        rounds += layout.getRounds();
    return rounds;
}

LiveLayout& LiveGraph::getLayout(const std::string& id) {
    for (LiveLayout& layout : layouts)
        if (layout.getId() == id) return layout;
    std::vector<std::string> known;
    for (const LiveLayout& layout : layouts)
        known.push_back(layout.getId());
    throw ControlException(Complaint::unknown({}, "the layout '" + id + "'", id, known));
}

LiveLayout* LiveGraph::layoutOf(const Core::Filter& block) {
    const auto found = std::find_if(layouts.begin(), layouts.end(), [&](LiveLayout& layout) {
        return &layout.getBlocks() == block.getManager();
    });
    return found == layouts.end() ? nullptr : &*found;
}

std::optional<Value> LiveGraph::withRate(const LiveBlocks::Setting& setting, const Value& value,
                                         Complaints& complaints) {
    const std::lock_guard<std::mutex> still(structure); // links are followed
    const Graph::Node* const node = std::as_const(graph).find(setting.block.getName());
    RateValues values(graph.getNodes(), graph.getSourceRates(), graph.getCatalogue());
    const auto conversion =
        values.convert({.block = setting.block,
                        .type = node == nullptr ? setting.block.getTypeName() : node->description->type,
                        .name = setting.property.getName()},
                       value, complaints);
    complaints.add(values.getFinder().getComplaints());
    return conversion ? std::optional(conversion->getValue(value)) : std::nullopt;
}

void LiveGraph::lookAgain(const Core::Filter& block) {
    // A run that is over comes to rest by itself: who turns settings on and on doesn't hold it up.
    if (drive.getIsOver()) return;
    if (LiveLayout* const layout = layoutOf(block)) layout->lookAgain();
}

void LiveGraph::add(BlockPtr block, LiveLayout& to) {
    added.reserve(added.size() + 1); // before anybody knows the block, which dies with a failure
    blocks.reserveOne();
    to.getBlocks().add(*block);
    blocks.add(*block);
    added.push_back(std::move(block));
    rearrange();
}

/// Layouts that don't know what has changed would use, each in its thread, what another one holds: where
/// there is no memory to tell them, the run ends.
void LiveGraph::rearrange() {
    try {
        arrangeAll();
    } catch (...) {
        drive.cut("out of memory"); // so short that it needs none
        throw;
    }
}

/// Requires: all layouts stand still, or no thread runs.
void LiveGraph::arrangeAll() {
    placeTimeline();
    placeOnlookers();
    const FollowerSet followers = followersAmong(getStepped());
    for (LiveLayout& layout : layouts)
        arrange(layout, followers);
    overflows.apply(blocks.getAll(), layouts, drive);
    drive.mostDrainRounds = getMostDrainRounds();
    if (!drive.getIsOver()) stir(); // sources and clocks may have come to another layout
}

/// Without a loop everything comes out some time, however many samples a block makes of one. With loops, each
/// sample that is left may wake a layout once over each of the links between layouts.
std::uint64_t LiveGraph::getMostDrainRounds() const {
    if (!hasLoop(blocks.getAll())) return std::numeric_limits<std::uint64_t>::max();
    std::uint64_t mostRounds = 0;
    std::uint64_t crossings = 0;
    for (const LiveLayout& layout : layouts) {
        mostRounds += layout.getMostRounds();
        crossings += layout.getLinksFromElsewhere();
    }
    return mostRounds * (crossings + 1);
}

void LiveGraph::arrange(LiveLayout& layout, const FollowerSet& followers) {
    std::vector<Core::Filter*> held;
    for (Core::Filter* const block : getStepped())
        if (block->getManager() == &layout.getBlocks()) held.push_back(block);
    layout.getBlocks().arrange(runOrder(held));
    layout.refresh(sources, followers);
}

LiveStatistics LiveGraph::getStatistics() {
    const std::lock_guard lock(structure);
    return LiveStatistics::of(blocks.getAll());
}

} // namespace Quillmere::Host
