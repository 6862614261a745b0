// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/transport/InputPin.h"
#include "host/ends/MemoryResult.h"
#include "host/ends/Sink.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace Quillmere::Host {

/// Keeps what comes to its pins in memory, each sample with its time: that of the round, as in a
/// `RecordingSink`'s row, or, where samples come from other threads, its time stamp. The pins are those that
/// connections name; it has no settings.
class QUILLMERE_API MemorySink final : public Sink {
public:
    static constexpr const char* kTypeName = "MemorySink";
    /// Takes the result of a run that begins.
    using Keeper = std::function<void(const std::string& sink, std::shared_ptr<MemoryResult> result)>;

    MemorySink(const std::string& instanceName, Keeper resultKeeper);
    ~MemorySink() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

    bool getMakesPins() const override { return true; }
    Core::AbstractInputPin* makePin(const std::string& name) override;
    void open() override;
    void setStreamTime(double seconds) override { streamTime = seconds; }
    void setGathersByTime(bool flag) override { gathersByTime = flag; }
    void complete() override;
    void abandon() override {}
    void discard() override;
    std::uint64_t getRows() const override { return rows.get(); }
    bool getIsComplete() const override { return result != nullptr && result->getIsComplete(); }
    ResultAccount getAccount() const override { return account; }

private:
    void gather(std::size_t pin);
    void noteNonFinite(std::size_t pin, const Core::MatrixXd& sample, double time);

    const Keeper keeper;
    std::unordered_map<std::string, Core::InputPin<Core::MatrixXd>*> inputsByName;
    std::deque<Core::InputPin<Core::MatrixXd>> inputs; ///< Pins can't move.
    std::shared_ptr<MemoryResult> result;
    ResultAccount account;
    Core::Tally rows;        ///< Times at which anything came.
    double streamTime = 0.0; ///< Seconds; of the round.
    bool gathersByTime = false;
    std::vector<const Core::MatrixXd*> samples; ///< Of a round, null where nothing came.
    double rowTime = 0.0;                       ///< Seconds; of the last row, where rows are gathered,
    std::vector<bool> isInRow;                  ///< and which pins have given to it.
};

} // namespace Quillmere::Host
