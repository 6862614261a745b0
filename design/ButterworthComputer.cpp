// SPDX-License-Identifier: MIT
#include "design/ButterworthComputer.h"

#include "design/ButterworthSections.h"
#include "design/Pair.h"

#include <algorithm>
#include <array>
#include <cstddef>

using namespace Design;
using Quillmere::Core::copySample;
using Quillmere::Core::resizeSample;

namespace {

/// Runs the cascade over `count` neighbouring elements, 1 to 2 * pairs of them, at once: the sections of one element wait
/// for each other, those of its neighbours don't. Lanes left over repeat the last element.
template <int pairs>
[[gnu::always_inline]] inline void stepGroup(const double* c, int sections, bool complement, MatrixXd* states,
                                             const double* in, double* out, Eigen::Index count) {
    double* state[2 * pairs];
    Pair x[pairs];
    Pair u[pairs];
    for (int p = 0; p < pairs; ++p) {
        const Eigen::Index even = std::min<Eigen::Index>(2 * p, count - 1);
        const Eigen::Index odd = std::min<Eigen::Index>(2 * p + 1, count - 1);
        state[2 * p] = states[even].data();
        state[2 * p + 1] = states[odd].data();
        x[p] = u[p] = Pair{in[even], in[odd]};
    }
    for (int k = 0; k < sections; ++k, ++c) {
        for (int p = 0; p < pairs; ++p) {
            double* const even = state[2 * p] + k;
            double* const odd = state[2 * p + 1] + k;
            const Pair s1{even[0], odd[0]};
            const Pair s2{even[sections], odd[sections]};
            // Order matters: each lane does the sums of its element in the order written.
            const Pair w = u[p] + c[kA1 * sections] * s1 + c[kA2 * sections] * s2;
            u[p] = (c[kB1 * sections] * s1 + w + c[kB2 * sections] * s2) * c[kGain * sections];
            even[sections] = s1[0];
            odd[sections] = s1[1];
            even[0] = w[0];
            odd[0] = w[1];
        }
    }
    for (int p = 0; p < pairs; ++p) {
        const Pair result = complement ? x[p] - u[p] : u[p];
        out[std::min<Eigen::Index>(2 * p, count - 1)] = result[0];
        out[std::min<Eigen::Index>(2 * p + 1, count - 1)] = result[1];
    }
}

/// Runs the cascade over one element; alone, a pair of lanes would only add work.
[[gnu::always_inline]] inline double stepSingle(const double* c, int sections, double* state, double u) {
    for (int k = 0; k < sections; ++k, ++c, ++state) {
        const double s1 = state[0];
        const double s2 = state[sections];
        const double w = u + c[kA1 * sections] * s1 + c[kA2 * sections] * s2;
        u = (c[kB1 * sections] * s1 + w + c[kB2 * sections] * s2) * c[kGain * sections];
        state[sections] = s1;
        state[0] = w;
    }
    return u;
}

} // namespace

void ButterworthComputer::setParameters(double newCutOff, int newOrder) {
    cutOff = newCutOff;
    order = newOrder;
    needsInit = true;
}

void ButterworthComputer::requestInit() {
    needsInit = true;
}

void ButterworthComputer::setHighPass(bool flag) {
    highPass = flag;
}

void ButterworthComputer::step(const MatrixXd& input) {
    if (order == 0) {
        samplesSinceInit = samplesSinceInitLimit = 1;
        copySample(filtered, input);
        return;
    }
    if (filtered.rows() != input.rows() || filtered.cols() != input.cols()) needsInit = true;
    if (needsInit) initialise(input);
    if (samplesSinceInit < samplesSinceInitLimit) ++samplesSinceInit;

    switch (numSections) {
    case 1:
        return stepElements<1>(input.data());
    case 2:
        return stepElements<2>(input.data());
    case 3:
        return stepElements<3>(input.data());
    case 4:
        return stepElements<4>(input.data());
    case 5:
        return stepElements<5>(input.data());
    default:
        return stepElements<0>(input.data());
    }
}

void ButterworthComputer::initialise(const MatrixXd& input) {
    states.clear();
    states.resize(static_cast<std::size_t>(input.size()));
    numSections = designButterworthSections(coefficients, cutOff, order);
    samplesSinceInit = 0;
    samplesSinceInitLimit = numSections;
    const double* value = input.data();
    for (MatrixXd& state : states)
        initState(state, *value++);
    needsInit = false;
    copySample(filtered, input);
}

void ButterworthComputer::initState(MatrixXd& state, double value) const {
    resizeSample(state, 2, numSections);
    double u = value;
    for (int k = 0; k < numSections; ++k) {
        const double a1 = coefficients(kA1, k);
        const double a2 = coefficients(kA2, k);
        const double w = u / (1.0 - a1 - a2);
        state(0, k) = w;
        state(1, k) = w;
        u = (u + (a1 + a2 + coefficients(kB1, k) + coefficients(kB2, k)) * w) * coefficients(kGain, k);
    }
}

/// Runs the cascade over every element. The number of sections is a constant where the order is 1 to 10, so that the
/// compiler unrolls; 0 stands for any number.
template <int fixedSections>
void ButterworthComputer::stepElements(const double* in) {
    const int sections = fixedSections > 0 ? fixedSections : numSections;
    const double* c = coefficients.data();
    // A copy of our own: what the stores to the states can't change may stay in registers.
    std::array<double, kSectionRows * fixedSections + 1> copy;
    if constexpr (fixedSections > 0) {
        std::copy_n(c, kSectionRows * fixedSections, copy.data());
        c = copy.data();
    }
    MatrixXd* const state = states.data();
    double* const out = filtered.data();
    const Eigen::Index count = filtered.size();
    Eigen::Index first = 0;
    for (; first + 4 <= count; first += 4)
        stepGroup<2>(c, sections, highPass, state + first, in + first, out + first, 4);
    const Eigen::Index rest = count - first;
    if (rest == 3) {
        stepGroup<2>(c, sections, highPass, state + first, in + first, out + first, 3);
    } else if (rest == 2) {
        stepGroup<1>(c, sections, highPass, state + first, in + first, out + first, 2);
    } else if (rest == 1) {
        const double x = in[first];
        const double u = stepSingle(c, sections, state[first].data(), x);
        out[first] = highPass ? x - u : u;
    }
}
