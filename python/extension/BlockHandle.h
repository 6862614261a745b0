// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/RateConversion.h"
#include "python/extension/Arrays.h"
#include "python/extension/BlockEngine.h"

#include <pybind11/pybind11.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Python {

/// A block as Python has it: the living one, and what makes another like it.
class BlockHandle {
public:
    using Settings = std::vector<std::pair<std::string, Quillmere::Host::Value>>;

    BlockHandle(const std::string& type, const Settings& settings, std::optional<double> rate,
                const std::string& id);
    explicit BlockHandle(BlockOrder order);
    ~BlockHandle();
    BlockHandle(const BlockHandle&) = delete;
    BlockHandle& operator=(const BlockHandle&) = delete;

    const BlockOrder& getOrder() const { return order; }
    const TypeInfo& getInfo() const { return info; }
    const std::vector<Quillmere::Host::RateConversion>& getConversions() const { return conversions; }
    const std::vector<std::string>& getWarnings() const { return engine->getWarnings(); }
    bool getReadsTimes() const { return readsTimes; }

    /// Samples in one piece, and the main output's as a new reference: what `push` is at its quickest.
    PyObject* pushRows(const SampleRows& rows, const SampleTimes& times, int axes);
    pybind11::object push(pybind11::handle x, pybind11::handle t);
    pybind11::dict pushAll(pybind11::handle x, pybind11::handle t, pybind11::handle inputs);
    /// What is held back for more, which doesn't come.
    pybind11::object finish();
    pybind11::dict finishAll();
    std::unique_ptr<BlockHandle> makeFresh() const { return std::make_unique<BlockHandle>(order); }
    /// Likewise, for a whole recording: nothing comes behind what is pushed.
    std::unique_ptr<BlockHandle> makeWhole() const;
    void reset();

    Quillmere::Host::PropertyDescription getProperty(const std::string& name) const;
    std::vector<Quillmere::Host::PropertyDescription> getProperties() const;
    void set(const std::string& name, const Quillmere::Host::Value& value);
    void fire(const std::string& name);
    Quillmere::Host::FrequencyResponse measure(const Quillmere::Host::ResponseSettings& settings) const;

    /// The times of so many rows from here on. Raises `velmarind.Error` where they can't be known.
    SampleTimes timesFor(pybind11::handle t, std::size_t count, pybind11::object& owner) const;
    SampleTimes countedTimes() const {
        if (countsNothing) refuseTimes();
        return {.each = nullptr, .first = firstTime, .passed = fed, .rate = stepRate};
    }
    bool getIsBusy() const { return isBusy; }

private:
    /// The block is at work; raises `velmarind.Error` where another thread is in it.
    class Use {
    public:
        explicit Use(BlockHandle& used);
        ~Use() { handle.isBusy = false; }
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

    private:
        BlockHandle& handle;
    };

    void build();
    [[noreturn]] void refuseTimes() const;
    Quillmere::Core::AbstractProperty& find(const std::string& name) const;
    Quillmere::Host::Value convert(const std::string& name, const Quillmere::Host::Value& quantity,
                                   std::vector<Quillmere::Host::RateConversion>& made) const;
    TakenSamples takeMain(pybind11::handle x) const;
    std::size_t takeSteps(pybind11::handle x) const;
    void feed(const SampleRows& rows, const SampleTimes& times,
              const std::vector<BlockEngine::OtherInput>& others);
    void listenToMain(std::size_t rows);
    void listenToAll();
    pybind11::object collectMain(int axes, Eigen::Index columns);
    pybind11::dict collectAll(int axes, Eigen::Index columns);

    BlockOrder order;
    const TypeInfo& info;
    std::unique_ptr<BlockEngine> engine;
    std::vector<Quillmere::Host::RateConversion> conversions;
    std::uint64_t fed = 0; ///< Rows since the block was made.
    bool readsTimes = false;
    bool countsNothing = false; ///< It needs times, and there is no rate to count them by.
    double firstTime = 0.0;     ///< Not-a-number without a rate.
    double stepRate = 1.0;
    Eigen::Index lastColumns = 0; ///< Of what came out last; 0 for nothing yet.
    int lastAxes = 2;             ///< Of what went in last.
    bool endsWithPush = false;    ///< Nothing comes behind what is pushed.
    bool isBusy = false;          ///< Under the interpreter's lock.
};

} // namespace Python
