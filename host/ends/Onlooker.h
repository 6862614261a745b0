// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/Sink.h"

#include <cstdint>

namespace Quillmere::Host {

/// Looks at an output beside the blocks of a live run: takes all that came in each of its steps. Nothing
/// depends on it: what it holds keeps no run from its end and no layout from its sleep, and it is told of
/// nowhere.
///
/// Requires: one input, which is linked before the run begins.
class QUILLMERE_API Onlooker : public Sink {
public:
    explicit Onlooker(const std::string& instanceName) : Sink(instanceName, true) {}

    void open() override {}
    void complete() override {}
    void abandon() override {}
    void discard() override {}
    std::uint64_t getRows() const override { return 0; }
    bool getIsComplete() const override { return false; }
};

} // namespace Quillmere::Host
