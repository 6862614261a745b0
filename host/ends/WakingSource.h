// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <stop_token>

namespace Quillmere::Host {

/// What a `Source` has beside it whose samples come when they come, as those of a pipe or of a device: a live
/// run doesn't pace them, and its layout sleeps until the source's descriptor wakes it.
class QUILLMERE_API WakingSource {
public:
    virtual ~WakingSource() = default;

    /// Whether its samples do come by themselves: what reads files may read pipes too. [any]
    virtual bool getComesByItself() const = 0;
    /// What has something to read as soon as `getIsPrepared` may be true: a pipe, a socket, a device or an
    /// event. It is watched only. Requires: open. [any]
    virtual int getDescriptor() const = 0;
    /// Whether more has come already, though `getIsPrepared` was false: it is to be asked again at once,
    /// since the descriptor may have nothing more to read. [run]
    virtual bool getHasMore() const { return false; }
    /// From then on a `prepare` that waits, or reads for long, raises `InterruptedException` when a stop is
    /// requested. Requires: open. [setup]
    virtual void setStop(const std::stop_token& stop) = 0;
    /// The same of `open`, where that waits. Requires: not open. [setup]
    virtual void setStopOfOpening(const std::stop_token&) {}
};

/// Whether a source waits for nobody's pace but its sender's; false for null. [any]
inline bool getComesByItself(const WakingSource* source) {
    return source != nullptr && source->getComesByItself();
}

} // namespace Quillmere::Host
