// SPDX-License-Identifier: MIT
#include "framework/properties/ValueProperty.h"

#include "tests/framework/TestBlocks.h"
#include "tests/framework/properties/CountedFunction.h"
#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

using namespace Support;
using namespace TestBlocks;

namespace {

template <class T>
std::string textOf(const ValueProperty<T>& setting) {
    std::string text = "what was there before";
    setting.getValueAsString(text);
    return text;
}

/// Counts what it is told as handler and as validator, and raises on demand.
template <class T>
struct Witness {
    void changed() {
        ++changes;
        if (raisesOnChange) throw std::out_of_range("from the handler");
    }
    void check(const T& value) {
        ++checks;
        lastChecked = value;
        if (raisesOnCheck) throw Poco::DataFormatException("refused");
    }
    int changes = 0;
    int checks = 0;
    T lastChecked{};
    bool raisesOnChange = false;
    bool raisesOnCheck = false;
};

struct CountingObserver final : PropertyObserver {
    void valueChanged(const AbstractProperty&) override { ++values; }
    void attributesChanged(const AbstractProperty&) override { ++attributes; }
    int values = 0;
    int attributes = 0;
};

template <class T>
T sample(int which);
template <>
bool sample<bool>(int which) {
    return which % 2 != 0;
}
template <>
int sample<int>(int which) {
    return -3 * which;
}
template <>
unsigned sample<unsigned>(int which) {
    return 5u * static_cast<unsigned>(which);
}
template <>
double sample<double>(int which) {
    return 0.25 * which;
}
template <>
MatrixXd sample<MatrixXd>(int which) {
    return MatrixXd::Constant(2, 3, which);
}
} // namespace

template <class T>
class ValuePropertyTest : public testing::Test {};
using AllTypes = testing::Types<bool, int, unsigned, double, MatrixXd>;
TYPED_TEST_SUITE(ValuePropertyTest, AllTypes);

TYPED_TEST(ValuePropertyTest, StartsEmptyReadableAndWritable) {
    const ValueProperty<TypeParam> setting("x", nullptr);
    EXPECT_EQ(setting.getName(), "x");
    EXPECT_EQ(setting.getValue(), TypeParam());
    EXPECT_TRUE(setting.getIsReadable());
    EXPECT_TRUE(setting.getIsWritable());
    EXPECT_EQ(setting.getSynchronizer(), nullptr);
}

TYPED_TEST(ValuePropertyTest, AnEqualValueIsCheckedButToldToNoOne) {
    ValueProperty<TypeParam> setting("x", nullptr);
    Witness<TypeParam> witness;
    CountingObserver observer;
    setting.setValue(sample<TypeParam>(1));
    setting.setChangeHandler(&witness, &Witness<TypeParam>::changed);
    setting.setValidator(&witness, &Witness<TypeParam>::check);
    setting.addObserver(observer);
    setting.setValue(sample<TypeParam>(1));
    EXPECT_EQ(witness.checks, 1);
    EXPECT_EQ(witness.changes, 0);
    EXPECT_EQ(observer.values, 0);
    setting.setValue(sample<TypeParam>(2));
    setting.setValue(sample<TypeParam>(2));
    EXPECT_EQ(witness.checks, 3);
    EXPECT_EQ(witness.lastChecked, sample<TypeParam>(2));
    EXPECT_EQ(witness.changes, 1);
    EXPECT_EQ(observer.values, 1);
    EXPECT_EQ(setting.getValue(), sample<TypeParam>(2));
}

