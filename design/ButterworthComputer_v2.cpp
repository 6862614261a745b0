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

namespace {
// Multiplying by 2^64 over the golden ratio spreads neighbouring keys; the top bits number the slots.
constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15;
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
    runSections(input.data());
}

/// Whether states and output fit the input's shape and the sections in force. They don't after a change of shape, seen or
/// slept through in a bypass, nor where an order or a cached cut-off brought another number of sections without a start.
bool ButterworthComputer_v2::isRunning(const MatrixXd& input) const {
    const auto fits = [&](const MatrixXd& matrix) {
        return matrix.rows() == input.rows() && matrix.cols() == input.cols();
    };
    return fits(filtered) && numSections > 0 && states.size() == 2 * static_cast<std::size_t>(numSections) &&
           fits(states.front());
}

void ButterworthComputer_v2::initialise(const MatrixXd& input) {
    needsInit = true; // stays so if memory runs out below
    if (!memorize && !coefficientCache.empty()) {
        coefficientCache.clear();
        recent.fill({});
    }
    computeCoefficients();
    samplesSinceInit = 0;
    samplesSinceInitLimit = numSections;
    states.resize(2 * static_cast<std::size_t>(numSections));
    for (MatrixXd& state : states)
        copySample(state, input);
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
    Recent& slot = recent[(std::bit_cast<std::uint64_t>(cutOff) * kGoldenRatio) >> (64 - kSlotBits)];
    if (slot.entry != nullptr && slot.cutOff == cutOff) return slot.entry;
    const auto found = coefficientCache.find(cutOff);
    if (found == coefficientCache.end()) return nullptr;
    slot = {cutOff, &found->second}; // a map's entries stay where they are
    return slot.entry;
}

/// Each section is fed the input itself, and only the last one is heard.
void ButterworthComputer_v2::runSections(const double* in) {
    for (int k = 0; k + 1 < numSections; ++k)
        runSection<Heard::Not>(k, in);
    if (highPass)
        runSection<Heard::Complement>(numSections - 1, in);
    else
        runSection<Heard::Result>(numSections - 1, in);
}

template <ButterworthComputer_v2::Heard heard>
void ButterworthComputer_v2::runSection(int section, const double* in) {
    const double a1 = coefficients(kA1, section);
    const double gain = coefficients(kGain, section);
    double* const x1 = states[2 * static_cast<std::size_t>(section)].data();
    double* const y1 = states[2 * static_cast<std::size_t>(section) + 1].data();
    double* const out = filtered.data();
    const Eigen::Index count = filtered.size();
    // Order matters: the feedback, then the gain times the sum of both inputs. The input may be the output itself.
    const auto stepPair = [=](Eigen::Index i) {
        const Pair u = loadPair(in + i);
        const Pair y = a1 * loadPair(y1 + i) + gain * (loadPair(x1 + i) + u);
        storePair(x1 + i, u);
        storePair(y1 + i, y);
        if constexpr (heard != Heard::Not) storePair(out + i, heard == Heard::Complement ? u - y : y);
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
    const double u = in[i];
    const double y = a1 * y1[i] + gain * (x1[i] + u);
    x1[i] = u;
    y1[i] = y;
    if constexpr (heard != Heard::Not) out[i] = heard == Heard::Complement ? u - y : y;
}
