// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Subtracts the sample before from each sample, element by element.
///
///     Output(n) = Input(n) - Input(n-1)
///
/// State: the last sample. At the first one, after "Reset" and after a change of shape there is none, and the
/// sample is subtracted from itself. Kept as is: no division by a time, in spite of the name.
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
