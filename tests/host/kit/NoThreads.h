// SPDX-License-Identifier: MIT
#pragma once

#include <pthread.h>

#include <cstddef>

namespace Support {

/// As long as it lives no thread can be made: each would want a stack that there is no room for.
class NoThreads {
public:
    NoThreads() {
        ::pthread_getattr_default_np(&former);
        pthread_attr_t vast;
        ::pthread_getattr_default_np(&vast);
        ::pthread_attr_setstacksize(&vast, std::size_t{1} << 47);
        ::pthread_setattr_default_np(&vast);
        ::pthread_attr_destroy(&vast);
    }
    ~NoThreads() {
        ::pthread_setattr_default_np(&former);
        ::pthread_attr_destroy(&former);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

private:
    pthread_attr_t former;
};

} // namespace Support
