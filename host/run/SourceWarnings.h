// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/text/Complaint.h"
#include "host/ends/SourceAccount.h"

#include <string>
#include <vector>

namespace Quillmere::Host {

/// What is doubtful in what a source has read of the recording at `path`, a sentence each.
QUILLMERE_API std::vector<Warning> warningsOf(const std::string& path, const SourceAccount& account);

} // namespace Quillmere::Host
