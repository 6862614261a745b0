// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/DataChoice.h"
#include "host/recording/ReadingWishes.h"
#include "host/recording/RecordingReader.h"

#include <memory>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// The forms of recordings that this library was built to read, as users name them.
QUILLMERE_API const std::vector<std::string>& getRecordingForms();

/// Opens a recording, `-` for standard input, with the reader of its form: what its name and its first bytes
/// say, and a CSV where they say nothing; one that is compressed is unpacked while it is read. `wishes` are
/// what the graph says of it; a form takes those that it has a use for. What was looked at of a pipe is kept
/// for the reader. Raises `RecordingException`.
QUILLMERE_API std::unique_ptr<RecordingReader> openRecording(const std::string& path,
                                                             const ReadingWishes& wishes = {});
/// The same, where nothing but the choice in a file is wished.
QUILLMERE_API std::unique_ptr<RecordingReader> openRecording(const std::string& path, const DataWish& wish);

} // namespace Quillmere::Host
