// SPDX-License-Identifier: MIT
#include "design/BesselDesigner.h"

namespace {
using Design::Complex;

/// The poles by order, each order's at index floor(order^2 / 4); of a pair the one with positive imaginary
/// part, and for an odd order the real one first. Published to twelve digits.
constexpr std::array<Complex, 30> kPrototypePoles{{
    // order 1
    {-1.0, 0.0},
    // order 2
    {-1.10160133059, 0.636009824757},
    // order 3
    {-1.32267579991, 0.0},
    {-1.04740916101, 0.999264436281},
    // order 4
    {-1.37006783055, 0.410249717494},
    {-0.99520876435, 1.25710573945},
    // order 5
    {-1.50231627145, 0.0},
    {-1.38087732586, 0.717909587627},
    {-0.957676548563, 1.47112432073},
    // order 6
    {-1.57149040362, 0.320896374221},
    {-1.3818580976, 0.971471890712},
    {-0.930656522947, 1.66186326894},
    // order 7
    {-1.68436817927, 0.0},
    {-1.61203876622, 0.589244506931},
    {-1.3789032168, 1.1915667778},
    {-0.909867780623, 1.83645135304},
    // order 8
    {-1.7574084004, 0.272867575103},
    {-1.63693941813, 0.822795625139},
    {-1.37384121764, 1.38835657588},
    {-0.892869718847, 1.99832584364},
    // order 9
    {-1.85660050123, 0.0},
    {-1.80717053496, 0.512383730575},
    {-1.65239648458, 1.03138956698},
    {-1.36758830979, 1.56773371224},
    {-0.878399276161, 2.14980052431},
    // order 10
    {-1.92761969145, 0.241623471082},
    {-1.84219624443, 0.727257597722},
    {-1.6618102414, 1.22110021857},
    {-1.36069227838, 1.73350574267},
    {-0.865756901707, 2.29260483098},
}};
} // namespace

void BesselDesigner::computePoles() {
    numSPoles = 0;
    auto entry = static_cast<std::size_t>(order * order / 4);
    const auto append = [this](Complex pole) {
        if (pole.re < 0.0) appendPole(pole);
    };
    if (order % 2 != 0) append(kPrototypePoles[entry++]);
    for (std::int32_t pair = 1; pair <= order / 2; ++pair) {
        append(kPrototypePoles[entry]);
        append(conjugate(kPrototypePoles[entry]));
        ++entry;
    }
}
