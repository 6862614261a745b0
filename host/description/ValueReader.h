// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/text/Complaint.h"
#include "host/description/Value.h"

#include <cstddef>
#include <optional>
#include <string>

namespace Quillmere::Host {

// What is read may be anything: a slip, a wrong file, a text made to do harm. These bounds keep every answer
// within about a second and some hundred megabytes; none is near what a graph of ten thousand blocks needs.
constexpr std::size_t kLargestValueFile = std::size_t{1} << 24; ///< Bytes.
constexpr std::size_t kMostValues = 1'000'000;                  ///< With references unfolded.
constexpr int kDeepestValue = 100;                              ///< Lists and maps in each other.

/// Reads a YAML or JSON file. What isn't either, what is too large, nested too deep or holds itself, a
/// recording, a second document and a key given twice are complaints; a file that can't be understood at all
/// gives nothing.
QUILLMERE_API std::optional<Value> readValueFile(const std::string& path, Complaints& complaints);

/// The same for a text; `name` stands for the file in complaints. With `hasLines` false, complaints name no
/// line.
QUILLMERE_API std::optional<Value> readValueText(const std::string& text, const std::string& name,
                                                 bool hasLines, Complaints& complaints);

} // namespace Quillmere::Host
