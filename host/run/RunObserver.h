// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/Onlooker.h"
#include "host/graph/Graph.h"
#include "host/plugins/BlockCatalogue.h"
#include "host/run/RunOutcome.h"
#include "host/text/Complaint.h"

#include <stop_token>
#include <vector>

namespace Quillmere::Host {

/// Who looks on while a job runs its graph, and makes something of what it sees when it is over: a
/// report. What it can't make is a failure of the run, whose results are whole all the same.
class QUILLMERE_API RunObserver {
public:
    virtual ~RunObserver() = default;

    /// Complains of what it can't look at, or can't write. Touches nothing. [setup]
    virtual void check(const Graph& graph, const BlockCatalogue& catalogue, Complaints& complaints) = 0;
    /// The same in front of a live run, whose blocks have threads of their own and share no rounds: `look`
    /// isn't called then. False: it looks at no live run. [setup]
    virtual bool checkLive(const Graph&, const BlockCatalogue&, Complaints&) { return false; }
    /// Takes its place beside the blocks of a graph whose sources are open, and begins what it writes. Raises
    /// `RecordingException` for what can't be begun, `InterruptedException` when a stop is requested. [setup]
    virtual void begin(Graph& graph, const std::stop_token& stop) = 0;
    /// Who looks at outputs for it while a live run runs: each is stepped in the layout of its output, behind
    /// the blocks there, and lives until `complete` or `discard`. [setup]
    virtual std::vector<Onlooker*> getOnlookers() { return {}; }
    /// Called behind each round of an offline run, with its time in seconds. [run]
    virtual void look(double streamTime) = 0;
    /// Leaves its place, and makes the whole of it; of a run that failed midway, too. Raises
    /// `RecordingException`. [any]
    virtual void complete(const RunOutcome& outcome) = 0;
    /// Leaves its place and takes back what `begin` did: nothing has run. [any]
    virtual void discard() = 0;
};

} // namespace Quillmere::Host
