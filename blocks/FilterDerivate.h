// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Subtracts the sample before from each sample, element by element.
///
///     Output(n) = Input(n) - Input(n-1)
///
/// Any shape, in the unit of the input. The last sample is remembered; at the first one, after "Reset" and
/// after a change of shape there is none to compare with, and the sample is subtracted from itself (so an
/// infinity or a not-a-number there gives not-a-number). Kept as is: in spite of its name the block doesn't
/// divide by a time; the output is a change per sample.
class FilterDerivate final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterDerivate";

    explicit FilterDerivate(const std::string& instanceName);
    ~FilterDerivate() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> input;
    OutputPin<MatrixXd> output;
    CommandProperty resetCommand;

    void requestReset();

    MatrixXd previous;          ///< the sample before this one; forgotten where `resetRequested` is met
    bool resetRequested = true; ///< forget `previous` at the next sample
};
