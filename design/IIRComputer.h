// SPDX-License-Identifier: MIT
#pragma once

#include "design/DirectForm.h"
#include "framework/transport/MatrixXd.h"

#include <vector>

/// Runs a recursive filter whose coefficients the user gives, every element of a sample alike. With u the
/// input times the reciprocal of the gain, nx coefficients x and any number of coefficients y:
///
///     y(n) = x[nx-1] u(n) + (x[0] + ... + x[nx-2]) u(n-1) + (sum of all y) y(n-1)
///
/// Coefficients run oldest first, feedback is added, and nothing is divided by a leading term. Kept as is:
/// the history never reaches back further than one sample, however many coefficients there are (see
/// `Design::runDirectForm`).
///
/// The first sample after a change of the gain or of coefficients, after `requestInit` and after a change of
/// shape initialises: in first-value mode as after a long run of that sample, the outputs unscaled; otherwise
/// with the init value. Before any coefficients are set the output is zero.
class IIRComputer {
public:
    using MatrixXd = Quillmere::Core::MatrixXd;

    void setGain(double gain);
    /// Takes row 0. Requires: at least one row.
    void setXCoefficients(const MatrixXd& matrix);
    void setYCoefficients(const MatrixXd& matrix);

    /// These three take effect at the next initialisation.
    void setInitValue(double value) { initValue = value; }
    double getInitValue() const { return initValue; }
    void setFirstValueMode(bool flag) { firstValueMode = flag; }

    void requestInit() { needsInit = true; }

    /// Whether there is any feed-forward coefficient; without one a step would have no history to read.
    bool getIsRunnable() const { return xHistory.size() > 0; }

    /// Runs one sample. Requires: `getIsRunnable()`. Raises what `resizeSample` raises.
    void step(const MatrixXd& input);

    /// The last output; valid until the next call.
    const MatrixXd& output() const { return yHistory.newest; }

private:
    void initialise(const MatrixXd& input);

    bool firstValueMode = true;
    double initValue = 0.0;
    double inverseGain = 1.0;
    std::vector<double> xCoeffs{0.0, 0.0};
    std::vector<double> yCoeffs{0.0, 0.0};
    bool needsInit = true;
    Design::RisingHistory xHistory{1};
    /// one entry more than coefficients: entry 0 is the output being formed
    Design::RisingHistory yHistory{1};
};
