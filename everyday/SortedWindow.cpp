// SPDX-License-Identifier: MIT
#include "everyday/SortedWindow.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Everyday {

namespace {
bool isBefore(double a, double b) {
    return a < b || (a == b && std::signbit(a) && !std::signbit(b));
}
} // namespace

void SortedWindow::begin(std::size_t samplesInWindow, std::size_t elements) {
    // A place that no sample has had holds no number, so none leaves it.
    std::vector<double> places(samplesInWindow * elements, std::numeric_limits<double>::quiet_NaN());
    std::vector<double> ordered(samplesInWindow * elements);
    std::vector<std::size_t> none(elements, 0);
    samples.swap(places);
    sorted.swap(ordered);
    sizes.swap(none);
    length = samplesInWindow;
    width = elements;
    count = oldest = 0;
}

void SortedWindow::take(const double* sample, double* result) {
    if (count < length) ++count;
    for (std::size_t i = 0; i < width; ++i)
        result[i] = takeOne(i, sample[i]);
    oldest = oldest + 1 == length ? 0 : oldest + 1;
}

double SortedWindow::takeOne(std::size_t element, double value) {
    double& place = samples[element * length + oldest];
    double* const first = sorted.data() + element * length;
    std::size_t size = sizes[element];
    const double leaving = place;
    if (leaving == leaving) {
        double* const at = std::lower_bound(first, first + size, leaving, isBefore);
        std::copy(at + 1, first + size, at);
        --size;
    }
    if (value == value) {
        double* const at = std::lower_bound(first, first + size, value, isBefore);
        std::copy_backward(at, first + size, first + size + 1);
        *at = value;
        ++size;
    }
    place = value;
    sizes[element] = size;
    if (size < count) return std::numeric_limits<double>::quiet_NaN();
    const double upper = first[size / 2];
    return size % 2 == 1 ? upper : 0.5 * (first[size / 2 - 1] + upper);
}

} // namespace Everyday
