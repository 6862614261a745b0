// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/FileEnd.h"
#include "host/text/Complaint.h"

#include <stop_token>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What a `Sink` has beside it that writes its result to a file or a pipe, under a partial name until it is
/// whole.
class QUILLMERE_API ResultEnd : public FileEnd {
public:
    /// With true, what stands under the result's name may be replaced whoever made it. [setup]
    virtual void setOverwrites(bool flag) = 0;
    /// Complains of a result that couldn't be written, and touches nothing. `recorded` are the columns of the
    /// graph's recordings: a table that has only those isn't taken for a result. [setup]
    virtual void checkFile(const std::vector<std::string>& recorded, Complaints& complaints) = 0;

    /// Whether rows have been written that whoever reads along doesn't see yet. Requires: open. [run]
    virtual bool getHoldsRows() const = 0;
    /// Hands them over. A run that isn't live leaves it to the result when to. Requires: open. [run]
    virtual void handOver() = 0;
    /// From then on who waits for the reader of a pipe raises `InterruptedException` when a stop is
    /// requested. [setup]
    virtual void setStop(const std::stop_token& stop) = 0;
    /// Waits no more for who reads a pipe: a write that would have to raises `RecordingException`, also one
    /// that is under way. Requires: open. [any]
    virtual void giveUp() = 0;

    /// Where the result is as long as it has not its final name.
    virtual std::string getPartialPath() const = 0;
};

} // namespace Quillmere::Host
