// SPDX-License-Identifier: MIT
#pragma once

#include "host/recording/CsvDialect.h"
#include "host/recording/RecordingProfile.h"

#include <string>
#include <vector>

namespace Quillmere::Host {

/// What a table was taken for and by what, for people: each a part of a sentence. `profile` is null for none;
/// `isNamed` says that somebody named it, or named none. [any]
std::vector<std::string> describeForm(const CsvDialect& dialect, const RecordingProfile* profile,
                                      bool isNamed);

} // namespace Quillmere::Host
