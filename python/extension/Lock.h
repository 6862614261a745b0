// SPDX-License-Identifier: MIT
#pragma once

#include "python/extension/Catalogue.h"

#include <pybind11/pybind11.h>

#include <mutex>

namespace Python {

/// Lets other threads of the interpreter run for as long as it lives.
///
/// When the interpreter ends meanwhile, its lock isn't to be had any more: the thread, which nobody waits
/// for, sleeps then instead of being ended in the midst of C++.
class Unlocked {
public:
    Unlocked() : state(PyEval_SaveThread()) {}
    ~Unlocked();
    Unlocked(const Unlocked&) = delete;
    Unlocked& operator=(const Unlocked&) = delete;

private:
    PyThreadState* const state;
};

/// The calling thread is the one that ends the interpreter, and has its lock to the end.
void noteEndingThread();

/// The setup mutex, for which is waited without the interpreter's lock, and that lock again.
class Setup {
public:
    Setup() : guard(getSetupMutex(), std::try_to_lock) {
        if (guard.owns_lock()) return;
        const Unlocked unlocked;
        guard.lock();
    }

private:
    std::unique_lock<std::mutex> guard;
};

/// Runs `action` as setup, without the interpreter's lock.
template <class Action>
auto unlockedSetup(Action action) {
    const Unlocked unlocked;
    const std::lock_guard guard(getSetupMutex());
    return action();
}

} // namespace Python
