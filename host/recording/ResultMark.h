// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/ResultPath.h"

#include <string>

namespace Quillmere::Host {

/// The mark by which runs know their own files again: an extended attribute, `user.quillmere.result`. While a
/// run writes, it holds `open`; when the run is done with the file, its size and the second of its last
/// change, so that a file which somebody has worked on since is no run's any more. Not all file systems have
/// such attributes, and few ways to copy a file take them along, so a file without one is known by what
/// stands in it: by its begin and, of pictures and pages, by a `ContentSeal`.
namespace ResultMark {

enum class Maker { Run, ChangedSince, Unknown };

/// Where marks can't be set, nothing happens.
void open(int file);
void close(int file);

/// Requires: `file` can be read.
Maker findMaker(int file, const ResultOptions& options);

/// Whether a file carries the mark of a run, and nobody has worked on it since. [any]
QUILLMERE_API bool getIsOfRun(const std::string& path);

} // namespace ResultMark

} // namespace Quillmere::Host
