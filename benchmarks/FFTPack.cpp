// SPDX-License-Identifier: MIT
#include "benchmarks/support/Pair.h"
#include "spectral/FFTPack.h"

#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// A transform against FFTW with its estimated plan. Against FFTW's real-to-half-complex transform both sides
// do the same thing: they copy one input and transform the copy in place. Its real-to-complex transform is a
// different contract (out of place, another layout, vector code of its own) and has a goal for a prime length
// only, 1009, where ours costs the length's square. That goal is one of a processor with AVX2;
// VELMARIND_KERNELS=plain shows the plain kernels.

namespace {

std::vector<double> input(int n) {
    std::vector<double> x(static_cast<std::size_t>(n));
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = std::sin(1.3 * static_cast<double>(i)) + 0.1;
    return x;
}

struct FreeAligned {
    void operator()(void* memory) const { fftw_free(memory); }
};
using Aligned = std::unique_ptr<double[], FreeAligned>;

Aligned aligned(int doubles) {
    return Aligned(static_cast<double*>(fftw_malloc(static_cast<std::size_t>(doubles) * sizeof(double))));
}

class Plan {
public:
    explicit Plan(fftw_plan made) : plan(made) {}
    ~Plan() { fftw_destroy_plan(plan); }
    Plan(const Plan&) = delete;
    Plan& operator=(const Plan&) = delete;
    void run() const { fftw_execute(plan); }

private:
    fftw_plan plan;
};

void ours(benchmark::State& state, int n) {
    const std::vector<double> x = input(n);
    const Aligned data = aligned(n);
    FFTPack pack;
    pack.setSize(n);
    for (auto _ : state) {
        std::copy(x.begin(), x.end(), data.get());
        pack.forwardTransform(data.get());
        benchmark::DoNotOptimize(data.get());
        benchmark::ClobberMemory();
    }
}

void halfComplex(benchmark::State& state, int n) {
    const std::vector<double> x = input(n);
    const Aligned data = aligned(n);
    const Plan plan(fftw_plan_r2r_1d(n, data.get(), data.get(), FFTW_R2HC, FFTW_ESTIMATE));
    for (auto _ : state) {
        std::copy(x.begin(), x.end(), data.get());
        plan.run();
        benchmark::DoNotOptimize(data.get());
        benchmark::ClobberMemory();
    }
}

void realToComplex(benchmark::State& state, int n) {
    const std::vector<double> x = input(n);
    const Aligned data = aligned(n);
    const Aligned spectrum = aligned(n + 2);
    auto* bins = reinterpret_cast<fftw_complex*>(spectrum.get());
    const Plan plan(fftw_plan_dft_r2c_1d(n, data.get(), bins, FFTW_ESTIMATE));
    for (auto _ : state) {
        std::copy(x.begin(), x.end(), data.get());
        plan.run();
        benchmark::DoNotOptimize(spectrum.get());
        benchmark::ClobberMemory();
    }
}

using Measured = void (*)(benchmark::State&, int);
Bench::Body atLength(Measured body, int n) {
    return [body, n](benchmark::State& state) { body(state, n); };
}

const Bench::Suite suite([] {
    const struct {
        int n;
        double goal;
    } rows[] = {{64, 1.2},   {100, 1.5}, {256, 1.2},  {1000, 1.5}, {1006, 0},
                {1024, 1.2}, {1009, 0},  {4096, 1.2}, {65536, 1.2}};
    for (const auto& row : rows) {
        const std::string length = std::to_string(row.n);
        const Bench::Body transform = atLength(ours, row.n);
        Bench::enter({"half-complex/" + length, atLength(halfComplex, row.n), transform, row.goal});
        Bench::enter({"real-to-complex/" + length, atLength(realToComplex, row.n), transform,
                      row.n == 1009 ? 5.5 : 0.0});
    }
});

} // namespace
