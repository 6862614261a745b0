// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractProperty.h"
#include "framework/core/Api.h"
#include "host/description/Value.h"
#include "host/graph/BlockDescription.h"
#include "host/run/RunOutcome.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

class LiveGraph;

/// A setting as a program shows it. Values are written as in a graph file.
struct SettingState {
    std::string name;     ///< `block.Setting`.
    std::string value;    ///< Empty for a command.
    std::string expected; ///< What may be written: `a whole number from 0 to 10`.
    bool isCommand = false;
    bool isWritable = false;
    PropertyDescription::Kind kind = PropertyDescription::Kind::Unknown;
    PropertyDescription::Held held{}; ///< The value itself, for programs.
};

/// Hears of changes of some settings until it is gone. Requires: it goes before the run that it watches.
class QUILLMERE_API SettingWatch final : private Core::PropertyObserver {
public:
    /// Called in the writer's thread, under its guard: it must be quick, and read or change nothing but what
    /// it is told of.
    using Handler = std::function<void(const SettingState&)>;

    SettingWatch(std::vector<Core::AbstractProperty*> watched, std::vector<std::string> names,
                 Handler handler);
    ~SettingWatch() override;
    SettingWatch(const SettingWatch&) = delete;
    SettingWatch& operator=(const SettingWatch&) = delete;

private:
    void valueChanged(const Core::AbstractProperty& property) override { tell(property); }
    void attributesChanged(const Core::AbstractProperty& property) override { tell(property); }
    void tell(const Core::AbstractProperty& property) const;

    const std::vector<Core::AbstractProperty*> properties; ///< Not owned.
    const std::vector<std::string> names;                  ///< Of each.
    const Handler onChange;
};

/// Settings and commands of a live run, by name: `block.Setting`. Patterns have `*` and `?`. Every operation
/// may be called by any thread; what is refused is a `ControlException`.
class QUILLMERE_API LiveSettings {
public:
    /// The graph is not owned.
    explicit LiveSettings(LiveGraph& liveGraph) : graph(liveGraph) {}

    std::vector<SettingState> list(const std::string& pattern = "*") const;
    SettingState read(const std::string& name) const;
    /// A frequency or a time waits for who changes links, as no step or handler of a block may: these write
    /// numbers.
    void write(const std::string& name, const std::string& text);
    void fire(const std::string& name);
    std::unique_ptr<SettingWatch> observe(const std::string& pattern, SettingWatch::Handler handler) const;
    /// What was written and fired so far. [any]
    void tellChanges(RunOutcome& outcome) const;

private:
    /// Without a value: of a command.
    void note(const Core::Filter& block, const std::string& name, const std::optional<Value>& value);

    LiveGraph& graph;
    mutable std::mutex noting; ///< Innermost.
    std::vector<RunOutcome::Change> changes;
    std::uint64_t changesLeftOut = 0;
};

} // namespace Quillmere::Host
