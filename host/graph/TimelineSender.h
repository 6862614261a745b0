// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/Timeline.h"

#include <deque>
#include <string>

namespace Quillmere::Host {

/// The block whose outputs a timeline sends values from. It stands in the layout of the blocks that get them,
/// so the links are plain ones; its step does nothing.
class Timeline::Sender final : public Core::Filter {
public:
    Sender() : Core::Filter("timeline", true) {}

    void process() override {}
    const char* getTypeName() const override { return "Timeline"; }

    Core::OutputPin<Core::MatrixXd>& addOutput(const std::string& name) {
        return outputs.emplace_back(name, this);
    }

private:
    std::deque<Core::OutputPin<Core::MatrixXd>> outputs; ///< Pins can't move.
};

} // namespace Quillmere::Host
