// SPDX-License-Identifier: MIT
#include "estimation/SphericalFilteringCore.h"

#include <algorithm>
#include <cmath>

using Quillmere::Core::MatrixXd;
using Quillmere::Core::resizeSample;

namespace {
using Vector3 = std::array<double, 3>;

constexpr double kLargestComponent = 1.1; // in gravities, and in strengths of the Earth's field
constexpr double kSmallestNorm = 1e-9;
constexpr double kGyroscopeRest = 0.05; // squared rate that counts as rest
constexpr double kSmallestEnergy = 0.1;
constexpr double kLargestEnergy = 5.0;
constexpr double kSmallestScatter = 0.1;
constexpr double kLargestScatter = 1.0;
constexpr double kStartCutoff = 0.0001;
constexpr double kStartLambda = 0.7;
constexpr Vector3 kGravityAtRest{0.0, 0.0, 1.0};
constexpr Vector3 kFieldAtRest{0.5, 0.0, 0.866}; // dipping by 60 degrees
constexpr int kResidualRows = 5;
constexpr int kResidualColumns = 6;

Vector3 vectorOf(const MatrixXd& matrix) {
    const double* const v = matrix.data();
    return {v[0], v[1], v[2]};
}

void put(MatrixXd& to, const Vector3& v) {
    resizeSample(to, 1, 3);
    std::copy(v.begin(), v.end(), to.data());
}

double squaredNorm(const Vector3& v) {
    return v[0] * v[0] + v[1] * v[1] + v[2] * v[2];
}

double limit(double x, double smallest, double largest) {
    if (x < smallest) return smallest;
    if (x > largest) return largest;
    return x; // a not-a-number stays one
}

Vector3 clipped(const Vector3& v) {
    const auto clip = [](double x) { return limit(x, -kLargestComponent, kLargestComponent); };
    return {clip(v[0]), clip(v[1]), clip(v[2])};
}

/// A norm to divide by; a not-a-number counts as too small.
double usableNorm(double norm) {
    return norm > kSmallestNorm ? norm : kSmallestNorm;
}

/// `f` to one significant digit. What has no digits (0, infinities, not-a-number) stays as it is, and so does
/// what is so small that its power of ten is no double.
double roundedToOneDigit(double f) {
    if (f == 0.0 || !std::isfinite(f)) return f;
    const int e = static_cast<int>(std::floor(std::log10(std::fabs(f))));
    const double scale = std::pow(10.0, -e);
    if (!std::isfinite(scale)) return f;
    const double t = f * scale;
    const double r = t >= 0.0 ? std::floor(t + 0.5) : -std::floor(0.5 - t);
    return r * std::pow(10.0, e);
}
} // namespace

SphericalFilteringCore::SphericalFilteringCore() {
    for (Channel* const channel : {&acceleration, &magnetic})
        resizeSample(channel->lowPassInput, 1, 3);
    resizeSample(rotation, 3, 3);
    reset();
}

void SphericalFilteringCore::reset() {
    hasFiltered = false;
    resizeSample(temp, 0, 0);
    lambdaGain = kStartLambda;
    quaternion = {1.0, 0.0, 0.0, 0.0};
    fillRotation();
    for (Channel* const channel : {&acceleration, &magnetic}) {
        channel->hold = false;
        channel->lowPass.setParameters(kStartCutoff, 1);
    }
}

void SphericalFilteringCore::update(const MatrixXd& gyroscope, const MatrixXd* accelerometer,
                                    const MatrixXd* magnetometer, MatrixXd& aFilteredOut,
                                    MatrixXd& mFilteredOut, MatrixXd& aTerreOut, MatrixXd& mTerreOut,
                                    MatrixXd& aTerreFilteredOut, MatrixXd& mTerreFilteredOut,
                                    double deltaTime, double lambda, bool magPerturbed,
                                    const MatrixXd* imposedCutoffs) {
    const Vector3 rate = vectorOf(gyroscope);
    acceleration.hold = accelerometer == nullptr;
    magnetic.hold = magnetometer == nullptr || magPerturbed;
    const Vector3 a = clipped(choose(acceleration, accelerometer, kGravityAtRest));
    const Vector3 m = clipped(choose(magnetic, magnetometer, kFieldAtRest));

    if (lambda != -1.0) lambdaGain = lambda;
    turn(rate, deltaTime < 0.0 ? samplePeriod : deltaTime);
    fillRotation();
    toTerre(acceleration, a);
    toTerre(magnetic, m);

    // The cut-offs look at the vectors of the step before, so those are replaced afterwards.
    if (imposedCutoffs != nullptr)
        impose(imposedCutoffs->data()[0], imposedCutoffs->data()[1]);
    else
        adaptCutoffs(rate);
    remember(acceleration, a);
    remember(magnetic, m);

    filter(acceleration);
    filter(magnetic);
    hasFiltered = true;

    put(aFilteredOut, acceleration.filtered);
    put(mFilteredOut, magnetic.filtered);
    put(aTerreOut, acceleration.terre);
    put(mTerreOut, magnetic.terre);
    put(aTerreFilteredOut, acceleration.terreFiltered);
    put(mTerreFilteredOut, magnetic.terreFiltered);
}

/// The vector of this step: the one given, else the last one, else `fallback`.
SphericalFilteringCore::Vector3 SphericalFilteringCore::choose(const Channel& channel, const MatrixXd* given,
                                                               const Vector3& fallback) {
    if (given != nullptr) return vectorOf(*given);
    return channel.hasPrevious ? channel.previous : fallback;
}

