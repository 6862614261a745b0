// SPDX-License-Identifier: MIT
#include "framework/properties/EnumProperty.h"

namespace Quillmere::Core {

template class EnumProperty<std::string>;

} // namespace Quillmere::Core
