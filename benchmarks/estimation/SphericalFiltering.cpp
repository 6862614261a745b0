// SPDX-License-Identifier: MIT
// What the filter of vectors costs beside the same rules on arrays whose sizes the compiler knows, designs in
// a map of their own: the engine, and the whole block with its three inputs and nine outputs.
#include "benchmarks/estimation/Links.h"
#include "benchmarks/support/Pair.h"
#include "blocks/FilterSphericalFiltering.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <numbers>
#include <vector>

namespace {

using Vector = std::array<double, 3>;

constexpr std::size_t kSteps = 512;
constexpr double kGoal = 2.0;

struct Inputs {
    Vector rate;
    Vector acceleration;
    Vector field;
};

/// A wrist that swings, with noise from a fixed rule.
std::vector<Inputs> swing() {
    std::vector<Inputs> inputs(kSteps);
    for (std::size_t i = 0; i < kSteps; ++i) {
        const double t = 0.01 * static_cast<double>(i);
        const auto noise = [&](double f) { return 0.05 * std::sin(f * static_cast<double>(i * i)); };
        inputs[i].rate = {std::sin(7.0 * t), 1.5 * std::cos(5.0 * t), 0.3 * std::sin(2.0 * t)};
        inputs[i].acceleration = {0.1 + noise(1.1), 0.2 * std::sin(3.0 * t) + noise(1.3), 0.97 + noise(1.7)};
        inputs[i].field = {0.5 + noise(1.9), 0.1 * std::cos(3.0 * t) + noise(2.3), 0.85 + noise(2.9)};
    }
    return inputs;
}

/// One of the two vectors, on arrays.
struct PlainChannel {
    struct Design {
        double a1;
        double gain;
    };

    Vector previous{};
    Vector terre{};
    Vector terreFiltered{};
    Vector filtered{};
    Vector lastIn{};
    double cutOff = 0.0001;
    Design design{};
    std::map<double, Design> designs;

    void setCutOff(double value) {
        if (value == cutOff) return;
        cutOff = value;
        const auto found = designs.find(value);
        if (found != designs.end()) {
            design = found->second;
            return;
        }
        const double t = std::tan(value * std::numbers::pi * 0.5);
        design = {(1.0 - t) / (1.0 + t), t / (1.0 + t)};
        designs[value] = design;
    }
    void filter(const double (&r)[9], bool first) {
        if (first) {
            const double t = std::tan(cutOff * std::numbers::pi * 0.5);
            design = {(1.0 - t) / (1.0 + t), t / (1.0 + t)};
            lastIn = terre;
            terreFiltered = terre;
        }
        for (std::size_t i = 0; i < 3; ++i) {
            terreFiltered[i] = design.a1 * terreFiltered[i] + design.gain * (lastIn[i] + terre[i]);
            lastIn[i] = terre[i];
        }
        for (std::size_t i = 0; i < 3; ++i)
            filtered[i] = terreFiltered[0] * r[i] + terreFiltered[1] * r[3 + i] + terreFiltered[2] * r[6 + i];
    }
    void rotate(const Vector& v, const double (&r)[9]) {
        for (std::size_t i = 0; i < 3; ++i)
            terre[i] = v[0] * r[3 * i] + v[1] * r[3 * i + 1] + v[2] * r[3 * i + 2];
    }
};

/// The engine's rules on arrays, for a stream that has every sample and adapts its cut-offs.
struct PlainCore {
    PlainChannel a;
    PlainChannel m;
    double q[4] = {1.0, 0.0, 0.0, 0.0};
    double r[9] = {};
    double temp[5][6] = {};
    double cutoffs[2] = {};
    double filterGain = 0.001;
    double lambda = 0.7;
    int stepsSeen = 0;

    static double limit(double x, double low, double high) { return x < low ? low : x > high ? high : x; }
    static Vector clip(const Vector& v) {
        return {limit(v[0], -1.1, 1.1), limit(v[1], -1.1, 1.1), limit(v[2], -1.1, 1.1)};
    }
    static double oneDigit(double f) {
        const int e = static_cast<int>(std::floor(std::log10(f)));
        return std::floor(f * std::pow(10.0, -e) + 0.5) * std::pow(10.0, e);
    }

