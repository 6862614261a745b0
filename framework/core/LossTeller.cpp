// SPDX-License-Identifier: MIT
#include "framework/core/LossTeller.h"

namespace Quillmere::Core {

LossTeller::~LossTeller() = default;

} // namespace Quillmere::Core
