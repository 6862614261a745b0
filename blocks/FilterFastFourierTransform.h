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
/// In: n or n + 1 rows, meant as one column; of several columns the first n values of the interleaved rows
/// are transformed and column 0 of the result is read. Out, "fft" before "powerSpectrum": the shape of the
/// sample, an odd last row untouched, and n/2 rows by 1 in the unit of the input. A sample of fewer than 2
/// rows, or without columns, is used up and nothing is sent. While "Pause" is set, samples wait.
///
/// Remembered: the plan of the transform, nothing of a signal. Kept as is: "powerSpectrum" holds amplitudes,
/// not their squares; the mean and the value at half the rate share row 0. `FilterFFT` is its sibling without
/// the raw transform.
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
