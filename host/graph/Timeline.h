// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"
#include "host/text/Complaint.h"
#include "host/description/Value.h"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// What happens to a graph's blocks while it runs: settings written, commands fired and values sent to
/// inputs, each when stream time has come to it. Everything goes its ordinary road, as if somebody had done
/// it from outside.
class QUILLMERE_API Timeline {
public:
    /// One of the three: `property` is written, `command` fired, or `output`, one of `addOutput`, sends
    /// `sample`. None is owned.
    struct Action {
        double at = 0.0; ///< Seconds of stream time.
        Place where;
        Value value;
        const Core::Filter* block = nullptr; ///< Whose setting, command or input it is.
        Core::AbstractProperty* property = nullptr;
        Core::CommandProperty* command = nullptr;
        Core::OutputPin<Core::MatrixXd>* output = nullptr;
        const Core::AbstractInputPin* input = nullptr; ///< That gets the sample.
        Core::MatrixXd sample;
    };

    Timeline();
    ~Timeline();
    Timeline(const Timeline&) = delete;
    Timeline& operator=(const Timeline&) = delete;

    /// Does what is due at `time` (seconds) and hasn't been done, by time. A runner calls it before the first
    /// round of that time. Raises `GraphException`, which names the entry, when a block refuses. [run,
    /// between two rounds]
    void apply(double time) {
        if (getIsDue(time)) applyDue(time);
    }
    /// Whether there is something to do. [run, between two rounds]
    bool getIsDue(double time) const { return next < actions.size() && time >= actions[next].at; }
    /// The block that sends its values, null where none is sent; whoever runs the graph keeps it in a layout
    /// of its. [setup]
    Core::Filter* getSender();
    const Core::Filter* getSender() const;

    /// Requires: no action that is there already is for a later time. [setup]
    void add(Action action) { actions.push_back(std::move(action)); }
    /// By time, which stays as it is. [setup]
    std::vector<Action>& getActions() { return actions; }
    /// A pin of the sender for values to one input. [setup]
    Core::OutputPin<Core::MatrixXd>& addOutput(const std::string& name);

private:
    class Sender;

    void applyDue(double time);
    static void apply(const Action& action, double time, Complaints& complaints);

    std::vector<Action> actions;    ///< By time.
    std::size_t next = 0;           ///< The first that hasn't been done.
    std::unique_ptr<Sender> sender; ///< Where values come from; null where none is sent.
};

} // namespace Quillmere::Host