TYPED_TEST(ValuePropertyTest, AReadOnlySettingRefusesEveryRoad) {
    const std::string text = "Property 'Cut Off' is not writable";
    ValueProperty<TypeParam> setting("Cut Off", nullptr);
    setting.setValue(sample<TypeParam>(1));
    Witness<TypeParam> witness;
    setting.setValidator(&witness, &Witness<TypeParam>::check);
    setting.setIsWritable(false);
    ValueProperty<TypeParam> other("other", nullptr);
    EXPECT_EQ(refusal<Poco::NoPermissionException>([&] { setting.setValue(sample<TypeParam>(2)); }), text);
    EXPECT_EQ(refusal<Poco::NoPermissionException>([&] { setting.setValueFromString("0 0"); }), text);
    EXPECT_EQ(refusal<Poco::NoPermissionException>([&] { setting.setValueFromAny(other.getValueAsAny()); }),
              text);
    EXPECT_EQ(refusal<Poco::NoPermissionException>([&] { setting.setValue(sample<TypeParam>(1)); }), text)
        << "an equal value too";
    EXPECT_EQ(setting.getValue(), sample<TypeParam>(1));
    EXPECT_EQ(witness.checks, 0) << "the validator comes after the permission";
    setting.setIsWritable(true);
    setting.setValue(sample<TypeParam>(2));
    EXPECT_EQ(setting.getValue(), sample<TypeParam>(2));
}

TYPED_TEST(ValuePropertyTest, AnUnreadableSettingIsReadAllTheSame) {
    ValueProperty<TypeParam> setting("x", nullptr);
    setting.setValue(sample<TypeParam>(1));
    setting.setIsReadable(false);
    EXPECT_FALSE(setting.getIsReadable());
    EXPECT_EQ(setting.getValue(), sample<TypeParam>(1));
    EXPECT_FALSE(textOf(setting).empty());
}

TYPED_TEST(ValuePropertyTest, FlagsAreToldAsAttributesChangedOrNot) {
    ValueProperty<TypeParam> setting("x", nullptr);
    CountingObserver observer;
    setting.addObserver(observer);
    setting.setIsWritable(false);
    setting.setIsWritable(false);
    setting.setIsReadable(false);
    EXPECT_EQ(observer.attributes, 3);
    EXPECT_EQ(observer.values, 0);
    EXPECT_FALSE(setting.getIsWritable());
    EXPECT_FALSE(setting.getIsReadable());
}

TYPED_TEST(ValuePropertyTest, AValidatorRefusesBeforeTheStore) {
    ValueProperty<TypeParam> setting("x", nullptr);
    setting.setValue(sample<TypeParam>(1));
    Witness<TypeParam> witness;
    witness.raisesOnCheck = true;
    setting.setValidator(&witness, &Witness<TypeParam>::check);
    setting.setChangeHandler(&witness, &Witness<TypeParam>::changed);
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { setting.setValue(sample<TypeParam>(2)); }), "refused");
    EXPECT_EQ(setting.getValue(), sample<TypeParam>(1));
    EXPECT_EQ(witness.changes, 0);
    EXPECT_EQ(witness.lastChecked, sample<TypeParam>(2));
}

TYPED_TEST(ValuePropertyTest, AHandlersExceptionReachesTheWriterWithTheValueStored) {
    ValueProperty<TypeParam> setting("x", nullptr);
    setting.setValue(sample<TypeParam>(1));
    Witness<TypeParam> witness;
    witness.raisesOnChange = true;
    CountingObserver observer;
    setting.addObserver(observer);
    setting.setChangeHandler(&witness, &Witness<TypeParam>::changed);
    EXPECT_EQ(refusal<std::out_of_range>([&] { setting.setValue(sample<TypeParam>(2)); }),
              "from the handler");
    EXPECT_EQ(setting.getValue(), sample<TypeParam>(2));
    EXPECT_EQ(observer.values, 0);
    setting.setValue(sample<TypeParam>(2)); // equal now: tells no one
    EXPECT_EQ(witness.changes, 1);
}

TYPED_TEST(ValuePropertyTest, AnAnyCarriesThePlaceOfTheLiveValue) {
    ValueProperty<TypeParam> from("from", nullptr);
    ValueProperty<TypeParam> to("to", nullptr);
    from.setValue(sample<TypeParam>(1));
    const Poco::Any any = from.getValueAsAny();
    const TypeParam* const live = Poco::AnyCast<const TypeParam*>(any);
    EXPECT_EQ(*live, sample<TypeParam>(1));
    from.setValue(sample<TypeParam>(2));
    EXPECT_EQ(*live, sample<TypeParam>(2)) << "not a copy";
    to.setValueFromAny(any);
    EXPECT_EQ(to.getValue(), sample<TypeParam>(2));
    from.setValueFromAny(any); // its own
    EXPECT_EQ(from.getValue(), sample<TypeParam>(2));
}

