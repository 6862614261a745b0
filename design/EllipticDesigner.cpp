// SPDX-License-Identifier: MIT
#include "design/EllipticDesigner.h"

#include "design/Constants.h"
#include "design/EllipticFunctions.h"

#include <cmath>
#include <limits>

using Design::Complex;
using Design::kHalfPi;
using Design::kPi;

namespace {
/// Decibels of power to natural logarithms.
const double kDecibels = 10.0 / std::log(10.0);
/// The most z-plane roots of an order up to 10: 20 poles and 30 zeros.
constexpr std::size_t kMostRoots = 50;

/// The real parts of the coefficients of the product of (1 - root z^-1); coefficient i belongs to z^-i.
std::vector<double> expand(const Complex* roots, std::size_t count) {
    std::vector<Complex> c(count + 1);
    c[0] = {1.0, 0.0};
    for (std::size_t n = 0; n < count; ++n)
        for (std::size_t h = n + 1; h-- > 0;)
            c[h + 1] = c[h + 1] - roots[n] * c[h];
    std::vector<double> real(count + 1);
    for (std::size_t i = 0; i <= count; ++i)
        real[i] = c[i].re;
    return real;
}

/// A polynomial in z^-1 at z = 1 or, with `sign` -1, at z = -1, up to that sign.
double evaluateAtEnd(const std::vector<double>& coefficients, double sign) {
    double sum = 1.0;
    for (std::size_t i = 1; i < coefficients.size(); ++i)
        sum = sign * sum + coefficients[i];
    return sum;
}

/// A symmetric polynomial in z^-1 at the angle `angle`, up to a phase: the terms beside the middle one, pair
/// by pair.
double evaluateAtAngle(const std::vector<double>& coefficients, double angle) {
    const std::size_t degree = coefficients.size() - 1;
    const std::size_t middle = degree / 2;
    const double ai = middle > degree / 4 * 2 ? 1.0 : 0.0; // an odd middle turns cosines into sines
    double sum = ai == 0.0 ? coefficients[middle] : 0.0;
    for (std::size_t j = 1; j <= middle; ++j) {
        const double weight = std::cos(angle * static_cast<double>(j) - ai * kHalfPi);
        sum += weight * (coefficients[middle + j] + (1.0 - 2.0 * ai) * coefficients[middle - j]);
    }
    return sum;
}
} // namespace

EllipticDesigner::EllipticDesigner(std::int32_t designMode, std::int32_t prototypeOrder, double low,
                                   double passBandRipple, double stopBandRipple, double high)
    : DirectFormDesigner(designMode, prototypeOrder, low, high), passRipple(passBandRipple),
      stopRipple(stopBandRipple) {
    zRoots.reserve(kMostRoots);
}

void EllipticDesigner::setParameters(std::int32_t designMode, std::int32_t prototypeOrder, double low,
                                     double passBandRipple, double stopBandRipple, double high) {
    mode = designMode;
    order = prototypeOrder;
    lowCutOff = low;
    passRipple = passBandRipple;
    stopRipple = stopBandRipple;
    highCutOff = high;
    needsDesign = true;
}

void EllipticDesigner::design() {
    computeParameters();
    computeRoots();
    mapRoots();
    expandAndScale();
}

void EllipticDesigner::run(const MatrixXd& input) {
    // Subtracting a product and adding that of the negated coefficient give the same bits.
    Design::runDirectForm({xCoeffs, addedYCoeffs, Design::InputScale::Multiply, 1.0}, input, xHistory,
                          yHistory);
}

void EllipticDesigner::computeParameters() {
    const double e2 = std::exp(passRipple / kDecibels);
    scale = order % 2 == 0 ? std::sqrt(e2) : 1.0;
    eps = std::sqrt(e2 - 1.0);

    const double width = getIsBand() ? highCutOff - lowCutOff : lowCutOff;
    const double edges = getIsBand() ? highCutOff + lowCutOff : mode == Design::kHighPass ? 1.0 : lowCutOff;
    wc = std::tan(width * kPi * 0.5);
    cgam = std::cos(edges * kPi * 0.5) / std::cos(width * 0.5 * kPi);

    const double ratio = eps / std::sqrt(std::exp(-stopRipple / kDecibels) - 1.0);
    const double m1 = ratio * ratio;
    const double nome = std::exp(-(Design::ellpk(m1) * kPi / (Design::ellpk(1.0 - m1) * order)));
    const double k = Design::cay(nome);
    const double a = (getIsInverted() ? k : 1.0 / k) * wc;

    double edge = 2.0 * std::atan(a);
    if (getIsBand()) {
        const double root = std::sqrt(a * a * a * a + (1.0 - cgam * cgam) * (a * a));
        edge = kHalfPi - Design::guardedArcsine((root + cgam) / (a * a + 1.0));
    }
    const double angle = edge / kPi * kPi * 0.5;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    wr = getIsBand() ? (cgam - (c * c - s * s)) / (2.0 * s * c * wc) : s / (wc * c);
    if (getIsInverted()) wr = 1.0 / wr;
    wr = std::fabs(wr);
}

