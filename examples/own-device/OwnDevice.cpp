// SPDX-License-Identifier: MIT
#include "DeviceSource.h"

#include "plugin/PluginEntry.h"

QUILLMERE_PLUGIN("OwnDevice", "1.0.0", DeviceSource)
