// SPDX-License-Identifier: MIT
#pragma once

// Everything that a program needs to run graphs, and a plug-in to bring sources and sinks of its own. What is
// installed of the host is this and what it includes (host/InstalledHeaders.txt).

#include "host/control/ControlConsole.h"
#include "host/control/ControlServer.h"
#include "host/description/GraphDescription.h"
#include "host/ends/FileEnd.h"
#include "host/ends/MemoryEnds.h"
#include "host/ends/RecordedSource.h"
#include "host/ends/RecordingException.h"
#include "host/ends/ResultEnd.h"
#include "host/ends/Sink.h"
#include "host/ends/Source.h"
#include "host/ends/WakingSource.h"
#include "host/graph/BlockDescription.h"
#include "host/graph/BlockJson.h"
#include "host/graph/BlockPage.h"
#include "host/graph/Graph.h"
#include "host/live/ControlException.h"
#include "host/live/LiveRun.h"
#include "host/live/SettingJson.h"
#include "host/plugins/BlockCatalogue.h"
#include "host/plugins/PluginPlaces.h"
#include "host/recording/HostCatalogue.h"
#include "host/report/Report.h"
#include "host/response/FrequencyResponse.h"
#include "host/response/GraphBlock.h"
#include "host/response/ResponseReport.h"
#include "host/run/Job.h"
#include "host/run/RunJson.h"
#include "host/text/ComplaintJson.h"
