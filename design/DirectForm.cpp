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

/// The samples, by element.
struct Elements {
    const double* input;
    double* x;
    double* y;
    Eigen::Index size;
};

/// Runs as many of the elements from `first` on as come in groups of `lanes`, and returns the first one left.
/// Order matters: each element adds its terms one by one, from the left. Vectors run across elements only.
template <InputScale scale, int lanes>
Eigen::Index runGroups(const Terms& terms, Elements elements, Eigen::Index first) {
    using Lanes = Eigen::Array<double, lanes, 1>;
    for (; first + lanes <= elements.size; first += lanes) {
        Eigen::Map<Lanes> xState(elements.x + first);
        Eigen::Map<Lanes> yState(elements.y + first);
        const Lanes input = Eigen::Map<const Lanes>(elements.input + first);
        const Lanes former = xState;
        const Lanes y = yState;
        Lanes newest;
        if constexpr (scale == InputScale::Divide)
            newest = input / terms.factor;
        else
            newest = input * terms.factor;

        Lanes sum = (terms.xLast == 0 ? newest : former) * terms.xCoeffs[0];
        for (std::size_t i = 1; i < terms.xLast; ++i)
            sum += former * terms.xCoeffs[i];
        if (terms.xLast > 0) sum += newest * terms.xCoeffs[terms.xLast];
        for (std::size_t j = 0; j < terms.yCount; ++j)
            sum += y * terms.yCoeffs[j];
        xState = newest;
        yState = sum;
    }
    return first;
}

template <InputScale scale>
void run(const Terms& terms, const Elements& elements) {
    // Eight elements in flight hide the latency of one sum; what is left goes by pairs.
    const Eigen::Index pairs = runGroups<scale, 8>(terms, elements, 0);
    const Eigen::Index single = runGroups<scale, 2>(terms, elements, pairs);
    runGroups<scale, 1>(terms, elements, single);
}
} // namespace

void runDirectForm(const DirectForm& form, const MatrixXd& input, RisingHistory& xHistory,
                   RisingHistory& yHistory) {
    const Terms terms{.xCoeffs = form.xCoeffs.data(),
                      .xLast = std::min(xHistory.size(), form.xCoeffs.size()) - 1,
                      .yCoeffs = form.yCoeffs.data(),
                      .yCount = std::min(yHistory.size() - 1, form.yCoeffs.size()),
                      .factor = form.factor};
    const Elements elements{.input = input.data(),
                            .x = xHistory.newest.data(),
                            .y = yHistory.newest.data(),
                            .size = input.size()};
    if (form.scale == InputScale::Divide)
        run<InputScale::Divide>(terms, elements);
    else
        run<InputScale::Multiply>(terms, elements);
}

} // namespace Design
