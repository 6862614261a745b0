// SPDX-License-Identifier: MIT
#pragma once

/// The names that blocks are written with. Blocks live in the global namespace, as their type names do.

#include "framework/Quillmere.h"

using Quillmere::Core::CommandProperty;
using Quillmere::Core::copySample;
using Quillmere::Core::EnumEnumProperty;
using Quillmere::Core::EnumProperty;
using Quillmere::Core::Filter;
using Quillmere::Core::InputPin;
using Quillmere::Core::MatrixXd;
using Quillmere::Core::OutputPin;
using Quillmere::Core::RangeProperty;
using Quillmere::Core::resizeSample;
using Quillmere::Core::RowStepper;
using Quillmere::Core::ValueProperty;

/// Whether a control sample asks for what its pin stands for: any first value but 0.0, not-a-number included;
/// an empty sample never asks. [any]
inline bool isSet(const MatrixXd& control) {
    return control.size() > 0 && control(0) != 0.0;
}
