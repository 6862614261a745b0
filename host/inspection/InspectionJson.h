// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/inspection/Inspection.h"
#include "host/text/Json.h"

namespace Quillmere::Host::Json {

/// What was found in a recording, for programs: all columns, and null for what there is nothing to say of.
QUILLMERE_API Text inspection(const Inspection& found);

} // namespace Quillmere::Host::Json
