// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/MatrixXd.h"

#include <cmath>
#include <limits>

/// The orientation-aided filter once more, rule by rule and with no thought for speed: what `SphericalFilteringCore` is
/// compared with. Every field is a matrix, rows are shifted where the rules shift them, every design is made anew, and no
/// line is shared with the code under test.
struct LiteralSpherical {
    using M = Quillmere::Core::MatrixXd;

    /// First-order low-pass of one row of three; the state is the last input and the last output of each element.
    struct LowPass {
        double cutOff = 0.05, a1 = 0.0, g = 0.0;
        bool needsInit = true;
        M x1, y1;

        void design() {
            const double pi = 4 * std::atan(1.0);
            double a = cutOff * pi * 0.5;
            const double turn = pi + pi;
            if (std::fabs(a) > turn) a -= turn * std::trunc(a / turn);
            const double t = std::tan(a);
            a1 = (1 - t) / (1 + t);
            g = t / (1 + t);
        }
        void setParameters(double value) {
            cutOff = value;
            needsInit = true;
        }
        void setCutOff(double value) {
            if (value == cutOff) return;
            cutOff = value;
            if (!needsInit) design();
        }
        M step(const M& in) {
            if (needsInit) {
                design();
                x1 = in;
                y1 = in;
                needsInit = false;
            }
            for (int i = 0; i < 3; ++i) {
                y1(0, i) = a1 * y1(0, i) + g * (x1(0, i) + in(0, i));
                x1(0, i) = in(0, i);
            }
            return y1;
        }
    };

    M aTerre, aFiltered, aTerreFiltered, aPrevious;
    M mTerre, mFiltered, mTerreFiltered, mPrevious;
    M quaternion, temp, cutoffs;
    LowPass aLowPass, mLowPass;
    double filterGain = 0.001, samplePeriod = 0.01, lambdaGain = 0.7;
    bool holdMagnetic = false, holdAcceleration = false, magneticPerturbed = false;

    static M row3(double x, double y, double z) {
        M m(1, 3);
        m << x, y, z;
        return m;
    }

    void reset() {
        aTerre.resize(0, 0);
        mTerre.resize(0, 0);
        aFiltered.resize(0, 0);
        aTerreFiltered.resize(0, 0);
        mFiltered.resize(0, 0);
        mTerreFiltered.resize(0, 0);
        temp.resize(0, 0);
        lambdaGain = 0.7;
        quaternion.resize(1, 4);
        quaternion << 1, 0, 0, 0;
        holdMagnetic = holdAcceleration = magneticPerturbed = false;
        aLowPass.setParameters(0.0001);
        mLowPass.setParameters(0.0001);
    }

    M rotation() const {
        const double w = quaternion(0, 0), x = quaternion(0, 1), y = quaternion(0, 2), z = quaternion(0, 3);
        M r(3, 3);
        r << x * x + w * w - y * y - z * z, 2 * (x * y - w * z), 2 * (x * z + y * w), //
            2 * (w * z + x * y), w * w - x * x + y * y - z * z, 2 * (y * z - x * w),  //
            2 * (x * z - y * w), 2 * (y * z + x * w), w * w - x * x - y * y + z * z;
        return r;
    }

    static M toTerre(const M& v, const M& r) { return times(v, r, true); }
    static M toSensor(const M& v, const M& r) { return times(v, r, false); }
    static M times(const M& v, const M& r, bool transposed) {
        M out(1, 3);
        for (int column = 0; column < 3; ++column) {
            double sum = 0;
            for (int k = 0; k < 3; ++k) {
                const double factor = transposed ? r(column, k) : r(k, column);
                sum = k == 0 ? v(0, 0) * factor : sum + v(0, k) * factor;
            }
            out(0, column) = sum;
        }
        return out;
    }

    static M asRow(const M& m) {
        if (m.rows() > 1) return m.transpose();
        return m;
    }

