// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractInputPin.h"
#include "framework/core/Api.h"
#include "host/ends/HostBlock.h"
#include "host/ends/ResultAccount.h"

#include <cstdint>
#include <string>

namespace Quillmere::Host {

/// Where samples leave a graph. What only sinks have that write files stands beside it, in `ResultEnd`.
class QUILLMERE_API Sink : public HostBlock {
public:
    using HostBlock::HostBlock;

    /// Whether it makes the pins that connections name; else it has pins of its own, like every block.
    /// [setup]
    virtual bool getMakesPins() const { return false; }
    /// The input pin of that name, made if it isn't there yet. Requires: it makes pins; not open. [setup]
    virtual Core::AbstractInputPin* makePin(const std::string&) { return nullptr; }
    /// Complains of settings that don't fit the pins which connections have made. [setup]
    virtual void checkPins(Complaints&) const {}

    /// The unit of what comes to a pin, where it is known. Requires: not open. [setup]
    virtual void setUnit(const Core::AbstractInputPin&, const std::string&) {}

    /// Starts the result. Raises `RecordingException`. [setup]
    virtual void open() = 0;
    /// The time of the round that comes, in seconds. [run]
    virtual void setStreamTime(double) {}
    /// With true, a row is not what came in one round but what came with one time stamp: for a sink whose
    /// samples other threads send. A row is written when every connected pin has given to it, or when a
    /// sample of another time comes. [any, guarded]
    virtual void setGathersByTime(bool) {}
    /// Ends the result, which is whole, as far as that may fail: a result file is brought to the disk, still
    /// under its partial name. [setup]
    virtual void finish() {}
    /// Ends the result: whole and as its user knows it, not whole but kept, or thrown away. [setup]
    virtual void complete() = 0;
    virtual void abandon() = 0;
    virtual void discard() = 0;

    /// How many rows, or samples, the result has. [any]
    virtual std::uint64_t getRows() const = 0;
    /// Whether the result is whole and as its user knows it.
    virtual bool getIsComplete() const = 0;
    /// What it has seen of what it wrote. [run, or when nothing runs]
    virtual ResultAccount getAccount() const { return {}; }
};

} // namespace Quillmere::Host
