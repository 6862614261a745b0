// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Filter.h"
#include "framework/transport/InputPin.h"
#include "framework/transport/OutputPin.h"

#include <memory>
#include <string>
#include <vector>

namespace Support {

/// Writes down in which order a block sends on its outputs.
class SendLog {
public:
    /// `block` is not owned and must outlive the log.
    explicit SendLog(Quillmere::Core::Filter& block) {
        for (Quillmere::Core::AbstractOutputPin* const pin : block.getOutputPins()) {
            listeners.push_back(std::make_unique<Listener>(pin->getName(), order));
            pin->attach(*listeners.back(), true);
        }
    }

    std::vector<std::string> order; ///< an output's name for each sample sent

private:
    class Listener final : public Quillmere::Core::InputPinBase<Quillmere::Core::MatrixXd> {
    public:
        Listener(const std::string& name, std::vector<std::string>& sendOrder)
            : Pin(name, nullptr), InputPinBase(name, nullptr), log(sendOrder) {}
        ~Listener() override { InputPinBase::detachAll(); }
        void clear() override {}
        void rebuildStrategy() override {}
        void setConnectedOutput(Quillmere::Core::AbstractOutputPin* output, bool synchronous) override {
            connectedOutput = output;
            isSynchronous = synchronous;
        }
        void receive(const Quillmere::Core::Sample&) override { log.push_back(getName()); }

    private:
        std::vector<std::string>& log;
    };

    std::vector<std::unique_ptr<Listener>> listeners;
};

} // namespace Support
