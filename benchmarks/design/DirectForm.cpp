// SPDX-License-Identifier: MIT
// The run step of the recursive filters with one history entry in use: the designer, the computer and a whole
// block beside two bare loops. "sums" adds the same terms in the same order; "one line" has the coefficients
// summed up beforehand, which rounds differently and is what the filter amounts to.
#include "benchmarks/support/Pair.h"
#include "blocks/FilterButterworthV2.h"
#include "design/ButterworthDesigner.h"
#include "design/ChebyshevDesigner.h"
#include "design/EllipticDesigner.h"
#include "design/IIRComputer.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace {

constexpr double kCutOff = 0.2;

/// A sample that changes from element to element.
MatrixXd wave(Eigen::Index elements) {
    MatrixXd values(1, elements);
    for (Eigen::Index i = 0; i < elements; ++i)
        values(0, i) = static_cast<double>(i % 7) - 3.0;
    return values;
}

/// A bilinear low-pass: as many feed-forward coefficients as feedback ones, and a steady state that is no
/// denormal.
template <int order>
ButterworthDesigner lowPass() {
    return ButterworthDesigner(Design::kLowPass, order, false, kCutOff, 0.0);
}

/// The same filter bare: two delayed values an element, everything that can be known at compile time.
template <int lanes, int order>
class BareSums {
public:
    explicit BareSums(const DirectFormDesigner& designer) : gain(designer.getGain()) {
        std::copy_n(designer.getXCoefficients().begin(), order + 1, x.begin());
        std::copy_n(designer.getYCoefficients().begin(), order, y.begin());
    }

    void step(const double* in, double* u, double* out, Eigen::Index elements) const {
        using Lanes = Eigen::Array<double, lanes, 1>;
        for (Eigen::Index e = 0; e < elements; e += lanes) {
            const Lanes u0 = Eigen::Map<const Lanes>(in + e) / gain;
            const Lanes u1 = Eigen::Map<const Lanes>(u + e);
            const Lanes y1 = Eigen::Map<const Lanes>(out + e);
            Lanes sum = u1 * x[0];
            for (std::size_t i = 1; i < order; ++i)
                sum += u1 * x[i];
            sum += u0 * x[order];
            for (std::size_t j = 0; j < order; ++j)
                sum += y1 * y[j];
            Eigen::Map<Lanes>(u + e) = u0;
            Eigen::Map<Lanes>(out + e) = sum;
        }
    }

private:
    std::array<double, order + 1> x;
    std::array<double, order> y;
    double gain;
};

/// The coefficients summed up beforehand: three products an element at any order.
template <int lanes, int order>
class BareLine {
public:
    explicit BareLine(const DirectFormDesigner& designer) : newest(designer.getXCoefficients().back()) {
        for (std::size_t i = 0; i < order; ++i) {
            formerX += designer.getXCoefficients()[i];
            formerY += designer.getYCoefficients()[i];
        }
        gain = designer.getGain();
    }

    void step(const double* in, double* u, double* out, Eigen::Index elements) const {
        using Lanes = Eigen::Array<double, lanes, 1>;
        for (Eigen::Index e = 0; e < elements; e += lanes) {
            const Lanes u0 = Eigen::Map<const Lanes>(in + e) / gain;
            const Lanes u1 = Eigen::Map<const Lanes>(u + e);
            const Lanes y1 = Eigen::Map<const Lanes>(out + e);
            Eigen::Map<Lanes>(u + e) = u0;
            Eigen::Map<Lanes>(out + e) = newest * u0 + formerX * u1 + formerY * y1;
        }
    }

private:
    double newest;
    double formerX = 0.0;
    double formerY = 0.0;
    double gain = 1.0;
};

template <template <int, int> class Bare, int lanes, int order>
void bare(benchmark::State& run, Eigen::Index elements) {
    ButterworthDesigner designer = lowPass<order>();
    designer.step(MatrixXd::Zero(1, elements));
    const MatrixXd input = wave(elements + lanes);
    MatrixXd u = MatrixXd::Zero(1, elements + lanes);
    MatrixXd output = u;
    const Bare<lanes, order> filter(designer);
    for (auto _ : run) {
        filter.step(input.data(), u.data(), output.data(), elements);
        benchmark::ClobberMemory();
    }
}

/// Whether designer and bare sums do the same to the bit, from rest.
template <int lanes, int order>
bool agree(Eigen::Index elements) {
    ButterworthDesigner designer = lowPass<order>();
    designer.step(MatrixXd::Zero(1, elements));
    const BareSums<lanes, order> filter(designer);
    const MatrixXd input = wave(elements);
    const MatrixXd padded = wave(elements + lanes);
    MatrixXd u = MatrixXd::Zero(1, elements + lanes);
    MatrixXd output = u;
    for (int i = 0; i < 20; ++i) {
        designer.step(input);
        filter.step(padded.data(), u.data(), output.data(), elements);
    }
    return std::equal(designer.output().data(), designer.output().data() + elements, output.data());
}

