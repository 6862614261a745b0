// SPDX-License-Identifier: MIT
#include "host/live/LiveGraph.h"

#include "framework/Quillmere.h"
#include "host/text/NearestName.h"
#include "host/graph/RunOrder.h"

#include <Poco/Exception.h>

#include <algorithm>
#include <deque>
#include <limits>
#include <set>

namespace Quillmere::Host {

namespace {
[[noreturn]] void refuse(const std::string& found, const std::string& name,
                         const std::vector<std::string>& known) {
    const std::string nearest = nearestName(name, known);
    throw ControlException("found " + found + "; expected " +
                           (known.empty() ? "something that is there" : "one of " + listOfNames(known)) +
                           (nearest.empty() ? "" : "; did you mean " + nearest + "?"));
}

/// The thing of that name, or a refusal that lists those that there are.
template <class Things>
auto& require(const Things& things, const std::string& name, const std::string& found) {
    std::vector<std::string> known;
    for (auto* const thing : things) {
        if (thing->getName() == name) return *thing;
        known.push_back(thing->getName());
    }
    refuse(found, name, known);
}

/// Gives an input without a link its buffer back. Where there is no memory for it the input keeps what it has: its next
/// link brings its own.
void restoreBuffer(Core::AbstractInputPin& input, std::uint32_t capacity, bool isLifo) noexcept {
    try {
        input.setIsLifo(isLifo);
        input.setBufferCapacity(capacity);
    } catch (const std::exception&) {
    }
}
} // namespace

/// All layouts stand still as long as it lives, and nobody else changes anything. A change and what the layouts know of it
/// are one: a layout that was told later would step, in its own thread, what another one holds by now.
class LiveGraph::Standstill {
public:
    explicit Standstill(LiveGraph& graph) : structure(graph.structure), timeline(graph.drive.timelineMutex) {
        std::set<Core::Synchronizer*, std::less<>>
            gates; // in the order of their addresses, as every guard takes them
        for (LiveLayout& layout : graph.layouts)
            gates.insert(&layout.getGate());
        for (Core::Synchronizer* const gate : gates)
            guards.emplace_back(gate, nullptr);
    }

private:
    const std::lock_guard<std::mutex> structure;
    const std::lock_guard<std::mutex> timeline;
    std::deque<Core::Synchronizer::DisablerLocker> guards;
};

LiveGraph::LiveGraph(Graph& builtGraph, const BlockCatalogue& blockCatalogue, LiveDrive& liveDrive,
                     std::optional<Overflow> standardOverflow)
    : graph(builtGraph), catalogue(blockCatalogue), drive(liveDrive),
      overflows(builtGraph, liveDrive.clock.getIsUnpaced(), standardOverflow) {
    for (const Graph::Node& node : graph.getNodes()) {
        blocks.push_back(node.block.get());
        if (node.source == nullptr) continue;
        sources.push_back({node.source, node.waking});
        drive.addDriver();
    }
    dealOut();
    arrangeAll();
}

LiveGraph::~LiveGraph() = default;

void LiveGraph::dealOut() {
    for (const GraphDescription::Layout& layout : graph.getDescription().getLayouts()) {
        Core::LayoutManager& manager = managers.emplace_back(layout.id);
        layouts.emplace_back(layout.id, manager, drive);
    }
    for (const Graph::Node& node : graph.getNodes())
        getLayout(node.description->layout).getBlocks().add(*node.block);
}

/// The first layout with a source tells the time for the timeline; without sources, the first with a generator.
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

void LiveGraph::start() {
    const auto isWaking = [](const RunSource& source) { return getComesByItself(source.waking); };
    if (std::any_of(sources.begin(), sources.end(), isWaking)) drive.pipes.start();
    for (const Graph::Node& node : graph.getNodes())
        if (node.result != nullptr) node.result->setWritesThrough(true);
    anchorClock();
    for (LiveLayout& layout : layouts)
        layout.start();
}

/// The earliest sample of all recordings is due now.
void LiveGraph::anchorClock() {
    double first = std::numeric_limits<double>::infinity();
    for (const RunSource& source : sources) {
        if (getComesByItself(source.waking)) continue;
        try {
            if (source.source->prepare()) first = std::min(first, source.source->getNextTimeStamp());
        } catch (const std::exception& exception) {
            throw RunException(failureText(source.source, 0.0, exception));
        }
    }
    drive.clock.start(first == std::numeric_limits<double>::infinity() ? 0.0 : first);
}

/// Asleep at two looks and never awake in between: then all slept at one time, and nobody was there to wake them.
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

void LiveGraph::stop() {
    for (LiveLayout& layout : layouts)
        layout.getGate().shutDown();
    for (LiveLayout& layout : layouts)
        layout.join();
}

void LiveGraph::endSinks(bool isWhole) {
    const Standstill still(*this);
    Quillmere::Host::endSinks(graph.getSinks(), isWhole);
}

RunOutcome LiveGraph::getOutcome(const RunProgress& progress, const RunEnding& ending) const {
    const std::lock_guard lock(structure);
    std::vector<FirstNonFinite> nonFinite;
    for (const LiveLayout& layout : layouts)
        nonFinite.insert(nonFinite.end(), layout.getNonFinite().begin(), layout.getNonFinite().end());
    return outcomeOf(graph, getBlocks(), nonFinite, progress, ending);
}

std::uint64_t LiveGraph::getRounds() const {
    std::uint64_t rounds = 0;
    for (const LiveLayout& layout : layouts)
        rounds += layout.getRounds();
    return rounds;
}

std::vector<Core::Filter*> LiveGraph::getBlocks() const {
    const std::lock_guard lock(names);
    return blocks;
}

Core::Filter& LiveGraph::getBlock(const std::string& id) const {
    return require(getBlocks(), id, "the block '" + id + "'");
}

LiveGraph::Address LiveGraph::addressOf(const std::string& name, const char* member) {
    const std::size_t dot = name.find('.'); // ids have none, names of pins and settings may
    if (dot == std::string::npos) throw ControlException("found '" + name + "'; expected BLOCK." + member);
    return {name.substr(0, dot), name.substr(dot + 1)};
}

Core::AbstractProperty& LiveGraph::getProperty(const std::string& name) const {
    const Address address = addressOf(name, "SETTING");
    const Core::Filter& block = getBlock(address.block);
    return require(block.getPropertyBag(), address.member,
                   "the setting '" + address.member + "' of '" + address.block + "'");
}

Core::AbstractInputPin& LiveGraph::getInput(const std::string& name) const {
    const Address address = addressOf(name, "PIN");
    return require(getBlock(address.block).getInputPins(), address.member,
                   "the input '" + address.member + "' of '" + address.block + "'");
}

Core::AbstractOutputPin& LiveGraph::getOutput(const std::string& name) const {
    const Address address = addressOf(name, "PIN");
    return require(getBlock(address.block).getOutputPins(), address.member,
                   "the output '" + address.member + "' of '" + address.block + "'");
}

LiveLayout& LiveGraph::getLayout(const std::string& id) {
    std::vector<std::string> known;
    for (LiveLayout& layout : layouts) {
        if (layout.getId() == id) return layout;
        known.push_back(layout.getId());
    }
    refuse("the layout '" + id + "'", id, known);
}

LiveLayout* LiveGraph::layoutOf(const Core::Filter& block) {
    const auto found = std::find_if(layouts.begin(), layouts.end(), [&](LiveLayout& layout) {
        return &layout.getBlocks() == block.getManager();
    });
    return found == layouts.end() ? nullptr : &*found;
}

void LiveGraph::lookAgain(const Core::Filter& block) {
    // A run that is over comes to rest by itself: who turns settings on and on doesn't hold it up.
    if (drive.getIsOver()) return;
    if (LiveLayout* const layout = layoutOf(block)) layout->lookAgain();
}

void LiveGraph::move(const std::string& block, const std::string& layout) {
    const Standstill still(*this);
    Core::Filter& moved = getBlock(block);
    LiveLayout& to = getLayout(layout);
    LiveLayout* const from = layoutOf(moved);
    if (from == &to) return;
    if (from != nullptr && from->getClock() == &moved)
        throw ControlException("found the block '" + block + "', which is the clock of '" + from->getId() +
                               "'; expected a block that another one drives");
    try {
        to.getBlocks().add(moved);
    } catch (...) {
        if (layoutOf(moved) != from) rearrange(); // without some of its links
        throw;
    }
    rearrange();
}

void LiveGraph::attach(const LinkRequest& request) {
    const Standstill still(*this);
    Core::AbstractOutputPin& from = getOutput(request.from);
    Core::AbstractInputPin& to = getInput(request.to);
    if (to.getConnectedOutput() != nullptr)
        throw ControlException("found the input '" + request.to +
                               "', which has a link; expected one without");
    if (request.overflow == Overflow::Wait) requireNoLoop(request, from, to);
    if (request.buffer == 0) throw ControlException("found a buffer of 0; expected 1 sample at least");
    const std::uint32_t formerBuffer = to.getBufferCapacity();
    const bool wasNewestFirst = to.getIsLifo();
    try {
        overflows.set(to, request.overflow);
        to.setBufferCapacity(request.buffer);
        to.setIsLifo(request.isNewestFirst);
        attachOrRefuse(request, from, to);
    } catch (...) {
        overflows.set(to, {});
        restoreBuffer(to, formerBuffer, wasNewestFirst);
        throw;
    }
    rearrange();
}

void LiveGraph::attachOrRefuse(const LinkRequest& request, Core::AbstractOutputPin& from,
                               Core::AbstractInputPin& to) {
    try {
        from.attach(to, false);
    } catch (const Poco::Exception& exception) {
        throw ControlException("'" + request.from + "' and '" + request.to + "' can't be linked (" +
                               exception.displayText() + ")");
    }
}

/// Layouts that feed each other can't wait for each other.
void LiveGraph::requireNoLoop(const LinkRequest& request, const Core::AbstractOutputPin& from,
                              const Core::AbstractInputPin& to) {
    const LiveLayout& sender = getLayout(Core::layoutOf(from)->getName());
    const LiveLayout& reader = getLayout(Core::layoutOf(to)->getName());
    if (&sender != &reader && overflows.getIsLeading(getBlocks(), layouts, reader, sender))
        throw ControlException("found 'overflow: wait' from '" + request.from + "' to '" + request.to +
                               "', whose layouts feed each other in a loop; expected 'overflow: drop'");
}

void LiveGraph::detach(const std::string& input) {
    const Standstill still(*this);
    Core::AbstractInputPin& to = getInput(input);
    if (to.getConnectedOutput() == nullptr)
        throw ControlException("found the input '" + input + "', which has no link; expected one that has");
    to.detachAll();
    overflows.set(to, {});
    rearrange();
}

void LiveGraph::add(const std::string& id, const std::string& type, const std::string& layout) {
    const Standstill still(*this);
    if (!GraphDescription::getIsId(id))
        throw ControlException("found the id '" + id + "'; expected " + GraphDescription::kIdLetters);
    for (const Core::Filter* const block : getBlocks())
        if (block->getName() == id)
            throw ControlException("found the id '" + id + "' a second time; expected an id of its own");
    LiveLayout& to = getLayout(layout);
    // The host's own blocks are told what they read and write before a run.
    BlockPtr block = catalogue.getIsHostType(type) ? nullptr : catalogue.create(type, id);
    if (block == nullptr) {
        std::vector<std::string> known = catalogue.getTypeNames();
        refuse("the block type '" + type + "'", type, known);
    }
    added.reserve(added.size() + 1); // before anybody knows the block, which dies with a failure
    {
        const std::lock_guard guard(names);
        blocks.reserve(blocks.size() + 1);
    }
    to.getBlocks().add(*block);
    {
        const std::lock_guard guard(names);
        blocks.push_back(block.get());
    }
    added.push_back(std::move(block));
    rearrange();
}

/// Layouts that don't know what has changed would use, each in its thread, what another one holds: where there is no memory
/// to tell them, the run ends.
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
    for (LiveLayout& layout : layouts)
        arrange(layout);
    overflows.apply(getBlocks(), layouts, drive.room);
    drive.mostDrainRounds = getMostDrainRounds();
    if (!drive.getIsOver()) stir(); // sources and clocks may have come to another layout
}

