// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/MatrixXd.h"

#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <vector>

/// The orientation-aided filter told again on triples of numbers, one rule a line: what
/// `SphericalFilteringCore` and `FilterSphericalFiltering` are compared with. A field of two rows is two
/// triples, the current one first; an empty field has none.
struct LiteralSpherical {
    using M = Quillmere::Core::MatrixXd;
    using Triple = std::array<double, 3>;
    using Rotation = std::array<Triple, 3>;
    using Rows = std::vector<Triple>;

    /// A first-order low-pass of three channels whose cut-off may move while it runs.
    struct LowPass {
        struct Design {
            double a1 = 0.0;
            double gain = 0.0;
        };
        double cutOff = 0.05;
        bool needsInit = true;
        bool memorize = false;
        bool hasRun = false;
        Design design;
        std::map<double, Design> known;
        Triple lastInput{};
        Triple lastOutput{};

        void setParameters(double newCutOff) {
            cutOff = newCutOff;
            needsInit = true;
        }

        void setCutOff(double newCutOff, bool reinit, bool keepDesigns) {
            if (newCutOff == cutOff) return;
            const bool pending = needsInit;
            cutOff = newCutOff;
            memorize = keepDesigns;
            needsInit = pending || reinit;
            if (!needsInit) compute();
        }

        void compute() {
            if (memorize && known.contains(cutOff)) {
                design = known.at(cutOff);
                return;
            }
            const double pi = 4.0 * std::atan(1.0);
            const double turn = pi + pi;
            double a = cutOff * pi * 0.5;
            if (std::abs(a) > turn) a -= turn * std::trunc(a / turn);
            const double t = std::tan(a);
            design.a1 = (1.0 - t) / (1.0 + t);
            design.gain = t / (1.0 + t);
            if (memorize) known[cutOff] = design;
        }

        Triple step(const Triple& input) {
            if (!hasRun) needsInit = true; // the output has no shape yet
            if (needsInit) {
                if (!memorize) known.clear();
                compute();
                lastInput = input;
                lastOutput = input;
                needsInit = false;
                hasRun = true;
            }
            for (std::size_t i = 0; i < 3; ++i) {
                lastOutput[i] = design.a1 * lastOutput[i] + design.gain * (lastInput[i] + input[i]);
                lastInput[i] = input[i];
            }
            return lastOutput;
        }
    };

    Rows aTerre, aFiltered, aTerreFiltered;
    Rows mTerre, mFiltered, mTerreFiltered;
    std::optional<Triple> aPrevious, mPrevious;
    std::array<double, 4> quaternion{1.0, 0.0, 0.0, 0.0};
    M temp;
    M cutoffs;
    LowPass aLowPass, mLowPass;
    double filterGain = 0.001;
    double samplePeriod = 0.01;
    double lambdaGain = 0.7;
    bool holdMagnetic = false;
    bool holdAcceleration = false;
    bool magneticPerturbed = false;

    /// The previous vectors, the cut-offs, the gain and the period outlive it.
    void reset() {
        aTerre.clear();
        mTerre.clear();
        aFiltered.clear();
        aTerreFiltered.clear();
        mFiltered.clear();
        mTerreFiltered.clear();
        temp = M();
        lambdaGain = 0.7;
        quaternion = {1.0, 0.0, 0.0, 0.0};
        holdMagnetic = false;
        holdAcceleration = false;
        magneticPerturbed = false;
        aLowPass.setParameters(0.0001);
        mLowPass.setParameters(0.0001);
    }

    Rotation turning() const {
        const auto [w, x, y, z] = quaternion;
        Rotation r;
        r[0] = {x * x + w * w - y * y - z * z, 2.0 * (x * y - w * z), 2.0 * (x * z + y * w)};
        r[1] = {2.0 * (w * z + x * y), w * w - x * x + y * y - z * z, 2.0 * (y * z - x * w)};
        r[2] = {2.0 * (x * z - y * w), 2.0 * (y * z + x * w), w * w - x * x - y * y + z * z};
        return r;
    }

    M rotation() const {
        const Rotation r = turning();
        M result(3, 3);
        for (std::size_t i = 0; i < 3; ++i)
            for (std::size_t j = 0; j < 3; ++j)
                result(static_cast<Eigen::Index>(i), static_cast<Eigen::Index>(j)) = r[i][j];
        return result;
    }

