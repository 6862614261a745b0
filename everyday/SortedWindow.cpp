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
    double* const end = first + sizes[element];
    const bool hasLeaving = place == place;
    const bool hasValue = value == value;
    double* const from = hasLeaving ? std::lower_bound(first, end, place, isBefore) : end;
    double* const to = hasValue ? std::lower_bound(first, end, value, isBefore) : end;
    // Only what stands between the two places moves, towards the one that gets free.
    if (hasValue && to <= from) {
        std::copy_backward(to, from, from + 1);
        *to = value;
    } else if (hasLeaving) {
        std::copy(from + 1, to, from);
        if (hasValue) to[-1] = value;
    }
    const std::size_t size = sizes[element] + (hasValue ? 1 : 0) - (hasLeaving ? 1 : 0);
    place = value;
    sizes[element] = size;
    if (size < count) return std::numeric_limits<double>::quiet_NaN();
    const double upper = first[size / 2];
    return size % 2 == 1 ? upper : 0.5 * (first[size / 2 - 1] + upper);
}

} // namespace Everyday
