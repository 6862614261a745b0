// SPDX-License-Identifier: MIT
#include "plugin/EntryPoints.h"

#include "plugin/PluginEntry.h"
#include "plugin/VelmarindPlugin.h"

QUILLMERE_PLUGIN_CLASS(VelmarindPlugin)
