// SPDX-License-Identifier: MIT
#include "FilterAbsolute.h"
#include "FilterRunningMean.h"

#include "plugin/PluginEntry.h"

// The three functions that a host looks for, and the list of blocks that it finds.
QUILLMERE_PLUGIN("OwnBlock", "1.0.0", FilterAbsolute, FilterRunningMean)
