// SPDX-License-Identifier: MIT
#pragma once

#include "host/description/GraphDescription.h"
#include "host/run/Job.h"
#include "host/text/Complaint.h"
#include "python/extension/RunEnds.h"

#include <memory>
#include <optional>

namespace Python {

/// A graph as Python has it: a description, and what was wrong with it when it was read.
struct GraphHandle {
    Quillmere::Host::GraphDescription description;
    Quillmere::Host::Complaints reading;
};

/// A job, made and ended as setup. Requires of both: the interpreter's lock. What it does in between touches
/// nothing but its own, and may wait for ever for who writes a pipe: no time for the setup mutex.
class GuardedJob {
public:
    GuardedJob(const GraphHandle& graph, RunEnds& ends, Quillmere::Host::JobOptions options);
    ~GuardedJob();
    GuardedJob(const GuardedJob&) = delete;
    GuardedJob& operator=(const GuardedJob&) = delete;

    Quillmere::Host::Job& get() { return *job; }
    /// Gives the job away.
    Quillmere::Host::Job take();

private:
    std::optional<Quillmere::Host::Job> job;
};

} // namespace Python