TYPED_TEST(ValuePropertyTest, AnAnyOfAnythingElseIsRefused) {
    const std::string text = "RefAnyCast: Failed to convert between const Any types";
    ValueProperty<TypeParam> setting("x", nullptr);
    setting.setValue(sample<TypeParam>(1));
    TypeParam value = sample<TypeParam>(2);
    const Poco::Any wrong[] = {
        Poco::Any(),                                // nothing
        Poco::Any(value),                           // the value itself
        Poco::Any(&value),                          // a pointer to a value that isn't const
        Poco::Any(std::string("1")),                // another type
        Poco::Any(static_cast<const float*>(0)),    // a pointer to another type
        Poco::Any(static_cast<const TypeParam*>(0)) // a pointer to nothing
    };
    for (const Poco::Any& any : wrong)
        EXPECT_EQ(refusal<Poco::BadCastException>([&] { setting.setValueFromAny(any); }), text)
            << any.type().name();
    EXPECT_EQ(setting.getValue(), sample<TypeParam>(1));
}

TYPED_TEST(ValuePropertyTest, AVisitorOfItsTypeIsServedAndOthersGetTheCatchAll) {
    struct Typed final : Util::System::AbstractVisitor,
                         Util::System::Visitor<ValueProperty<TypeParam>, void, void, 1>,
                         Util::System::Visitor<AbstractProperty, void, void, 1> {
        void visit(const ValueProperty<TypeParam>& property) override { seen = &property; }
        void visit(const AbstractProperty& property) override { seenUntyped = &property; }
        const ValueProperty<TypeParam>* seen = nullptr;
        const AbstractProperty* seenUntyped = nullptr;
    };
    struct Other final : Util::System::AbstractVisitor,
                         Util::System::Visitor<ValueProperty<float>, void, void, 1>,
                         Util::System::Visitor<AbstractProperty, void, void, 1> {
        void visit(const ValueProperty<float>&) override { FAIL(); }
        void visit(const AbstractProperty& property) override { seenUntyped = &property; }
        const AbstractProperty* seenUntyped = nullptr;
    };
    const ValueProperty<TypeParam> setting("x", nullptr);
    Typed typed;
    setting.accept(typed);
    EXPECT_EQ(typed.seen, &setting);
    EXPECT_EQ(typed.seenUntyped, nullptr);
    Other other;
    setting.accept(other);
    EXPECT_EQ(other.seenUntyped, &setting);
}

TYPED_TEST(ValuePropertyTest, HandlersAndValidatorsAreDeletedOnce) {
    struct Target {
        void called() { ++calls; }
        void called(const TypeParam&) { ++checks; }
        int calls = 0;
        int checks = 0;
    } target;
    int first = 0;
    int second = 0;
    {
        ValueProperty<TypeParam> setting("x", nullptr);
        setting.setChangeHandler(&target, CountedFunction<Target>(first));
        setting.setValidator(&target, CountedFunction<Target>(first));
        EXPECT_EQ(first, 2) << "the setting keeps one copy of each and nothing else does";
        setting.setValue(sample<TypeParam>(1));
        EXPECT_EQ(target.calls, 1);
        EXPECT_EQ(target.checks, 1);
        setting.setChangeHandler(&target, CountedFunction<Target>(second));
        EXPECT_EQ(first, 1);
        EXPECT_EQ(second, 1);
        setting.setValidator(&target, CountedFunction<Target>(second));
        EXPECT_EQ(first, 0);
        EXPECT_EQ(second, 2);
    }
    EXPECT_EQ(second, 0) << "the setting's end is theirs";
}

