// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

#include <memory>
#include <string>
#include <vector>

/// Pins around a block that is measured.
namespace Bench {

using Quillmere::Core::Sample;

/// Output pins with a reader each, as a block's own are in a graph: a send leaves the sample's address with
/// the reader.
class Outputs {
public:
    explicit Outputs(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            pins.push_back(std::make_unique<OutputPin<MatrixXd>>("out", nullptr));
            readers.push_back(std::make_unique<InputPin<MatrixXd>>("reader", nullptr));
            pins.back()->attach(*readers.back(), false);
        }
    }
    MatrixXd& value(std::size_t i) { return pins[i]->data.value; }
    void send(double timeStamp) {
        for (const auto& pin : pins)
            pin->send(timeStamp);
    }

private:
    std::vector<std::unique_ptr<OutputPin<MatrixXd>>> pins;
    std::vector<std::unique_ptr<InputPin<MatrixXd>>> readers;
};

/// A reader on every output of a block.
class Readers {
public:
    explicit Readers(Filter& block) {
        for (Quillmere::Core::AbstractOutputPin* const pin : block.getOutputPins()) {
            readers.push_back(std::make_unique<InputPin<MatrixXd>>("reader", nullptr));
            pin->attach(*readers.back(), false);
        }
    }

private:
    std::vector<std::unique_ptr<InputPin<MatrixXd>>> readers;
};

/// A block's input, to be given samples with `receive` as a sender does.
inline InputPin<MatrixXd>& input(Filter& block, const std::string& name) {
    return dynamic_cast<InputPin<MatrixXd>&>(block.getInputPin(name));
}

template <class Property, class Value>
void set(Filter& block, const std::string& name, Value value) {
    dynamic_cast<Property&>(block.getProperty(name)).setValue(value);
}

} // namespace Bench