template <int lanes, int order>
void designer(benchmark::State& run, Eigen::Index elements) {
    if (!agree<lanes, order>(elements)) run.SkipWithError("the two loops differ");
    ButterworthDesigner filter = lowPass<order>();
    const MatrixXd input = wave(elements);
    for (auto _ : run) {
        filter.step(input);
        benchmark::ClobberMemory();
    }
}

template <int order>
void computer(benchmark::State& run, Eigen::Index elements) {
    ButterworthDesigner source = lowPass<order>();
    source.step(MatrixXd::Zero(1, 1));
    const std::vector<double> x = source.getXCoefficients();
    const std::vector<double> y = source.getYCoefficients();
    IIRComputer filter;
    filter.setGain(source.getGain());
    filter.setXCoefficients(Eigen::Map<const MatrixXd>(x.data(), 1, order + 1));
    filter.setYCoefficients(Eigen::Map<const MatrixXd>(y.data(), 1, order));
    const MatrixXd input = wave(elements);
    for (auto _ : run) {
        filter.step(input);
        benchmark::ClobberMemory();
    }
}

/// The whole run step of a block, a sender before it and a reader behind it, over plain links.
template <int order>
void block(benchmark::State& run, Eigen::Index elements) {
    FilterButterworthV2 filter("filter");
    OutputPin<MatrixXd> sender("sender", nullptr);
    InputPin<MatrixXd> reader("reader", nullptr);
    sender.attach(filter.getInputPin("in"), false);
    filter.getOutputPin("out").attach(reader, false);
    filter.getProperty("Order").setValueFromString(std::to_string(order));
    filter.getProperty("LowRelativeCutOffFreq").setValueFromString("0.2");
    filter.getProperty("MatchedZ-Transform").setValueFromString("0");
    sender.data.value = wave(elements);
    for (auto _ : run) {
        sender.send(0.0);
        filter.process();
        if (reader.hasData()) reader.take();
        benchmark::ClobberMemory();
    }
}

template <int lanes, int order>
void enter(Eigen::Index elements) {
    const std::string size =
        ", order " + std::to_string(order) + ", " + std::to_string(elements) + " elements";
    const double goal = elements >= 64 ? 1.5 : 0.0;
    const auto sums = [=](benchmark::State& run) { bare<BareSums, lanes, order>(run, elements); };
    const auto line = [=](benchmark::State& run) { bare<BareLine, lanes, order>(run, elements); };
    const auto ours = [=](benchmark::State& run) { designer<lanes, order>(run, elements); };
    Bench::enter({.name = "designer/sums" + size, .bare = sums, .ours = ours, .goal = goal});
    Bench::enter({.name = "designer/one line" + size, .bare = line, .ours = ours});
    Bench::enter({.name = "computer/sums" + size,
                  .bare = sums,
                  .ours = [=](benchmark::State& run) { computer<order>(run, elements); },
                  .goal = goal});
    // No goal: at 64 elements and order 1 the link and the settings are half of the work.
    Bench::enter({.name = "block/sums" + size, .bare = sums, .ours = [=](benchmark::State& run) {
                      block<order>(run, elements);
                  }});
}

template <int order>
void enterOrder() {
    enter<1, order>(1);
    enter<1, order>(3);
    enter<8, order>(64);
    enter<8, order>(1024);
}

void designChebyshev(benchmark::State& run) {
    ChebyshevDesigner filter(Design::kBandStop, 10, true, 0.1, -0.5, 0.3);
    const MatrixXd input = wave(1);
    for (auto _ : run) {
        filter.setParameters(Design::kBandStop, 10, true, 0.1, -0.5, 0.3);
        filter.step(input);
        benchmark::ClobberMemory();
    }
}

void designElliptic(benchmark::State& run) {
    EllipticDesigner filter(Design::kBandStop, 10, 0.1, 0.5, -40.0, 0.3);
    const MatrixXd input = wave(1);
    for (auto _ : run) {
        filter.setParameters(Design::kBandStop, 10, 0.1, 0.5, -40.0, 0.3);
        filter.step(input);
        benchmark::ClobberMemory();
    }
}

const Bench::Suite suite([] {
    enterOrder<1>();
    enterOrder<4>();
    enterOrder<10>();
    Bench::note("a whole Chebyshev band-stop of order 10, at most 50 us", designChebyshev);
    Bench::note("a whole elliptic band-stop of order 10, at most 50 us", designElliptic);
});

} // namespace