void EllipticDesigner::computeRoots() {
    const std::int32_t poles = (order + 1) / 2;
    std::int32_t zeros = order / 2;
    const double k = 1.0 / wr;
    const double m = k * k;
    const double quarter = Design::ellpk(1.0 - m);
    const double nome = std::exp(-(Design::ellpk(m) * (order * kPi) / quarter));
    const double k1 = Design::cay(nome);
    const double m1p = 1.0 - k1 * k1;
    const double quarter1 = Design::ellpk(m1p);
    const double u = Design::ellik(std::atan(1.0 / eps), m1p);
    const auto [sn1, cn1, dn1, phi1, code1] = Design::ellpj(u * quarter / (order * quarter1), 1.0 - m);

    const auto argument = [&](std::int32_t i) { return (order - 1 - 2 * i) * quarter / order; };
    sRoots.fill(0.0);
    for (std::int32_t i = 0; i < zeros; ++i)
        setSRoot(poles + i, {0.0, 1.0 / (k * Design::ellpj(argument(i), m).sn)});
    for (std::int32_t i = 0; i < poles; ++i) {
        const Design::JacobiElliptic f = Design::ellpj(argument(i), m);
        const double r = k * f.sn * sn1;
        const double d = cn1 * cn1 + r * r;
        setSRoot(i, {-(sn1 * f.dn * f.cn * cn1) / d, f.sn * dn1 / d});
    }

    if (getIsInverted()) {
        for (std::int32_t i = 0; i < poles + zeros; ++i) {
            const auto [re, im] = sRoot(i);
            const double square = re * re + im * im;
            setSRoot(i, {re / square, im / square});
        }
        zeros = poles; // the new ones are (0, 0), which sRoots hold already
    }
    numSPoles = 2 * poles;
    numSZeros = 2 * zeros;
}

Complex EllipticDesigner::sRoot(std::int32_t index) const {
    const auto at = 2 * static_cast<std::size_t>(index);
    return {sRoots[at], sRoots[at + 1]};
}

void EllipticDesigner::setSRoot(std::int32_t index, Complex root) {
    const auto at = 2 * static_cast<std::size_t>(index);
    sRoots[at] = root.re;
    sRoots[at + 1] = root.im;
}

void EllipticDesigner::mapRoots() {
    zRoots.clear();
    const auto map = [this](std::int32_t index) {
        if (getIsBand())
            mapToBand(sRoot(index));
        else
            mapToEdge(sRoot(index));
    };
    const std::int32_t poles = numSPoles / 2;
    for (std::int32_t i = 0; i < poles; ++i)
        map(i);
    zOrder = static_cast<std::int32_t>(zRoots.size());
    // `numSZeros`, not half of it: the surplus reads the cleared part of the roots.
    for (std::int32_t i = 0; i < numSZeros; ++i)
        map(poles + i);
}

void EllipticDesigner::mapToEdge(Complex root) {
    const Complex one{1.0, 0.0};
    const Complex w = wc * root;
    const Complex z = (one + w) / (one - w);
    zRoots.push_back(z);
    if (root.im != 0.0) zRoots.push_back(conjugate(z));
}

void EllipticDesigner::mapToBand(Complex root) {
    const Complex w = wc * root;
    const Complex one{1.0, 0.0};
    const double middle = -2.0 * cgam;
    const Complex radicand = Complex{middle * middle, 0.0} - 4.0 * (one - w * w);
    const Complex s = Design::complexSqrt(radicand);
    const Complex b{2.0 * cgam, 0.0};
    const Complex divisor{2.0 * (1.0 - w.re), -0.0}; // the imaginary part of w is left out
    const Complex z1 = (s + b) / divisor;
    appendWithConjugate(z1);
    if (root.im != 0.0 || z1.im == 0.0) appendWithConjugate((b - s) / divisor);
}

void EllipticDesigner::appendWithConjugate(Complex root) {
    zRoots.push_back(root);
    if (root.im != 0.0) zRoots.push_back(conjugate(root));
}

void EllipticDesigner::expandAndScale() {
    const auto poles = static_cast<std::size_t>(zOrder);
    while (zRoots.size() < 2 * poles) {
        zRoots.push_back({-1.0, 0.0});
        if (getIsBand()) zRoots.push_back({1.0, 0.0});
    }
    yCoeffs = expand(zRoots.data(), poles);
    xCoeffs = expand(zRoots.data() + poles, poles);

    gain = gainAtReference(xCoeffs, yCoeffs);
    // An empty band has divided by zero on the way, and a root may have turned that into a number again.
    if (wc == 0.0) gain = std::numeric_limits<double>::quiet_NaN();
    for (double& coefficient : xCoeffs)
        coefficient *= gain;
    spreadNaNGain();
    addedYCoeffs = yCoeffs;
    for (double& coefficient : addedYCoeffs)
        coefficient = -coefficient;
}

double EllipticDesigner::gainAtReference(const std::vector<double>& zeros,
                                         const std::vector<double>& poles) const {
    if (mode == Design::kBandPass) {
        const double angle = kHalfPi - Design::guardedArcsine(cgam);
        return evaluateAtAngle(poles, angle) / (evaluateAtAngle(zeros, angle) * scale);
    }
    const double sign = mode == Design::kHighPass ? -1.0 : 1.0;
    return evaluateAtEnd(poles, sign) / (evaluateAtEnd(zeros, sign) * scale);
}
