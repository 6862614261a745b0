// SPDX-License-Identifier: MIT
#include "host/QuillmereHost.h"

#include <iostream>

using namespace Quillmere::Host;

/// memory-run [PLUGIN]: sends a matrix through a graph, a sample each row, and prints what came out.
int main(int argc, char** argv) {
    HostCatalogue catalogue;
    catalogue.load(argc > 1 ? argv[1] : "libVelmarind.so");
    MemoryEnds ends;
    ends.addTo(catalogue);
    const Quillmere::Core::MatrixXd wrist{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}};
    ends.setRecording("wrist", {.pins = {{"accel", SampleSeries::ofRows(wrist)}}, .rate = 100.0});
    GraphDescription graph;
    graph.addBlock("wrist", "MemorySource");
    graph.addBlock("twice", "FilterGain").set("Gain", valueOf(2));
    graph.addBlock("result", "MemorySink");
    graph.connect("wrist.accel", "twice");
    graph.connect("twice", "result.accel");
    const RunOutcome outcome = Job(graph, catalogue).run();
    const TimedSamples result = ends.read("result", "accel");
    for (std::size_t i = 0; i < result.times.size(); ++i)
        std::cout << result.times[i] << " s: " << result.samples.getSample(i) << "\n";
    std::cout << Json::outcome(outcome) << "\n";
    return outcome.getIsWhole() ? 0 : 1;
}
