// SPDX-License-Identifier: MIT
#include "host/graph/Graph.h"
#include "host/graph/GraphPlugins.h"
#include "host/run/OfflineRunner.h"
#include "host/recording/HostCatalogue.h"

#include <exception>
#include <iostream>

/// own-host GRAPH PLUGIN...: runs a graph file over its recordings with blocks of the plug-ins.
int main(int argc, char** argv) {
    using namespace Quillmere::Host;
    if (argc < 3) {
        std::cerr << "usage: own-host GRAPH PLUGIN...\n";
        return 2;
    }
    try {
        HostCatalogue catalogue;
        for (int i = 2; i < argc; ++i)
            catalogue.load(argv[i]);

        Complaints complaints; // everything that is wrong with the graph, gathered
        const GraphDescription description = GraphDescription::read(argv[1], {}, complaints);
        loadPlugins(description, catalogue, complaints); // those that the graph names
        Graph graph(description, catalogue, complaints);
        graph.openSources(complaints);
        complaints.raise();
        graph.openSinks();

        OfflineRunner runner(graph);
        runner.run({});
        std::cout << runner.getProgress().rows << " rows\n";
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << "\n";
        return 1;
    }
    return 0;
}
