// SPDX-License-Identifier: MIT
#pragma once

/// Everything that the author of a plug-in or of a host needs of the framework, in one line.

#include "framework/core/CommandProperty.h"
#include "framework/core/FlowManager.h"
#include "framework/core/LayoutManager.h"
#include "framework/core/Version.h"
#include "framework/properties/EnumProperty.h"
#include "framework/properties/RangeProperty.h"
#include "framework/properties/ValueProperty.h"
#include "framework/transport/InputPin.h"
#include "framework/transport/OutputPin.h"
#include "framework/transport/RowStepper.h"
