// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "spectral/FFTPack.h"

#include <cstdint>

/// Turns one sample, taken as a whole block of time-domain values, into its transform and its amplitude
/// spectrum.
///
///     n = rows, less one if odd;  X = transform of the first n values in storage order
///     fft = the sample with its first n values replaced by X, in the order of `FFTPack`
///     powerSpectrum[0] = sqrt(X[n-1]^2 + X[0]^2) / n;  powerSpectrum[k] = sqrt(X[2k-1]^2 + X[2k]^2) / (n/2)
///
/// State: the plan of the transform. "fft" is sent before "powerSpectrum". Kept as is: "powerSpectrum" holds
/// amplitudes, not their squares; the mean and the value at half the rate share row 0.
class FilterFastFourierTransform final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterFastFourierTransform";

    explicit FilterFastFourierTransform(const std::string& instanceName);
    ~FilterFastFourierTransform() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    ValueProperty<bool> pause;
    OutputPin<MatrixXd> fft;
    OutputPin<MatrixXd> powerSpectrum;
    InputPin<MatrixXd> in;

    std::int32_t evenLength = 0; ///< n of the sample taken last
    FFTPack transform;
};
