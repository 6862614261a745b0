// SPDX-License-Identifier: MIT
#include "everyday/Affine.h"
#include "everyday/Columns.h"
#include "everyday/Durations.h"
#include "everyday/Logic.h"
#include "everyday/MovingStatistics.h"
#include "everyday/Norm.h"
#include "plugin/PluginEntry.h"

// In the order of the alphabet.
QUILLMERE_PLUGIN("VelmarindEveryday", VELMARIND_EVERYDAY_VERSION, Affine, Columns, Durations, Logic,
                 MovingStatistics, Norm)
