// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/transport/MatrixXd.h"

#include <complex>

namespace Quillmere::Host {

/// A recursive filter as a block publishes it, by convention, on two outputs of these names: one sample with
/// the gain, and one of two rows, row 0 feed-forward, row 1 feedback with its leading term -1. When -1 stands
/// in front, coefficients are those of falling powers of z and the gain is in them; else of rising powers,
/// and the gain divides.
class QUILLMERE_API PublishedDesign {
public:
    static constexpr const char* kGainPin = "gain";
    static constexpr const char* kCoefficientsPin = "coeffs";

    /// Requires: two rows, one column at least.
    PublishedDesign(double publishedGain, const Core::MatrixXd& rows);

    /// The response that the design promises at a point of the unit circle.
    std::complex<double> evaluate(std::complex<double> z) const;

    /// How far off a response of 1 may be, anywhere on the unit circle, because coefficients have sixteen
    /// digits only. Where roots crowd, a polynomial is a small difference of large terms, and so many digits
    /// fewer are left of it. A design that has no numbers gives not-a-number.
    double estimateError() const;

private:
    struct Value {
        std::complex<double> top, bottom;
    };
    Value valueAt(std::complex<double> z) const;
    double bottomSizeAt(double angle) const;
    double errorAt(double angle) const;
    double smallestBottom(double below, double above) const;

    bool isByDelay;
    double scale; ///< What a response is still to be divided by.
    Core::MatrixXd coeffs;
};

} // namespace Quillmere::Host
