// SPDX-License-Identifier: MIT
#include "python/extension/Bindings.h"

#include "host/run/RunJson.h"
#include "host/text/Complaint.h"
#include "python/extension/Arrays.h"
#include "python/extension/Errors.h"
#include "python/extension/Interruptible.h"
#include "python/extension/LiveHandle.h"
#include "python/extension/Lock.h"
#include "python/extension/RunConversion.h"
#include "python/extension/Values.h"

#include <pybind11/stl.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace py = pybind11;

namespace Python {

using namespace Quillmere::Host;

namespace {
/// What Python has of a subscription.
struct WatchHandle {
    std::weak_ptr<LiveCore> core;
    std::shared_ptr<Subscription> subscription;
    pid_t process = ::getpid();

    void close() const {
        if (::getpid() != process) return; // a forked child hears of nothing
        if (const auto alive = core.lock()) alive->close(*subscription);
    }
};

/// Runs `action` without the interpreter's lock: it may wait for a step that is under way.
template <class Action>
auto unlocked(Action action) {
    const Unlocked free;
    return action();
}

template <class Thing>
const std::shared_ptr<Thing>& findEnd(const std::map<std::string, std::shared_ptr<Thing>>& things,
                                      const std::string& id, const char* what, const char* otherwise) {
    const auto found = things.find(id);
    if (found != things.end()) return found->second;
    std::vector<std::string> known;
    for (const auto& [name, thing] : things)
        known.push_back(name);
    throw HostException(Complaint::unknown({}, what + (" '" + id + "'"), id, known, "one of ", otherwise));
}

const std::shared_ptr<Feed>& findFeed(LiveCore& core, const std::string& id) {
    return findEnd(core.getEnds().getFeeds(), id, "the fed source", "a run that was started with feeds");
}

const std::shared_ptr<TableResult>& findTable(LiveCore& core, const std::string& id) {
    return findEnd(core.getEnds().getTables(), id, "the kept sink", "a run whose sinks are kept");
}

void feed(const LiveHandle& self, const std::string& source, py::handle rows, py::handle t) {
    LiveCore& core = self.get();
    Feed& target = *findFeed(core, source);
    const TakenSamples taken = TakenSamples::of(rows, "the rows for '" + source + "'");
    if (taken.rows.rows != 1 || static_cast<std::size_t>(taken.rows.columns) != target.getColumns())
        refuse("rows of " + std::to_string(taken.rows.rows * taken.rows.columns) + " columns for '" + source +
                   "'",
               std::to_string(target.getColumns()) + ", those of its pins beside each other");
    py::object owner;
    const double* times = nullptr;
    std::optional<double> first;
    if (t && !t.is_none()) {
        if (py::hasattr(t, "__len__")) {
            const py::array_t<double> each = takeNumbers(t, "t");
            if (static_cast<std::size_t>(each.size()) != taken.rows.count)
                refuse(std::to_string(each.size()) + " times for " + std::to_string(taken.rows.count) +
                           " rows",
                       "a time for each row");
            times = each.data();
            owner = each;
        } else {
            first = t.cast<double>();
        }
    }
    const bool isOver = unlocked([&] {
        return core.getRun().waitFor(std::chrono::milliseconds(0)) ||
               !target.give(taken.rows.data, taken.rows.count, times, first);
    });
    if (isOver)
        refuse("rows for '" + source + "', which takes no more",
               "a run that goes on, and a feed without its end");
}

bool waitRows(const LiveHandle& self, const std::string& sink, std::optional<double> timeout) {
    using Clock = std::chrono::steady_clock;
    LiveCore& core = self.get();
    const std::shared_ptr<TableResult> table = findTable(core, sink);
    const auto begin = Clock::now();
    for (;;) {
        const double passed = std::chrono::duration<double>(Clock::now() - begin).count();
        const double left = timeout ? std::max(0.0, *timeout - passed) : 0.05;
        const auto [hasRows, isOver] = unlocked([&] {
            const bool ended = core.getRun().waitFor(std::chrono::milliseconds(0));
            return std::pair(table->waitFor(ended ? 0.0 : std::min(0.05, left)), ended);
        });
        if (hasRows) return true;
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        if (isOver || (timeout && passed >= *timeout)) return false;
    }
}

py::object outcomeOf(const LiveHandle& self) {
    LiveCore& core = self.get();
    const auto text = unlocked([&]() -> std::optional<std::string> {
        if (!core.getRun().waitFor(std::chrono::milliseconds(0))) return std::nullopt;
        return Json::outcome(core.getRun().getOutcome());
    });
    if (!text)
        refuse("no outcome yet, since the run goes on", "a run that has ended; wait() or stop() come first");
    return fromJson(*text);
}

void bindSettings(py::class_<LiveHandle>& run) {
    run.def(
           "list",
           [](const LiveHandle& self, const std::string& pattern) {
               LiveRun& live = self.get().getRun();
               const auto states = unlocked([&] { return live.getSettings().list(pattern); });
               py::list told;
               for (const SettingState& state : states)
                   told.append(settingOf(state));
               return told;
           },
           py::arg("pattern") = "*")
        .def(
            "get",
            [](const LiveHandle& self, const std::string& name) -> py::object {
                LiveRun& live = self.get().getRun();
                const auto state = unlocked([&] { return live.getSettings().read(name); });
                return settingOf(state)["value"];
            },
            py::arg("name"))
        .def(
            "set",
            [](const LiveHandle& self, const std::string& name, py::handle value) {
                LiveRun& live = self.get().getRun();
                const std::string text = flowText(toValue(value, "the property '" + name + "'"));
                unlocked([&] { live.getSettings().write(name, text); });
            },
            py::arg("name"), py::arg("value"))
        .def(
            "fire",
            [](const LiveHandle& self, const std::string& name) {
                LiveRun& live = self.get().getRun();
                unlocked([&] { live.getSettings().fire(name); });
            },
            py::arg("name"))
        .def(
            "observe",
            [](const LiveHandle& self, const std::string& pattern, py::object callback) {
                LiveCore& core = self.get();
                if (PyCallable_Check(callback.ptr()) == 0)
                    refuse("a callback for '" + pattern + "' that can't be called",
                           "a function of one setting's state");
                return WatchHandle{self.getShared(), core.observe(pattern, std::move(callback))};
            },
            py::arg("pattern"), py::arg("callback"));
}

void bindRows(py::class_<LiveHandle>& run) {
    run.def("feed", feed, py::arg("source"), py::arg("rows"), py::arg("t") = py::none())
        .def(
            "end_feed",
            [](const LiveHandle& self, const std::string& source) {
                Feed& target = *findFeed(self.get(), source);
                unlocked([&] { target.end(); });
            },
            py::arg("source"))
        .def(
            "take",
            [](const LiveHandle& self, const std::string& sink) {
                const auto table = findTable(self.get(), sink);
                return tableOf(unlocked([&] { return table->take(); }));
            },
            py::arg("sink"))
        .def(
            "read",
            [](const LiveHandle& self, const std::string& sink, std::size_t first) {
                const auto table = findTable(self.get(), sink);
                return tableOf(unlocked([&] { return table->read(first); }));
            },
            py::arg("sink"), py::arg("first") = 0)
        .def("wait_rows", waitRows, py::arg("sink"), py::arg("timeout") = py::none())
        .def_property_readonly("sinks", [](const LiveHandle& self) {
            py::list ids;
            for (const auto& [id, table] : self.get().getEnds().getTables())
                ids.append(textOf(id));
            return ids;
        });
}

void bindEnd(py::class_<LiveHandle>& run) {
    run.def_property_readonly("state",
                              [](const LiveHandle& self) {
                                  LiveCore& core = self.get();
                                  return unlocked([&] { return nameOf(core.getRun().getState()); });
                              })
        .def("progress",
             [](const LiveHandle& self) {
                 LiveRun& live = self.get().getRun();
                 return progressOf(unlocked([&] { return live.getProgress(); }));
             })
        .def("statistics",
             [](const LiveHandle& self) {
                 LiveRun& live = self.get().getRun();
                 return unlocked([&] { return live.getStatistics().getText(); });
             })
        .def(
            "stop",
            [](const LiveHandle& self, std::optional<double> timeout) {
                LiveCore& core = self.get();
                core.stop(timeout);
                return core.wait(timeout);
            },
            py::arg("timeout") = py::none())
        .def(
            "interrupt",
            [](const LiveHandle& self, const std::string& reason) {
                LiveRun& live = self.get().getRun();
                unlocked([&] { live.interrupt(reason); });
            },
            py::arg("reason") = "interrupted")
        .def(
            "wait",
            [](const LiveHandle& self, std::optional<double> timeout) { return self.get().wait(timeout); },
            py::arg("timeout") = py::none())
        .def("outcome", outcomeOf);
}
} // namespace

void bindLive(py::module_& module) {
    py::class_<WatchHandle>(module, "Watch",
                            "Settings that are observed, until it is closed or its run is over.")
        .def("close", &WatchHandle::close)
        .def_property_readonly("missed",
                               [](const WatchHandle& self) { return self.subscription->missed.load(); });
    py::class_<LiveHandle> run(module, "LiveRun", "A graph that runs in threads of its own.");
    bindSettings(run);
    bindRows(run);
    bindEnd(run);
    // In front of everything that the interpreter takes down, while callbacks can still be called.
    py::module_::import("atexit").attr("register")(py::cpp_function([] {
        noteEndingThread();
        endAllLiveRuns();
        unlocked([] { stopAllWork(); });
    }));
}

} // namespace Python
