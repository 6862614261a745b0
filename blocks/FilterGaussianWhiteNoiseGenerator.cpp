// SPDX-License-Identifier: MIT
#include "blocks/FilterGaussianWhiteNoiseGenerator.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace {
constexpr unsigned kDraws = 32768;
constexpr double kOneDraw = 3.0517578125e-05; // 1 / 32768

// The runtime's range differs between platforms; folded to 15 bits it stays uniform when it is a whole number
// of them.
static_assert((static_cast<unsigned>(RAND_MAX) + 1U) % kDraws == 0);

/// 0 to 32767, each as likely, from the process-wide generator.
double draw() {
    return static_cast<unsigned>(std::rand()) % kDraws;
}
} // namespace

FilterGaussianWhiteNoiseGenerator::FilterGaussianWhiteNoiseGenerator(const std::string& instanceName)
    : Filter(instanceName, true), out("out", this), precision("Precision", &getPropertyBag()) {
    precision.setRange(1, 31, 0);
    precision.setValue(15);
    precision.setChangeHandler(this, &FilterGaussianWhiteNoiseGenerator::requestRescale);
    resizeSample(out.data.value, 1, 1);
    out.data.value(0) = 0.0;
    std::srand(static_cast<unsigned>(std::time(nullptr)));
}

FilterGaussianWhiteNoiseGenerator::~FilterGaussianWhiteNoiseGenerator() = default;

void FilterGaussianWhiteNoiseGenerator::process() {
    if (rescaleRequested) rescale();
    // Order matters, and one draw stands for all three deviates.
    const double x = draw() * kOneDraw * c2;
    out.data.value(0) = (2.0 * (3.0 * x) - 3.0 * (c2 - 1.0)) * c3;
    out.send();
}

void FilterGaussianWhiteNoiseGenerator::rescale() {
    const int bits = precision.getValue();
    const double c1 = static_cast<std::int32_t>((1U << bits) - 1U);
    c2 = 1.0 - std::trunc(c1 / -3.0);
    c3 = 1.0 / c1;
    rescaleRequested = false;
}

/// In the writer's thread, inside its guard.
void FilterGaussianWhiteNoiseGenerator::requestRescale() {
    rescaleRequested = true;
}
