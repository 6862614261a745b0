// SPDX-License-Identifier: MIT
#include "tests/support/Allocations.h"

#include <cerrno>
#include <cstddef>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define COUNTS_THROUGH_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define COUNTS_THROUGH_SANITIZER 1
#endif
#endif

namespace {
// Initial-exec and constant-initialised: the first touch must not allocate.
constinit thread_local std::uint64_t allocations __attribute__((tls_model("initial-exec"))) = 0;
constexpr std::uint64_t kAll = UINT64_MAX;
constinit thread_local std::uint64_t granted __attribute__((tls_model("initial-exec"))) = kAll;
} // namespace

#ifdef COUNTS_THROUGH_SANITIZER

extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*mallocHook)(const volatile void*,
                                                                            std::size_t),
                                                         void (*freeHook)(const volatile void*));

namespace {
const int hooked = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t) { ++allocations; }, [](const volatile void*) {});
} // namespace

#else

// The C library's own allocator, which the definitions below stand in front of.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* pointer, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* pointer);

/// Counts an allocation; false for one that has to be refused.
static bool count() {
    ++allocations;
    if (granted == kAll) return true;
    if (granted > 0) {
        --granted;
        return true;
    }
    errno = ENOMEM;
    return false;
}

void* malloc(std::size_t size) {
    if (!count()) return nullptr;
    return __libc_malloc(size);
}
void* calloc(std::size_t number, std::size_t size) {
    if (!count()) return nullptr;
    return __libc_calloc(number, size);
}
void* realloc(void* pointer, std::size_t size) {
    if (!count()) return nullptr;
    return __libc_realloc(pointer, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
    if (!count()) return nullptr;
    return __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    if (!count()) return nullptr;
    return __libc_memalign(alignment, size);
}
int posix_memalign(void** out, std::size_t alignment, std::size_t size) {
    if (!count()) return ENOMEM;
    *out = __libc_memalign(alignment, size);
    return *out != nullptr ? 0 : ENOMEM;
}
void free(void* pointer) {
    __libc_free(pointer);
}
}

#endif

namespace Support {

AllocationCounter::AllocationCounter() : before(allocations) {}

std::uint64_t AllocationCounter::count() const {
    return allocations - before;
}

MemoryShortage::MemoryShortage(std::uint64_t grantedAllocations) {
    granted = grantedAllocations;
}

MemoryShortage::~MemoryShortage() {
    granted = kAll;
}

bool MemoryShortage::getIsPossible() {
#ifdef COUNTS_THROUGH_SANITIZER
    return false;
#else
    return true;
#endif
}

} // namespace Support
