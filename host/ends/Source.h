// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/HostBlock.h"

#include <cstdint>

namespace Quillmere::Host {

/// Where samples enter a graph. The runner asks each source for the time of its next sample, lets the
/// earliest go, and runs a round; the source sends in its step. What only some sources have stands beside it,
/// and a source derives from those of it that it has: `FileEnd`, `RecordedSource`, `WakingSource`.
class QUILLMERE_API Source : public HostBlock {
public:
    using HostBlock::HostBlock;

    /// Looks whether what it reads is there and has what the pins need. Nothing is sent yet. [setup]
    virtual void open(Complaints& complaints) = 0;

    /// Gets the next sample ready if none is; false at the end. May wait. Raises `RecordingException` for bad
    /// data. [run]
    virtual bool prepare() = 0;
    /// Whether `prepare` wouldn't wait. [run]
    virtual bool getIsPrepared() { return true; }
    /// Seconds. Requires: `prepare()` was true. [run]
    virtual double getNextTimeStamp() const = 0;
    /// Lets the next step send what is ready. [run]
    virtual void release() = 0;

    /// How far it has come, in rows; where nobody says otherwise a row is a sample of the output that has
    /// sent the most. [any, guarded]
    virtual std::uint64_t getRows() const;
};

} // namespace Quillmere::Host
