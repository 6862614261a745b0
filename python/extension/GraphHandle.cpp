// SPDX-License-Identifier: MIT
#include "python/extension/GraphHandle.h"

#include "python/extension/Lock.h"

#include <utility>

namespace Python {

using namespace Quillmere::Host;

GuardedJob::GuardedJob(const GraphHandle& graph, RunEnds& ends, JobOptions options) {
    const Setup setup;
    Complaints complaints = graph.reading;
    const GraphDescription description = ends.applyTo(graph.description, complaints);
    job.emplace(description, ends.makeCatalogue(), std::move(options), complaints);
}

GuardedJob::~GuardedJob() {
    const Setup setup;
    job.reset();
}

Job GuardedJob::take() {
    Job taken = std::move(*job);
    job.reset();
    return taken;
}

} // namespace Python
