// SPDX-License-Identifier: MIT
#include "framework/core/AbstractProperty.h"

#include "tests/framework/TestBlocks.h"
#include "tests/support/Feed.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

using namespace Support;
using namespace TestBlocks;

namespace {
/// A setting that does nothing but tell.
class Bare final : public AbstractProperty {
public:
    using AbstractProperty::AbstractProperty;
    bool getIsWritable() const override { return true; }
    bool getIsReadable() const override { return true; }
    void getValueAsString(std::string&) const override {}
    void setValueFromString(const std::string&) override {}
    void setValueFromAny(const Poco::Any&) override {}
    Poco::Any getValueAsAny() const override { return {}; }

    using AbstractProperty::hasObservers;
    using AbstractProperty::notifyAttributeChanged;
    void change(bool notify, const std::function<void()>& store = {}) {
        const ScopedChangeValueNotifier notifier(this, notify);
        if (store) store();
    }
};

/// Writes what it hears into a shared log, then calls `afterwards`.
class Listener final : public PropertyObserver {
public:
    Listener(std::string listenerName, std::vector<std::string>& sharedLog)
        : name(std::move(listenerName)), log(sharedLog) {}
    void valueChanged(const AbstractProperty& property) override {
        log.push_back(name + " value of " + property.getName());
        if (afterwards) afterwards();
    }
    void attributesChanged(const AbstractProperty& property) override {
        log.push_back(name + " attributes of " + property.getName());
        if (afterwards) afterwards();
    }
    std::function<void()> afterwards;

private:
    std::string name;
    std::vector<std::string>& log;
};

/// What a change handler is bound to.
struct Target {
    std::vector<std::string>& log;
    void note() { log.push_back("handler"); }
    int noteOtherwise() {
        log.push_back("other handler");
        return 42; // dropped
    }
    void raise() { throw std::out_of_range("from the handler"); }
};

using Log = std::vector<std::string>;
} // namespace

TEST(AbstractPropertyTest, EntersAndLeavesItsBag) {
    Plain block("block");
    {
        const Bare setting("setting", &block.getPropertyBag());
        EXPECT_EQ(&block.getProperty("setting"), &setting);
        EXPECT_EQ(setting.getName(), "setting");
    }
    EXPECT_EQ(block.getPropertyBag().size(), 0u);
}

TEST(AbstractPropertyTest, ItsGateIsThatOfTheBlocksLayout) {
    Plain block("block");
    LayoutManager layout("layout");
    const Bare setting("setting", &block.getPropertyBag());
    const Bare alone("alone", nullptr);
    EXPECT_EQ(setting.getSynchronizer(), nullptr);
    layout.add(block);
    EXPECT_EQ(setting.getSynchronizer(), &layout.getSynchronizer());
    EXPECT_EQ(alone.getSynchronizer(), nullptr);
}

TEST(AbstractPropertyTest, KnowsWhereverItsBlockIsWhetherThisThreadHasItsGate) {
    Plain block("block");
    LayoutManager layout("layout");
    LayoutManager other("other");
    const Bare setting("setting", &block.getPropertyBag());
    const Bare alone("alone", nullptr);
    EXPECT_FALSE(setting.getIsGateOwn()) << "there is none";
    layout.add(block);
    EXPECT_FALSE(setting.getIsGateOwn());
    {
        const Synchronizer::DisablerLocker guard(&layout.getSynchronizer(), nullptr);
        EXPECT_TRUE(setting.getIsGateOwn());
        EXPECT_FALSE(alone.getIsGateOwn());
        std::thread([&] { EXPECT_FALSE(setting.getIsGateOwn()) << "another thread"; }).join();
    }
    other.add(block);
    {
        const Synchronizer::DisablerLocker guard(&layout.getSynchronizer(), nullptr);
        EXPECT_FALSE(setting.getIsGateOwn()) << "that of its former layout";
    }
    block.action = [&] { EXPECT_TRUE(setting.getIsGateOwn()) << "in a step"; };
    other.runStep();
    other.remove(block);
    const Synchronizer::DisablerLocker guard(&other.getSynchronizer(), nullptr);
    EXPECT_FALSE(setting.getIsGateOwn()) << "it is in no layout any more";
}

TEST(AbstractPropertyTest, AGateOfTheBlocksOwnCountsAndNotThatOfItsLayout) {
    class Own final : public Plain {
    public:
        using Plain::Plain;
        Synchronizer* getSynchronizer() override { return &gate; }
        Synchronizer gate;
    };
    Own block("block");
    ValueProperty<double> setting("setting", &block.getPropertyBag());
    LayoutManager layout("layout");
    layout.add(block);
    block.action = [&] {
        EXPECT_FALSE(setting.getIsGateOwn());
        EXPECT_EQ(setting.getValue(), 0.0) << "passes the block's gate, which is free";
    };
    layout.runStep();
}

TEST(AbstractPropertyTest, AChangeCallsTheHandlerThenTheObserversInTheirOrder) {
    Log log;
    Target target{log};
    Bare setting("x", nullptr);
    Listener one("one", log);
    Listener two("two", log);
    setting.addObserver(two);
    setting.addObserver(one);
    setting.addObserver(two); // twice does nothing
    setting.setChangeHandler(&target, &Target::note);
    setting.change(true, [&] { log.push_back("store"); });
    EXPECT_EQ(log, (Log{"store", "handler", "two value of x", "one value of x"}));

    log.clear();
    setting.change(false, [&] { log.push_back("store"); });
    EXPECT_EQ(log, Log{"store"});

    log.clear();
    setting.notifyAttributeChanged();
    EXPECT_EQ(log, (Log{"two attributes of x", "one attributes of x"}));
}

