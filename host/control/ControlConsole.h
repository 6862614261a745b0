// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/live/LiveRun.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// A request that a console answers, as people are told of it.
struct ControlRequest {
    const char* word;
    const char* form; ///< The word and what it needs, as `watch PATTERN`; in brackets what may be left out.
    const char* help; ///< What it does.
    bool goesOn = false; ///< Whether lines may follow the answer, as long as who asked stays.
};

/// The language in which a run is controlled: lines in, lines out, for a person at a console and for programs
/// alike.
///
/// A request is a line: a word and what it needs, names with blanks in double quotes. The answer is any
/// number of lines that begin with a blank, and then `ok`, or `error: ` and why. `docs/live.md` lists the
/// requests.
class QUILLMERE_API ControlConsole {
public:
    using Lines = std::vector<std::string>;
    /// Takes a line about a setting that is watched, without its line end. Called by any thread, under a
    /// guard: it must be quick.
    using Teller = std::function<void(const std::string& line)>;

    /// `run` is not owned and outlives the console.
    ControlConsole(LiveRun& run, Teller teller);
    ~ControlConsole();
    ControlConsole(const ControlConsole&) = delete;
    ControlConsole& operator=(const ControlConsole&) = delete;

    /// All requests that there are, in the order in which people are told of them.
    static const std::vector<ControlRequest>& getRequests();
    /// What they do: a line for each, its form first.
    static Lines getHelp();

    /// The answer to a request, line ends included.
    std::string answer(std::string_view request);
    /// Whether it has asked to be told of changes, so that who is silent waits for something. [any]
    bool getIsWatching() const { return !watches.empty(); }

private:
    struct Handlers;

    Lines execute(std::string_view request);

    LiveRun& run;
    const Teller tell;
    std::vector<std::unique_ptr<SettingWatch>> watches;
};

} // namespace Quillmere::Host
