// SPDX-License-Identifier: MIT
#include "framework/properties/RangeProperty.h"

#include "tests/framework/TestBlocks.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Support;
using namespace TestBlocks;

namespace {

struct Witness {
    void changed() { ++changes; }
    template <class T>
    void check(const T&) {
        ++checks;
    }
    template <class T>
    void refuse(const T&) {
        throw Poco::DataFormatException("refused");
    }
    int changes = 0;
    int checks = 0;
};

struct CountingObserver final : PropertyObserver {
    void valueChanged(const AbstractProperty&) override { ++values; }
    void attributesChanged(const AbstractProperty&) override { ++attributes; }
    int values = 0;
    int attributes = 0;
};
} // namespace

TEST(RangePropertyTest, StartsWithTheWidestLimits) {
    const RangeProperty<int> number("number", nullptr);
    EXPECT_EQ(number.minValue, -2147483647) << "not the type's lowest";
    EXPECT_EQ(number.maxValue, 2147483647);
    EXPECT_EQ(number.stepValue, 0);
    EXPECT_EQ(number.getValue(), 0);
    const RangeProperty<double> real("real", nullptr);
    EXPECT_EQ(real.minValue, -1.7976931348623157e308);
    EXPECT_EQ(real.maxValue, 1.7976931348623157e308);
    EXPECT_TRUE(agree(real.stepValue, 0.0, same));
}

TEST(RangePropertyTest, LimitsAreInclusive) {
    RangeProperty<int> number("number", nullptr);
    number.setRange(0, 10, 1);
    for (const int good : {0, 10, 5}) {
        number.setValue(good);
        EXPECT_EQ(number.getValue(), good);
    }
    EXPECT_EQ(refusal<Poco::RangeException>([&] { number.setValue(12); }),
              "12 does not fit in [0;10], (step : 1)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { number.setValue(11); }),
              "11 does not fit in [0;10], (step : 1)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { number.setValue(-1); }),
              "-1 does not fit in [0;10], (step : 1)");
    EXPECT_EQ(number.getValue(), 5);
}

TEST(RangePropertyTest, TheAsymmetryOfIntShows) {
    RangeProperty<int> number("number", nullptr);
    number.setValue(-2147483647);
    number.setValue(2147483647);
    EXPECT_EQ(refusal<Poco::RangeException>([&] { number.setValue(-2147483647 - 1); }),
              "-2147483648 does not fit in [-2147483647;2147483647], (step : 0)");
}

TEST(RangePropertyTest, DoublesAreToldWithSixDigits) {
    RangeProperty<double> real("real", nullptr);
    real.setRange(0.0, 1.0, 1e-6);
    EXPECT_EQ(refusal<Poco::RangeException>([&] { real.setValue(1.23456789); }),
              "1.23457 does not fit in [0;1], (step : 1e-06)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { real.setValue(kNaN); }),
              "nan does not fit in [0;1], (step : 1e-06)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { real.setValue(-kInf); }),
              "-inf does not fit in [0;1], (step : 1e-06)");
    real.setValue(-0.0);
    EXPECT_TRUE(agree(real.getValue(), -0.0, same)) << "minus zero isn't below zero";
}

TEST(RangePropertyTest, EvenTheWidestLimitsKeepInfinitiesOut) {
    RangeProperty<double> real("real", nullptr);
    for (const double value : {kInf, -kInf, kNaN})
        EXPECT_NE(refusal<Poco::RangeException>([&] { real.setValue(value); }), "no exception");
    real.setValue(std::numeric_limits<double>::max());
    real.setValue(std::numeric_limits<double>::lowest());
}

TEST(RangePropertyTest, TheStepIsNotEnforced) {
    RangeProperty<double> real("real", nullptr);
    real.setRange(0.0, 1.0, 1e-6);
    real.setValue(0.1234567891);
    EXPECT_TRUE(agree(real.getValue(), 0.1234567891, same));
}

