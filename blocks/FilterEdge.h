// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Detects where a scalar signal crosses a threshold: a pulse of one sample at each edge, or a level that
/// each edge turns over.
///
///     rising edge:   the signal was below the threshold and is at or above it
///     falling edge:  the signal was at or above the threshold and is below it
///
/// Element 0 of a sample of any shape counts, in the unit of the threshold; the output is 1 by 1, one for
/// each input but empty ones, which are used up. With "impulse" it is 1.0 at an edge and 0.0 else; without,
/// it is the level. Remembered: on which side the signal was, and the level. "reset" and a change of "mode"
/// forget all three; a not-a-number leaves them as they were, and so does a mode that doesn't look for that
/// edge. Kept as is: the output carries the wall clock, not the input's time stamp.
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
