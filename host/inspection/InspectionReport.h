// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/inspection/Inspection.h"

#include <string>

namespace Quillmere::Host {

/// What was found, for people: a few lines, then a table of the columns with their pictures, then what is
/// guessed. `isUtf8` says whether the pictures may be braille. Of a very wide table the first columns are
/// shown.
QUILLMERE_API std::string inspectionAsText(const Inspection& found, bool isUtf8);

} // namespace Quillmere::Host
