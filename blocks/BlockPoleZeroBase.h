// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "design/DirectFormDesigner.h"

#include <cstdint>
#include <vector>

/// What the blocks have in common that design a recursive filter in one of four band shapes and publish the
/// design: `FilterBessel`, `FilterButterworthV2`, `FilterChebyshev`, `FilterEllipticV1`.
///
/// Every element of a sample on "in" is filtered alike by the block's designer, and leaves on "out" with its
/// time stamp. Cut-offs are fractions of the Nyquist frequency; low-pass and high-pass use the low one alone.
/// A changed setting, and the first sample, designs anew at the next sample and starts from zeros, so a
/// constant input shows a transient; then "gain" (1 by 1) and "coeffs" (row 0 feed-forward, row 1 feedback,
/// zeros behind the shorter one) are sent, before "out" and stamped with the wall clock. A new shape designs
/// and starts anew, but publishes nothing. "Reset", and any first value but 0.0 on "reset", zeroes the state
/// and keeps the design. An empty sample is dropped.
///
/// The edges of a band are kept in order. Kept as is: the low edge, moved above the high one, takes it along
/// only in the band modes; the high edge, moved below the low one, takes it along in any mode.
class BlockPoleZeroBase : public Filter {
public:
    ~BlockPoleZeroBase() override;

    void process() override;

protected:
    /// How a cut-off is set.
    struct CutOff {
        const char* name;
        double min, max, step, start;
    };
    static constexpr CutOff kLowRelative{"LowRelativeCutOffFreq", 0.0, 1.0, 0.000001, 0.05};
    static constexpr CutOff kHighRelative{"HighRelativeCutOffFreq", 0.000001, 1.0, 0.000001, 0.1};

    /// `ownDesigner` is a member of the block's; nothing is done with it before the first step.
    BlockPoleZeroBase(const std::string& instanceName, DirectFormDesigner& ownDesigner, const CutOff& low,
                      const CutOff& high);

    /// Binds a setting whose change asks for a new design, and the command that asks for a reset.
    void bindToDesign(Quillmere::Core::AbstractProperty& property);
    void bindToReset(CommandProperty& command);
    void requestDesign() { designRequested = true; }

    /// Reads the block's settings, each under its own guard, and hands them to its designer. [run]
    virtual void passParameters(std::int32_t designCode) = 0;
    /// What "gain" and row 1 of "coeffs" carry. [run]
    virtual double gainToPublish() const { return anyDesigner.getGain(); }
    virtual std::vector<double> feedbackToPublish() const { return anyDesigner.getYCoefficients(); }

    InputPin<MatrixXd> in;
    InputPin<MatrixXd> resetPin;
    OutputPin<MatrixXd> out;
    OutputPin<MatrixXd> gain;
    OutputPin<MatrixXd> coeffs;
    EnumProperty<std::string> mode;
    RangeProperty<int> order;
    RangeProperty<double> lowCutOff;
    RangeProperty<double> highCutOff;

private:
    void publish();
    void requestReset() { resetRequested = true; }
    void onMode();
    void onLowCutOff();
    void onHighCutOff();

    DirectFormDesigner& anyDesigner;
    bool resetRequested = true;
    bool designRequested = true; ///< stays up until a sample has been filtered by the new design
};
