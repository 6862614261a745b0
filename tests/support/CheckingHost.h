// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"

#include <atomic>
#include <mutex>
#include <set>
#include <string>
#include <thread>

namespace Support {

/// A layout with a thread of its own that complains when the contract between threads is broken: a step that
/// is entered twice, a step while a guard of another thread is held, a handler outside a guard.
class CheckingHost final : public Quillmere::Core::PropertyObserver {
public:
    explicit CheckingHost(const std::string& name) : layout(name) {}
    /// Stops the thread. The host outlives its blocks.
    ~CheckingHost() override;

    Quillmere::Core::LayoutManager& getLayout() { return layout; }
    /// Places the block in the layout and listens to all its settings. [any]
    void add(Quillmere::Core::Filter& filter);
    void start();
    /// Shuts the gate down and joins the thread; harmless when it doesn't run.
    void stop();

    /// Passes of the layout so far. [any]
    long getPasses() const { return passes; }
    /// What was broken, each complaint once. [any]
    std::set<std::string> getComplaints() const;

    /// What a checked block says at both ends of its step. [run]
    void stepBegins();
    void stepEnds();

    void valueChanged(const Quillmere::Core::AbstractProperty& property) override;
    void attributesChanged(const Quillmere::Core::AbstractProperty&) override {}

private:
    void complain(const std::string& text);

    Quillmere::Core::LayoutManager layout;
    std::atomic<bool> isStopping{false};
    std::atomic<long> passes{0};
    std::atomic<std::thread::id> stepping{}; ///< the thread that is inside a step
    std::atomic<int> foreignHandlers{0};     ///< handlers that run in other threads than the step's
    mutable std::mutex complaintsMutex;
    std::set<std::string> complaints;
    std::thread runner;
};

/// A block for hammering: a gain with every kind of setting, whose handlers touch plain state of the block,
/// so that a thread sanitizer sees any hole in the gate.
class ProbeBlock final : public Quillmere::Core::Filter {
public:
    enum class Mode { Plain, Inverted };

    ProbeBlock(const std::string& name, CheckingHost& checkingHost);
    ~ProbeBlock() override = default;

    void process() override;
    const char* getTypeName() const override { return "ProbeBlock"; }

    /// The next `count` steps need no input: each sends the next number. [any, guarded]
    void generate(long count);
    /// Samples taken from "in". [any]
    long getTaken() const { return taken; }

    CheckingHost& host;
    Quillmere::Core::InputPin<Quillmere::Core::MatrixXd> in;
    Quillmere::Core::InputPin<Quillmere::Core::MatrixXd> control; ///< non-blocking
    Quillmere::Core::OutputPin<Quillmere::Core::MatrixXd> out;
    Quillmere::Core::ValueProperty<double> gain;
    Quillmere::Core::RangeProperty<int> order; ///< 0 to 10
    Quillmere::Core::EnumEnumProperty<Mode, std::string> mode;
    Quillmere::Core::ValueProperty<Quillmere::Core::MatrixXd> table; ///< refuses an empty one
    Quillmere::Core::CommandProperty reset;

    long changes = 0;        ///< by handlers, inside guards
    double lastNumber = 0.0; ///< of the last sample on "in"; [run]
    bool isInOrder = true;   ///< whether the numbers on "in" only ever rose; [run]

private:
    void onChange() { ++changes; }
    void onReset();
    void checkTable(const Quillmere::Core::MatrixXd& value);

    long remaining = 0;
    double nextNumber = 1.0;
    std::atomic<long> taken{0};
};

} // namespace Support