    static double norm(const M& v) {
        double sum = 0;
        for (int i = 0; i < v.cols(); ++i)
            sum = sum + v(0, i) * v(0, i);
        return std::sqrt(sum);
    }

    static double clamp(double x, double low, double high) { return x < low ? low : (x > high ? high : x); }

    static double rounded(double f) {
        if (f == 0 || !std::isfinite(f)) return f;
        const int e = static_cast<int>(std::floor(std::log10(f)));
        const double t = f * std::pow(10.0, -e);
        double r = 0;
        if (!(t < 0))
            r = std::floor(t + 0.5);
        else
            r = -std::floor(0.5 - t);
        return r * std::pow(10.0, e);
    }

    void adapt(const M& g) {
        double aErr = 0, mErr = 0;
        if (aFiltered.rows() >= 1 && aFiltered.cols() == 3 && mFiltered.rows() >= 1 &&
            mFiltered.cols() == 3) {
            M residual(1, 6);
            for (int i = 0; i < 3; ++i) {
                residual(0, i) = std::fabs(aPrevious(0, i) - aFiltered(0, i));
                residual(0, i + 3) = std::fabs(mPrevious(0, i) - mFiltered(0, i));
            }
            if (temp.rows() == 5 || temp.rows() == 6) {
                for (int i = 4; i >= 1; --i)
                    for (int j = 0; j < 6; ++j)
                        temp(i, j) = temp(i - 1, j);
            } else {
                temp.resize(5, 6);
                for (int i = 1; i < 5; ++i)
                    for (int j = 0; j < 6; ++j)
                        temp(i, j) = residual(0, j);
            }
            for (int j = 0; j < 6; ++j)
                temp(0, j) = residual(0, j);
            M c(1, 6);
            for (int j = 0; j < 6; ++j) {
                double sum = 0;
                for (int i = 0; i < 5; ++i)
                    sum = sum + temp(i, j);
                c(0, j) = sum / 5;
            }
            for (int j = 0; j < 3; ++j)
                aErr = aErr + (temp(0, j) - c(0, j)) * (temp(0, j) - c(0, j));
            for (int j = 3; j < 6; ++j)
                mErr = mErr + (temp(0, j) - c(0, j)) * (temp(0, j) - c(0, j));
        }
        const double squared = g(0, 0) * g(0, 0) + g(0, 1) * g(0, 1) + g(0, 2) * g(0, 2);
        const double energy = clamp(squared - 0.05, 0.1, 5);
        const double gainA = 1.1 - clamp(aErr, 0.1, 1);
        const double gainM = 1.1 - clamp(mErr, 0.1, 1);
        double fA = 0, fM = 0;
        if (cutoffs.size() == 0) {
            cutoffs.resize(1, 2);
            fA = gainA * energy * filterGain;
            fM = gainM * energy * filterGain;
        } else {
            const double lambda = lambdaGain;
            fA = (lambda * gainA * energy * filterGain + cutoffs(0, 0)) / (lambda + 1);
            fM = (lambda * gainM * energy * filterGain + cutoffs(0, 1)) / (lambda + 1);
        }
        cutoffs << rounded(fA), rounded(fM);
        aLowPass.setCutOff(cutoffs(0, 0));
        mLowPass.setCutOff(cutoffs(0, 1));
    }

