// SPDX-License-Identifier: MIT
#include "design/ButterworthComputer.h"

#include "design/ButterworthSections.h"

#include <algorithm>
#include <cstddef>

using Quillmere::Core::MatrixXd;

using namespace Design;
using Quillmere::Core::copySample;

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
    // The seldom roads are calls at the end, so that the usual one saves nothing around them.
    if (order == 0) return bypass(input);
    if (needsInit || filtered.rows() != input.rows() || filtered.cols() != input.cols()) return start(input);
    run(input);
}

void ButterworthComputer::stepRows(const double* rows, double* results, std::ptrdiff_t count) {
    samplesSinceInit =
        static_cast<int>(std::min<std::ptrdiff_t>(samplesSinceInitLimit, samplesSinceInit + count));
    const Eigen::Index columns = filtered.size();
    stepCascadeRows(coefficients.data(), states.data(), {numSections, highPass}, rows, results, columns,
                    count);
    std::copy_n(results + (count - 1) * columns, columns, filtered.data());
}

void ButterworthComputer::bypass(const MatrixXd& input) {
    samplesSinceInit = samplesSinceInitLimit = 1;
    copySample(filtered, input);
}

void ButterworthComputer::start(const MatrixXd& input) {
    initialise(input);
    run(input);
}

inline void ButterworthComputer::run(const MatrixXd& input) {
    if (samplesSinceInit < samplesSinceInitLimit) ++samplesSinceInit;
    stepCascade(coefficients.data(), states.data(), {numSections, highPass}, input.data(), filtered.data(),
                input.size());
}

void ButterworthComputer::initialise(const MatrixXd& input) {
    needsInit = true; // stays so if memory runs out below
    numSections = designButterworthSections(coefficients, cutOff, order);
    const Eigen::Index octets = (input.size() + kOctetLanes - 1) / kOctetLanes;
    states.assign(static_cast<std::size_t>(2 * octets * numSections), {});
    const int unrolled = numSections <= CascadeKernels::kUnrolled ? numSections : 0;
    stepCascade = cascadeKernels(input.size()).cascades[unrolled];
    stepCascadeRows = cascadeKernelsOfRows(input.size()).cascadesOfRows[unrolled];
    samplesSinceInit = 0;
    samplesSinceInitLimit = numSections;
    for (Eigen::Index element = 0; element < input.size(); ++element)
        initState(element, input.data()[element]);
    copySample(filtered, input);
    needsInit = false;
}

void ButterworthComputer::initState(Eigen::Index element, double value) {
    Octet* state = states.data() + 2 * (element / kOctetLanes) * numSections;
    double u = value;
    for (int k = 0; k < numSections; ++k, state += 2) {
        const double a1 = coefficients(kA1, k);
        const double a2 = coefficients(kA2, k);
        const double w = u / (1.0 - a1 - a2);
        state[0].lanes[element % kOctetLanes] = w;
        state[1].lanes[element % kOctetLanes] = w;
        u = (u + (a1 + a2 + coefficients(kB1, k) + coefficients(kB2, k)) * w) * coefficients(kGain, k);
    }
}
