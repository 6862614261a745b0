// SPDX-License-Identifier: MIT
#include "framework/transport/RowStepper.h"

namespace Quillmere::Core {

RowStepper::~RowStepper() = default;

} // namespace Quillmere::Core