    /// The row v times the transposed rotation.
    static Triple toEarth(const Triple& v, const Rotation& r) {
        Triple result{};
        for (std::size_t j = 0; j < 3; ++j)
            result[j] = v[0] * r[j][0] + v[1] * r[j][1] + v[2] * r[j][2];
        return result;
    }

    /// The row v times the rotation.
    static Triple toSensor(const Triple& v, const Rotation& r) {
        Triple result{};
        for (std::size_t j = 0; j < 3; ++j)
            result[j] = v[0] * r[0][j] + v[1] * r[1][j] + v[2] * r[2][j];
        return result;
    }

    static Triple tripleOf(const M& rowOrColumn) { return {rowOrColumn(0), rowOrColumn(1), rowOrColumn(2)}; }

    static M rowOf(const Triple& v) {
        M result(1, 3);
        result << v[0], v[1], v[2];
        return result;
    }

    static double limited(double x, double low, double high) {
        if (x < low) return low;
        if (x > high) return high;
        return x;
    }

    static Triple clipped(const Triple& v) {
        return {limited(v[0], -1.1, 1.1), limited(v[1], -1.1, 1.1), limited(v[2], -1.1, 1.1)};
    }

    void turn(const Triple& gyroscope, double deltaTime) {
        const Triple& g = gyroscope;
        double n = std::sqrt(g[0] * g[0] + g[1] * g[1] + g[2] * g[2]);
        if (!(n > 1e-9)) n = 1e-9;
        const Triple u{g[0] / n, g[1] / n, g[2] / n};
        const double h = n * (deltaTime * 0.5);
        const double d[4] = {std::cos(h), u[0] * std::sin(h), u[1] * std::sin(h), u[2] * std::sin(h)};
        const double table[4][4] = {{d[0], d[1], d[2], d[3]},
                                    {-d[1], d[0], -d[3], d[2]},
                                    {-d[2], d[3], d[0], -d[1]},
                                    {-d[3], -d[2], d[1], d[0]}};
        const std::array<double, 4> q = quaternion;
        for (std::size_t j = 0; j < 4; ++j)
            quaternion[j] = q[0] * table[0][j] + q[1] * table[1][j] + q[2] * table[2][j] + q[3] * table[3][j];
        double length = 0.0;
        for (const double part : quaternion)
            length += part * part;
        length = std::sqrt(length);
        if (!(length > 1e-9)) length = 1e-9;
        for (double& part : quaternion)
            part = part / length;
    }

    /// One significant digit; zero stays zero.
    static double oneDigit(double f) {
        if (f == 0.0) return 0.0;
        const int e = static_cast<int>(std::floor(std::log10(f)));
        const double t = f * std::pow(10.0, -e);
        const double r = t >= 0.0 ? std::floor(t + 0.5) : -std::floor(0.5 - t);
        return r * std::pow(10.0, e);
    }

    void noteResiduals() {
        std::array<double, 6> residual{};
        for (std::size_t i = 0; i < 3; ++i) {
            residual[i] = std::abs((*aPrevious)[i] - aFiltered[0][i]);
            residual[3 + i] = std::abs((*mPrevious)[i] - mFiltered[0][i]);
        }
        const bool exists = temp.rows() == 5 || temp.rows() == 6;
        if (!exists) temp.resize(5, 6);
        for (Eigen::Index c = 0; c < 6; ++c) {
            const double now = residual[static_cast<std::size_t>(c)];
            for (Eigen::Index r = 4; r >= 1; --r)
                temp(r, c) = exists ? temp(r - 1, c) : now;
            temp(0, c) = now;
        }
    }

    /// How far row 0 of the table lies from the columns' means, over three columns.
    double spread(Eigen::Index firstColumn) const {
        double sum = 0.0;
        for (Eigen::Index c = firstColumn; c < firstColumn + 3; ++c) {
            double mean = 0.0;
            for (Eigen::Index r = 0; r < temp.rows(); ++r)
                mean += temp(r, c);
            mean = mean / static_cast<double>(temp.rows());
            sum += (temp(0, c) - mean) * (temp(0, c) - mean);
        }
        return sum;
    }

