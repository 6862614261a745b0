// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/transport/OutputPin.h"
#include "host/ends/MemoryRecording.h"
#include "host/ends/RecordedSource.h"
#include "host/ends/Source.h"
#include "host/ends/TimeStampWatch.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Sends samples that the program has in memory, each at its time: what `RecordingSource` does with a file.
/// It has the pins of what `MemoryEnds` has for a source of its name, and no settings.
class QUILLMERE_API MemorySource final : public Source, public RecordedSource {
public:
    static constexpr const char* kTypeName = "MemorySource";

    /// `recording` is null when there is none for that name; `known` are the names for which there are some.
    MemorySource(const std::string& instanceName, std::shared_ptr<const MemoryRecording> recording,
                 std::vector<std::string> known);
    ~MemorySource() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

    void configure(const GraphDescription::Block& description, const std::string& folder,
                   Complaints& complaints) override;
    void open(Complaints&) override {}
    bool prepare() override;
    double getNextTimeStamp() const override { return recording->getTime(sent); }
    void release() override { isReleased = true; }
    std::uint64_t getRows() const override { return rows.get(); }

    std::optional<Shape> getSampleShape(const Core::AbstractOutputPin& pin) const override;
    Cell getCell(const Core::AbstractOutputPin& pin, std::size_t element) const override;
    SourceAccount getAccount() const override { return accountOf(taken, watch); }
    std::optional<SourceAccount> lookAhead(std::uint64_t most) const override;
    std::optional<SampleRate> getSampleRate(const Core::AbstractOutputPin& pin) const override;
    std::optional<SampleRate> getRateSoFar(const Core::AbstractOutputPin&) const override {
        return watch.measureRate();
    }

private:
    SourceAccount accountOf(std::size_t count, const TimeStampWatch& times) const;
    void watchTime(std::size_t index, TimeStampWatch& times) const;

    const std::shared_ptr<const MemoryRecording> recording;
    const std::vector<std::string> knownNames;
    std::deque<Core::OutputPin<Core::MatrixXd>> outputs; ///< Pins can't move; as the recording has them.
    TimeStampWatch watch;
    Core::Tally rows;        ///< Sent.
    std::size_t taken = 0;   ///< Samples that were made ready.
    std::size_t sent = 0;    ///< Samples that were sent, and so the number of the next.
    bool isReleased = false; ///< The next step sends it.
};

} // namespace Quillmere::Host