    void update(const M& gyroscope, const M* accelerometer, const M* magnetometer, M out[6], double deltaTime,
                double lambda, bool magPerturbed, const M* imposed) {
        magneticPerturbed = magPerturbed;
        const M g = asRow(gyroscope);
        M a, m;
        if (accelerometer) {
            a = asRow(*accelerometer);
            holdAcceleration = false;
        } else {
            holdAcceleration = true;
            a = aPrevious.size() == 3 ? aPrevious : row3(0, 0, 1);
        }
        if (magnetometer) {
            m = asRow(*magnetometer);
            holdMagnetic = magneticPerturbed;
        } else {
            holdMagnetic = true;
            m = mPrevious.size() == 3 ? mPrevious : row3(0.5, 0, 0.866);
        }
        if (mPrevious.size() == 0) mPrevious = m;
        if (aPrevious.size() == 0) aPrevious = a;
        if (lambda != -1) lambdaGain = lambda;
        if (deltaTime < 0) deltaTime = samplePeriod;

        double n = norm(g);
        if (!(n > 1e-9)) n = 1e-9;
        const M u = row3(g(0, 0) / n, g(0, 1) / n, g(0, 2) / n);
        const double h = n * (deltaTime * 0.5);
        const double d0 = std::cos(h), d1 = u(0, 0) * std::sin(h), d2 = u(0, 1) * std::sin(h),
                     d3 = u(0, 2) * std::sin(h);
        M product(4, 4);
        product << d0, d1, d2, d3, -d1, d0, -d3, d2, -d2, d3, d0, -d1, -d3, -d2, d1, d0;
        M turned(1, 4);
        for (int column = 0; column < 4; ++column) {
            double sum = quaternion(0, 0) * product(0, column);
            for (int k = 1; k < 4; ++k)
                sum = sum + quaternion(0, k) * product(k, column);
            turned(0, column) = sum;
        }
        double length = norm(turned);
        if (!(length > 1e-9)) length = 1e-9;
        for (int i = 0; i < 4; ++i)
            quaternion(0, i) = turned(0, i) / length;

        for (int i = 0; i < 3; ++i) {
            a(0, i) = clamp(a(0, i), -1.1, 1.1);
            m(0, i) = clamp(m(0, i), -1.1, 1.1);
        }
        const M r = rotation();
        if (aTerre.rows() == 0) {
            aTerre.resize(2, 3);
            mTerre.resize(2, 3);
            aTerre.row(1) = toTerre(a, r);
            mTerre.row(1) = toTerre(m, r);
        }
        aTerre.row(0) = toTerre(a, r);
        mTerre.row(0) = toTerre(m, r);

        if (imposed) {
            if (cutoffs.size() == 0) cutoffs.resize(1, 2);
            cutoffs << (*imposed)(0), (*imposed)(1);
            aLowPass.setCutOff(cutoffs(0, 0));
            mLowPass.setCutOff(cutoffs(0, 1));
        } else {
            adapt(g);
        }
        aPrevious = a;
        mPrevious = m;

        if (aTerreFiltered.size() != 6) aTerreFiltered = aTerre;
        if (mTerreFiltered.size() != 6) mTerreFiltered = mTerre;
        if (holdAcceleration)
            aTerreFiltered.row(1) = M(aTerreFiltered.row(0));
        else
            aTerreFiltered.row(1) = aLowPass.step(aTerre.row(0));
        if (holdMagnetic)
            mTerreFiltered.row(1) = M(mTerreFiltered.row(0));
        else
            mTerreFiltered.row(1) = mLowPass.step(mTerre.row(0));
        aTerreFiltered.row(0) = M(aTerreFiltered.row(1));
        mTerreFiltered.row(0) = M(mTerreFiltered.row(1));
        aTerre.row(1) = M(aTerre.row(0));
        mTerre.row(1) = M(mTerre.row(0));
        aFiltered.resize(2, 3);
        mFiltered.resize(2, 3);
        for (int i = 0; i < 2; ++i) {
            aFiltered.row(i) = toSensor(aTerreFiltered.row(i), r);
            mFiltered.row(i) = toSensor(mTerreFiltered.row(i), r);
        }
        out[0] = aFiltered.row(0);
        out[1] = mFiltered.row(0);
        out[2] = aTerre.row(0);
        out[3] = mTerre.row(0);
        out[4] = aTerreFiltered.row(0);
        out[5] = mTerreFiltered.row(0);
    }
};
