// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Detects where element 0 of a sample crosses a threshold: a pulse of one sample at each edge, or a level
/// that each edge turns over.
///
///     rising edge:   the signal was below the threshold and is at or above it
///     falling edge:  the signal was at or above the threshold and is below it
///
/// State: on which side the signal was, and the level; "reset" and a change of "mode" forget them, and a
/// not-a-number leaves them. Kept as is: the output carries the wall clock, not the input's time stamp.
class FilterEdge final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterEdge";

    explicit FilterEdge(const std::string& instanceName);
    ~FilterEdge() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> input;
    OutputPin<MatrixXd> output;
    EnumProperty<std::string> mode;
    ValueProperty<double> threshold;
    ValueProperty<bool> impulse;
    CommandProperty resetCommand;

    bool detect(unsigned edges, double x, double bound);
    void reset();

    // All cleared by `reset`.
    bool armedRising = false;  ///< the signal was seen below the threshold, so a rise counts
    bool armedFalling = false; ///< the signal was seen at or above the threshold, so a fall counts
    bool level = false;        ///< what goes out
};
