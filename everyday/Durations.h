// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Tells of each time for which a level was on: when it began, when it ended, how long it was.
///
///     out = [begin, end, end - begin]    in seconds, 1 by 3
///
/// In: any shape, of which the first element is the level, on where it is greater than 0; not-a-number is
/// off, and an empty sample is dropped. Begin is the time of the first sample that is on, end that of the
/// first that isn't, so durations and pauses fill the time without a rest. A pause of "Gap" seconds or less
/// ends nothing; what lasts less than "Least" seconds isn't told. Sent with the time stamp of the sample
/// that decides: the one that ends it or, where there is a "Gap", the first that is off for longer. "Reset"
/// forgets what is under way. "Finish" says that nothing more comes: what is under way ends with the last
/// sample.
class Durations final : public Filter {
public:
    static constexpr const char* kTypeName = "Durations";

    explicit Durations(const std::string& instanceName);
    ~Durations() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    RangeProperty<double> least;
    RangeProperty<double> gap;
    CommandProperty resetCommand;
    CommandProperty finishCommand;

    void follow(bool isOn, double time);
    void tell(double time);
    void finish();
    void requestReset() { resetRequested = true; }
    void requestFinish() { finishRequested = true; }

    enum class State { Off, On, Pause };
    State state = State::Off; ///< a reset makes it off, as do the next three
    double begin = 0.0;       ///< seconds; of what is under way
    double end = 0.0;         ///< seconds; of what is under way, while it pauses
    double last = 0.0;        ///< seconds; of the sample before
    bool resetRequested = false;
    bool finishRequested = false;
};
