// SPDX-License-Identifier: MIT
#include "framework/properties/EnumProperty.h"

#include "tests/framework/TestBlocks.h"
#include "tests/support/Feed.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Support;
using namespace TestBlocks;

namespace {
enum class Mode : unsigned { LowPass, HighPass, BandPass, BandStop };

using Choice = EnumProperty<std::string>;
using ModeChoice = EnumEnumProperty<Mode, std::string>;

void addLabels(Choice& choice) {
    for (const char* const label : {"None", "First", "Last"})
        choice.addLabel(label);
}

struct CountingObserver final : PropertyObserver {
    void valueChanged(const AbstractProperty&) override { log += "value "; }
    void attributesChanged(const AbstractProperty&) override { log += "attributes "; }
    std::string log;
};

struct Witness {
    void check(const unsigned&) { ++checks; }
    void refuse(const unsigned&) { throw Poco::DataFormatException("refused"); }
    int checks = 0;
};
} // namespace

TEST(EnumPropertyTest, IndicesAreThoseOfTheLabels) {
    Choice choice("Mode", nullptr);
    addLabels(choice);
    EXPECT_EQ(choice.getLabels(), (std::vector<std::string>{"None", "First", "Last"}));
    for (const unsigned index : {0u, 1u, 2u}) {
        choice.setValue(index);
        EXPECT_EQ(choice.getValue(), index);
    }
    EXPECT_EQ(refusal<Poco::RangeException>([&] { choice.setValue(3); }), "");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { choice.setValue(4294967295u); }), "");
    EXPECT_EQ(choice.getValue(), 2u);
}

TEST(EnumPropertyTest, WithoutLabelsEveryIndexPasses) {
    Choice choice("Mode", nullptr);
    EXPECT_EQ(choice.getValue(), 0u);
    choice.setValue(3);
    EXPECT_EQ(choice.getValue(), 3u);
    choice.addLabel("only");
    EXPECT_EQ(choice.getValue(), 3u) << "labels alone move no value";
    EXPECT_EQ(refusal<Poco::RangeException>([&] { choice.setValue(3); }), "");
}

TEST(EnumPropertyTest, ItsTextIsTheIndex) {
    Choice choice("Mode", nullptr);
    addLabels(choice);
    choice.setValueFromString("1");
    EXPECT_EQ(choice.getValue(), 1u) << "the second label";
    std::string text;
    choice.getValueAsString(text);
    EXPECT_EQ(text, "1");
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { choice.setValueFromString("First"); }), "")
        << "a label is no text of it";
    EXPECT_EQ(refusal<Poco::RangeException>([&] { choice.setValueFromString("3"); }), "");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { choice.setValueFromString("-1"); }), "")
        << "a stream reads minus one as the largest index";
    EXPECT_EQ(choice.getValue(), 1u);
}

TEST(EnumPropertyTest, TheIndexIsCheckedBeforeThePermissionAndTheValidator) {
    Choice choice("Mode", nullptr);
    addLabels(choice);
    Witness witness;
    choice.setValidator(&witness, &Witness::check);
    EXPECT_EQ(refusal<Poco::RangeException>([&] { choice.setValue(3); }), "");
    EXPECT_EQ(witness.checks, 0);
    choice.setValidator(&witness, &Witness::refuse);
    choice.setIsWritable(false);
    EXPECT_EQ(refusal<Poco::RangeException>([&] { choice.setValue(3); }), "");
    EXPECT_EQ(refusal<Poco::NoPermissionException>([&] { choice.setValue(1); }),
              "Property 'Mode' is not writable");
    choice.setIsWritable(true);
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { choice.setValue(1); }), "refused");
}

TEST(EnumPropertyTest, EachLabelIsTold) {
    Choice choice("Mode", nullptr);
    CountingObserver observer;
    choice.addObserver(observer);
    choice.addLabel("one");
    choice.addLabel("two");
    EXPECT_EQ(observer.log, "attributes attributes ");
}

TEST(EnumPropertyTest, TheLabelsHandlerComesBeforeTheObservers) {
    struct Handler final : Choice::LabelsHandler {
        explicit Handler(std::string& sharedLog) : log(sharedLog) {}
        ~Handler() override { log += "gone "; }
        void operator()() override { log += "handler "; }
        std::string& log;
    };
    CountingObserver observer;
    {
        Choice choice("Mode", nullptr);
        choice.addObserver(observer);
        choice.setLabelsHandler(std::make_unique<Handler>(observer.log));
        choice.addLabel("one");
        EXPECT_EQ(observer.log, "handler attributes ");
    }
    EXPECT_EQ(observer.log, "handler attributes gone ");
}

TEST(EnumPropertyTest, TypedByAnEnumerationItChecksAndTells) {
    struct Handler final : ModeChoice::EnumHandler {
        explicit Handler(std::vector<Mode>& seenModes) : seen(seenModes) {}
        void operator()(Mode mode) override { seen.push_back(mode); }
        std::vector<Mode>& seen;
    };
    std::vector<Mode> seen;
    ModeChoice choice("Mode", nullptr);
    for (const char* const label : {"LowPass", "HighPass", "BandPass"})
        choice.addLabel(label);
    choice.checkNewEnum(Mode::HighPass); // no handler yet
    choice.setEnumHandler(std::make_unique<Handler>(seen));
    choice.checkNewEnum(Mode::BandPass);
    EXPECT_EQ(seen, std::vector<Mode>{Mode::BandPass});
    EXPECT_EQ(choice.getValue(), 0u) << "a check stores nothing";
    EXPECT_EQ(refusal<Poco::RangeException>([&] { choice.checkNewEnum(Mode::BandStop); }), "");
    choice.setIsWritable(false);
    EXPECT_EQ(refusal<Poco::RangeException>([&] { choice.checkNewEnum(Mode::BandStop); }), "");
    EXPECT_EQ(refusal<Poco::NoPermissionException>([&] { choice.checkNewEnum(Mode::LowPass); }),
              "Property 'Mode' is not writable");
    choice.setIsWritable(true);
    Witness witness;
    choice.setValidator(&witness, &Witness::refuse);
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { choice.checkNewEnum(Mode::LowPass); }), "refused");
    EXPECT_EQ(seen.size(), 1u) << "only what passes is told";
}

TEST(EnumPropertyTest, AVisitorKnowsBothKindsAsOne) {
    struct Finder final : Util::System::AbstractVisitor,
                          Util::System::Visitor<Choice, void, void, 1>,
                          Util::System::Visitor<ValueProperty<unsigned>, void, void, 1> {
        void visit(const Choice& choice) override { seen.push_back(choice.getName()); }
        void visit(const ValueProperty<unsigned>&) override { seen.push_back("plain value"); }
        std::vector<std::string> seen;
    };
    const Choice choice("choice", nullptr);
    const ModeChoice mode("mode", nullptr);
    const ValueProperty<unsigned> number("number", nullptr);
    Finder finder;
    choice.accept(finder);
    mode.accept(finder);
    number.accept(finder);
    EXPECT_EQ(finder.seen, (std::vector<std::string>{"choice", "mode", "plain value"}));
    struct Untyped final : Util::System::AbstractVisitor,
                           Util::System::Visitor<ValueProperty<unsigned>, void, void, 1>,
                           Util::System::Visitor<AbstractProperty, void, void, 1> {
        void visit(const ValueProperty<unsigned>&) override { FAIL(); }
        void visit(const AbstractProperty& property) override { seen = property.getName(); }
        std::string seen;
    } untyped;
    mode.accept(untyped);
    EXPECT_EQ(untyped.seen, "mode");
}
