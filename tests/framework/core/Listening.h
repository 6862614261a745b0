// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"

#include <functional>
#include <string>
#include <vector>

/// A host that listens to links for the time of a test: it writes down what it hears and answers `answer`.
class Listening final : public Quillmere::Core::LinkListener {
public:
    Listening() { Quillmere::Core::FlowManager::instance().setLinkListener(this); }
    ~Listening() override { Quillmere::Core::FlowManager::instance().setLinkListener(nullptr); }

    void linkAttached(Quillmere::Core::AbstractOutputPin& output, Quillmere::Core::AbstractInputPin& input,
                      bool& isSynchronous) override {
        log.push_back("attached " + output.getName() + " to " + input.getName() +
                      (isSynchronous ? ", synchronous" : ", not synchronous"));
        isSynchronous = answer;
        if (meanwhile) meanwhile();
    }
    void linkDetached(Quillmere::Core::AbstractOutputPin& output,
                      Quillmere::Core::AbstractInputPin& input) override {
        log.push_back("detached " + output.getName() + " from " + input.getName());
        if (meanwhile) meanwhile();
    }

    bool answer = true;
    std::function<void()> meanwhile;
    std::vector<std::string> log;
};
