// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/LossTeller.h"
#include "framework/transport/OutputPin.h"
#include "host/ends/FileEnd.h"
#include "host/ends/RecordedSource.h"
#include "host/ends/Source.h"
#include "host/ends/WakingSource.h"
#include "host/recording/RecordingLook.h"
#include "host/recording/RecordingSettings.h"
#include "host/recording/RepairedRows.h"
#include "host/recording/UnitPlanner.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// Reads a recording: each row becomes one sample on each pin, or N rows one sample of N rows.
///
/// A pin is a list of columns; its sample is 1 by n, one element a column, or N by n with `frame: N`, row by
/// row. The time stamp is the row's time in seconds, or the row's number divided by `rate`; a frame
/// has that of its last row, and the next frame begins `hop` rows after it began. Rows at the end that fill
/// no frame are not sent. A row in which all cells of a pin are empty gives no sample on that pin, as a
/// result has it where nothing came; a pin with some cells empty, and an empty cell in a frame, are bad rows.
/// What becomes of bad rows: see `RowPlan`, and of times that go back, repeat or jump: `TimeRepairPlan`. A
/// frame is made of the rows that are left and of those that are made, as if the recording had no others.
class QUILLMERE_API RecordingSource final : public Source,
                                            public FileEnd,
                                            public RecordedSource,
                                            public WakingSource,
                                            public Core::LossTeller {
public:
    static constexpr const char* kTypeName = "RecordingSource";

    explicit RecordingSource(const std::string& instanceName);
    ~RecordingSource() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }
    std::vector<std::string> getNotes() const override;

    const std::vector<SettingDescription>& getSettingDescriptions() const override;
    std::string getPurpose() const override;
    void configure(const GraphDescription::Block& description, const std::string& folder,
                   Complaints& complaints) override;
    void open(Complaints& complaints) override;
    void setThread(std::shared_ptr<WorkThread> thread) override { recording->setThread(std::move(thread)); }
    bool prepare() override;
    bool getIsPrepared() override;
    bool getHasMore() const override { return hasMore; }
    bool getComesByItself() const override;
    int getDescriptor() const override { return recording->getReader().getDescriptor(); }
    double getNextTimeStamp() const override { return recording->getTime(); }
    void release() override { isReleased = true; }
    std::uint64_t getRows() const override { return rows.get(); }
    std::uint64_t getBytesRead() const override {
        return recording == nullptr ? 0 : recording->getReader().getBytesRead();
    }
    std::uint64_t getSize() const override {
        return recording == nullptr ? 0 : recording->getReader().getSize();
    }
    void setStop(const std::stop_token& token) override;
    void setStopOfOpening(const std::stop_token& token) override { settings.wishes.stop = token; }
    std::vector<std::string> getColumnNames() const override;
    std::optional<Shape> getSampleShape(const Core::AbstractOutputPin& pin) const override;
    Cell getCell(const Core::AbstractOutputPin& pin, std::size_t element) const override;
    bool getIsMissing(const Core::AbstractOutputPin& output, std::size_t element) const override;
    SourceAccount getAccount() const override;
    std::vector<File> getFiles() const override;
    std::optional<SourceAccount> lookAhead(std::uint64_t rows) const override;
    std::string getUnit(const Core::AbstractOutputPin& pin) const override;
    std::optional<SampleRate> getSampleRate(const Core::AbstractOutputPin& pin) const override;
    bool getIsRateSettled() const override;
    std::string getRateHindrance(const Core::AbstractOutputPin& pin) const override;
    std::string getRateSetting() const override { return "nominalRate"; }
    std::optional<SampleRate> getRateSoFar(const Core::AbstractOutputPin& pin) const override;

    /// Whether a sample is a frame of rows, and how many rows it goes on by from one sample to the next.
    /// Requires: open. [setup]
    bool getHasFrames() const { return settings.getIsFramed(); }
    double getRowsASample() const { return static_cast<double>(std::max<std::size_t>(settings.hop, 1)); }

private:
    struct Output {
        Output(const std::string& name, Core::PinManager* manager) : pin(name, manager) {}
        Core::OutputPin<Core::MatrixXd> pin;
        std::vector<double> frame; ///< The rows of the frame that is being gathered,
        std::vector<char> missing; ///< and which of its elements are missing values.
        /// Of its own samples, from the first row on that has none for it; null where each row has.
        std::unique_ptr<TimeStampWatch> times;
    };

    std::unique_ptr<RecordingReader> openReader() const;
    TimeRepairPlan planRepair() const;
    void refuseDates(const RowPlan& plan, TimeRepairPlan repairPlan, Complaints& complaints) const;
    bool settleFrames(Complaints& complaints);
    std::optional<double> getStatedRate() const;
    const RowsRate& measureRows(std::size_t pin) const;
    /// Requires: open.
    RecordingLook look() const { return {getPath(), settings, *recording}; }

    bool readOn();
    bool takeRowIntoFrame();
    void fill(Output& output, std::size_t pin);
    bool getIsToSend(Output& output, std::size_t pin);
    std::size_t findOutput(const Core::AbstractOutputPin& pin) const;

    RecordingSettings settings; ///< Without patterns when the recording is open.
    std::deque<Output> outputs; ///< For each pin of the settings; pins can't move.
    UnitPlan units;             ///< Of these, when the recording is open.

    std::unique_ptr<RepairedRows> recording;
    mutable std::vector<RowsRate> measured; ///< For each pin and for all rows, as soon as one was asked for.
    Core::Tally rows;                       ///< Sent, or taken into a frame.
    std::size_t gathered = 0;               ///< Rows in the frames.
    std::size_t shared = 0;                 ///< Of these, what the frame before had, too.
    std::size_t toSkip = 0;                 ///< Rows before the next frame begins, when frames lie apart.
    bool isReady = false;                   ///< A sample is ready.
    bool isReleased = false;                ///< The next step sends it.
    bool hasMore = false;                   ///< More has come than a look at what has come went through.
    std::stop_token stop;
    std::uint64_t rowsGone = 0; ///< Read or made, for a look at the stop now and then.
};

} // namespace Quillmere::Host
