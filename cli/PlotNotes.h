// SPDX-License-Identifier: MIT
#pragma once

#include "host/picture/Picture.h"
#include "host/recording/RecordingReader.h"
#include "host/text/Complaint.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Cli {

/// What was found out about a recording, and what of it is left out or drawn elsewhere, a sentence each.
/// Requires: it was read to its end.
std::vector<std::string> notesOf(const Quillmere::Host::CurveTable& table,
                                 const Quillmere::Host::RecordingReader& reader);

/// Why a picture of so many rows is empty.
Quillmere::Host::Complaint nothingDrawn(const Quillmere::Host::Picture& picture,
                                        const Quillmere::Host::PictureWishes& wishes, std::uint64_t rows);

/// Of the spectra that are wished at single times those that aren't what was meant, a line each.
std::vector<std::string> missedSpectra(const Quillmere::Host::Picture& picture,
                                       const Quillmere::Host::PictureWishes& wishes);

} // namespace Cli
