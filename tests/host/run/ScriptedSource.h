// SPDX-License-Identifier: MIT
#pragma once

#include "host/ends/Source.h"
#include "host/ends/WakingSource.h"

#include <cstddef>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

namespace Support {

/// A source without pins, whose samples have these times.
class ScriptedSource final : public Quillmere::Host::Source, public Quillmere::Host::WakingSource {
public:
    ScriptedSource(const std::string& name, std::vector<double> stamps)
        : Source(name, true), times(std::move(stamps)) {}

    bool prepare() override {
        if (!refusal.empty()) throw std::runtime_error(refusal);
        return next < times.size();
    }
    bool getIsPrepared() override { return isPrepared; }
    bool getComesByItself() const override { return comesByItself; }
    double getNextTimeStamp() const override { return times[next]; }
    void release() override {
        ++next;
        isReleased = true;
    }
    /// Whether it was released since it was asked last.
    bool takeReleased() { return std::exchange(isReleased, false); }
    void process() override {}
    const char* getTypeName() const override { return "ScriptedSource"; }

    int getDescriptor() const override { return -1; }
    void setStop(const std::stop_token&) override {}
    void open(Quillmere::Host::Complaints&) override {}

    bool comesByItself = false;
    bool isPrepared = true;
    std::string refusal; ///< What it raises when it isn't empty.

private:
    const std::vector<double> times;
    std::size_t next = 0;
    bool isReleased = false;
};

} // namespace Support
