// SPDX-License-Identifier: MIT
#include "design/PoleZeroDesigner.h"

#include "design/Constants.h"

#include <algorithm>
#include <cmath>

using Design::Complex;
using Design::kPi;
using Design::kTwoPi;

PoleZeroDesigner::PoleZeroDesigner(std::int32_t designMode, std::int32_t prototypeOrder, bool useMatchedZ,
                                   double low, double high)
    : DirectFormDesigner(designMode, prototypeOrder, low, high), matchedZ(useMatchedZ) {}

void PoleZeroDesigner::setParameters(std::int32_t designMode, std::int32_t prototypeOrder, bool useMatchedZ,
                                     double low, double high) {
    mode = designMode;
    order = prototypeOrder;
    matchedZ = useMatchedZ;
    lowCutOff = low;
    highCutOff = high;
    needsDesign = true;
}

void PoleZeroDesigner::design() {
    computePoles();
    normalizePoles();
    if (matchedZ)
        mapMatchedZ();
    else
        mapBilinear();
    expandAndScale();
}

void PoleZeroDesigner::run(const MatrixXd& input) {
    Design::runDirectForm({xCoeffs, yCoeffs, Design::InputScale::Divide, gain}, input, xHistory, yHistory);
}

/// The bilinear mapping gives every pole a zero; matched-z only maps the zeros that there are.
std::size_t PoleZeroDesigner::countXEntries() const {
    return matchedZ ? DirectFormDesigner::countXEntries() : countYEntries();
}

void PoleZeroDesigner::appendPole(Complex pole) {
    sPoles[static_cast<std::size_t>(numSPoles)] = pole;
    ++numSPoles;
}

void PoleZeroDesigner::appendCirclePoles() {
    const double offset = order % 2 != 0 ? 0.0 : 0.5;
    for (std::int32_t i = 0; i < 2 * order; ++i) {
        const double angle = (i + offset) * kPi / order;
        if (std::cos(angle) < 0.0) appendPole({std::cos(angle), std::sin(angle)});
    }
}

void PoleZeroDesigner::normalizePoles() {
    // Prewarped for the bilinear mapping, which bends the frequency axis.
    const auto edge = [this](double f) {
        return matchedZ ? f * kTwoPi * 0.5 : 2.0 * std::tan(f * 0.5 * kPi);
    };
    const double w1 = edge(lowCutOff);
    const double w2 = edge(highCutOff);
    const double centre = std::sqrt(w1 * w2);
    const double width = w2 - w1;
    const auto n = static_cast<std::size_t>(numSPoles);

    if (mode == Design::kLowPass) {
        for (std::size_t i = 0; i < n; ++i)
            sPoles[i] = w1 * sPoles[i];
        numSZeros = 0;
    } else if (mode == Design::kHighPass) {
        for (std::size_t i = 0; i < n; ++i) {
            sPoles[i] = Complex{w1, 0.0} / sPoles[i];
            sZeros[i] = {};
        }
        numSZeros = numSPoles;
    } else if (mode == Design::kBandPass) {
        for (std::size_t i = 0; i < n; ++i) {
            splitPole(i, 0.5 * (width * sPoles[i]), centre);
            sZeros[i] = {};
        }
        numSZeros = numSPoles;
        numSPoles *= 2;
    } else if (mode == Design::kBandStop) {
        for (std::size_t i = 0; i < n; ++i) {
            splitPole(i, 0.5 * (Complex{width, 0.0} / sPoles[i]), centre);
            sZeros[i] = {0.0, centre};
            sZeros[n + i] = {0.0, -centre};
        }
        numSPoles *= 2;
        numSZeros = numSPoles;
    }
}

/// A band has two poles for each of the prototype's: those of s^2 - 2 halfBand s + centre^2. All with the
/// plus sign come first. An empty band divides by zero here, and the root must not turn that into a number
/// again.
void PoleZeroDesigner::splitPole(std::size_t index, Complex halfBand, double centre) {
    const Complex ratio = Complex{centre, 0.0} / halfBand;
    const Complex one{1.0, 0.0};
    const Complex root = Design::poisonedSqrt(one - ratio * ratio);
    sPoles[index] = halfBand * (one + root);
    sPoles[static_cast<std::size_t>(numSPoles) + index] = halfBand * (one - root);
}

