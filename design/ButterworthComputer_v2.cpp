// SPDX-License-Identifier: MIT
#include "design/ButterworthComputer_v2.h"

#include "design/ButterworthSections.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

using Quillmere::Core::MatrixXd;

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
    // The seldom roads are calls at the end, so that the usual one saves nothing around them.
    if (order == 0) return bypass(input);
    if (needsInit || !isRunning(input)) return start(input);
    run(input);
}

void ButterworthComputer_v2::bypass(const MatrixXd& input) {
    samplesSinceInit = samplesSinceInitLimit = 1;
    copySample(filtered, input);
}

void ButterworthComputer_v2::start(const MatrixXd& input) {
    initialise(input);
    run(input);
}

/// Each section is fed the input itself, and only the last one is heard.
inline void ButterworthComputer_v2::run(const MatrixXd& input) {
    if (samplesSinceInit < samplesSinceInitLimit) ++samplesSinceInit;
    if (input.size() == 0) return;
    for (int k = 0; k + 1 < numSections; ++k)
        runSection(k, Heard::Not, input.data());
    runSection(numSections - 1, highPass ? Heard::Complement : Heard::Result, input.data());
}

inline void ButterworthComputer_v2::runSection(int section, Heard heard, const double* in) {
    Octet* const x1 = states.data() + 2 * section * statesShape.octets;
    const StepMoving kernel = stepMoving[static_cast<int>(heard)];
    kernel(coefficients(kA1, section), coefficients(kGain, section), x1, x1 + statesShape.octets, in,
           filtered.data(), filtered.size());
}

/// Whether states and output fit the input's shape and the sections in force. They don't after a change of
/// shape, seen or slept through in a bypass, nor where an order or a cached cut-off brought another number of
/// sections without a start.
bool ButterworthComputer_v2::isRunning(const MatrixXd& input) const {
    return filtered.rows() == input.rows() && filtered.cols() == input.cols() &&
           statesShape.rows == input.rows() && statesShape.cols == input.cols() &&
           statesShape.sections == numSections && numSections > 0;
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
    const Eigen::Index octets = (input.size() + kOctetLanes - 1) / kOctetLanes;
    states.resize(static_cast<std::size_t>(2 * numSections * octets));
    for (Eigen::Index i = 0; i < input.size(); ++i)
        for (int row = 0; row < 2 * numSections; ++row)
            states[static_cast<std::size_t>(row * octets + i / kOctetLanes)].lanes[i % kOctetLanes] =
                input.data()[i];
    statesShape = {input.rows(), input.cols(), numSections, octets};
    stepMoving = cascadeKernels(input.size()).moving;
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
