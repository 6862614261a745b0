// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/transport/InputPin.h"
#include "host/ends/Sink.h"
#include "host/recording/ResultColumns.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace Quillmere::Host {

/// A sink that makes rows of what comes to its pins: a row for each round in which any pin received. Where
/// samples come from other threads, a row is what came with one time stamp; see `setGathersByTime`. The pins
/// are those that connections name, in the order of the connections. Where rows go its kind says.
class QUILLMERE_API RowSink : public Sink {
public:
    explicit RowSink(const std::string& instanceName);
    ~RowSink() override;

    void process() final;

    /// Takes the settings that name columns, and lets its kind take the others.
    void configure(const GraphDescription::Block& description, const std::string& folder,
                   Complaints& complaints) override;
    bool getMakesPins() const override { return true; }
    Core::AbstractInputPin* makePin(const std::string& name) override;
    void checkPins(Complaints& complaints) const override { columns.check(inputs, complaints); }
    void setStreamTime(double seconds) override { streamTime = seconds; }
    void setGathersByTime(bool flag) override { gathersByTime = flag; }
    ResultAccount getAccount() const override { return account; }

protected:
    using Samples = std::vector<const Core::MatrixXd*>; ///< Of each pin, null where nothing came.

    /// Begins a result. [setup]
    void beginRows();
    /// What was gathered is a row, however much is missing.
    void endGatheredRow();

    const ResultColumns::Pins& getInputs() const { return inputs; }
    ResultColumns& getColumns() { return columns; }
    const ResultColumns& getColumns() const { return columns; }

private:
    /// Takes a setting of its kind's own; false for another one.
    virtual bool takeOwn(const GraphDescription::Setting& setting, const std::string& folder,
                         Complaints& complaints) = 0;
    /// Requires: rows have begun; the samples are not kept. [run]
    virtual void writeRow(double time, const Samples& samples) = 0;

    void gather(std::size_t pin);
    bool getIsRowFull() const;
    void endRow(double time);
    void noteNonFinite(std::size_t pin, double time);

    std::unordered_map<std::string, Core::InputPin<Core::MatrixXd>*> inputsByName;
    ResultColumns::Pins inputs; ///< Pins can't move.
    ResultColumns columns;
    ResultAccount account;
    Samples row;             ///< Of the row that is being written.
    double streamTime = 0.0; ///< Seconds; of the round.
    bool gathersByTime = false;
    bool isGathering = false;             ///< Samples of the row that is being gathered wait for the others.
    double gatheredTime = 0.0;            ///< Seconds; of that row.
    std::vector<Core::MatrixXd> gathered; ///< For each pin what `row` points to, in a gathered row.
};

} // namespace Quillmere::Host
