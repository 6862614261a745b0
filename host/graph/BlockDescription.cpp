// SPDX-License-Identifier: MIT
#include "host/graph/BlockDescription.h"

#include "framework/Quillmere.h"
#include "host/text/NearestName.h"
#include "host/text/ShortestText.h"

#include <cmath>
#include <limits>

namespace Quillmere::Host {

namespace {
using Core::AbstractProperty;
using Core::CommandProperty;
using Core::EnumProperty;
using Core::MatrixXd;
using Core::RangeProperty;
using Core::ValueProperty;
using Kind = PropertyDescription::Kind;

template <class T>
using Visits = Util::System::Visitor<T, void, void, 1>;

/// Hears of a setting with its type, whichever of the types it has.
class SettingVisitor : public Util::System::AbstractVisitor,
                       public Visits<AbstractProperty>,
                       public Visits<CommandProperty>,
                       public Visits<ValueProperty<bool>>,
                       public Visits<ValueProperty<int>>,
                       public Visits<ValueProperty<unsigned>>,
                       public Visits<ValueProperty<double>>,
                       public Visits<ValueProperty<MatrixXd>>,
                       public Visits<RangeProperty<int>>,
                       public Visits<RangeProperty<double>>,
                       public Visits<EnumProperty<std::string>> {};

/// Reads nothing of the setting but its type.
class KindTeller final : public SettingVisitor {
public:
    void visit(const AbstractProperty&) override { kind = Kind::Unknown; }
    void visit(const CommandProperty&) override { kind = Kind::Command; }
    void visit(const ValueProperty<bool>&) override { kind = Kind::Flag; }
    void visit(const ValueProperty<int>&) override { kind = Kind::Whole; }
    void visit(const ValueProperty<unsigned>&) override { kind = Kind::Count; }
    void visit(const ValueProperty<double>&) override { kind = Kind::Number; }
    void visit(const ValueProperty<MatrixXd>&) override { kind = Kind::Matrix; }
    void visit(const RangeProperty<int>&) override { kind = Kind::Whole; }
    void visit(const RangeProperty<double>&) override { kind = Kind::Number; }
    void visit(const EnumProperty<std::string>&) override { kind = Kind::Choice; }

    Kind kind = Kind::Unknown;
};

/// Copies what the setting holds, its limits and its labels.
class Describer final : public SettingVisitor {
public:
    void visit(const AbstractProperty&) override {}
    void visit(const CommandProperty&) override {}
    void visit(const ValueProperty<bool>& property) override { description.value = property.getValue(); }
    void visit(const ValueProperty<int>& property) override { copyWhole(property.getValue()); }
    void visit(const ValueProperty<unsigned>& property) override { copyWhole(property.getValue()); }
    void visit(const ValueProperty<double>& property) override { description.value = property.getValue(); }
    void visit(const ValueProperty<MatrixXd>& property) override { description.value = property.getValue(); }
    void visit(const RangeProperty<int>& property) override {
        copyWhole(property.getValue());
        copyLimits(property);
    }
    void visit(const RangeProperty<double>& property) override {
        description.value = property.getValue();
        copyLimits(property);
    }
    void visit(const EnumProperty<std::string>& property) override {
        copyWhole(property.getValue());
        description.labels = property.getLabels();
    }

    PropertyDescription description;

private:
    void copyWhole(std::int64_t value) { description.value = value; }

