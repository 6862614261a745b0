// SPDX-License-Identifier: MIT
#pragma once

#include "design/Complex.h"
#include "design/DirectFormDesigner.h"

#include <array>
#include <cstdint>

/// Designs a recursive filter from the poles of an analogue prototype, and runs it (see
/// `DirectFormDesigner`).
///
/// A family gives the left-half-plane poles of its normalised low-pass prototype (`computePoles`); from there
/// the road is the same for all: `normalizePoles` moves them into the band shape, a mapping takes them to the
/// z-plane, bilinear z = (2 + s) / (2 - s) with prewarped edges or matched-z z = exp(s), and `expandAndScale`
/// multiplies the roots out. `gain` is the magnitude of the coefficients' own ratio at the reference point: z
/// = 1 for a low-pass, z = -1 for a high-pass, the middle of the band for a band-pass, and for a band-stop
/// the geometric mean of z = 1 and z = -1. Inputs are divided by it. How many digits it keeps is up to the
/// coefficients: at high orders and low edges they are large and their sums small, and nothing may be left (a
/// low-pass of order 10 at 0.01 keeps none). Coefficient i belongs to z^i; the last of `yCoeffs` is always
/// -1.0 and is never used.
///
/// Kept as is: a matched-z low-pass has no zero in the z-plane, so it has one feed-forward coefficient only.
/// Where the denominator vanishes at the reference point (a low-pass at cut-off 0) or the band is empty
/// (equal edges), gain and coefficients are not-a-number.
///
/// The road is the classic one of pole-zero placement by s-plane prototypes, as in digital filter textbooks.
class PoleZeroDesigner : public DirectFormDesigner {
public:
    PoleZeroDesigner(std::int32_t designMode, std::int32_t prototypeOrder, bool useMatchedZ, double low,
                     double high);

    /// Takes effect at the next `step`.
    void setParameters(std::int32_t designMode, std::int32_t prototypeOrder, bool useMatchedZ, double low,
                       double high);

protected:
    static constexpr std::size_t kRootCapacity = 512;
    using Roots = std::array<Design::Complex, kRootCapacity>;

    /// Sets `numSPoles` and writes as many `sPoles`: the left-half-plane poles of the low-pass prototype of
    /// `order`, with unit cut-off angular frequency. Leaves `numSZeros` alone.
    virtual void computePoles() = 0;

    /// For prototypes built on the left half of the unit circle: its `order` poles, by rising angle.
    void appendCirclePoles();
    void appendPole(Design::Complex pole);

    void design() override;
    void run(const MatrixXd& input) override;
    std::size_t countXEntries() const override;

    void normalizePoles();
    void mapMatchedZ();
    void mapBilinear();
    void expandAndScale();

    bool matchedZ;
    Roots sPoles{};
    Roots sZeros{};
    std::int32_t numSPoles = 0;
    std::int32_t numSZeros = 0;
    Roots zPoles{};
    Roots zZeros{};
    std::int32_t numZPoles = 0;
    std::int32_t numZZeros = 0;

private:
    using Polynomial = std::array<Design::Complex, kRootCapacity + 1>;

    void splitPole(std::size_t index, Design::Complex halfBand, double centre);
    template <class Mapping>
    void mapRoots(Mapping mapping);
    Design::Complex evaluateTransfer(const Polynomial& top, const Polynomial& bottom,
                                     Design::Complex z) const;
};
