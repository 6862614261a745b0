// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "everyday/GridSampler.h"

/// Turns samples at any times into samples at an even rate.
///
///     times of out = time of the first sample + k / Rate
///
/// Any shape, the unit of the input; each element by itself. `GridSampler` tells how values are made: by
/// lines or by holding the newest, and, where samples come more often than they go, through a low-pass
/// ("LowPass") whose delay is taken off the time stamps: a sample is sent 20 / Rate seconds later than its
/// time says, where they end, or at a gap, as soon as that is known, by those that there are. Nothing is
/// drawn across a distance of more than "Gap" seconds. Several samples may be sent in one step. A sample
/// whose time doesn't grow is dropped, and so is an empty one. "Finish" says that nothing more comes, and so
/// do other settings and another shape, which start anew; "Reset" starts anew and forgets what wasn't sent.
class Resample final : public Filter {
public:
    static constexpr const char* kTypeName = "Resample";
    enum class Mode { Linear, Hold };

    explicit Resample(const std::string& instanceName);
    ~Resample() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    RangeProperty<double> rate;
    EnumEnumProperty<Mode, std::string> mode;
    ValueProperty<bool> lowPass;
    RangeProperty<double> gap;
    CommandProperty resetCommand;
    CommandProperty finishCommand;

    void take();
    void begin(const MatrixXd& sample);
    void sendDecided();
    void sendRest();
    void requestReset() { resetRequested = true; }
    void requestFinish() { finishRequested = true; }
    void startAnew() { hasChanged = true; }

    bool isNew = true; ///< the next sample is the first
    bool hasChanged = false;
    bool resetRequested = false;
    bool finishRequested = false;
    Everyday::GridSampler sampler;
};