TYPED_TEST(ValuePropertyTest, SteadyAccessAllocatesNothing) {
    if (std::is_same_v<TypeParam, MatrixXd>) { // a copy of a matrix needs its storage; a write does not
        ValueProperty<MatrixXd> setting("x", nullptr);
        const MatrixXd one = sample<MatrixXd>(1);
        const MatrixXd two = sample<MatrixXd>(2);
        setting.setValue(one);
        const AllocationCounter counter;
        setting.setValue(two);
        EXPECT_EQ(counter.count(), 0u);
        return;
    }
    ValueProperty<TypeParam> setting("x", nullptr);
    Witness<TypeParam> witness;
    setting.setChangeHandler(&witness, &Witness<TypeParam>::changed);
    const AllocationCounter counter;
    for (int i = 0; i < 10; ++i) {
        setting.setValue(sample<TypeParam>(i));
        EXPECT_EQ(setting.getValue(), sample<TypeParam>(i));
    }
    EXPECT_EQ(counter.count(), 0u);
}

TEST(ValuePropertyTextTest, Prints) {
    ValueProperty<bool> flag("flag", nullptr);
    EXPECT_EQ(textOf(flag), "0");
    flag.setValue(true);
    EXPECT_EQ(textOf(flag), "1") << "never a word";

    ValueProperty<int> number("number", nullptr);
    number.setValue(-1234567);
    EXPECT_EQ(textOf(number), "-1234567") << "no separators";
    ValueProperty<unsigned> count("count", nullptr);
    count.setValue(4294967295u);
    EXPECT_EQ(textOf(count), "4294967295");

    struct Row {
        double value;
        const char* text;
    };
    const Row rows[] = {
        {.value = 0.0, .text = "0"},
        {.value = -0.0, .text = "-0"},
        {.value = 0.1, .text = "0.1"},
        {.value = 1234567.0, .text = "1.23457e+06"},
        {.value = 3.14159265, .text = "3.14159"},
        {.value = 0.12345678, .text = "0.123457"},
        {.value = 123456.0, .text = "123456"},
        {.value = 1e-300, .text = "1e-300"},
        {.value = kInf, .text = "inf"},
        {.value = -kInf, .text = "-inf"},
        {.value = kNaN, .text = "nan"},
    };
    ValueProperty<double> real("real", nullptr);
    for (const Row& row : rows) {
        real.setValue(row.value);
        EXPECT_EQ(textOf(real), row.text);
    }
}

TEST(ValuePropertyTextTest, TextIsALossyViewOfADouble) {
    ValueProperty<double> real("real", nullptr);
    real.setValue(3.14159265);
    real.setValueFromString(textOf(real));
    EXPECT_TRUE(agree(real.getValue(), 3.14159, same));
}

TEST(ValuePropertyTextTest, AGoodTextIsWrittenThroughTheChecks) {
    ValueProperty<int> number("number", nullptr);
    Witness<int> witness;
    number.setChangeHandler(&witness, &Witness<int>::changed);
    number.setValidator(&witness, &Witness<int>::check);
    number.setValueFromString("  12 apples");
    EXPECT_EQ(number.getValue(), 12);
    number.setValueFromString("12");
    EXPECT_EQ(witness.checks, 2);
    EXPECT_EQ(witness.changes, 1);
}

TEST(ValuePropertyTextTest, ABadTextIsRefusedAndLeavesTheValue) {
    ValueProperty<int> number("number", nullptr);
    number.setValue(7);
    Witness<int> witness;
    number.setChangeHandler(&witness, &Witness<int>::changed);
    for (const char* const text : {"", "   ", "apples", "-", "99999999999"})
        EXPECT_EQ(refusal<Poco::DataFormatException>([&] { number.setValueFromString(text); }), "") << text;
    EXPECT_EQ(number.getValue(), 7);
    EXPECT_EQ(witness.changes, 0);

    ValueProperty<bool> flag("flag", nullptr);
    for (const char* const text : {"", "true", "false", "2", "-1"})
        EXPECT_EQ(refusal<Poco::DataFormatException>([&] { flag.setValueFromString(text); }), "") << text;
    ValueProperty<double> real("real", nullptr);
    for (const char* const text : {"", "nan", "inf", "x1", "1e999"})
        EXPECT_EQ(refusal<Poco::DataFormatException>([&] { real.setValueFromString(text); }), "") << text;
    ValueProperty<MatrixXd> matrix("matrix", nullptr);
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { matrix.setValueFromString(""); }), "");
}

