// SPDX-License-Identifier: MIT
#include "framework/core/FlowManager.h"

namespace Quillmere::Core {

FlowManager& FlowManager::instance() {
    static FlowManager manager;
    return manager;
}

} // namespace Quillmere::Core
