// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace Support {

/// Counts the heap allocations that this thread makes while the object lives, by whatever road: `malloc` itself is
/// counted. Under a sanitizer the sanitizer's own hook counts.
class AllocationCounter {
public:
    AllocationCounter();
    std::uint64_t count() const;

private:
    std::uint64_t before;
};

} // namespace Support
