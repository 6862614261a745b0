// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>

namespace Quillmere::Core {

/// A count that one thread at a time raises and everybody reads: a plain addition, no locked one. Who raises
/// it may change under a guard.
class Tally {
public:
    void add(std::uint64_t amount) {
        count.store(count.load(std::memory_order_relaxed) + amount, std::memory_order_relaxed);
    }
    /// [any]
    std::uint64_t get() const { return count.load(std::memory_order_relaxed); }

private:
    std::atomic<std::uint64_t> count{0};
};

/// A count whose lock is the gate: raised in a block's steps, read under a guard. What a sample's road counts
/// is of this kind, since it costs one addition in memory.
class GatedTally {
public:
    void add(std::uint64_t amount) { count += amount; }
    std::uint64_t get() const { return count; }

private:
    std::uint64_t count = 0;
};

/// What the loop that steps a block knows of its steps.
struct StepTally {
    Tally steps;         ///< calls of `process`
    Tally measuredSteps; ///< those of them whose time was taken
    Tally nanoseconds;   ///< spent in the measured ones
};

/// What became of the samples of one link.
struct LinkCounts {
    std::uint64_t received = 0; ///< sent to the input
    std::uint64_t taken = 0;    ///< used up by the block
    std::uint32_t waiting = 0;

    /// Overwritten in a full buffer, or thrown away when the link or its buffer changed.
    std::uint64_t getLost() const { return received - taken - waiting; }
};

} // namespace Quillmere::Core
