// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"
#include "tests/support/Numbers.h"

#include <atomic>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// Small blocks and helpers for the tests of the framework itself.
namespace TestBlocks {

using namespace Quillmere::Core;

/// A block with nothing in it; its step calls `action`.
class Plain : public Filter {
public:
    explicit Plain(const std::string& name, std::function<void()> stepAction = {})
        : Filter(name, true), action(std::move(stepAction)) {}
    void process() override {
        if (action) action();
    }
    const char* getTypeName() const override { return "Plain"; }

    std::function<void()> action;
};

/// Sends 1-by-1 samples that count up from 1, each stamped with its number, one a step, until `count` are
/// sent.
class Counting final : public Plain {
public:
    explicit Counting(const std::string& name, int count = 1 << 30) : Plain(name), left(count) {
        output.data.value = MatrixXd::Zero(1, 1);
    }
    void process() override {
        if (left-- <= 0) return;
        output.data.value(0) += 1.0;
        output.send(output.data.value(0));
    }

    OutputPin<MatrixXd> output{"output", this};
    int left;
};

/// Has one input and hands what it takes to `received`.
class Receiving : public Plain {
public:
    explicit Receiving(const std::string& name) : Plain(name) {}
    void process() override {
        ++stepsBegun;
        if (input.hasData()) {
            const double stamp = input.getTimeStamp();
            const MatrixXd& value = input.take();
            if (received) received(value, stamp);
        }
        ++stepsEnded;
    }

    InputPin<MatrixXd> input{"input", this};
    std::function<void(const MatrixXd&, double)> received;
    std::atomic<int> stepsBegun{0};
    std::atomic<int> stepsEnded{0};
};

/// Whether the link hands out the sender's own sample, that is: whether it is the plain link. Sends one
/// sample.
inline bool isPlainLink(OutputPin<MatrixXd>& output, InputPin<MatrixXd>& input) {
    output.send(1.0);
    return input.hasData() && &input.take() == &output.data.value;
}

/// The numbers of the 1-by-1 samples that wait in a pin, in the order in which it hands them out.
inline std::vector<double> drain(InputPin<MatrixXd>& input) {
    std::vector<double> numbers;
    while (input.hasData())
        numbers.push_back(input.take()(0));
    return numbers;
}

/// Sends a 1-by-1 sample.
inline void sendNumber(OutputPin<MatrixXd>& output, double number, double timeStamp = 0.0) {
    resizeSample(output.data.value, 1, 1);
    output.data.value(0) = number;
    output.send(timeStamp);
}

} // namespace TestBlocks