    template <class T>
    void copyLimits(const RangeProperty<T>& property) {
        const Core::PropertyLocker guard(property);
        description.hasLimits = true;
        description.minimum = property.minValue;
        description.maximum = property.maxValue;
        description.step = property.stepValue;
    }
};

std::string matrixText(const MatrixXd& matrix) {
    std::string text = "[";
    for (Eigen::Index row = 0; row < matrix.rows(); ++row) {
        text += row == 0 ? "[" : ", [";
        for (Eigen::Index column = 0; column < matrix.cols(); ++column)
            text += (column == 0 ? "" : ", ") + shortestText(matrix(row, column));
        text += "]";
    }
    return text + "]";
}

std::string limitsText(const PropertyDescription& property, const std::string& what) {
    const double largest =
        property.kind == Kind::Number ? std::numeric_limits<double>::max() : std::numeric_limits<int>::max();
    const bool hasLeast = property.hasLimits && property.minimum > -largest;
    const bool hasMost = property.hasLimits && property.maximum < largest;
    const auto textOf = [&](double limit) { // 200000, not 2e+05, where numbers are whole
        return property.kind == Kind::Whole ? std::to_string(static_cast<std::int64_t>(limit))
                                            : shortestText(limit);
    };
    const std::string least = hasLeast ? textOf(property.minimum) : "";
    const std::string most = hasMost ? textOf(property.maximum) : "";
    if (hasLeast && hasMost) return what + " from " + least + " to " + most;
    if (hasLeast) return what + ", " + least + " or more";
    if (hasMost) return what + ", " + most + " or less";
    return what;
}

} // namespace

Kind kindOf(const AbstractProperty& property) {
    KindTeller teller;
    property.accept(teller);
    return teller.kind;
}

PropertyDescription describe(const AbstractProperty& property) {
    Describer describer;
    property.accept(describer);
    PropertyDescription description = std::move(describer.description);
    description.kind = kindOf(property);
    description.name = property.getName();
    description.isReadable = property.getIsReadable();
    description.isWritable = property.getIsWritable();
    return description;
}

BlockDescription describe(const Core::Filter& block) {
    BlockDescription description;
    description.type = block.getTypeName();
    for (const Core::AbstractInputPin* const pin : block.getInputPins())
        description.inputs.push_back({pin->getName(), pin->getIsBlocking()});
    for (const Core::AbstractOutputPin* const pin : block.getOutputPins())
        description.outputs.push_back({pin->getName(), false});
    for (const AbstractProperty* const property : block.getPropertyBag())
        description.properties.push_back(describe(*property));
    return description;
}

std::string nameOf(Kind kind) {
    switch (kind) {
    case Kind::Flag:
        return "flag";
    case Kind::Whole:
        return "whole number";
    case Kind::Count:
        return "count";
    case Kind::Number:
        return "number";
    case Kind::Matrix:
        return "matrix";
    case Kind::Choice:
        return "choice";
    case Kind::Command:
        return "command";
    case Kind::Unknown:
        return "unknown";
    }
    return {};
}

std::string expectedText(const PropertyDescription& property) {
    switch (property.kind) {
    case Kind::Flag:
        return "true or false";
    case Kind::Whole:
        return limitsText(property, "a whole number");
    case Kind::Count:
        return "a whole number from 0 to 4294967295";
    case Kind::Number:
        return limitsText(property, "a number");
    case Kind::Matrix:
        return "a matrix";
    case Kind::Choice:
        if (property.labels.empty()) return "the index of a choice";
        return "one of " + listOfNames(property.labels) + ", or an index from 0 to " +
               std::to_string(property.labels.size() - 1);
    case Kind::Command:
        return "a setting: a command has no value";
    case Kind::Unknown:
        return "a setting that this program can write";
    }
    return {};
}

std::string valueText(const PropertyDescription& property) {
    if (const bool* const flag = std::get_if<bool>(&property.value)) return *flag ? "true" : "false";
    if (const double* const number = std::get_if<double>(&property.value)) return shortestText(*number);
    if (const MatrixXd* const matrix = std::get_if<MatrixXd>(&property.value)) return matrixText(*matrix);
    const std::int64_t* const whole = std::get_if<std::int64_t>(&property.value);
    if (whole == nullptr) return {};
    const bool isLabelled =
        property.kind == Kind::Choice && static_cast<std::size_t>(*whole) < property.labels.size();
    return isLabelled ? property.labels[static_cast<std::size_t>(*whole)] : std::to_string(*whole);
}

} // namespace Quillmere::Host
