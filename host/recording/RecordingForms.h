// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/RecordingReader.h"

#include <memory>
#include <string>

namespace Quillmere::Host {

/// Opens a recording, `-` for standard input, with the reader of its form: what its name and its first bytes
/// say, and a CSV where they say nothing. What was looked at of a pipe is kept for the reader. Raises
/// `RecordingException`.
QUILLMERE_API std::unique_ptr<RecordingReader> openRecording(const std::string& path);

} // namespace Quillmere::Host