TEST(ValuePropertyTextTest, AMatrixKeepsItsShape) {
    ValueProperty<MatrixXd> setting("matrix", nullptr);
    setting.setValue(matrix({{1, 2.5, -3}, {1.0 / 3.0, 1e9, 0}}));
    EXPECT_EQ(textOf(setting), "2 3 1 2.5 -3 0.333333 1e+09 0");
    setting.setValueFromString(textOf(setting));
    EXPECT_TRUE(agree(setting.getValue(), matrix({{1, 2.5, -3}, {0.333333, 1e9, 0}}), same));
    setting.setValueFromString("0 0");
    EXPECT_TRUE(agree(setting.getValue(), MatrixXd(), same));
    EXPECT_EQ(textOf(setting), "0 0");
}

TEST(ValuePropertyMatrixTest, AMatrixDiffersByShapeOrAnyElement) {
    struct Row {
        const char* name;
        MatrixXd from;
        MatrixXd to;
        int changes;
    };
    const Row rows[] = {
        {.name = "the same", .from = matrix({{1, 2}}), .to = matrix({{1, 2}}), .changes = 0},
        {.name = "rows", .from = matrix({{1, 2}}), .to = matrix({{1}, {2}}), .changes = 1},
        {.name = "columns", .from = MatrixXd(0, 2), .to = MatrixXd(0, 3), .changes = 1},
        {.name = "last element",
         .from = matrix({{1, 2}, {3, 4}}),
         .to = matrix({{1, 2}, {3, 5}}),
         .changes = 1},
        {.name = "the sign of a zero", .from = matrix({{0.0}}), .to = matrix({{-0.0}}), .changes = 0},
        {.name = "not-a-number differs from itself",
         .from = matrix({{kNaN}}),
         .to = matrix({{kNaN}}),
         .changes = 1},
    };
    for (const Row& row : rows) {
        ValueProperty<MatrixXd> setting("matrix", nullptr);
        setting.setValue(row.from);
        Witness<MatrixXd> witness;
        setting.setChangeHandler(&witness, &Witness<MatrixXd>::changed);
        setting.setValue(row.to);
        EXPECT_EQ(witness.changes, row.changes) << row.name;
        EXPECT_TRUE(agree(setting.getValue(), row.to, same)) << row.name;
    }
}

TEST(ValuePropertyMatrixTest, OneReadsInAHandlerWhatHasBeenWritten) {
    struct Follows {
        ValueProperty<double>& source;
        ValueProperty<double>& copy;
        void follow() { copy.setValue(source.getValue()); }
    };
    ValueProperty<double> source("source", nullptr);
    ValueProperty<double> copy("copy", nullptr);
    Follows follows{source, copy};
    source.setChangeHandler(&follows, &Follows::follow);
    source.setValue(2.5);
    EXPECT_EQ(copy.getValue(), 2.5);
}

TEST(ValuePropertyMatrixTest, AWriteWithoutMemoryLeavesTheValueAndTellsNoOne) {
    if (!MemoryShortage::getIsPossible()) GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
    ValueProperty<MatrixXd> setting("x", nullptr);
    setting.setValue(matrix({{1, 2}}));
    Witness<MatrixXd> witness;
    setting.setChangeHandler(&witness, &Witness<MatrixXd>::changed);
    const MatrixXd larger = matrix({{1, 2, 3}, {4, 5, 6}});
    EXPECT_FALSE(succeedsWith(0, [&] { setting.setValue(larger); }));
    EXPECT_TRUE(agree(setting.getValue(), matrix({{1, 2}}), same));
    EXPECT_EQ(witness.changes, 0);
    setting.setValue(larger);
    EXPECT_TRUE(agree(setting.getValue(), larger, same));
    EXPECT_EQ(witness.changes, 1);
}
