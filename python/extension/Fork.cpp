// SPDX-License-Identifier: MIT
#include "python/extension/Fork.h"

#include "python/extension/Catalogue.h"
#include "python/extension/Interruptible.h"

#include <pthread.h>

#include <mutex>
#include <new>

namespace Python {

namespace {
/// Whoever held it has no thread here, and would never give it back.
void inChild() {
    new (&getSetupMutex()) std::mutex;
    forgetAllWork();
}
} // namespace

void watchForks() {
    (void)::pthread_atfork(nullptr, nullptr, &inChild);
}

} // namespace Python
