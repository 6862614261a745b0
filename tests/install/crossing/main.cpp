// SPDX-License-Identifier: MIT
#include "framework/Quillmere.h"

#include <cstdio>

using namespace Quillmere::Core;

namespace {
/// Has a setting that holds a matrix, and passes on what comes.
class Passing final : public Filter {
public:
    explicit Passing(const std::string& name) : Filter(name, true) {}
    void process() override {
        if (!input.hasData()) return;
        copySample(output.data.value, input.take());
        output.send(input.getTimeStamp());
    }
    const char* getTypeName() const override { return "Passing"; }

    InputPin<MatrixXd> input{"input", this};
    OutputPin<MatrixXd> output{"output", this};
    ValueProperty<MatrixXd> table{"table", &getPropertyBag()};
};

/// What is made on one side is freed, resized and swapped on the other.
bool crosses(Passing& block, Eigen::Index size) {
    const MatrixXd made = MatrixXd::Constant(size, size + 1, 0.5);
    block.table.setValue(made);
    MatrixXd copy = block.table.getValue();
    AbstractProperty& setting = block.table;
    setting.setValueFromAny(setting.getValueAsAny());
    std::string text;
    setting.getValueAsString(text);
    setting.setValueFromString(text);
    copy.resize(1, 1);

    OutputPin<MatrixXd> sender("sender", nullptr);
    InputPin<MatrixXd> receiver("receiver", nullptr);
    receiver.setBufferCapacity(3);
    sender.attach(block.input, true);
    block.output.attach(receiver, true);
    bool isWhole = block.table.getValue() == made;
    for (int i = 0; i < 5; ++i) {
        sender.data.value = made * i;
        sender.send(i);
        block.process();
        if (i % 2 == 0) isWhole = isWhole && receiver.hasData() && receiver.take().size() == made.size();
    }
    return isWhole;
}
} // namespace

int main() {
    for (Eigen::Index size = 0; size < 9; ++size) {
        Passing block("block");
        if (!crosses(block, size) || !crosses(block, 8 - size)) {
            std::puts("found another matrix on the other side of the border; expected the same");
            return 1;
        }
    }
    return 0;
}
