// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "spectral/FFTPack.h"

#include <cstdint>

/// Turns one sample, taken as a whole block of time-domain values, into its amplitude spectrum.
///
///     n = rows, less one if odd;  X = transform of the first n values in storage order
///     out[0] = sqrt(X[n-1]^2 + X[0]^2) / n;  out[k] = sqrt(X[2k-1]^2 + X[2k]^2) / (n/2)
///
/// State: the plan of the transform. Kept as is: a new block is paused; the mean and the value at half the
/// rate share row 0; a new plan is made only when n differs from the number of rows of "out", so a sample of
/// exactly half the former length goes through the former plan, with zeros behind it.
class FilterFFT final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterFFT";

    explicit FilterFFT(const std::string& instanceName);
    ~FilterFFT() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    ValueProperty<bool> pause;
    OutputPin<MatrixXd> out;
    InputPin<MatrixXd> in;

    void copyToWork(const MatrixXd& sample);

    MatrixXd work; ///< the sample, then its transform; as wide as the sample, at least as large as the plan
    std::int32_t evenLength = 0; ///< n of the sample taken last
    FFTPack transform;
};