TEST(AbstractPropertyTest, ObserversCountWithTheHandlerAmongThem) {
    Log log;
    Target target{log};
    Listener listener("one", log);
    Bare setting("x", nullptr);
    EXPECT_FALSE(setting.hasObservers());
    setting.addObserver(listener);
    EXPECT_TRUE(setting.hasObservers());
    setting.removeObserver(listener);
    setting.removeObserver(listener); // one that isn't there
    EXPECT_FALSE(setting.hasObservers());
    setting.setChangeHandler(&target, &Target::note);
    EXPECT_TRUE(setting.hasObservers());
    setting.change(true);
    EXPECT_EQ(log, Log{"handler"}) << "who has left hears nothing";
}

TEST(AbstractPropertyTest, ASecondHandlerReplacesTheFirst) {
    Log log;
    Target target{log};
    Bare setting("x", nullptr);
    setting.setChangeHandler(&target, &Target::note);
    setting.setChangeHandler(&target, &Target::noteOtherwise);
    setting.change(true);
    EXPECT_EQ(log, Log{"other handler"});
}

TEST(AbstractPropertyTest, AnObserverMayTakeItsLeaveMeanwhile) {
    Log log;
    Bare setting("x", nullptr);
    Listener one("one", log);
    Listener two("two", log);
    setting.addObserver(one);
    setting.addObserver(two);
    one.afterwards = [&] { setting.removeObserver(one); };
    setting.change(true);
    setting.change(true);
    EXPECT_EQ(log, (Log{"one value of x", "two value of x", "two value of x"}));
}

TEST(AbstractPropertyTest, AnObserverMayTakeAnothersLeave) {
    for (const bool isValue : {true, false}) {
        Log log;
        Bare setting("x", nullptr);
        Listener one("one", log);
        Listener two("two", log);
        setting.addObserver(one);
        setting.addObserver(two);
        one.afterwards = [&] { setting.removeObserver(two); };
        if (isValue)
            setting.change(true);
        else
            setting.notifyAttributeChanged();
        EXPECT_EQ(log, Log{isValue ? "one value of x" : "one attributes of x"})
            << "who has left, and is perhaps gone, isn't called any more";
    }
}

TEST(AbstractPropertyTest, AHandlersExceptionLeavesTheNotifier) {
    Log log;
    Target target{log};
    Listener listener("one", log);
    Bare setting("x", nullptr);
    setting.addObserver(listener);
    setting.setChangeHandler(&target, &Target::raise);
    EXPECT_EQ(refusal<std::out_of_range>([&] { setting.change(true); }), "from the handler");
    EXPECT_TRUE(log.empty());
}

TEST(AbstractPropertyTest, AFailedStoreTellsNoOne) {
    Log log;
    Target target{log};
    Bare setting("x", nullptr);
    setting.setChangeHandler(&target, &Target::note);
    EXPECT_EQ(refusal<std::runtime_error>(
                  [&] { setting.change(true, [] { throw std::runtime_error("from the store"); }); }),
              "from the store");
    EXPECT_TRUE(log.empty());
}

TEST(AbstractPropertyTest, AChangeDuringUnwindingIsToldAsWell) {
    Log log;
    Target target{log};
    Bare setting("x", nullptr);
    setting.setChangeHandler(&target, &Target::note);
    struct ChangesAtTheEnd {
        Bare& changed;
        ~ChangesAtTheEnd() { changed.change(true); }
    };
    EXPECT_THROW(
        {
            const ChangesAtTheEnd last{setting};
            throw std::runtime_error("elsewhere");
        },
        std::runtime_error);
    EXPECT_EQ(log, Log{"handler"});
}

TEST(AbstractPropertyTest, AVisitorThatKnowsNoTypeGetsTheUntypedSetting) {
    struct Untyped final : Util::System::AbstractVisitor,
                           Util::System::Visitor<AbstractProperty, void, void, 1> {
        void visit(const AbstractProperty& property) override { seen = property.getName(); }
        std::string seen;
    };
    const Bare setting("x", nullptr);
    Untyped untyped;
    setting.accept(untyped);
    EXPECT_EQ(untyped.seen, "x");
    Util::System::AbstractVisitor knowsNothing;
    setting.accept(knowsNothing); // passed over
}

TEST(AbstractPropertyTest, AHandlerRunsInsideTheGuard) {
    LayoutManager layout("layout");
    Plain block("block");
    layout.add(block);
    struct Asks {
        Synchronizer& gate;
        bool wasGuarded = false;
        void note() { wasGuarded = gate.getIsWanted(); }
    } asks{layout.getSynchronizer()};
    ValueProperty<int> setting("x", &block.getPropertyBag());
    setting.setChangeHandler(&asks, &Asks::note);
    setting.setValue(1);
    EXPECT_TRUE(asks.wasGuarded);
    EXPECT_FALSE(layout.getSynchronizer().getIsWanted());
}

TEST(AbstractPropertyTest, AHandlersExceptionEndsTheGuard) {
    LayoutManager layout("layout");
    Plain block("block");
    layout.add(block);
    Log log;
    Target target{log};
    ValueProperty<int> setting("x", &block.getPropertyBag());
    setting.setChangeHandler(&target, &Target::raise);
    EXPECT_THROW(setting.setValue(1), std::out_of_range);
    EXPECT_FALSE(layout.getSynchronizer().getIsWanted());
    EXPECT_EQ(setting.getValue(), 1) << "the value was stored before";
}
