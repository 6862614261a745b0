// SPDX-License-Identifier: MIT
#include "design/DirectForm.h"

#include <algorithm>

namespace Design {

namespace {
using Quillmere::Core::MatrixXd;

/// What the inner loops need, unpacked.
struct Terms {
    const double* xCoeffs;
    std::size_t xLast; ///< index of the coefficient of the newest sample
    const double* yCoeffs;
    std::size_t yCount;
    double factor;
};

/// Runs the elements at `input`, `x` and `y` that one `Lanes` holds; a double is one element.
/// Order matters: each element adds its terms one by one, from the left. Vectors run across elements only.
template <InputScale scale, class Lanes>
inline void runLanes(const Terms& terms, const Lanes& input, Lanes& x, Lanes& y) {
    Lanes newest;
    if constexpr (scale == InputScale::Divide)
        newest = input / terms.factor;
    else
        newest = input * terms.factor;
    Lanes sum = (terms.xLast == 0 ? newest : x) * terms.xCoeffs[0];
    for (std::size_t i = 1; i < terms.xLast; ++i)
        sum += x * terms.xCoeffs[i];
    if (terms.xLast > 0) sum += newest * terms.xCoeffs[terms.xLast];
    for (std::size_t j = 0; j < terms.yCount; ++j)
        sum += y * terms.yCoeffs[j];
    x = newest;
    y = sum;
}

template <InputScale scale>
void run(const Terms& terms, const double* input, double* x, double* y, Eigen::Index size) {
    // Eight elements in flight hide the latency of one sum.
    constexpr Eigen::Index kInFlight = 8;
    using Lanes = Eigen::Array<double, kInFlight, 1>;
    Eigen::Index e = 0;
    for (; e + kInFlight <= size; e += kInFlight) {
        Lanes xLanes = Eigen::Map<const Lanes>(x + e);
        Lanes yLanes = Eigen::Map<const Lanes>(y + e);
        runLanes<scale, Lanes>(terms, Eigen::Map<const Lanes>(input + e), xLanes, yLanes);
        Eigen::Map<Lanes>(x + e) = xLanes;
        Eigen::Map<Lanes>(y + e) = yLanes;
    }
    for (; e < size; ++e)
        runLanes<scale, double>(terms, input[e], x[e], y[e]);
}
} // namespace

void runDirectForm(const DirectForm& form, const MatrixXd& input, RisingHistory& xHistory,
                   RisingHistory& yHistory) {
    const Terms terms{.xCoeffs = form.xCoeffs.data(),
                      .xLast = std::min(xHistory.size(), form.xCoeffs.size()) - 1,
                      .yCoeffs = form.yCoeffs.data(),
                      .yCount = std::min(yHistory.size() - 1, form.yCoeffs.size()),
                      .factor = form.factor};
    const auto runAll =
        form.scale == InputScale::Divide ? run<InputScale::Divide> : run<InputScale::Multiply>;
    runAll(terms, input.data(), xHistory.newest.data(), yHistory.newest.data(), input.size());
}

} // namespace Design
