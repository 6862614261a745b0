// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/ResultEnd.h"
#include "host/recording/RowSink.h"
#include "host/recording/RowWatcher.h"
#include "host/recording/TableForm.h"
#include "host/recording/TableQueue.h"
#include "host/recording/TableWriter.h"

#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Writes rows as a CSV table: first the time, then the elements of each pin's sample, row by row; the cells
/// of a pin that received nothing are empty. Numbers are in the shortest form that reads back to the same
/// bits.
class QUILLMERE_API RecordingSink final : public RowSink, public ResultEnd {
public:
    static constexpr const char* kTypeName = "RecordingSink";

    explicit RecordingSink(const std::string& instanceName);
    ~RecordingSink() override;

    const char* getTypeName() const override { return kTypeName; }

    const std::vector<SettingDescription>& getSettingDescriptions() const override;
    std::string getPurpose() const override;
    void configure(const GraphDescription::Block& description, const std::string& folder,
                   Complaints& complaints) override;
    void setUnit(const Core::AbstractInputPin& pin, const std::string& unit) override;
    void setOverwrites(bool flag) override { overwrites = flag; }
    void checkFile(const std::vector<std::string>& recorded, Complaints& complaints) override;
    std::vector<File> getFiles() const override;
    void open() override;
    bool getHoldsRows() const override { return table->getHoldsRows(); }
    void handOver() override { table->flush(); }
    /// Lets somebody look at the rows, who isn't owned and outlives the result. Requires: not open. [setup]
    void addWatcher(RowWatcher& looker) { watchers.push_back(&looker); }
    /// What its columns are called. Requires: its links are made. [setup]
    std::vector<TableWriter::Group> getGroups() const { return getColumns().getGroups(getInputs()); }
    void giveUp() override { table->giveUp(); }
    void setStop(const std::stop_token& token) override { stop = token; }
    void finish() override;
    void complete() override;
    void abandon() override;
    void discard() override;
    void setThread(std::shared_ptr<WorkThread> thread) override;
    std::uint64_t getRows() const override;
    bool getIsComplete() const override { return table != nullptr && table->getIsComplete(); }
    std::string getPartialPath() const override { return table == nullptr ? "" : table->getPartialPath(); }

private:
    bool takeOwn(const GraphDescription::Setting& setting, const std::string& folder,
                 Complaints& complaints) override;
    ResultOptions options() const;
    void writeRow(double time, const Samples& samples) override;
    void endQueue();

    bool overwrites = false;
    std::vector<std::string> recorded; ///< Columns of the graph's recordings.

    std::stop_token stop;
    std::unique_ptr<TableWriter> table;
    std::unique_ptr<TableQueue> queue; ///< To the thread that writes; null where this one does.
    std::vector<RowWatcher*> watchers;
};

} // namespace Quillmere::Host
