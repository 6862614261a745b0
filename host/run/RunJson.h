// SPDX-License-Identifier: MIT
#pragma once

#include "host/run/Job.h"
#include "host/text/Json.h"

/// What is told of a run before it and behind it, for programs; docs/own-host.md has the tables of members.
namespace Quillmere::Host::Json {

/// Whether a job could run, and what its check has complained of: what `quillmere check --json` prints.
/// Requires: the job has been checked, with these complaints. [setup]
QUILLMERE_API Text check(const Job& job, const Complaints& complaints);

/// The outcome of a run: what `quillmere run --summary-json FILE` writes.
QUILLMERE_API Text outcome(const RunOutcome& outcome);
/// How the text of every outcome begins, and no other JSON is likely to.
Text beginOfOutcome();

} // namespace Quillmere::Host::Json
