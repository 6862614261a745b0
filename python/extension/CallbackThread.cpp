// SPDX-License-Identifier: MIT
#include "python/extension/CallbackThread.h"

#include "python/extension/Values.h"

#include <utility>

namespace py = pybind11;

namespace Python {

using namespace Quillmere::Host;

namespace {
/// With the interpreter's lock; what the callback raises is nobody's else.
void call(const Subscription& subscription, const SettingState& state) {
    const py::object callback = subscription.callback;
    if (!callback) return;
    try {
        callback(settingOf(state));
    } catch (py::error_already_set& error) {
        error.restore();
        PyErr_WriteUnraisable(callback.ptr());
    } catch (...) {
        PyErr_NoMemory();
        PyErr_WriteUnraisable(callback.ptr());
    }
}
} // namespace

CallbackThread::~CallbackThread() {
    if (thread.joinable()) thread.detach(); // a callback has ended what it was called by
}

void CallbackThread::start() {
    const std::lock_guard lock(mutex);
    if (!thread.joinable() && !isClosing) thread = std::thread([self = shared_from_this()] { self->run(); });
}

void CallbackThread::tell(const std::shared_ptr<Subscription>& subscription, const SettingState& state) {
    const std::lock_guard lock(mutex);
    if (isClosing) return;
    if (changes.size() == kMostWaiting) {
        ++changes.front().subscription->missed;
        changes.pop_front();
    }
    changes.push_back({subscription, state});
    hasChanged.notify_all();
}

void CallbackThread::run() {
    std::unique_lock lock(mutex);
    for (;;) {
        hasChanged.wait(lock, [&] { return isClosing || !changes.empty(); });
        if (isClosing) return;
        const Change change = std::move(changes.front());
        changes.pop_front();
        current = change.subscription.get();
        lock.unlock();
        {
            const py::gil_scoped_acquire locked;
            call(*change.subscription, change.state);
        }
        lock.lock();
        current = nullptr;
        hasChanged.notify_all();
    }
}

void CallbackThread::waitFor(const Subscription& subscription) {
    std::unique_lock lock(mutex);
    if (thread.get_id() == std::this_thread::get_id()) return;
    hasChanged.wait(lock, [&] { return current != &subscription; });
}

void CallbackThread::close() {
    {
        const std::lock_guard lock(mutex);
        isClosing = true;
        changes.clear();
        hasChanged.notify_all();
    }
    if (thread.joinable() && thread.get_id() != std::this_thread::get_id()) thread.join();
}

py::dict settingOf(const SettingState& state) {
    PropertyDescription property;
    property.kind = state.kind;
    property.value = state.held;
    const bool isChoice = state.kind == PropertyDescription::Kind::Choice;
    py::dict told;
    told["name"] = textOf(state.name);
    told["kind"] = nameOf(state.kind);
    told["value"] = isChoice ? py::object(textOf(state.value)) : heldOf(property);
    told["text"] = textOf(state.value);
    told["expected"] = textOf(state.expected);
    told["writable"] = state.isWritable;
    return told;
}

} // namespace Python
