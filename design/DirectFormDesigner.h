// SPDX-License-Identifier: MIT
#pragma once

#include "design/DirectForm.h"
#include "framework/transport/MatrixXd.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Design {
/// The band shapes as designs know them.
inline constexpr std::int32_t kLowPass = 1;
inline constexpr std::int32_t kHighPass = 2;
inline constexpr std::int32_t kBandPass = 4;
inline constexpr std::int32_t kBandStop = 8;
} // namespace Design

/// What filters have in common that are designed on demand and then run sample by sample: the coefficients,
/// the histories, and when to design. Frequencies are fractions of the Nyquist frequency.
///
/// A design is made by the first `step` after its parameters or the sample's shape have changed, and always
/// starts from histories of zeros; there is no way to change a design and keep the state. `resetHistory`
/// alone clears the state and keeps the design.
///
/// Kept as is: the recursion looks back one sample only, whatever the order (see `Design::runDirectForm`).
/// From order 2 on a constant input still settles as the design says, but the dynamics are those of a
/// first-order filter, which is why order 4 sounds like order 1; and the recursion diverges where its summed
/// feedback exceeds 1 in size, even though all poles lie inside the unit circle. Nothing detects that.
///
/// A design whose gain is not-a-number has only such coefficients, and its output stays so until the next
/// design.
class DirectFormDesigner {
public:
    using MatrixXd = Quillmere::Core::MatrixXd;

    virtual ~DirectFormDesigner();

    /// Clears the histories and gives them the shape `rows` by `cols`; a value below 1 for either means the
    /// shape that they have now. The design is not touched.
    void resetHistory(Eigen::Index rows, Eigen::Index cols);

    /// Designs when due, then runs one sample. Requires: `input` is not empty. Raises what `resizeSample`
    /// raises.
    void step(const MatrixXd& input);

    /// The last output; valid until the next call.
    const MatrixXd& output() const { return yHistory.newest; }

    double getGain() const { return gain; }
    std::vector<double> getXCoefficients() const { return xCoeffs; }
    std::vector<double> getYCoefficients() const { return yCoeffs; }

protected:
    DirectFormDesigner(std::int32_t designMode, std::int32_t prototypeOrder, double low, double high);

    /// Fills `gain` and both coefficient vectors.
    virtual void design() = 0;
    /// Runs one sample of the histories' shape.
    virtual void run(const MatrixXd& input) = 0;
    /// How far each history reaches, told by the mode and not by the roots of a design.
    virtual std::size_t countXEntries() const;
    std::size_t countYEntries() const;

    bool getIsBand() const { return mode == Design::kBandPass || mode == Design::kBandStop; }
    void spreadNaNGain();

    std::int32_t order; ///< of the prototype; a band design has twice as many poles
    std::int32_t mode;  ///< one of the design codes
    double lowCutOff;   ///< the only cut-off of low-pass and high-pass designs
    double highCutOff;  ///< second band edge
    bool needsDesign = true;
    double gain = 1.0;
    std::vector<double> xCoeffs; ///< feed-forward
    std::vector<double> yCoeffs; ///< feedback
    Design::RisingHistory xHistory{2};
    Design::RisingHistory yHistory{2};
};