    void adapt(const Triple& gyroscope) {
        double aErr = 0.0;
        double mErr = 0.0;
        if (!aFiltered.empty() && !mFiltered.empty()) {
            noteResiduals();
            aErr = spread(0);
            mErr = spread(3);
        }
        const Triple& g = gyroscope;
        const double energy = limited(g[0] * g[0] + g[1] * g[1] + g[2] * g[2] - 0.05, 0.1, 5.0);
        const double gainA = 1.1 - limited(aErr, 0.1, 1.0);
        const double gainM = 1.1 - limited(mErr, 0.1, 1.0);
        double fA = 0.0;
        double fM = 0.0;
        if (cutoffs.size() == 0) {
            cutoffs.resize(1, 2);
            fA = gainA * energy * filterGain;
            fM = gainM * energy * filterGain;
        } else {
            fA = (lambdaGain * gainA * energy * filterGain + cutoffs(0)) / (lambdaGain + 1.0);
            fM = (lambdaGain * gainM * energy * filterGain + cutoffs(1)) / (lambdaGain + 1.0);
        }
        useCutoffs(oneDigit(fA), oneDigit(fM));
    }

    void useCutoffs(double acceleration, double magnetic) {
        cutoffs(0) = acceleration;
        cutoffs(1) = magnetic;
        aLowPass.setCutOff(acceleration, false, true);
        mLowPass.setCutOff(magnetic, false, true);
    }

    void filter() {
        if (aTerreFiltered.size() != 2) aTerreFiltered = aTerre;
        if (mTerreFiltered.size() != 2) mTerreFiltered = mTerre;
        aTerreFiltered[1] = holdAcceleration ? aTerreFiltered[0] : aLowPass.step(aTerre[0]);
        mTerreFiltered[1] = holdMagnetic ? mTerreFiltered[0] : mLowPass.step(mTerre[0]);
        aTerreFiltered[0] = aTerreFiltered[1];
        mTerreFiltered[0] = mTerreFiltered[1];
    }

    void update(const M& gyroscope, const M* accelerometer, const M* magnetometer, M out[6], double deltaTime,
                double lambda, bool magPerturbed, const M* imposed) {
        magneticPerturbed = magPerturbed;
        const Triple g = tripleOf(gyroscope);
        Triple a = aPrevious.value_or(Triple{0.0, 0.0, 1.0});
        holdAcceleration = accelerometer == nullptr;
        if (accelerometer) a = tripleOf(*accelerometer);
        Triple m = mPrevious.value_or(Triple{0.5, 0.0, 0.866});
        holdMagnetic = magnetometer ? magneticPerturbed : true;
        if (magnetometer) m = tripleOf(*magnetometer);
        if (!mPrevious) mPrevious = m;
        if (!aPrevious) aPrevious = a;
        if (lambda != -1.0) lambdaGain = lambda;
        if (deltaTime < 0.0) deltaTime = samplePeriod;

        turn(g, deltaTime);
        a = clipped(a);
        m = clipped(m);
        const Rotation r = turning();
        if (aTerre.empty()) {
            aTerre.assign(2, toEarth(a, r));
            mTerre.assign(2, toEarth(m, r));
        }
        aTerre[0] = toEarth(a, r);
        mTerre[0] = toEarth(m, r);

        if (imposed) {
            if (cutoffs.size() == 0) cutoffs.resize(1, 2);
            useCutoffs((*imposed)(0), (*imposed)(1));
        } else {
            adapt(g);
        }
        aPrevious = a;
        mPrevious = m;

        filter();
        aTerre[1] = aTerre[0];
        mTerre[1] = mTerre[0];
        aFiltered = {toSensor(aTerreFiltered[0], r), toSensor(aTerreFiltered[1], r)};
        mFiltered = {toSensor(mTerreFiltered[0], r), toSensor(mTerreFiltered[1], r)};

        out[0] = rowOf(aFiltered[0]);
        out[1] = rowOf(mFiltered[0]);
        out[2] = rowOf(aTerre[0]);
        out[3] = rowOf(mTerre[0]);
        out[4] = rowOf(aTerreFiltered[0]);
        out[5] = rowOf(mTerreFiltered[0]);
    }
};
