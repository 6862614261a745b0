// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"

#include <stdexcept>
#include <string>

/// A block with a setting of each kind, and pins of both.
class KnobBlock final : public Quillmere::Core::Filter {
public:
    KnobBlock() : Filter("knobs", true) {
        reset.setIsBlocking(false);
        order.setRange(1, 10, 1);
        edge.setRange(0.0, 1.0, 0.25);
        mode.addLabel("LowPass");
        mode.addLabel("HiPass");
        locked.setIsWritable(false);
        shy.setChangeHandler(this, &KnobBlock::raiseWhatever);
    }

    void process() override {}
    const char* getTypeName() const override { return "KnobBlock"; }

    template <class T>
    using Value = Quillmere::Core::ValueProperty<T>;
    template <class T>
    using Range = Quillmere::Core::RangeProperty<T>;
    using MatrixXd = Quillmere::Core::MatrixXd;

    Quillmere::Core::InputPin<MatrixXd> in{"in", this};
    Quillmere::Core::InputPin<MatrixXd> reset{"reset", this};
    Quillmere::Core::OutputPin<MatrixXd> out{"out", this};
    Value<bool> flag{"Flag", &getPropertyBag()};
    Value<int> whole{"Whole", &getPropertyBag()};
    Value<unsigned> count{"Count", &getPropertyBag()};
    Value<double> number{"Number", &getPropertyBag()};
    Value<MatrixXd> matrix{"Matrix", &getPropertyBag()};
    Range<int> order{"Order", &getPropertyBag()};
    Range<double> edge{"Edge", &getPropertyBag()};
    Quillmere::Core::EnumProperty<std::string> mode{"Mode", &getPropertyBag()};
    Quillmere::Core::CommandProperty command{"Go", &getPropertyBag()};
    Value<std::string> text{"Text", &getPropertyBag()};
    Value<double> locked{"Locked", &getPropertyBag()};
    Value<int> shy{"Shy", &getPropertyBag()};

private:
    void raiseWhatever() { throw std::runtime_error("not\nnow"); }
};
