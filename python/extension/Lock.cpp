// SPDX-License-Identifier: MIT
#include "python/extension/Lock.h"

#include <unistd.h>

#include <atomic>
#include <thread>

namespace Python {

namespace {
std::atomic<std::thread::id> endingThread; ///< Nobody's until the interpreter ends.
} // namespace

void noteEndingThread() {
    endingThread = std::this_thread::get_id();
}

Unlocked::~Unlocked() {
#if PY_VERSION_HEX >= 0x030D0000
    const bool isEnding = Py_IsFinalizing() != 0;
#else
    const bool isEnding = _Py_IsFinalizing() != 0;
#endif
    while (isEnding && endingThread.load() != std::this_thread::get_id())
        ::pause();
    PyEval_RestoreThread(state);
}

} // namespace Python
