// SPDX-License-Identifier: MIT
#include "framework/core/Factory.h"

namespace Quillmere::Core {

AbstractFilterFactory::~AbstractFilterFactory() = default;

void AbstractFilterFactory::destroy(Filter* filter) {
    delete filter;
}

} // namespace Quillmere::Core