TEST(RangePropertyTest, AValueOutsideNewLimitsSnapsToTheLowerOne) {
    struct Row {
        const char* name;
        int value;
        int min;
        int max;
        int wanted;
    };
    const Row rows[] = {
        {.name = "below", .value = 0, .min = 1, .max = 10000, .wanted = 1},
        {.name = "above, and the upper limit nearer", .value = 20, .min = 1, .max = 19, .wanted = 1},
        {.name = "on the lower limit", .value = 1, .min = 1, .max = 9, .wanted = 1},
        {.name = "on the upper limit", .value = 9, .min = 1, .max = 9, .wanted = 9},
        {.name = "inside", .value = 5, .min = 1, .max = 9, .wanted = 5},
    };
    for (const Row& row : rows) {
        RangeProperty<int> number("number", nullptr);
        number.setValue(row.value);
        Witness witness;
        CountingObserver observer;
        number.setChangeHandler(&witness, &Witness::changed);
        number.addObserver(observer);
        number.setRange(row.min, row.max, 1);
        EXPECT_EQ(number.getValue(), row.wanted) << row.name;
        EXPECT_EQ(witness.changes, row.value == row.wanted ? 0 : 1) << row.name;
        EXPECT_EQ(observer.values, witness.changes) << row.name;
        EXPECT_EQ(observer.attributes, 0) << row.name << ": limits are stored without a word";
    }
}

TEST(RangePropertyTest, ANotANumberSnapsToo) {
    struct Open final : RangeProperty<double> {
        using RangeProperty<double>::RangeProperty;
        void storeUnchecked(double newValue) { value = newValue; }
    } open("open", nullptr);
    open.storeUnchecked(kNaN);
    open.setRange(0.5, 1.0, 0.0);
    EXPECT_EQ(open.getValue(), 0.5);
}

TEST(RangePropertyTest, OneLimitMayBeChangedInsideAGuard) {
    LayoutManager layout("layout");
    Plain block("block");
    layout.add(block);
    RangeProperty<int> number("number", &block.getPropertyBag());
    number.setRange(0, 10, 1);
    {
        const Synchronizer::DisablerLocker guard(number.getSynchronizer(), nullptr);
        number.minValue = 3;
    }
    EXPECT_EQ(number.getValue(), 0) << "a limit alone moves no value";
    EXPECT_EQ(refusal<Poco::RangeException>([&] { number.setValue(2); }),
              "2 does not fit in [3;10], (step : 1)");
}

TEST(RangePropertyTest, PermissionComesFirstThenTheValidatorThenTheLimits) {
    RangeProperty<int> number("number", nullptr);
    number.setRange(0, 10, 1);
    Witness witness;
    number.setValidator(&witness, &Witness::check<int>);
    EXPECT_NE(refusal<Poco::RangeException>([&] { number.setValue(11); }), "no exception");
    EXPECT_EQ(witness.checks, 1) << "it ran before the limits were tested";
    number.setValidator(&witness, &Witness::refuse<int>);
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { number.setValue(11); }), "refused");
    number.setIsWritable(false);
    EXPECT_EQ(refusal<Poco::NoPermissionException>([&] { number.setValue(11); }),
              "Property 'number' is not writable");
}

TEST(RangePropertyTest, TextAndAnyPassTheLimits) {
    RangeProperty<int> number("number", nullptr);
    number.setRange(0, 10, 1);
    number.setValueFromString("7");
    EXPECT_EQ(number.getValue(), 7);
    EXPECT_EQ(refusal<Poco::RangeException>([&] { number.setValueFromString("70"); }),
              "70 does not fit in [0;10], (step : 1)");
    const int tooLarge = 11;
    EXPECT_EQ(refusal<Poco::RangeException>(
                  [&] { number.setValueFromAny(Poco::Any(static_cast<const int*>(&tooLarge))); }),
              "11 does not fit in [0;10], (step : 1)");
    EXPECT_EQ(number.getValue(), 7);
}

TEST(RangePropertyTest, AVisitorOfPlainValuesGetsTheCatchAll) {
    struct Both final : Util::System::AbstractVisitor,
                        Util::System::Visitor<RangeProperty<int>, void, void, 1>,
                        Util::System::Visitor<ValueProperty<int>, void, void, 1> {
        void visit(const RangeProperty<int>&) override { log += "range "; }
        void visit(const ValueProperty<int>&) override { log += "value "; }
        std::string log;
    };
    struct ValuesOnly final : Util::System::AbstractVisitor,
                              Util::System::Visitor<ValueProperty<int>, void, void, 1>,
                              Util::System::Visitor<AbstractProperty, void, void, 1> {
        void visit(const ValueProperty<int>&) override { log += "value "; }
        void visit(const AbstractProperty&) override { log += "untyped "; }
        std::string log;
    };
    const RangeProperty<int> number("number", nullptr);
    Both both;
    number.accept(both);
    EXPECT_EQ(both.log, "range ");
    ValuesOnly valuesOnly;
    number.accept(valuesOnly);
    EXPECT_EQ(valuesOnly.log, "untyped ");
}