template <class Mapping>
void PoleZeroDesigner::mapRoots(Mapping mapping) {
    numZPoles = numSPoles;
    numZZeros = numSZeros;
    for (std::size_t i = 0; i < static_cast<std::size_t>(numSPoles); ++i)
        zPoles[i] = mapping(sPoles[i]);
    for (std::size_t i = 0; i < static_cast<std::size_t>(numSZeros); ++i)
        zZeros[i] = mapping(sZeros[i]);
}

void PoleZeroDesigner::mapMatchedZ() {
    mapRoots([](Complex s) { return std::exp(s.re) * Complex{std::cos(s.im), std::sin(s.im)}; });
}

void PoleZeroDesigner::mapBilinear() {
    const Complex two{2.0, 0.0};
    mapRoots([two](Complex s) { return (two + s) / (two - s); });
    for (; numZZeros < numZPoles; ++numZZeros)
        zZeros[static_cast<std::size_t>(numZZeros)] = {-1.0, 0.0};
}

/// A pole at `z` makes the denominator vanish there, and the value not-a-number; multiplied out with other
/// poles it leaves rounding noise instead of the 0 (a band-stop from 0 has half its poles at 1).
Complex PoleZeroDesigner::evaluateTransfer(const Polynomial& top, const Polynomial& bottom, Complex z) const {
    const auto isAtPoint = [z](Complex pole) { return pole.re == z.re && pole.im == z.im; };
    const Complex zero{};
    if (std::any_of(zPoles.begin(), zPoles.begin() + numZPoles, isAtPoint)) return zero / zero;
    return Design::evaluateRatio(top, numZZeros, bottom, numZPoles, z);
}

/// The reference value is taken from the multiplied-out polynomials, as they are published. Near a cluster of
/// roots they are small differences of large terms, and a product of factors would keep digits that they have
/// lost; but the run step sums these very coefficients, and only a value of their own lets a constant settle
/// at 1.
void PoleZeroDesigner::expandAndScale() {
    Polynomial top{};
    Polynomial bottom{};
    Design::expandRoots(zZeros, numZZeros, top);
    Design::expandRoots(zPoles, numZPoles, bottom);
    // Roots come in pairs but for rounding. What is left of the imaginary parts isn't published, and where
    // the value is small it would be as large as the value.
    for (Polynomial* const polynomial : {&top, &bottom})
        for (Complex& coefficient : *polynomial)
            coefficient.im = 0.0;

    if (mode == Design::kLowPass) {
        gain = magnitude(evaluateTransfer(top, bottom, {1.0, 0.0}));
    } else if (mode == Design::kHighPass) {
        gain = magnitude(evaluateTransfer(top, bottom, {-1.0, 0.0}));
    } else if (mode == Design::kBandPass) {
        const double angle = (lowCutOff + highCutOff) * kTwoPi * 0.25;
        gain = magnitude(evaluateTransfer(top, bottom, {std::cos(angle), std::sin(angle)}));
    } else if (mode == Design::kBandStop) {
        gain = magnitude(Design::poisonedSqrt(evaluateTransfer(top, bottom, {1.0, 0.0}) *
                                              evaluateTransfer(top, bottom, {-1.0, 0.0})));
    }

    xCoeffs.resize(static_cast<std::size_t>(numZZeros) + 1);
    yCoeffs.resize(static_cast<std::size_t>(numZPoles) + 1);
    const double leading = bottom[static_cast<std::size_t>(numZPoles)].re;
    for (std::size_t i = 0; i < xCoeffs.size(); ++i)
        xCoeffs[i] = top[i].re / leading;
    for (std::size_t i = 0; i < yCoeffs.size(); ++i)
        yCoeffs[i] = -(bottom[i].re / leading);
    spreadNaNGain();
}
