// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Drops the first samples after a start or a reset and passes all others unchanged.
///
/// Any shape, empty samples included. How many have been dropped is remembered, up to "Samples": lowering
/// that setting acts at once, raising it drops the difference. Command "Reset" and a sample on pin "reset"
/// whose first value is anything but 0 start the count anew, before the sample of the same step is looked at.
/// Kept as is: pin "reset" is blocking, unlike other blocks' control pins. Connected across layouts it holds
/// up the step until a sample arrives there.
class FilterDiscarder final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterDiscarder";

    explicit FilterDiscarder(const std::string& instanceName);
    ~FilterDiscarder() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> input;
    InputPin<MatrixXd> resetPin;
    OutputPin<MatrixXd> output;
    RangeProperty<int> samples;
    CommandProperty resetCommand;

    void requestReset();

    std::uint32_t discarded = 0; ///< samples dropped; stays at "Samples"; 0 where `resetRequested` is met
    bool resetRequested = false; ///< start the count anew at the next step
};
