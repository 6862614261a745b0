// SPDX-License-Identifier: MIT
#include "tests/host/kit/Plugins.h"

namespace Support {

const char* everydayPlugin() {
    return EVERYDAY_PLUGIN;
}

} // namespace Support
