// SPDX-License-Identifier: MIT
#pragma once

#include "design/CascadeKernels.h"
#include "framework/transport/MatrixXd.h"

#include <cstddef>
#include <vector>

/// Smooths a time series of matrices, each element on its own, with a Butterworth low-pass of any order.
///
/// The filter is a cascade of second-order sections (`Design::designButterworthSections`) in direct form II,
/// the gain behind the numerator of each section; s1 and s2 are a section's delayed values:
///
///     w = u + a1 s1 + a2 s2,   y = (b1 s1 + w + b2 s2) g,   s2 = s1,   s1 = w
///
/// and y is the next section's u. The output has the shape of the input. The first step, and the first one
/// after a request, new parameters or a change of shape, designs the cascade and starts it in the steady
/// state of the present input, as if that had stood for ever: a constant passes from the first output on.
/// Nothing else is forgotten.
///
/// Kept as is: the high-pass is no design of its own but input minus low-pass; order 0 is a bypass in both
/// modes; and a cut-off of 0 divides by zero at the start, so that everything is non-finite until the next
/// start.
class ButterworthComputer {
public:
    using MatrixXd = Quillmere::Core::MatrixXd;

    virtual ~ButterworthComputer() = default;

    /// Takes a cut-off, as a fraction of the Nyquist frequency, and an order; the next step starts anew.
    /// Requires: `newOrder` at least 0.
    void setParameters(double newCutOff, int newOrder);

    /// Makes the next step start anew.
    void requestInit();

    /// Makes the output the input minus the low-pass, or the low-pass; the running states stay.
    void setHighPass(bool flag);

    /// Filters one sample. Allocates only where it starts anew.
    void step(const MatrixXd& input);

    /// Whether a step with one row of so many columns would neither start anew nor be a bypass.
    bool getIsUnderWay(Eigen::Index columns) const {
        return order > 0 && !needsInit && filtered.rows() == 1 && filtered.cols() == columns;
    }

    /// Filters many samples of one row each, one behind the other, as that many steps do, and writes the
    /// results behind each other. Requires: `getIsUnderWay` of their columns, and 1 row at least. `results`
    /// may be `rows` themselves.
    void stepRows(const double* rows, double* results, std::ptrdiff_t count);

    /// The last result; valid until the next step.
    const MatrixXd& output() const { return filtered; }

private:
    void bypass(const MatrixXd& input);
    void start(const MatrixXd& input);
    void run(const MatrixXd& input);
    void initialise(const MatrixXd& input);
    void initState(Eigen::Index element, double value);

    int order = 1; ///< 0 means bypass.
    double cutOff = 0.05;
    MatrixXd filtered;
    /// By octet of elements, then by section, s1 and behind it s2: element e's values of section k are lane e
    /// % 8 of states[2 (e / 8 numSections + k)] and of the one after. Lanes without an element are never
    /// read.
    std::vector<Design::Octet> states;
    MatrixXd coefficients; ///< By section, with the rows of `Design::SectionRow`.
    bool needsInit = true;
    int numSections = 0;
    bool highPass = false;
    int samplesSinceInit = 0; ///< Stops at the limit. Nothing reads the two; they are part of the state.
    int samplesSinceInitLimit = 0;
    Design::StepCascade stepCascade = nullptr; ///< For `numSections`; set by a start, as the next.
    Design::StepCascadeRows stepCascadeRows = nullptr;
};
