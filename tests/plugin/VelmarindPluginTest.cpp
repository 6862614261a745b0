// SPDX-License-Identifier: MIT
#include "plugin/VelmarindPlugin.h"

#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"

#include <gtest/gtest.h>

#include <memory>
#include <regex>

using namespace Quillmere::Core;

TEST(VelmarindPluginTest, TellsWhoItIs) {
    const VelmarindPlugin plugin;
    EXPECT_EQ(plugin.getName(), "Velmarind");
    EXPECT_EQ(plugin.getVersion(), "1.3.3");
    const PluginMetaData& metaData = plugin.getMetaData();
    EXPECT_EQ(metaData.pluginVersion, "1.3.3");
    EXPECT_EQ(metaData.hostVersion, "0.10.0");
    EXPECT_EQ(metaData.pluginName, "Velmarind");
    EXPECT_EQ(metaData.description, "This is the plugin that wraps Velmarind elements.");
    EXPECT_FALSE(metaData.platform.empty());
}

TEST(VelmarindPluginTest, TheBuildDateHasTheFormOfADayAndADate) {
    const std::string date = VelmarindPlugin().getMetaData().buildDate;
    const std::regex form(R"((Mon|Tue|Wed|Thu|Fri|Sat|Sun) ([0-9]{2})/([0-9]{2})/([0-9]{4}))");
    EXPECT_TRUE(std::regex_match(std::string("Fri 06/23/2017"), form));
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(date, parts, form)) << date;
    // The day of the week belongs to the date: 1 January 1970 was a Thursday.
    std::tm calendar{};
    calendar.tm_mon = std::stoi(parts[2]) - 1;
    calendar.tm_mday = std::stoi(parts[3]);
    calendar.tm_year = std::stoi(parts[4]) - 1900;
    const std::time_t seconds = ::timegm(&calendar);
    const char* const days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    std::tm back{};
    ::gmtime_r(&seconds, &back);
    EXPECT_EQ(parts[1], days[back.tm_wday]) << date;
    EXPECT_EQ(back.tm_mday, std::stoi(parts[3])) << date << " is a day of the calendar";
}

TEST(VelmarindPluginTest, EveryFactoryNamesThePluginAndItsVersion) {
    const VelmarindPlugin plugin;
    ASSERT_FALSE(plugin.getFactories().empty());
    for (const AbstractFilterFactory* const factory : plugin.getFactories()) {
        EXPECT_EQ(factory->getPluginName(), "Velmarind") << factory->getTypeName();
        EXPECT_EQ(factory->getVersion(), ComponentVersion("1.3.3")) << factory->getTypeName();
    }
}

/// What holds for every block, whatever it does.
TEST(VelmarindPluginTest, EveryBlockIsMadeStepsAndGoes) {
    const VelmarindPlugin plugin;
    for (AbstractFilterFactory* const factory : plugin.getFactories()) {
        const std::string typeName = factory->getTypeName();
        Filter* const one = factory->create("same name");
        Filter* const two = factory->create("same name");
        ASSERT_NE(one, nullptr) << typeName;
        ASSERT_NE(one, two) << typeName;
        EXPECT_EQ(one->getTypeName(), typeName) << "the block's own type name is its factory's";
        EXPECT_EQ(one->getName(), "same name");
        EXPECT_EQ(one->getManager(), nullptr);
        EXPECT_EQ(Support::catalogue(*one), Support::catalogue(*two)) << typeName;
        EXPECT_FALSE(one->getOutputPins().empty()) << typeName;
        factory->destroy(one);
        two->process(); // nothing is connected, and nothing sleeps
        factory->destroy(two);
        factory->destroy(nullptr);
    }
}

/// A block is made or it isn't, wherever in its constructor the memory ends.
TEST(VelmarindPluginTest, EveryBlockIsMadeWholeOrNotAtAll) {
    using namespace Support;
    if (!MemoryShortage::getIsPossible()) GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
    const VelmarindPlugin plugin;
    const std::string name = "a name that is too long for the room inside a text";
    for (AbstractFilterFactory* const factory : plugin.getFactories()) {
        const auto failures = withEveryShortage([&](std::uint64_t granted) {
            Filter* block = nullptr;
            const bool isDone =
                succeedsWith(granted, [&] { block = factory->create(name); }) && block != nullptr;
            EXPECT_EQ(isDone, block != nullptr);
            EXPECT_TRUE(succeedsWith(0, [&] { factory->destroy(block); })) << factory->getTypeName();
            return isDone;
        });
        EXPECT_GT(failures, 1u) << factory->getTypeName();
    }
}
