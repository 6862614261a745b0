// SPDX-License-Identifier: MIT
#include "python/extension/BlockHandle.h"

#include "framework/core/CommandProperty.h"
#include "host/description/Quantity.h"
#include "host/graph/PropertyWriter.h"
#include "host/plugins/KnownTypes.h"
#include "host/text/Complaint.h"
#include "host/text/ShortestText.h"
#include "python/extension/Errors.h"
#include "python/extension/Lock.h"
#include "python/extension/Values.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <variant>

namespace py = pybind11;

namespace Python {

using namespace Quillmere::Host;
using Quillmere::Core::AbstractProperty;

namespace {
constexpr std::size_t kUnlockedFrom = 256;          ///< Rows that are worth letting others run meanwhile.
constexpr long long kMostSteps = 1'000'000'000'000; ///< Of a block without inputs; no memory holds as many.
constexpr std::size_t kBetweenSignals = 1U << 20U;  ///< Rows between two looks whether somebody interrupts.

const TypeInfo& lookUp(const std::string& type) {
    const Setup setup;
    return getTypeInfo(type);
}

BlockOrder orderOf(const std::string& type, const BlockHandle::Settings& settings, std::optional<double> rate,
                   const std::string& id) {
    if (rate && !(std::isfinite(*rate) && *rate > 0.0))
        refuse("fs = " + shortestText(*rate), "rows a second, a number above 0");
    BlockOrder order;
    order.description.id = id;
    order.description.type = type;
    for (const auto& [name, value] : settings)
        order.description.set(name, value);
    order.rate = rate;
    return order;
}

/// Whatever comes, collectors listen for one call: what nobody takes would gather for ever.
class Listening {
public:
    explicit Listening(std::deque<Collector>& all) : collectors(all) {}
    ~Listening() {
        for (Collector& collector : collectors)
            collector.isOn = false;
    }
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;

private:
    std::deque<Collector>& collectors;
};

/// What a block's own settings refuse names the setting, not the block.
void raiseFor(const BlockOrder& order, const Complaints& complaints) {
    if (complaints.isEmpty()) return;
    std::vector<Complaint> told = complaints.getSorted();
    const std::string own = " of '" + order.description.id + "' (" + order.description.type + ")";
    for (Complaint& complaint : told)
        if (complaint.found.find(own) == std::string::npos && complaint.found.ends_with('\''))
            complaint.found += own;
    throw GraphException(told);
}

bool getIsNumeric(const AbstractProperty& property) {
    using Kind = PropertyDescription::Kind;
    const Kind kind = kindOf(property);
    return kind == Kind::Number || kind == Kind::Whole || kind == Kind::Count;
}
} // namespace

BlockHandle::Use::Use(BlockHandle& used) : handle(used) {
    if (handle.isBusy)
        refuse("a call of '" + handle.order.description.id + "' in another thread, which isn't over",
               "one thread at a time; fresh() makes another block like it");
    handle.isBusy = true;
}

BlockHandle::BlockHandle(const std::string& type, const Settings& settings, std::optional<double> rate,
                         const std::string& id)
    : BlockHandle(orderOf(type, settings, rate, id)) {}

BlockHandle::BlockHandle(BlockOrder blockOrder)
    : order(std::move(blockOrder)), info(lookUp(order.description.type)) {
    const KnownType& known = getKnownType(order.description.type);
    readsTimes = known.readsTimes || known.makesTimes || known.trustsFirstStep;
    countsNothing = readsTimes && !order.rate;
    firstTime = order.rate ? 0.0 : std::numeric_limits<double>::quiet_NaN();
    stepRate = order.rate.value_or(1.0);
    build();
}

BlockHandle::~BlockHandle() {
    const Setup setup;
    engine.reset();
}

void BlockHandle::build() {
    const Setup setup;
    engine = std::make_unique<BlockEngine>(order);
    conversions = engine->getConversions();
    fed = 0;
}

void BlockHandle::reset() {
    const Use use(*this);
    build();
}

std::unique_ptr<BlockHandle> BlockHandle::makeWhole() const {
    std::unique_ptr<BlockHandle> block = makeFresh();
    block->endsWithPush = true;
    return block;
}

void BlockHandle::refuseTimes() const {
    refuse("neither fs nor t for '" + order.description.id + "' (" + order.description.type +
               "), which reckons with the times of rows",
           "fs, the rows a second, where the block is made, or t, the times of the rows");
}

SampleTimes BlockHandle::timesFor(py::handle t, std::size_t count, py::object& owner) const {
    if (!t || t.is_none()) return countedTimes();
    if (PyFloat_Check(t.ptr()) != 0 || PyLong_Check(t.ptr()) != 0 || !py::hasattr(t, "__len__")) {
        const double first = PyFloat_AsDouble(t.ptr());
        if (first == -1.0 && PyErr_Occurred() != nullptr) throw py::error_already_set();
        if (count > 1 && !order.rate)
            refuse("a single time for " + std::to_string(count) + " rows, and no fs",
                   "fs where the block is made, or a time for each row");
        return {.each = nullptr, .first = first, .passed = 0, .rate = stepRate};
    }
    const py::array_t<double> times = takeNumbers(t, "t");
    if (static_cast<std::size_t>(times.size()) != count)
        refuse(std::to_string(times.size()) + " times for " + std::to_string(count) + " rows",
               "a time for each row");
    owner = times;
    return {.each = times.data(), .first = 0.0, .passed = 0, .rate = 0.0};
}

std::size_t BlockHandle::takeSteps(py::handle x) const {
    const auto index = py::reinterpret_steal<py::object>(PyNumber_Index(x.ptr()));
    const long long steps = index ? PyLong_AsLongLong(index.ptr()) : -1;
    PyErr_Clear();
    if (steps > kMostSteps)
        refuse(std::to_string(steps) + " steps of '" + order.description.id + "' (" + order.description.type +
                   ")",
               std::to_string(kMostSteps) + " at most");
    if (steps < 0)
        refuse("rows for '" + order.description.id + "' (" + order.description.type + "), which has no input",
               "the number of its steps");
    return static_cast<std::size_t>(steps);
}

/// In slices, between which who wants to interrupt is heard.
void BlockHandle::feed(const SampleRows& rows, const SampleTimes& times,
                       const std::vector<BlockEngine::OtherInput>& others) {
    const auto feedSlice = [&](std::size_t first, std::size_t count) {
        SampleRows slice = rows;
        slice.count = count;
        if (info.mainInput.empty()) return engine->generate(count, times.from(first));
        const std::size_t size = static_cast<std::size_t>(rows.rows * rows.columns);
        slice.data += first * size;
        if (others.empty()) return engine->feed(slice, times.from(first));
        std::vector<BlockEngine::OtherInput> own;
        for (BlockEngine::OtherInput other : others) {
            if (!other.isEach && first > 0) continue;
            if (other.isEach)
                other.rows.data += first * static_cast<std::size_t>(other.rows.rows * other.rows.columns);
            own.push_back(other);
        }
        engine->feed(slice, times.from(first), own);
    };
    if (rows.count < kUnlockedFrom) feedSlice(0, rows.count);
    for (std::size_t first = 0; rows.count >= kUnlockedFrom && first < rows.count; first += kBetweenSignals) {
        if (first > 0 && PyErr_CheckSignals() != 0) throw py::error_already_set();
        const Unlocked unlocked;
        feedSlice(first, std::min(kBetweenSignals, rows.count - first));
    }
    if (endsWithPush) engine->finish();
}

py::object BlockHandle::collectMain(int axes, Eigen::Index columns) {
    if (!engine->getHasMainCollector()) return py::none();
    SampleStore& samples = engine->getMainCollector().samples;
    if (!samples.getRuns().empty()) lastColumns = samples.getRuns().back().columns;
    return toSamples(samples, axes, lastColumns > 0 ? lastColumns : columns);
}

PyObject* BlockHandle::pushRows(const SampleRows& rows, const SampleTimes& times, int axes) {
    const Use use(*this);
    listenToMain(rows.count);
    fed += rows.count;
    lastAxes = axes;
    feed(rows, times, {});
    return collectMain(axes, rows.columns).release().ptr();
}

py::object BlockHandle::finish() {
    const Use use(*this);
    listenToMain(0);
    engine->finish();
    return collectMain(lastAxes, 1);
}

void BlockHandle::listenToMain(std::size_t rows) {
    if (!engine->getHasMainCollector()) return;
    Collector& collector = engine->getMainCollector();
    collector.clear(); // of a call that raised
    collector.isOn = true;
    collector.keepsTimes = false;
    collector.samples.expect(rows);
}

/// Samples for the main input; of a block without one steps alone.
TakenSamples BlockHandle::takeMain(py::handle x) const {
    if (!info.mainInput.empty()) return TakenSamples::of(x, "x");
    TakenSamples taken;
    taken.rows.count = takeSteps(x);
    return taken;
}

py::object BlockHandle::push(py::handle x, py::handle t) {
    const TakenSamples taken = takeMain(x);
    py::object owner;
    const SampleTimes times = timesFor(t, taken.rows.count, owner);
    return py::reinterpret_steal<py::object>(pushRows(taken.rows, times, taken.axes));
}

py::dict BlockHandle::pushAll(py::handle x, py::handle t, py::handle inputs) {
    const TakenSamples taken = takeMain(x);
    py::object owner;
    const SampleTimes times = timesFor(t, taken.rows.count, owner);
    std::vector<TakenSamples> kept;
    std::vector<BlockEngine::OtherInput> others;
    const Use use(*this);
    if (inputs && !inputs.is_none())
        for (const auto& [key, value] : py::dict(py::reinterpret_borrow<py::object>(inputs))) {
            const std::string name = py::str(key);
            auto* const sender = name == info.mainInput ? nullptr : engine->findSender(name);
            if (sender == nullptr) {
                std::vector<std::string> known;
                for (const auto& pin : info.described.inputs)
                    if (pin.name != info.mainInput) known.push_back(pin.name);
                throw HostException(Complaint::unknown(
                    {}, "the input '" + name + "' of " + order.description.type, name, known, "one of ",
                    "nothing, since it has no other input than '" + info.mainInput + "'"));
            }
            const TakenSamples& other =
                kept.emplace_back(TakenSamples::of(value, "the input '" + name + "'", true));
            if (other.rows.count != taken.rows.count && other.rows.count != 1)
                refuse(std::to_string(other.rows.count) + " rows for the input '" + name + "'",
                       "as many as x has, which are " + std::to_string(taken.rows.count) + ", or one");
            others.push_back({sender, other.rows, other.rows.count == taken.rows.count});
        }
    const Listening listening(engine->listenToAll());
    listenToAll();
    fed += taken.rows.count;
    lastAxes = taken.axes;
    feed(taken.rows, times, others);
    return collectAll(taken.axes, taken.rows.columns);
}

py::dict BlockHandle::finishAll() {
    const Use use(*this);
    const Listening listening(engine->listenToAll());
    listenToAll();
    engine->finish();
    return collectAll(lastAxes, 1);
}

void BlockHandle::listenToAll() {
    for (Collector& collector : engine->listenToAll()) {
        collector.clear();
        collector.isOn = true;
        collector.keepsTimes = true;
        collector.samples.expect(0);
    }
}

py::dict BlockHandle::collectAll(int axes, Eigen::Index columns) {
    py::dict results;
    for (Collector& collector : engine->listenToAll()) {
        const py::array_t<double> stamps = toArray(collector.times);
        const auto& runs = collector.samples.getRuns();
        results[textOf(collector.getName())] = py::make_tuple(
            stamps, toSamples(collector.samples, axes, runs.empty() ? columns : runs.front().columns));
    }
    return results;
}

AbstractProperty& BlockHandle::find(const std::string& name) const {
    AbstractProperty* const property = engine->getBlock().getPropertyBag().find(name);
    if (property != nullptr) return *property;
    std::vector<std::string> known;
    for (const auto& described : info.described.properties)
        known.push_back(described.name);
    throw HostException(Complaint::unknown(
        {}, "the property '" + name + "' of '" + order.description.id + "' (" + order.description.type + ")",
        name, known, "one of ", "a block that has some"));
}

PropertyDescription BlockHandle::getProperty(const std::string& name) const {
    return describe(find(name));
}

std::vector<PropertyDescription> BlockHandle::getProperties() const {
    return describe(engine->getBlock()).properties;
}

void BlockHandle::set(const std::string& name, const Value& value) {
    const Use use(*this);
    AbstractProperty& property = find(name);
    std::vector<RateConversion> made;
    const bool isQuantity = toQuantity(value) && getIsNumeric(property);
    const Value written = isQuantity ? convert(name, value, made) : value;
    Complaints complaints;
    writeProperties({{&property, &written}}, complaints);
    raiseFor(order, complaints);
    order.description.set(name, value);
    const std::string target = order.description.id + "." + name;
    std::erase_if(conversions, [&](const auto& other) { return other.target == target; });
    conversions.insert(conversions.end(), made.begin(), made.end());
}

/// The number that a quantity becomes. Of the block's other settings its choices count: units go by them.
Value BlockHandle::convert(const std::string& name, const Value& quantity,
                           std::vector<RateConversion>& made) const {
    const Setup setup;
    BlockOrder lone = order;
    std::erase_if(lone.description.settings, [&](const auto& setting) {
        return kindOf(find(setting.name)) != PropertyDescription::Kind::Choice;
    });
    lone.description.set(name, quantity);
    std::vector<std::string> warnings;
    const auto graph = makeBlockGraph(lone, warnings);
    made = graph->getConversions();
    const auto& holder = *graph->find(lone.description.id)->block;
    const auto held = describe(*holder.getPropertyBag().find(name)).value;
    if (const auto* const whole = std::get_if<std::int64_t>(&held)) return valueOf(*whole);
    return valueOf(std::get<double>(held));
}

void BlockHandle::fire(const std::string& name) {
    const Use use(*this);
    auto* const command = dynamic_cast<Quillmere::Core::CommandProperty*>(&find(name));
    if (command == nullptr)
        refuse("the property '" + name + "' of '" + order.description.id + "'", "a command");
    command->fire();
    if (fed == 0) order.commands.push_back(name);
}

FrequencyResponse BlockHandle::measure(const ResponseSettings& settings) const {
    const auto make = [made = order] {
        struct Lone {
            std::unique_ptr<Graph> graph;
        };
        std::vector<std::string> warnings;
        const auto lone = std::make_shared<Lone>(Lone{makeBlockGraph(made, warnings)});
        Quillmere::Core::Filter* const block = lone->graph->find(made.description.id)->block.get();
        lone->graph->cutLoose(*block);
        return std::shared_ptr<Quillmere::Core::Filter>(lone, block);
    };
    return unlockedSetup([&] { return measureResponse(make, settings); });
}

} // namespace Python
