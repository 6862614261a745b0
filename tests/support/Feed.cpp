// SPDX-License-Identifier: MIT
#include "tests/support/Feed.h"

#include "tests/support/Numbers.h"

#include <sstream>
#include <stdexcept>

namespace Support {

using namespace Quillmere::Core;

namespace {
/// Writes a setting's line of the catalogue, by its type.
class Describer final : public Util::System::AbstractVisitor,
                        public Util::System::Visitor<ValueProperty<bool>, void, void, 1>,
                        public Util::System::Visitor<ValueProperty<int>, void, void, 1>,
                        public Util::System::Visitor<ValueProperty<unsigned>, void, void, 1>,
                        public Util::System::Visitor<ValueProperty<double>, void, void, 1>,
                        public Util::System::Visitor<ValueProperty<MatrixXd>, void, void, 1>,
                        public Util::System::Visitor<RangeProperty<int>, void, void, 1>,
                        public Util::System::Visitor<RangeProperty<double>, void, void, 1>,
                        public Util::System::Visitor<EnumProperty<std::string>, void, void, 1>,
                        public Util::System::Visitor<CommandProperty, void, void, 1> {
public:
    explicit Describer(std::ostream& stream) : out(stream) {}

    void visit(const ValueProperty<bool>& p) override { value("bool", p, p.getValue() ? "true" : "false"); }
    void visit(const ValueProperty<int>& p) override { value("int", p, std::to_string(p.getValue())); }
    void visit(const ValueProperty<unsigned>& p) override {
        value("unsigned", p, std::to_string(p.getValue()));
    }
    void visit(const ValueProperty<double>& p) override { value("double", p, digits17(p.getValue())); }
    void visit(const ValueProperty<MatrixXd>& p) override {
        std::string text;
        p.getValueAsString(text);
        value("matrix", p, "(" + text + ")");
    }
    void visit(const RangeProperty<int>& p) override {
        out << "range int \"" << p.getName() << "\" " << p.getValue() << " in [" << p.minValue << ";"
            << p.maxValue << "] step " << p.stepValue;
        flags(p);
    }
    void visit(const RangeProperty<double>& p) override {
        out << "range double \"" << p.getName() << "\" " << digits17(p.getValue()) << " in ["
            << digits17(p.minValue) << ";" << digits17(p.maxValue) << "] step " << digits17(p.stepValue);
        flags(p);
    }
    void visit(const EnumProperty<std::string>& p) override {
        out << "enum \"" << p.getName() << "\" " << p.getValue() << " of ";
        for (std::size_t i = 0; i < p.getLabels().size(); ++i)
            out << (i > 0 ? ", " : "") << p.getLabels()[i];
        flags(p);
    }
    void visit(const CommandProperty& p) override { out << "command \"" << p.getName() << "\"\n"; }

private:
    void value(const char* type, const AbstractProperty& p, const std::string& text) {
        out << "value " << type << " \"" << p.getName() << "\" " << text;
        flags(p);
    }
    void flags(const AbstractProperty& p) {
        out << (p.getIsWritable() ? "" : " read-only") << (p.getIsReadable() ? "" : " unreadable") << "\n";
    }

    std::ostream& out;
};
} // namespace

Feed::Feed(Filter& fedBlock) : block(fedBlock) {
    for (AbstractInputPin* const pin : block.getInputPins()) {
        auto sender = std::make_unique<OutputPin<MatrixXd>>("sender of " + pin->getName(), nullptr);
        sender->attach(*pin, false);
        senders.emplace(pin->getName(), std::move(sender));
    }
    for (AbstractOutputPin* const pin : block.getOutputPins()) {
        auto receiver = std::make_unique<RecordingPin>("recorder of " + pin->getName());
        pin->attach(*receiver, false);
        recorders.emplace(pin->getName(), std::move(receiver));
    }
}

void Feed::give(const std::string& pin, const MatrixXd& value, double timeStamp) {
    OutputPin<MatrixXd>& sender = *senders.at(pin);
    copySample(sender.data.value, value);
    sender.send(timeStamp);
}

MatrixXd Feed::run(const std::string& pin, const MatrixXd& value, double timeStamp,
                   const std::string& output) {
    const std::size_t before = sent(output).size();
    give(pin, value, timeStamp);
    step();
    const std::size_t count = sent(output).size() - before;
    EXPECT_EQ(count, 1u) << "samples that this step sent";
    return count == 1 ? last(output).value : MatrixXd();
}

const std::vector<Sample>& Feed::sent(const std::string& output) const {
    return recorder(output).samples;
}

std::vector<MatrixXd> Feed::values(const std::string& output) const {
    std::vector<MatrixXd> payloads;
    for (const Sample& sample : sent(output))
        payloads.push_back(sample.value);
    return payloads;
}

Sample Feed::last(const std::string& output) const {
    if (sent(output).empty()) {
        ADD_FAILURE() << "nothing was sent on output '" << output << "'";
        return {};
    }
    return sent(output).back();
}

void Feed::forget() {
    for (auto& [name, receiver] : recorders)
        receiver->clear();
}

void Feed::setText(const std::string& property, const std::string& text) {
    block.getProperty(property).setValueFromString(text);
}

void Feed::fire(const std::string& command) {
    dynamic_cast<CommandProperty&>(block.getProperty(command)).fire();
}

RecordingPin& Feed::recorder(const std::string& output) const {
    if (!output.empty()) return *recorders.at(output);
    if (recorders.size() != 1) throw std::logic_error("name the output: the block has several, or none");
    return *recorders.begin()->second;
}

std::string catalogue(Filter& block) {
    std::ostringstream out;
    for (const AbstractInputPin* const pin : block.getInputPins())
        out << "input \"" << pin->getName() << "\" " << (pin->getIsBlocking() ? "blocking" : "non-blocking")
            << "\n";
    for (const AbstractOutputPin* const pin : block.getOutputPins())
        out << "output \"" << pin->getName() << "\"\n";
    Describer describer(out);
    for (const AbstractProperty* const property : block.getPropertyBag())
        property->accept(describer);
    return out.str();
}

} // namespace Support
