// SPDX-License-Identifier: MIT
#include "host/QuillmereHost.h"

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

        Job job = Job::fromFile(argv[1], catalogue);
        for (const Warning& doubt : job.check().getSortedWarnings())
            std::cerr << doubt.getText() << "\n";
        const RunOutcome outcome = job.run(); // raises everything that is wrong with the graph
        for (const Warning& warning : outcome.warnings)
            std::cerr << warning.getText() << "\n";
        std::cout << outcome.progress.rows << " rows\n";
        if (outcome.getIsWhole()) return 0;
        std::cerr << outcome.failure << "\n";
        return 1;
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << "\n";
        return 1;
    }
}
