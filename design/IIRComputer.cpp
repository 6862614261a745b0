// SPDX-License-Identifier: MIT
#include "design/IIRComputer.h"

namespace {
using Quillmere::Core::MatrixXd;

std::vector<double> firstRow(const MatrixXd& matrix) {
    return {matrix.data(), matrix.data() + matrix.cols()};
}
} // namespace

void IIRComputer::setGain(double gain) {
    inverseGain = 1.0 / gain;
    needsInit = true;
}

void IIRComputer::setXCoefficients(const MatrixXd& matrix) {
    xCoeffs = firstRow(matrix);
    xHistory.entries = xCoeffs.size();
    needsInit = true;
}

void IIRComputer::setYCoefficients(const MatrixXd& matrix) {
    yCoeffs = firstRow(matrix);
    yHistory.entries = yCoeffs.size() + 1;
    needsInit = true;
}

void IIRComputer::step(const MatrixXd& input) {
    const MatrixXd& newest = yHistory.newest;
    if (needsInit || newest.rows() != input.rows() || newest.cols() != input.cols()) initialise(input);
    Design::runDirectForm({xCoeffs, yCoeffs, Design::InputScale::Multiply, inverseGain}, input, xHistory,
                          yHistory);
}

void IIRComputer::initialise(const MatrixXd& input) {
    needsInit = true; // stays so if there is no memory for the new shape
    xHistory.fill(input.rows(), input.cols(), initValue * inverseGain);
    yHistory.fill(input.rows(), input.cols(), initValue);
    if (firstValueMode) {
        xHistory.newest = input * inverseGain;
        yHistory.newest = input;
    }
    needsInit = false;
}
