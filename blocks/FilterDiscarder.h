// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Drops the first samples after a start or a reset and passes all others unchanged.
///
/// State: how many have been dropped, up to "Samples"; command "Reset" and a first value other than 0 on pin
/// "reset" forget it, before the sample of the same step is looked at. Kept as is: pin "reset" is blocking,
/// unlike other blocks' control pins.
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
