// SPDX-License-Identifier: MIT
#include "tests/plugin/LoadedPlugin.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Quillmere::Core;
using namespace Support;

namespace {
/// A block of the plug-in, given back to the factory that made it.
struct Returned {
    void operator()(Filter* block) const { registry().findFactory(block->getTypeName())->destroy(block); }
};
using Block = std::unique_ptr<Filter, Returned>;

Block make(const std::string& typeName, const std::string& name) {
    return Block(registry().findFactory(typeName)->create(name));
}

class PluginFileTest : public testing::Test {
protected:
    PluginFileTest() { plugin.start(); }
    LoadedPlugin plugin;
};
} // namespace

TEST(PluginFileLifeTest, StartsStopsAndStartsAgain) {
    {
        const LoadedPlugin plugin;
        EXPECT_EQ(plugin.version(), "0.10.0") << "before the start";
        EXPECT_TRUE(registry().getPlugins().empty()) << "loading alone installs nothing";
        plugin.stop(); // nothing to stop
        plugin.start();
        plugin.start();
        ASSERT_EQ(registry().getPlugins().size(), 1u);
        EXPECT_EQ(registry().getPlugins().front()->getName(), "Velmarind");
        const std::size_t factories = registry().getFactories().size();
        EXPECT_GT(factories, 0u);
        plugin.stop();
        EXPECT_TRUE(registry().getPlugins().empty());
        EXPECT_TRUE(registry().getFactories().empty());
        EXPECT_EQ(plugin.version(), "0.10.0") << "after the stop";
        plugin.start();
        EXPECT_EQ(registry().getFactories().size(), factories);
        EXPECT_STREQ(make("FilterGain", "again")->getTypeName(), "FilterGain");
    }
    EXPECT_TRUE(registry().getPlugins().empty());
    const LoadedPlugin again; // closed and opened anew
    again.start();
    EXPECT_EQ(make("FilterGain", "once more")->getName(), "once more");
}

TEST_F(PluginFileTest, TellsItsMetaData) {
    const PluginMetaData& metaData = registry().getPlugins().front()->getMetaData();
    EXPECT_EQ(metaData.pluginVersion, "1.3.3");
    EXPECT_EQ(metaData.hostVersion, plugin.version());
    EXPECT_EQ(metaData.description, "This is the plugin that wraps Velmarind elements.");
}

TEST_F(PluginFileTest, BlocksAreMadeAndDestroyedByName) {
    AbstractFilterFactory* const factory = registry().findFactory("FilterInvGain");
    ASSERT_NE(factory, nullptr);
    Filter* const one = factory->create("one name");
    Filter* const two = factory->create("one name");
    EXPECT_NE(one, two);
    EXPECT_STREQ(one->getTypeName(), "FilterInvGain");
    factory->destroy(one);
    EXPECT_EQ(two->getName(), "one name");
    factory->destroy(two);
    factory->destroy(nullptr);
    EXPECT_EQ(registry().findFactory("FilterUnknown"), nullptr);
}

TEST_F(PluginFileTest, ASampleGoesInAndOut) {
    const Block gain = make("FilterGain", "gain");
    Feed feed(*gain);
    feed.set("Gain", -2.0);
    EXPECT_TRUE(agree(feed.run("input", matrix({{1, 2}, {3, 4}}), 0.25), matrix({{-2, -4}, {-6, -8}}), same));
    EXPECT_TRUE(agree(feed.last().timeStamp, 0.25, same));
}

TEST_F(PluginFileTest, BlocksRunInALayoutOfTheHosts) {
    LayoutManager layout("layout");
    const Block first = make("FilterGain", "first");
    const Block second = make("FilterGain", "second");
    layout.add(*first);
    layout.add(*second);
    first->getOutputPin("output").attach(second->getInputPin("input"), false);
    OutputPin<MatrixXd> sender("sender", nullptr);
    InputPin<MatrixXd> receiver("receiver", nullptr);
    sender.attach(first->getInputPin("input"), false);
    second->getOutputPin("output").attach(receiver, false);
    first->getProperty("Gain").setValueFromString("3");
    second->getProperty("Gain").setValueFromString("5");
    sender.data.value = matrix({{2}});
    sender.send(1.0);
    layout.runStep();
    ASSERT_TRUE(receiver.hasData());
    EXPECT_TRUE(agree(receiver.take(), matrix({{30}}), same));
}

