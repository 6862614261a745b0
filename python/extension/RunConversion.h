// SPDX-License-Identifier: MIT
#pragma once

#include "host/run/RunOutcome.h"
#include "python/extension/RunEnds.h"

#include <pybind11/pybind11.h>

#include <memory>
#include <string>
#include <vector>

namespace Python {

/// The ends that a call of `run`, `check` or `start` asks for; None for what it doesn't.
std::shared_ptr<RunEnds> endsOf(pybind11::handle data, pybind11::handle keep);
/// Adds rows that are fed: for each source its pins with their columns, and the rates of some.
void addFeeds(RunEnds& ends, pybind11::handle feeds, pybind11::handle rates);

pybind11::dict tableOf(const TableRows& rows);
pybind11::dict progressOf(const Quillmere::Host::RunProgress& progress);

} // namespace Python
