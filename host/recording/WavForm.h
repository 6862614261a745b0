// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/RecordingFile.h"
#include "host/recording/RecordingReader.h"

#include <memory>

namespace Quillmere::Host {

/// Opens a WAV file: a column for each channel, `1` and so on, a row for each point of time, and the rate
/// that it says. Whole numbers become what they are of the largest, from -1 to below 1; floats stay as they
/// are. Raises `RecordingException`.
QUILLMERE_API std::unique_ptr<RecordingReader> openWav(std::unique_ptr<RecordingFile> file);

} // namespace Quillmere::Host
