// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"
#include "host/text/Complaint.h"
#include "host/description/Value.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace Quillmere::Host {

/// What happens to a graph's blocks while it runs: settings written, commands fired and values sent to
/// inputs, each when stream time has come to it. Everything goes its ordinary road, as if somebody had done
/// it from outside.
class QUILLMERE_API Timeline {
public:
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

private:
    friend class TimelineBuilder;
    class Sender;

    /// One of the three: `property` is written, `command` fired, or `output` sends `sample`. None is owned.
    struct Action {
        double at = 0.0; ///< Seconds of stream time.
        Place where;
        Value value;
        Core::AbstractProperty* property = nullptr;
        Core::CommandProperty* command = nullptr;
        Core::OutputPin<Core::MatrixXd>* output = nullptr;
        Core::MatrixXd sample;
    };

    void applyDue(double time);
    static void apply(const Action& action, double time, Complaints& complaints);
    static void fire(Core::CommandProperty& command, const Place& where, Complaints& complaints);

    std::vector<Action> actions;    ///< By time.
    std::size_t next = 0;           ///< The first that hasn't been done.
    std::unique_ptr<Sender> sender; ///< Where values come from; null where none is sent.
};

} // namespace Quillmere::Host
