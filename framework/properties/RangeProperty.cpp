// SPDX-License-Identifier: MIT
#include "framework/properties/RangeProperty.h"

namespace Quillmere::Core {

template class RangeProperty<int>;
template class RangeProperty<double>;

} // namespace Quillmere::Core
