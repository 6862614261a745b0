// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractOutputPin.h"
#include "framework/core/Api.h"

#include <array>
#include <span>
#include <string_view>

namespace Quillmere::Host {

/// What the host knows of a block type by its name, where no block can be asked: for warnings before a run,
/// and for names of columns. Of somebody else's types it knows nothing, and neither warns nor names. Tests
/// hold every word against living blocks. Which settings contradict each other stands in `SettingRules`.
struct QUILLMERE_API KnownType {
    const char* name = "";
    /// It passes samples of every shape on in the shape in which they came.
    bool keepsShape = false;
    // It takes each sample for one whole signal:
    bool isWindow = false;
    bool isTransform = false;
    /// It reckons with the time stamps of what comes to its main input.
    bool readsTimes = false;
    /// It sends by times of its own, and in one step as many samples as belong there.
    bool makesTimes = false;
    /// Counts on the step between the first two of them for as long as it runs.
    bool trustsFirstStep = false;
    /// The command without which it does nothing.
    const char* startedBy = nullptr;
    /// Outputs whose time stamps are the wall clock's, by the block's rules; null beyond the last.
    std::array<const char*, 2> wallClockOutputs = {};

    bool getStampsWallClock(std::string_view output) const;
};

/// All of them, by name.
QUILLMERE_API std::span<const KnownType> getKnownTypes();
/// Of a type of which nothing is known, just that.
QUILLMERE_API const KnownType& getKnownType(std::string_view name);

/// Whether the block of that output makes times; null is nobody's.
QUILLMERE_API bool getMakesTimes(const Core::AbstractOutputPin* output);

} // namespace Quillmere::Host
