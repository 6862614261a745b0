// SPDX-License-Identifier: MIT
#include "framework/core/Filter.h"

#include "framework/core/LayoutManager.h"

namespace Quillmere::Core {

Filter::Filter(const std::string& name, bool) : PinManager(name), PropertyBagOwner(this) {}

Filter::~Filter() {
    if (LayoutManager* const layout = getManager()) layout->remove(*this);
}

void Filter::setManager(LayoutManager* const layout) {
    storeManager(layout);
}

} // namespace Quillmere::Core
