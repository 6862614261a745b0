// SPDX-License-Identifier: MIT
#include "design/ButterworthComputer_v2.h"

#include "design/ButterworthSections.h"
#include "design/Pair.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

using namespace Design;
using Quillmere::Core::copySample;
using Quillmere::Core::resizeSample;

namespace {
// Multiplying by 2^64 over the golden ratio spreads neighbouring keys; the top 6 bits number 64 slots.
constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15;
constexpr int kSlotShift = 64 - 6;
} // namespace

void ButterworthComputer_v2::setParameters(double newCutOff, int newOrder) {
    cutOff = newCutOff;
    order = newOrder;
    needsInit = true;
}

void ButterworthComputer_v2::setParameters(double newCutOff, int newOrder, bool reinit, bool newMemorize) {
    cutOff = newCutOff;
    order = newOrder;
    needsInit = reinit;
    memorize = newMemorize;
}

void ButterworthComputer_v2::setCutOff(double newCutOff, bool reinit, bool newMemorize) {
    if (newCutOff == cutOff) return;
    cutOff = newCutOff;
    memorize = newMemorize;
    needsInit = needsInit || reinit;
    if (!needsInit) computeCoefficients();
}

void ButterworthComputer_v2::step(const MatrixXd& input) {
    if (order == 0) {
        samplesSinceInit = samplesSinceInitLimit = 1;
        copySample(filtered, input);
        return;
    }
    if (needsInit || !isRunning(input)) initialise(input);
    if (samplesSinceInit < samplesSinceInitLimit) ++samplesSinceInit;
    if (numSections != 1) return stepSections(input.data());
    if (highPass)
        stepFirstOrder<true>(input.data());
    else
        stepFirstOrder<false>(input.data());
}

/// Whether states and coefficients fit the input's shape and each other. They don't after a change of shape, seen or
/// slept through in a bypass, nor where an order or a cached cut-off brought another number of sections without a start.
bool ButterworthComputer_v2::isRunning(const MatrixXd& input) const {
    return filtered.rows() == input.rows() && filtered.cols() == input.cols() && stateRows == input.rows() &&
           stateCols == input.cols() && coefficients.cols() == numSections &&
           (states.empty() || states.front().cols() == numSections);
}

void ButterworthComputer_v2::initialise(const MatrixXd& input) {
    needsInit = true; // stays so if memory runs out below
    states.clear();
    states.resize(static_cast<std::size_t>(input.size()));
    if (!memorize && !coefficientCache.empty()) {
        coefficientCache.clear();
        recent.fill({});
    }
    computeCoefficients();
    samplesSinceInit = 0;
    samplesSinceInitLimit = numSections;
    const double* value = input.data();
    for (MatrixXd& state : states) {
        resizeSample(state, 2, numSections);
        state.setConstant(*value++);
    }
    stateRows = input.rows();
    stateCols = input.cols();
    copySample(filtered, input);
    needsInit = false;
}

void ButterworthComputer_v2::computeCoefficients() {
    // NaN is no key: an ordered map can't tell it from any other.
    const bool isKey = memorize && !std::isnan(cutOff);
    if (isKey) {
        const MatrixXd* const cached = findCached();
        // An entry made under another order may have other sections than are wanted now.
        if (cached != nullptr && cached->cols() == order / 2 + order % 2) {
            copySample(coefficients, *cached);
            numSections = static_cast<int>(coefficients.cols());
            return;
        }
    }
    numSections = designButterworthSections(coefficients, cutOff, order);
    if (isKey) copySample(coefficientCache[cutOff], coefficients);
}

/// The entry of the present cut-off, or null.
const MatrixXd* ButterworthComputer_v2::findCached() {
    Recent& slot = recent[(std::bit_cast<std::uint64_t>(cutOff) * kGoldenRatio) >> kSlotShift];
    if (slot.entry != nullptr && slot.cutOff == cutOff) return slot.entry;
    const auto found = coefficientCache.find(cutOff);
    if (found == coefficientCache.end()) return nullptr;
    slot = {cutOff, &found->second}; // a map's entries stay where they are
    return slot.entry;
}

/// The one section that matters: a state matrix is then x1 and y1 side by side, so two elements are two loads.
template <bool complement>
void ButterworthComputer_v2::stepFirstOrder(const double* in) {
    const double a1 = coefficients(kA1, 0);
    const double gain = coefficients(kGain, 0);
    MatrixXd* const all = states.data();
    double* const out = filtered.data();
    const Eigen::Index count = filtered.size();
    const auto stepPair = [=](Eigen::Index i) {
        double* const even = all[i].data();
        double* const odd = all[i + 1].data();
        const Pair left = loadPair(even);
        const Pair right = loadPair(odd);
        const Pair u = loadPair(in + i);
        // Order matters: the feedback, then the gain times the sum of both inputs.
        const Pair y = a1 * secondLanes(left, right) + gain * (firstLanes(left, right) + u);
        storePair(even, firstLanes(u, y));
        storePair(odd, secondLanes(u, y));
        storePair(out + i, complement ? u - y : y);
    };
    Eigen::Index i = 0;
    for (; i + 4 <= count; i += 4) {
        stepPair(i);
        stepPair(i + 2);
    }
    if (i + 2 <= count) {
        stepPair(i);
        i += 2;
    }
    if (i == count) return;
    double* const last = all[i].data();
    const double u = in[i];
    last[1] = a1 * last[1] + gain * (last[0] + u);
    last[0] = u;
    out[i] = complement ? u - last[1] : last[1];
}

/// Any number of sections, each fed the input itself.
void ButterworthComputer_v2::stepSections(const double* in) {
    double* out = filtered.data();
    for (MatrixXd& state : states) {
        const double u = *in++;
        double y = 0.0;
        for (int k = 0; k < numSections; ++k) {
            y = coefficients(kA1, k) * state(1, k) + coefficients(kGain, k) * (state(0, k) + u);
            state(1, k) = y;
            state(0, k) = u;
        }
        *out++ = highPass ? u - y : y;
    }
}
