// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/transport/InputPin.h"
#include "host/ends/ResultEnd.h"
#include "host/ends/Sink.h"
#include "host/recording/ResultColumns.h"
#include "host/recording/RowWatcher.h"
#include "host/recording/TableForm.h"
#include "host/recording/TableQueue.h"
#include "host/recording/TableWriter.h"

#include <deque>
#include <memory>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <vector>

namespace Quillmere::Host {

/// Writes what comes to its pins as a CSV table: a row for each round in which any pin received, first the
/// time of the round, then the elements of each pin's sample, row by row; the cells of a pin that received
/// nothing are empty. Where samples come from other threads, a row is what came with one time stamp; see
/// `setGathersByTime`. Numbers are in the shortest form that reads back to the same bits. The pins are those
/// that connections name, in the order of the connections.
class QUILLMERE_API RecordingSink final : public Sink, public ResultEnd {
public:
    static constexpr const char* kTypeName = "RecordingSink";

    explicit RecordingSink(const std::string& instanceName);
    ~RecordingSink() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

    const std::vector<SettingDescription>& getSettingDescriptions() const override;
    std::string getPurpose() const override;
    void configure(const GraphDescription::Block& description, const std::string& folder,
                   Complaints& complaints) override;
    bool getMakesPins() const override { return true; }
    Core::AbstractInputPin* makePin(const std::string& name) override;
    void checkPins(Complaints& complaints) const override { columns.check(inputs, complaints); }
    void setUnit(const Core::AbstractInputPin& pin, const std::string& unit) override;
    void setOverwrites(bool flag) override { overwrites = flag; }
    void checkFile(const std::vector<std::string>& recorded, Complaints& complaints) override;
    std::vector<File> getFiles() const override;
    void open() override;
    void setStreamTime(double seconds) override { streamTime = seconds; }
    void setGathersByTime(bool flag) override { gathersByTime = flag; }
    bool getHoldsRows() const override { return table->getHoldsRows(); }
    void handOver() override { table->flush(); }
    /// Lets somebody look at the rows, who isn't owned and outlives the result. Requires: not open. [setup]
    void addWatcher(RowWatcher& looker) { watchers.push_back(&looker); }
    /// What its columns are called. Requires: its links are made. [setup]
    std::vector<TableWriter::Group> getGroups() const { return columns.getGroups(inputs); }
    void giveUp() override { table->giveUp(); }
    void setStop(const std::stop_token& token) override { stop = token; }
    void finish() override;
    void complete() override;
    void abandon() override;
    void discard() override;
    void setThread(std::shared_ptr<WorkThread> thread) override;
    std::uint64_t getRows() const override;
    bool getIsComplete() const override { return table != nullptr && table->getIsComplete(); }
    ResultAccount getAccount() const override { return account; }
    std::string getPartialPath() const override { return table == nullptr ? "" : table->getPartialPath(); }

private:
    ResultOptions options() const;
    void gather(std::size_t pin);
    bool getIsRowFull() const;
    void writeRow(double time);
    void noteNonFinite(std::size_t pin, double time);
    void endGatheredRow();
    void endQueue();

    std::unordered_map<std::string, Core::InputPin<Core::MatrixXd>*> inputsByName;
    std::deque<Core::InputPin<Core::MatrixXd>> inputs; ///< Pins can't move.
    ResultColumns columns;
    bool overwrites = false;
    std::vector<std::string> recorded; ///< Columns of the graph's recordings.

    std::stop_token stop;
    std::unique_ptr<TableWriter> table;
    std::unique_ptr<TableQueue> queue; ///< To the thread that writes; null where this one does.
    std::vector<RowWatcher*> watchers;
    ResultAccount account;
    /// Of the row that is being written, null where nothing came.
    std::vector<const Core::MatrixXd*> samples;
    double streamTime = 0.0; ///< Seconds; of the round.
    bool gathersByTime = false;
    bool isGathering = false;             ///< Samples of the row that is being gathered wait for the others.
    double gatheredTime = 0.0;            ///< Seconds; of that row.
    std::vector<Core::MatrixXd> gathered; ///< For each pin what `samples` points to, in a gathered row.
};

} // namespace Quillmere::Host