    void turn(const Vector& g, double squared) {
        const double n = std::fmax(std::sqrt(squared), 1e-9);
        const double h = n * (0.01 * 0.5);
        double s;
        double c;
        ::sincos(h, &s, &c);
        const double d1 = g[0] / n * s;
        const double d2 = g[1] / n * s;
        const double d3 = g[2] / n * s;
        const double p[4] = {
            q[0] * c - q[1] * d1 - q[2] * d2 - q[3] * d3, q[0] * d1 + q[1] * c + q[2] * d3 - q[3] * d2,
            q[0] * d2 - q[1] * d3 + q[2] * c + q[3] * d1, q[0] * d3 + q[1] * d2 - q[2] * d1 + q[3] * c};
        const double norm = std::fmax(std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2] + p[3] * p[3]), 1e-9);
        for (std::size_t i = 0; i < 4; ++i)
            q[i] = p[i] / norm;
    }
    void fillRotation() {
        const double w = q[0];
        const double x = q[1];
        const double y = q[2];
        const double z = q[3];
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
    void remember() {
        double residual[6];
        for (std::size_t i = 0; i < 3; ++i) {
            residual[i] = std::fabs(a.previous[i] - a.filtered[i]);
            residual[i + 3] = std::fabs(m.previous[i] - m.filtered[i]);
        }
        for (std::size_t row = 4; row > 0; --row)
            std::copy_n(stepsSeen == 1 ? residual : temp[row - 1], 6, temp[row]);
        std::copy_n(residual, 6, temp[0]);
    }
    double scatter(std::size_t from) const {
        double sum = 0.0;
        for (std::size_t c = from; c < from + 3; ++c) {
            const double d =
                temp[0][c] - (temp[0][c] + temp[1][c] + temp[2][c] + temp[3][c] + temp[4][c]) / 5.0;
            sum += d * d;
        }
        return sum;
    }
    void adapt(double squared) {
        double scatters[2] = {};
        if (stepsSeen > 0) {
            remember();
            scatters[0] = scatter(0);
            scatters[1] = scatter(3);
        }
        const double energy = limit(squared - 0.05, 0.1, 5.0);
        for (std::size_t i = 0; i < 2; ++i) {
            const double gain = 1.1 - limit(scatters[i], 0.1, 1.0);
            const double f = stepsSeen == 0
                                 ? gain * energy * filterGain
                                 : (lambda * gain * energy * filterGain + cutoffs[i]) / (lambda + 1.0);
            cutoffs[i] = oneDigit(f);
        }
        a.setCutOff(cutoffs[0]);
        m.setCutOff(cutoffs[1]);
    }
    void update(const Inputs& in) {
        const double squared = in.rate[0] * in.rate[0] + in.rate[1] * in.rate[1] + in.rate[2] * in.rate[2];
        turn(in.rate, squared);
        fillRotation();
        const Vector acceleration = clip(in.acceleration);
        const Vector field = clip(in.field);
        a.rotate(acceleration, r);
        m.rotate(field, r);
        adapt(squared);
        a.previous = acceleration;
        m.previous = field;
        a.filter(r, stepsSeen == 0);
        m.filter(r, stepsSeen == 0);
        ++stepsSeen;
    }
};

MatrixXd rowOf(const Vector& v) {
    MatrixXd row(1, 3);
    std::copy(v.begin(), v.end(), row.data());
    return row;
}

/// The engine with its six results.
struct Engine {
    SphericalFilteringCore core;
    std::array<MatrixXd, 6> out;
    MatrixXd g = MatrixXd::Zero(1, 3);
    MatrixXd a = MatrixXd::Zero(1, 3);
    MatrixXd m = MatrixXd::Zero(1, 3);

    void update(const Inputs& in) {
        std::copy(in.rate.begin(), in.rate.end(), g.data());
        std::copy(in.acceleration.begin(), in.acceleration.end(), a.data());
        std::copy(in.field.begin(), in.field.end(), m.data());
        core.update(g, &a, &m, out[0], out[1], out[2], out[3], out[4], out[5], 0.01, -1.0, false, nullptr);
    }
};

bool theTwoAgree(const std::vector<Inputs>& inputs) {
    PlainCore plain;
    Engine engine;
    for (const Inputs& in : inputs) {
        plain.update(in);
        engine.update(in);
        if (engine.out[0] != rowOf(plain.a.filtered) || engine.out[1] != rowOf(plain.m.filtered))
            return false;
    }
    return true;
}

void plainVectors(benchmark::State& state) {
    const std::vector<Inputs> inputs = swing();
    PlainCore core;
    benchmark::DoNotOptimize(&core);
    std::size_t i = 0;
    for (auto _ : state) {
        core.update(inputs[i++ % kSteps]);
        benchmark::ClobberMemory();
    }
}

void engineVectors(benchmark::State& state) {
    const std::vector<Inputs> inputs = swing();
    if (!theTwoAgree(inputs)) state.SkipWithError("the two tellings of the rules differ");
    Engine engine;
    benchmark::DoNotOptimize(&engine);
    std::size_t i = 0;
    for (auto _ : state) {
        engine.update(inputs[i++ % kSteps]);
        benchmark::ClobberMemory();
    }
}

void blockVectors(benchmark::State& state) {
    const std::vector<Inputs> inputs = swing();
    FilterSphericalFiltering block("vectors");
    const Bench::Readers readers(block);
    InputPin<MatrixXd>& gPin = Bench::input(block, "3g");
    InputPin<MatrixXd>& aPin = Bench::input(block, "3a");
    InputPin<MatrixXd>& mPin = Bench::input(block, "3m");
    Bench::Sample g{.value = MatrixXd::Zero(1, 3)};
    Bench::Sample a = g;
    Bench::Sample m = g;
    std::size_t i = 0;
    for (auto _ : state) {
        const Inputs& in = inputs[i++ % kSteps];
        std::copy(in.rate.begin(), in.rate.end(), g.value.data());
        std::copy(in.acceleration.begin(), in.acceleration.end(), a.value.data());
        std::copy(in.field.begin(), in.field.end(), m.value.data());
        g.timeStamp += 0.01;
        aPin.receive(a);
        mPin.receive(m);
        gPin.receive(g);
        block.process();
        benchmark::ClobberMemory();
    }
}

const Bench::Suite suite([] {
    Bench::enter({"vectors in the Earth's frame/engine", plainVectors, engineVectors, kGoal});
    Bench::enter({"vectors in the Earth's frame/block", plainVectors, blockVectors, kGoal});
});

} // namespace
