// SPDX-License-Identifier: MIT
#pragma once

#include "design/CascadeKernels.h"
#include "framework/transport/MatrixXd.h"

#include <array>
#include <cstddef>
#include <map>
#include <vector>

/// Smooths a time series of matrices, each element on its own, with a first-order Butterworth low-pass whose
/// cut-off may move at every sample while the filter runs on.
///
/// With u an element of the input, x1 the element before and y1 the result before:
///
///     y1 = a1 y1 + g (x1 + u),   x1 = u
///
/// with a1 and g of `Design::designButterworthSections`; the output, of the input's shape, is y1, or u - y1
/// as a high-pass. A start sets x1 and y1 to the present input, so a constant passes from the first output
/// on. The first step starts, and so does one after a request, a parameter change that asks for it, or a
/// change of shape. With `memorize` the coefficients of every cut-off met are kept, by its exact value, and
/// looked up when it comes back.
///
/// Kept as is: at a higher order the sections don't form a cascade. Each receives the input itself and obeys
/// the recursion above, and the last one is the output, so order 4 sounds like order 1. Order 0 is a bypass
/// in both modes. An order that changes without a start leaves the coefficients in force as they are.
class ButterworthComputer_v2 {
public:
    using MatrixXd = Quillmere::Core::MatrixXd;

    ButterworthComputer_v2() = default;
    ButterworthComputer_v2(const ButterworthComputer_v2&) = delete;
    ButterworthComputer_v2& operator=(const ButterworthComputer_v2&) = delete;
    virtual ~ButterworthComputer_v2() = default;

    /// Takes a cut-off, as a fraction of the Nyquist frequency, and an order; the next step starts anew.
    /// Requires: `newOrder` at least 0.
    void setParameters(double newCutOff, int newOrder);

    /// The same with all choices: without `reinit` even a start that was due is called off, and nothing is
    /// redesigned.
    void setParameters(double newCutOff, int newOrder, bool reinit, bool newMemorize);

    /// Moves the cut-off. One equal to the present does nothing at all. Unless a start is due or asked for,
    /// the running states meet the new coefficients at the next sample.
    void setCutOff(double newCutOff, bool reinit, bool newMemorize);

    double getCutOff() const { return cutOff; }
    int getOrder() const { return order; }
    bool getHighPass() const { return highPass; }

    /// Makes the output the input minus the low-pass, or the low-pass; the running states stay.
    void setHighPass(bool flag) { highPass = flag; }

    /// Makes the next step start anew.
    void requestInit() { needsInit = true; }

    /// Filters one sample. Allocates only where it starts anew, and for a cut-off that is memorized.
    void step(const MatrixXd& input);

    /// The last result; valid until the next step.
    const MatrixXd& output() const { return filtered; }

private:
    struct Shape {
        Eigen::Index rows = 0;
        Eigen::Index cols = 0;
        int sections = 0;
        Eigen::Index octets = 0;
    };

    void bypass(const MatrixXd& input);
    void start(const MatrixXd& input);
    void run(const MatrixXd& input);
    bool isRunning(const MatrixXd& input) const;
    void initialise(const MatrixXd& input);
    void computeCoefficients();
    const MatrixXd* findCached();
    void runSection(int section, Design::Heard heard, const double* in);

    int order = 1; ///< 0 means bypass.
    double cutOff = 0.05;
    MatrixXd filtered;
    /// By section x1 of all elements and behind it y1, both streaming: element e's values of section k are
    /// lane e % 8 of states[2 k octets + e / 8], where octets is the number of elements over 8, rounded up,
    /// and of the one `octets` on.
    std::vector<Design::Octet> states;
    Shape statesShape;                           ///< What they were started for.
    std::map<double, MatrixXd> coefficientCache; ///< By exact cut-off; emptied by a start without `memorize`.
    MatrixXd coefficients;                       ///< By section, with the rows of `Design::SectionRow`.
    bool needsInit = true;
    bool memorize = false;
    int numSections = 0;
    bool highPass = false;
    int samplesSinceInit = 0; ///< Stops at the limit. Nothing reads the two; they are part of the state.
    int samplesSinceInitLimit = 0;
    const Design::StepMoving* stepMoving = nullptr; ///< By `Heard`; set by a start.

    struct Recent {
        double cutOff = 0.0;
        const MatrixXd* entry = nullptr;
    };
    static constexpr int kSlotBits = 8;
    /// Entries of the cache by a few bits of their cut-off, since a walk through the map takes longer than a
    /// step over many elements; emptied with it. So many slots that dozens of cut-offs seldom share one.
    std::array<Recent, std::size_t{1} << kSlotBits> recent;
};
