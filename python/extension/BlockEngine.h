// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"
#include "host/description/GraphDescription.h"
#include "host/description/Value.h"
#include "host/graph/Graph.h"
#include "host/graph/RateConversion.h"
#include "host/response/FrequencyResponse.h"
#include "python/extension/Catalogue.h"
#include "python/extension/Collector.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Python {

/// What a block is made by.
struct BlockOrder {
    Quillmere::Host::GraphDescription::Block description; ///< Its id, type and settings, as they are written.
    std::optional<double> rate;                           ///< Rows a second.
    std::vector<std::string> commands;                    ///< To be fired before the first row.
};

/// Samples that lie in an array: `count` of `rows` by `columns`.
struct SampleRows {
    const double* data = nullptr;
    std::size_t count = 0;
    Eigen::Index rows = 1;
    Eigen::Index columns = 1;
};

/// When samples were taken: each at its time, or one behind the other from the first on.
struct SampleTimes {
    const double* each = nullptr; ///< Null where the others tell it.
    double first = 0.0;
    std::uint64_t passed = 0; ///< Samples since `first` in front of these.
    double rate = 0.0;

    double at(std::size_t index) const {
        return each != nullptr ? each[index] : first + static_cast<double>(passed + index) / rate;
    }
    SampleTimes from(std::size_t index) const;
};

/// A living block between pins of our own, driven in the caller's thread: no layout, no gate, no other
/// thread.
class BlockEngine {
public:
    /// Samples for an input beside the main one: one with each row, or a single one with the first.
    struct OtherInput {
        Quillmere::Core::OutputPin<Quillmere::Core::MatrixXd>* sender = nullptr;
        SampleRows rows = {};
        bool isEach = false;
    };

    /// Makes the block as a graph does, hertz and seconds converted by the rate. Raises `GraphException`.
    /// [setup]
    explicit BlockEngine(const BlockOrder& order);
    ~BlockEngine();
    BlockEngine(const BlockEngine&) = delete;
    BlockEngine& operator=(const BlockEngine&) = delete;

    Quillmere::Core::Filter& getBlock() { return *block; }
    const std::vector<Quillmere::Host::RateConversion>& getConversions() const {
        return graph->getConversions();
    }
    const std::vector<std::string>& getWarnings() const { return warnings; }

    /// Where samples go in; made when they first do. Null for an input that there isn't.
    Quillmere::Core::OutputPin<Quillmere::Core::MatrixXd>* findSender(const std::string& input);
    Collector& getMainCollector() { return *mainCollector; }
    bool getHasMainCollector() const { return mainCollector != nullptr; }
    /// Collectors of all outputs, in their order, listening from now on.
    std::deque<Collector>& listenToAll();

    /// Feeds samples and steps the block once for each, or for many rows at once where it offers that and
    /// nobody but the main collector listens. Raises `HostException` for what a step raises.
    void feed(const SampleRows& samples, const SampleTimes& times);
    void feed(const SampleRows& samples, const SampleTimes& times, const std::vector<OtherInput>& others);
    /// Nothing more comes: a block that holds something back (its command `Finish`) sends it.
    void finish();
    /// Steps a block without inputs.
    void generate(std::size_t steps, const SampleTimes& times);

    /// Whether blocks of the type stamp the wall clock, in whose place they get the row's time.
    bool getNeedsClock() const { return needsClock; }

private:
    std::size_t stepRows(const SampleRows& samples, const SampleTimes& times, std::size_t first);
    template <class BeforeStep>
    void drive(std::size_t steps, const SampleTimes& times, BeforeStep beforeStep);
    [[noreturn]] void raiseStep();
    void listen();

    std::vector<std::string> warnings;
    std::unique_ptr<Quillmere::Host::Graph> graph; ///< Owns the block.
    Quillmere::Core::Filter* block = nullptr;
    Quillmere::Core::RowStepper* rowStepper = nullptr; ///< The block, where it offers that; else null.
    std::deque<Quillmere::Core::OutputPin<Quillmere::Core::MatrixXd>> senders;
    Quillmere::Core::OutputPin<Quillmere::Core::MatrixXd>* mainSender = nullptr;
    std::deque<Collector> collectors; ///< Of the main output first; all of them once all are listened to.
    Collector* mainCollector = nullptr;
    bool needsClock = false;
    double now = 0.0; ///< What the thread's clock shows meanwhile.
};

/// The graph in which a block is made: a source of that rate in front of it. `settings` are all that counts
/// of it where only their numbers are wanted. Raises `GraphException`. [setup]
std::unique_ptr<Quillmere::Host::Graph> makeBlockGraph(const BlockOrder& order,
                                                       std::vector<std::string>& warnings);

} // namespace Python