/// Without a loop everything comes out some time, however many samples a block makes of one. With loops, each sample that
/// is left may wake a layout once over each of the links between layouts.
std::uint64_t LiveGraph::getMostDrainRounds() const {
    if (!hasLoop(getBlocks())) return std::numeric_limits<std::uint64_t>::max();
    std::uint64_t mostRounds = 0;
    std::uint64_t crossings = 0;
    for (const LiveLayout& layout : layouts) {
        mostRounds += layout.getMostRounds();
        crossings += layout.getLinksFromElsewhere();
    }
    return mostRounds * (crossings + 1);
}

void LiveGraph::arrange(LiveLayout& layout) {
    std::vector<Core::Filter*> held;
    for (Core::Filter* const block : getBlocks())
        if (block->getManager() == &layout.getBlocks()) held.push_back(block);
    layout.getBlocks().arrange(runOrder(held));
    layout.refresh(sources);
}

LiveStatistics LiveGraph::getStatistics() {
    const std::lock_guard lock(structure);
    LiveStatistics statistics;
    for (Core::Filter* const block : getBlocks()) {
        LiveStatistics::Block entry = statisticsOf(*block);
        for (Core::AbstractInputPin* const pin : block->getInputPins()) {
            const Core::LinkCounts counts = pin->getCounts();
            entry.samplesIn += counts.taken;
            entry.lost += counts.getLost();
            const Core::AbstractOutputPin* const sender = pin->getConnectedOutput();
            if (sender == nullptr && counts.received == 0) continue;
            // Values of a timeline come from nobody's block.
            const std::string from =
                sender == nullptr ? "" : sender->getManager()->getName() + "." + sender->getName();
            statistics.links.push_back({from, block->getName() + "." + pin->getName(), counts.received,
                                        counts.taken, counts.getLost(), counts.waiting});
        }
        statistics.blocks.push_back(std::move(entry));
    }
    return statistics;
}

LiveStatistics::Block LiveGraph::statisticsOf(Core::Filter& block) {
    LiveStatistics::Block entry;
    entry.id = block.getName();
    entry.type = block.getTypeName();
    if (const LiveLayout* const layout = layoutOf(block)) entry.layout = layout->getId();
    entry.steps = block.stepTally.steps.get();
    for (const Core::AbstractOutputPin* const pin : block.getOutputPins())
        entry.samplesOut += pin->getSentCount();
    const std::uint64_t measured = block.stepTally.measuredSteps.get();
    if (measured > 0)
        entry.seconds = 1e-9 * static_cast<double>(block.stepTally.nanoseconds.get()) *
                        static_cast<double>(entry.steps) / static_cast<double>(measured);
    return entry;
}

} // namespace Quillmere::Host
