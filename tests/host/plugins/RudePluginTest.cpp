// SPDX-License-Identifier: MIT
#include "host/recording/HostCatalogue.h"
#include "host/plugins/PluginLibrary.h"

#include "framework/core/AbstractProperty.h"
#include "framework/core/FlowManager.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using Quillmere::Core::FlowManager;
using Quillmere::Host::BlockPtr;
using Quillmere::Host::blockText;
using Quillmere::Host::HostCatalogue;
using Quillmere::Host::PluginException;
using Quillmere::Host::pluginFileOf;
using Quillmere::Host::PluginLibrary;
using Strings = std::vector<std::string>;

/// Lets the plug-in be rude in one way for the time of a test.
class Rudely {
public:
    explicit Rudely(const char* how) { ::setenv("RUDE", how, 1); }
    ~Rudely() { ::unsetenv("RUDE"); }
};

std::string file() {
    return std::filesystem::canonical(RUDE_PLUGIN).string();
}

template <class Action>
std::string refusal(Action action) {
    try {
        action();
    } catch (const PluginException& exception) {
        return exception.what();
    }
    return "nothing raised";
}

std::string refusalToOpen(const char* how) {
    const Rudely rudely(how);
    return refusal([] { PluginLibrary::open(RUDE_PLUGIN); });
}

TEST(RudePlugin, WhatItsStartRaisesIsToldBehindItsFile) {
    EXPECT_EQ(refusalToOpen("start"),
              file() + ": found a plug-in that raised when it was started (a trouble of its own); "
                       "expected one that starts");
    EXPECT_EQ(refusalToOpen("start by number"),
              file() +
                  ": found a plug-in that raised when it was started (something that is no std::exception); "
                  "expected one that starts");
}

TEST(RudePlugin, WhatItsStopRaisesIsAWarning) {
    PluginLibrary::takeStopFailures();
    for (const char* const how : {"stop", "stop by number"}) {
        const Rudely rudely(how);
        PluginLibrary::open(RUDE_PLUGIN);
    }
    EXPECT_EQ(PluginLibrary::takeStopFailures(),
              (Strings{file() + ": warning: the plug-in raised when it was stopped: a trouble of its own",
                       file() + ": warning: the plug-in raised when it was stopped: something that is no "
                                "std::exception"}));
    EXPECT_EQ(PluginLibrary::takeStopFailures(), Strings());
}

TEST(RudePlugin, TypesWithoutANameOrWithOneNameAreRefused) {
    const std::size_t before = FlowManager::instance().getPluginManager().getPlugins().size();
    for (const char* const how : {"null name", "empty name"})
        EXPECT_EQ(refusalToOpen(how), file() +
                                          ": found a block type without a name (factory 4 of 4); expected a "
                                          "name for each");
    EXPECT_EQ(refusalToOpen("one name twice"),
              file() + ": found two block types 'RudeStep'; expected a name of its own for each");
    EXPECT_EQ(FlowManager::instance().getPluginManager().getPlugins().size(), before) << "stopped again";
}

TEST(RudePlugin, NobodysBlockReplacesAnothers) {
    const std::string ours = std::filesystem::canonical(VELMARIND_PLUGIN).string();
    const Rudely rudely("name of Velmarind's");
    for (const bool isFirst : {true, false}) {
        HostCatalogue catalogue;
        catalogue.load(isFirst ? RUDE_PLUGIN : VELMARIND_PLUGIN);
        const Strings before = catalogue.getTypeNames();
        EXPECT_EQ(refusal([&] { catalogue.load(isFirst ? VELMARIND_PLUGIN : RUDE_PLUGIN); }),
                  "found the block type 'FilterGain' twice, in " + (isFirst ? file() : ours) + " and in " +
                      (isFirst ? ours : file()) + "; expected each type in one plug-in");
        EXPECT_EQ(catalogue.getTypeNames(), before) << "all or nothing";
    }
}

TEST(RudePlugin, NobodysBlockReplacesTheHosts) {
    const Rudely rudely("name of the host's");
    HostCatalogue catalogue;
    EXPECT_EQ(refusal([&] { catalogue.load(RUDE_PLUGIN); }),
              file() +
                  ": found the block type 'RecordingSink', which is the host's own; expected another name");
}

TEST(RudePlugin, ABlockThatIsNotMadeIsToldWithItsFile) {
    HostCatalogue catalogue;
    catalogue.load(RUDE_PLUGIN);
    EXPECT_EQ(refusal([&] { catalogue.create("RudeMade", "x"); }),
              file() + ": found a block 'x' (RudeMade) that raised when it was made (a trouble of its own); "
                       "expected one that can be");
    EXPECT_EQ(refusal([&] { catalogue.create("RudeMade", "number"); }),
              file() +
                  ": found a block 'number' (RudeMade) that raised when it was made (something that is no "
                  "std::exception); expected one that can be");
    EXPECT_EQ(refusal([&] { catalogue.create("RudeNull", "x"); }),
              file() +
                  ": found no block where 'x' (RudeNull) was to be made; expected one, or an exception that "
                  "says why not");
}

TEST(RudePlugin, AMessageNamesTheFileOfAStrangersBlock) {
    HostCatalogue catalogue;
    catalogue.load(RUDE_PLUGIN);
    catalogue.load(VELMARIND_PLUGIN);
    EXPECT_EQ(blockText(*catalogue.create("RudeStep", "x")), "'x' (RudeStep of " + file() + ")");
    EXPECT_EQ(blockText(*catalogue.create("FilterGain", "x")), "'x' (FilterGain)");
    EXPECT_EQ(pluginFileOf(*catalogue.create("RecordingSink", "x")), "");
}

/// The exception's class lies in the plug-in.
TEST(RudePlugin, ItsExceptionsOutliveIt) {
    std::exception_ptr kept;
    try {
        HostCatalogue catalogue;
        catalogue.load(RUDE_PLUGIN);
        const BlockPtr block = catalogue.create("RudeStep", "x");
        block->getProperty("Fire").setValueFromString("1");
    } catch (...) {
        kept = std::current_exception(); // by now the plug-in is stopped and closed
    }
    ASSERT_NE(kept, nullptr);
    try {
        std::rethrow_exception(kept);
    } catch (const std::exception& exception) {
        EXPECT_STREQ(exception.what(), "a trouble of its own");
    }
}

} // namespace
