// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "design/IIRComputer.h"

/// Filters every element of a sample recursively, with coefficients from settings or pins.
///
///     u = in / Gain
///     out(n) = x_last u(n) + (sum of the other x) u(n-1) + (sum of all y) out(n-1)
///
/// The coefficients are one row each and run oldest first; feedback is added. A pin writes the setting that
/// it replaces. State: u(n-1) and out(n-1) of every element. Any change, a first value other than 0.0 on
/// "reset", "Reset" and a new shape start anew with the next sample: with "First value" as after a long run
/// of that sample, with "Fixed value" from "InitValue".
///
/// Kept as is: a new block sends zeros until a coefficient or the gain is first changed; it never looks back
/// further than one sample. A row without columns on a coefficient pin raises from the step once and is then
/// what the pin counts as the present value; if a later change loads it on the feed-forward side, samples are
/// taken and nothing is sent.
class FilterIIR final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterIIR";

    explicit FilterIIR(const std::string& instanceName);
    ~FilterIIR() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> in;
    InputPin<MatrixXd> gainPin;
    InputPin<MatrixXd> coeffsXPin;
    InputPin<MatrixXd> coeffsYPin;
    InputPin<MatrixXd> resetPin;
    OutputPin<MatrixXd> out;
    ValueProperty<double> gain;
    ValueProperty<MatrixXd> coeffsX;
    ValueProperty<MatrixXd> coeffsY;
    EnumProperty<std::string> initMode;
    ValueProperty<double> initValue;
    CommandProperty resetCommand;

    void readSettings();
    bool takeGain();
    bool takeCoefficients(InputPin<MatrixXd>& pin, MatrixXd& copy, ValueProperty<MatrixXd>& setting);
    void checkCoefficients(const MatrixXd& value);
    void requestUpdate() { updateRequested = true; }
    void requestReset() { resetRequested = true; }
    void onInitMode();
    void onInitValue();

    bool updateRequested = false; ///< starts low, so the defaults never reach the computer by themselves
    bool resetRequested = true;
    double gainCopy = 1.0; ///< the copies: what the computer has, or gets with the next change
    MatrixXd xCopy = MatrixXd::Constant(1, 1, 1.0);
    MatrixXd yCopy = MatrixXd::Constant(1, 1, 1.0);
    IIRComputer computer;
};