void SphericalFilteringCore::turn(const Vector3& rate, double deltaTime) {
    const double n = usableNorm(std::sqrt(squaredNorm(rate)));
    const double h = n * (deltaTime * 0.5);
    double sine;
    double cosine;
    ::sincos(h, &sine, &cosine);
    const double d0 = cosine;
    const double d1 = rate[0] / n * sine;
    const double d2 = rate[1] / n * sine;
    const double d3 = rate[2] / n * sine;

    // Order matters: each element is a row times a column, summed by rising index.
    const auto [w, x, y, z] = quaternion;
    const double qw = w * d0 + x * -d1 + y * -d2 + z * -d3;
    const double qx = w * d1 + x * d0 + y * d3 + z * -d2;
    const double qy = w * d2 + x * -d3 + y * d0 + z * d1;
    const double qz = w * d3 + x * d2 + y * -d1 + z * d0;
    const double norm = usableNorm(std::sqrt(qw * qw + qx * qx + qy * qy + qz * qz));
    quaternion = {qw / norm, qx / norm, qy / norm, qz / norm};
}

void SphericalFilteringCore::fillRotation() {
    const auto [w, x, y, z] = quaternion;
    double* const r = rotation.data();
    r[0] = x * x + w * w - y * y - z * z;
    r[1] = 2.0 * (x * y - w * z);
    r[2] = 2.0 * (x * z + y * w);
    r[3] = 2.0 * (w * z + x * y);
    r[4] = w * w - x * x + y * y - z * z;
    r[5] = 2.0 * (y * z - x * w);
    r[6] = 2.0 * (x * z - y * w);
    r[7] = 2.0 * (y * z + x * w);
    r[8] = w * w - x * x - y * y + z * z;
}

void SphericalFilteringCore::toTerre(Channel& channel, const Vector3& v) const {
    const double* const r = rotation.data();
    for (std::size_t i = 0; i < 3; ++i)
        channel.terre[i] = v[0] * r[3 * i] + v[1] * r[3 * i + 1] + v[2] * r[3 * i + 2];
}

void SphericalFilteringCore::remember(Channel& channel, const Vector3& v) {
    channel.previous = v;
    channel.hasPrevious = true;
}

void SphericalFilteringCore::impose(double aCutoff, double mCutoff) {
    resizeSample(cutoffs, 1, 2);
    cutoffs.data()[0] = aCutoff;
    cutoffs.data()[1] = mCutoff;
    // Keep the running states, and keep every design: cut-offs come back.
    acceleration.lowPass.setCutOff(aCutoff, false, true);
    magnetic.lowPass.setCutOff(mCutoff, false, true);
}

void SphericalFilteringCore::adaptCutoffs(const Vector3& rate) {
    double aScatter = 0.0;
    double mScatter = 0.0;
    if (hasFiltered) {
        rememberResiduals();
        aScatter = scatter(0);
        mScatter = scatter(3);
    }
    const double energy = limit(squaredNorm(rate) - kGyroscopeRest, kSmallestEnergy, kLargestEnergy);
    const double aGain = 1.1 - limit(aScatter, kSmallestScatter, kLargestScatter);
    const double mGain = 1.1 - limit(mScatter, kSmallestScatter, kLargestScatter);

    double aCutoff;
    double mCutoff;
    if (cutoffs.size() == 0) {
        aCutoff = aGain * energy * filterGain;
        mCutoff = mGain * energy * filterGain;
    } else {
        aCutoff = (lambdaGain * aGain * energy * filterGain + cutoffs.data()[0]) / (lambdaGain + 1.0);
        mCutoff = (lambdaGain * mGain * energy * filterGain + cutoffs.data()[1]) / (lambdaGain + 1.0);
    }
    impose(roundedToOneDigit(aCutoff), roundedToOneDigit(mCutoff));
}

/// Puts how far the last vectors were from the filtered ones on top of `temp`.
void SphericalFilteringCore::rememberResiduals() {
    std::array<double, kResidualColumns> residuals;
    for (std::size_t i = 0; i < 3; ++i) {
        residuals[i] = std::fabs(acceleration.previous[i] - acceleration.filtered[i]);
        residuals[i + 3] = std::fabs(magnetic.previous[i] - magnetic.filtered[i]);
    }
    const bool first = temp.size() == 0;
    resizeSample(temp, kResidualRows, kResidualColumns);
    double* const rows = temp.data();
    for (int row = kResidualRows - 1; row > 0; --row) {
        const double* const from = first ? residuals.data() : rows + (row - 1) * kResidualColumns;
        std::copy_n(from, kResidualColumns, rows + row * kResidualColumns);
    }
    std::copy_n(residuals.data(), kResidualColumns, rows);
}

/// How far the newest residuals of three columns lie from the columns' means: the sum of the squares.
double SphericalFilteringCore::scatter(int firstColumn) const {
    double result = 0.0;
    for (int c = firstColumn; c < firstColumn + 3; ++c) {
        double sum = 0.0;
        for (int r = 0; r < kResidualRows; ++r)
            sum += temp.data()[r * kResidualColumns + c];
        const double difference = temp.data()[c] - sum / kResidualRows;
        result += difference * difference;
    }
    return result;
}

void SphericalFilteringCore::filter(Channel& channel) {
    if (!hasFiltered) channel.terreFiltered = channel.terre;
    if (!channel.hold) {
        put(channel.lowPassInput, channel.terre);
        channel.lowPass.step(channel.lowPassInput);
        channel.terreFiltered = vectorOf(channel.lowPass.output());
    }
    const Vector3& v = channel.terreFiltered;
    const double* const r = rotation.data();
    for (std::size_t i = 0; i < 3; ++i)
        channel.filtered[i] = v[0] * r[i] + v[1] * r[3 + i] + v[2] * r[6 + i];
}
