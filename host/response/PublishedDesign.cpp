// SPDX-License-Identifier: MIT
#include "host/response/PublishedDesign.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace Quillmere::Host {

namespace {
using Complex = std::complex<double>;

constexpr double kRounding = std::numeric_limits<double>::epsilon();
constexpr int kAngles = 1024;
constexpr int kThirds = 80; // taken off what lies between two of them: more than a double tells apart

/// Coefficients by falling index, so that the last one takes part last, unmultiplied.
template <class Row>
Complex horner(const Row& row, Complex z) {
    Complex sum = 0.0;
    for (Eigen::Index i = row.cols(); i-- > 0;)
        sum = sum * z + row(i);
    return sum;
}
} // namespace

PublishedDesign::PublishedDesign(double publishedGain, const Core::MatrixXd& rows)
    : isByDelay(rows(1, 0) == -1.0), scale(isByDelay ? 1.0 : publishedGain), coeffs(rows) {}

Complex PublishedDesign::evaluate(Complex z) const {
    const Value value = valueAt(z);
    return value.top / value.bottom / scale;
}

PublishedDesign::Value PublishedDesign::valueAt(Complex z) const {
    const Complex step = isByDelay ? 1.0 / z : z;
    return {.top = horner(coeffs.row(0), step), .bottom = -horner(coeffs.row(1), step)};
}

double PublishedDesign::bottomSizeAt(double angle) const {
    return std::abs(valueAt(std::polar(1.0, angle)).bottom);
}

/// Each polynomial is off by a rounding of its size, the sum of its coefficients' sizes.
double PublishedDesign::errorAt(double angle) const {
    const Value value = valueAt(std::polar(1.0, angle));
    const double divisor = std::abs(value.bottom * scale);
    const double response = std::abs(value.top) / divisor;
    const Eigen::VectorXd sizes = coeffs.cwiseAbs().rowwise().sum();
    return kRounding * (sizes(0) / divisor + response * (sizes(1) / std::abs(value.bottom)));
}

double PublishedDesign::estimateError() const {
    if (!coeffs.allFinite() || !std::isfinite(scale)) return std::numeric_limits<double>::quiet_NaN();
    const double apart = std::numbers::pi / kAngles;
    double largest = 0.0;
    for (int i = 0; i <= kAngles; ++i) {
        const double angle = apart * i;
        largest = std::max(largest, errorAt(angle));
        const double here = bottomSizeAt(angle);
        // The denominator is smallest near here; a narrow band would slip between the angles.
        if (bottomSizeAt(angle - apart) >= here && bottomSizeAt(angle + apart) >= here)
            largest = std::max(largest, errorAt(smallestBottom(angle - apart, angle + apart)));
    }
    return largest;
}

/// The angle of the only minimum between two.
double PublishedDesign::smallestBottom(double below, double above) const {
    for (int n = 0; n < kThirds; ++n) {
        const double lower = below + (above - below) / 3.0;
        const double upper = above - (above - below) / 3.0;
        if (bottomSizeAt(lower) < bottomSizeAt(upper))
            above = upper;
        else
            below = lower;
    }
    return below;
}

} // namespace Quillmere::Host
