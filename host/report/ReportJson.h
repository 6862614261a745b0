// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/graph/Graph.h"
#include "host/plugins/BlockCatalogue.h"
#include "host/report/ReportSignal.h"
#include "host/text/Json.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// What a report's page reads; pages/report/model.ts has the same members as types.
namespace Quillmere::Host::Json {

/// Numbers that stand in a page beside its JSON, so that a browser decodes them only when they are shown:
/// each blob is a script element that isn't run, with `f4` or `f8` and base64 in it, little endian.
class Blobs {
public:
    /// The id of the element; the same numbers are kept once.
    std::string add(const std::vector<double>& values, bool isExact);
    /// All elements.
    const std::string& getHtml() const { return html; }

private:
    std::map<std::string, std::string> ids; ///< By what is in them.
    std::string html;
    std::size_t count = 0;
};

/// What the graph is: blocks with their settings as they hold now, connections, timeline, parameters. [setup]
QUILLMERE_API Text graph(const Graph& graph);

/// The versions of the program, of the host and of the plug-ins that the graph has blocks of. [setup]
QUILLMERE_API Text versions(const Graph& graph, const std::string& program);

/// One signal; its numbers go into `blobs`. `rounds` are those which most signals have a sample in. [any]
Text signal(const ReportSignal& drawn, std::uint64_t rounds, Blobs& blobs);

/// All signals; their numbers go into `blobs`. `rounds` are those which most of them have a sample in. [any]
Text signals(const std::vector<const ReportSignal*>& signals, std::uint64_t rounds, Blobs& blobs);

} // namespace Quillmere::Host::Json
