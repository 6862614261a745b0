// SPDX-License-Identifier: MIT
#include "DeviceSource.h"

#include "host/QuillmereHost.h"

#include <chrono>
#include <iostream>

using namespace Quillmere::Host;

/// own-device-live PLUGIN: runs a graph live that smooths what a device gives for half a second, and looks at
/// the results while they come.
int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: own-device-live PLUGIN\n";
        return 2;
    }
    try {
        HostCatalogue catalogue;
        catalogue.load(argv[1]);
        catalogue.add(DeviceSource::kTypeName,
                      [](const std::string& name) { return new DeviceSource(name); });
        MemoryEnds ends;
        ends.addTo(catalogue);

        GraphDescription graph;
        graph.addBlock("device", DeviceSource::kTypeName).set("seconds", valueOf(0.5));
        graph.addBlock("smooth", "FilterButterworth").set("RelativeCutOffFreq", valueOf(0.05));
        graph.addBlock("result", "MemorySink");
        graph.connect("device", "smooth.in");
        graph.connect("smooth", "result.accel");

        LiveRun run{Job(graph, catalogue)};
        run.start();
        std::size_t seen = 0;
        for (bool isOver = false; !isOver;) {
            isOver = run.waitFor(std::chrono::milliseconds(100));
            const TimedSamples more = ends.read("result", "accel", seen);
            seen += more.times.size();
            if (!more.times.empty()) std::cout << seen << " samples, " << more.times.back() << " s\n";
        }
        run.wait(); // raises what has failed
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << "\n";
        return 1;
    }
    return 0;
}
