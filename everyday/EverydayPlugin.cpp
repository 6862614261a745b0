// SPDX-License-Identifier: MIT
#include "everyday/Affine.h"
#include "everyday/Columns.h"
#include "everyday/Durations.h"
#include "everyday/Join.h"
#include "everyday/Logic.h"
#include "everyday/MovingStatistics.h"
#include "everyday/Norm.h"
#include "everyday/Peaks.h"
#include "everyday/Resample.h"
#include "everyday/Unframe.h"
#include "plugin/PluginEntry.h"

// In the order of the alphabet.
QUILLMERE_PLUGIN("VelmarindEveryday", VELMARIND_EVERYDAY_VERSION, Affine, Columns, Durations, Join, Logic,
                 MovingStatistics, Norm, Peaks, Resample, Unframe)
