// SPDX-License-Identifier: MIT
// Stands in for the framework's own header of that name where a benchmark builds the framework a second time:
// the same classes, and nothing is counted.
#pragma once

#include <cstdint>

namespace Quillmere::Core {

class Tally {
public:
    void add(std::uint64_t) {}
    std::uint64_t get() const { return 0; }
};

class GatedTally {
public:
    void add(std::uint64_t) {}
    std::uint64_t get() const { return 0; }
};

struct StepTally {
    Tally steps;
    Tally measuredSteps;
    Tally nanoseconds;
};

struct LinkCounts {
    std::uint64_t received = 0;
    std::uint64_t taken = 0;
    std::uint32_t waiting = 0;

    std::uint64_t getLost() const { return received - taken - waiting; }
};

} // namespace Quillmere::Core
