// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <new>

namespace Support {

/// Counts the heap allocations that this thread makes while the object lives, by whatever road: `malloc`
/// itself is counted. Under a sanitizer the sanitizer's own hook counts.
class AllocationCounter {
public:
    AllocationCounter();
    std::uint64_t count() const;

private:
    std::uint64_t before;
};

/// Refuses this thread's heap allocations while the object lives, from the first behind those that are
/// granted on, as a machine without memory does. A sanitizer's allocator can't be made to.
class MemoryShortage {
public:
    explicit MemoryShortage(std::uint64_t grantedAllocations);
    ~MemoryShortage();
    MemoryShortage(const MemoryShortage&) = delete;
    MemoryShortage& operator=(const MemoryShortage&) = delete;

    static bool getIsPossible();
};

/// Calls `action`, which gets the number of allocations that it may grant, with 0, 1, 2 and so on until it
/// says by true that they were enough. Returns how often they were not.
template <class Action>
std::uint64_t withEveryShortage(Action action) {
    std::uint64_t granted = 0;
    while (!action(granted))
        ++granted;
    return granted;
}

/// Whether `action` gets through on so many allocations; false if it raised `std::bad_alloc`.
template <class Action>
bool succeedsWith(std::uint64_t grantedAllocations, Action action) {
    const MemoryShortage shortage(grantedAllocations);
    try {
        action();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace Support
