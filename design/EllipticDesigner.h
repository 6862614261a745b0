// SPDX-License-Identifier: MIT
#pragma once

#include "design/Complex.h"
#include "design/DirectFormDesigner.h"

#include <array>
#include <cstdint>
#include <vector>

/// Designs an elliptic (Cauer) filter and runs it (see `DirectFormDesigner`): a pass band that ripples by
/// `passRipple` decibels (above 0), a stop band below `stopRipple` decibels (below 0), and the steepest edge
/// between them.
///
/// Four stages: `computeParameters` finds the selectivity from order and ripples, `computeRoots` the s-plane
/// roots by Jacobian elliptic functions, `mapRoots` takes them to the z-plane bilinearly, `expandAndScale`
/// multiplies them out. Coefficient i belongs to z^-i, and `gain` is in the feed-forward coefficients
/// already; inputs are not scaled.
///
/// Kept as is, all of it audible:
/// - The run step pairs coefficients with history entries from the far end, though they are indexed from the
///   near end, so a low-pass uses `xCoeffs[0]` alone and at order 1 is y(n) = xCoeffs[0] u(n) - y(n-1).
/// - `numSZeros` counts numbers, not roots, and is used as a count of roots: surplus roots (0, 0) become
///   zeros at z = 1. From order 3 on an odd low-pass or band-pass has its reference point on such zeros, so
///   its gain is a number over rounding noise: of either sign, huge as a rule, infinite at times, and of any
///   size where a high order meets low edges. Its coefficients and outputs follow.
/// - The quadratic that maps a root into a band has a real divisor: the imaginary part is dropped, which
///   moves the roots, at higher orders even out of the unit circle.
/// - Equal edges of a band give a gain and coefficients that are not-a-number.
///
/// The elliptic integrals and functions are those of `EllipticFunctions.h`. For orders 1 to 10.
class EllipticDesigner : public DirectFormDesigner {
public:
    EllipticDesigner(std::int32_t designMode, std::int32_t prototypeOrder, double low, double passBandRipple,
                     double stopBandRipple, double high);

    /// Takes effect at the next `step`. Requires: an order from 1 to 10.
    void setParameters(std::int32_t designMode, std::int32_t prototypeOrder, double low,
                       double passBandRipple, double stopBandRipple, double high);

protected:
    void design() override;
    void run(const MatrixXd& input) override;

    void computeParameters();
    void computeRoots();
    void mapRoots();
    void expandAndScale();

    double passRipple;                   ///< decibels, positive
    double stopRipple;                   ///< decibels, negative
    std::int32_t numSPoles = 0;          ///< counts numbers, two a root
    std::int32_t numSZeros = 0;          ///< likewise
    double wc = 0.0;                     ///< prewarped cut-off, or width of the band
    double wr = 0.0;                     ///< stop-band edge relative to the pass band's
    double cgam = 0.0;                   ///< cosine of the centre's angle
    std::int32_t zOrder = 0;             ///< number of z-plane poles
    std::vector<Design::Complex> zRoots; ///< poles, then zeros
    std::array<double, 50> sRoots{};     ///< pairs (re, im): (order + 1) / 2 poles, then the zeros
    double scale = 1.0; ///< what an even order's ripple leaves below 1 at the reference point
    double eps = 0.0;

private:
    bool getIsInverted() const { return mode == Design::kHighPass || mode == Design::kBandStop; }
    Design::Complex sRoot(std::int32_t index) const;
    void setSRoot(std::int32_t index, Design::Complex root);
    void mapToEdge(Design::Complex root);
    void mapToBand(Design::Complex root);
    void appendWithConjugate(Design::Complex root);
    double gainAtReference(const std::vector<double>& zeros, const std::vector<double>& poles) const;

    std::vector<double> addedYCoeffs; ///< -yCoeffs: the run step adds them
};