TEST_F(PluginFileTest, ExceptionsCrossTheBorderWithTheirTypeAndText) {
    const Block butterworth = make("FilterButterworth", "smooth");
    EXPECT_EQ(
        refusal<Poco::RangeException>([&] { butterworth->getProperty("Order").setValueFromString("11"); }),
        "11 does not fit in [0;10], (step : 1)");
    EXPECT_EQ(
        refusal<Poco::RangeException>([&] { butterworth->getProperty("Mode").setValueFromString("2"); }), "");
    EXPECT_EQ(refusal<Poco::DataFormatException>(
                  [&] { butterworth->getProperty("Order").setValueFromString("x"); }),
              "");
    EXPECT_EQ(refusal<Poco::NotFoundException>([&] { butterworth->getInputPin("input"); }),
              "Block 'smooth' has no input pin 'input'; it has 'in', 'reset'");
}

/// Raised by code of the plug-in's own, and caught here.
TEST_F(PluginFileTest, ExceptionsOfBlocksCrossTheBorderToo) {
    const Block iir = make("FilterIIR", "iir");
    AbstractProperty& coefficients = iir->getProperty("XCoeffs");
    std::string before;
    coefficients.getValueAsString(before);
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { coefficients.setValueFromString("2 1 1 1"); }),
              "Coefficients must be specified on first matrix row.");
    std::string after;
    coefficients.getValueAsString(after);
    EXPECT_EQ(after, before);
}

TEST_F(PluginFileTest, TypedVisitsCrossTheBorder) {
    struct Kinds final : Util::System::AbstractVisitor,
                         Util::System::Visitor<CommandProperty, void, void, 1>,
                         Util::System::Visitor<RangeProperty<int>, void, void, 1>,
                         Util::System::Visitor<RangeProperty<double>, void, void, 1>,
                         Util::System::Visitor<EnumProperty<std::string>, void, void, 1>,
                         Util::System::Visitor<AbstractProperty, void, void, 1> {
        void visit(const CommandProperty& p) override { log += "command " + p.getName() + "\n"; }
        void visit(const RangeProperty<int>& p) override {
            log += "int " + p.getName() + " up to " + std::to_string(p.maxValue) + "\n";
        }
        void visit(const RangeProperty<double>& p) override { log += "double " + p.getName() + "\n"; }
        void visit(const EnumProperty<std::string>& p) override {
            log += "enum " + p.getName() + " from " + p.getLabels().front() + "\n";
        }
        void visit(const AbstractProperty& p) override { log += "unknown " + p.getName() + "\n"; }
        std::string log;
    } kinds;
    const Block butterworth = make("FilterButterworth", "smooth");
    for (const AbstractProperty* const property : butterworth->getPropertyBag())
        property->accept(kinds);
    EXPECT_EQ(kinds.log,
              "command Init\ndouble RelativeCutOffFreq\nint Order up to 10\nenum Mode from LowPass\n");
}

TEST_F(PluginFileTest, TypesAreOneOnBothSides) {
    const Block gain = make("FilterGain", "gain");
    EXPECT_NE(dynamic_cast<InputPin<MatrixXd>*>(&gain->getInputPin("input")), nullptr);
    EXPECT_NE(dynamic_cast<OutputPin<MatrixXd>*>(&gain->getOutputPin("output")), nullptr);
    EXPECT_NE(dynamic_cast<ValueProperty<double>*>(&gain->getProperty("Gain")), nullptr);
    EXPECT_EQ(gain->getInputPin("input").getDataTypeName(),
              InputPin<MatrixXd>("pin", nullptr).getDataTypeName());
    const double value = 7.5;
    gain->getProperty("Gain").setValueFromAny(Poco::Any(static_cast<const double*>(&value)));
    EXPECT_EQ(*Poco::AnyCast<const double*>(gain->getProperty("Gain").getValueAsAny()), 7.5);
}

TEST_F(PluginFileTest, ObserversAndCommandsCrossTheBorder) {
    struct Observer final : PropertyObserver {
        void valueChanged(const AbstractProperty& property) override { log += property.getName() + " "; }
        void attributesChanged(const AbstractProperty&) override { log += "attributes "; }
        std::string log;
    } observer;
    const Block butterworth = make("FilterButterworth", "smooth");
    AbstractProperty& order = butterworth->getProperty("Order");
    order.addObserver(observer);
    order.setValueFromString("4");
    order.setValueFromString("4");
    EXPECT_EQ(observer.log, "Order ");
    dynamic_cast<CommandProperty&>(butterworth->getProperty("Init")).fire();
    order.removeObserver(observer);
}
