// SPDX-License-Identifier: MIT
#include "host/plugins/PluginLibrary.h"

#include "framework/core/FlowManager.h"
#include "host/recording/HostCatalogue.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

using Quillmere::Core::FlowManager;
using Quillmere::Host::BlockPtr;
using Quillmere::Host::HostCatalogue;
using Quillmere::Host::PluginException;
using Quillmere::Host::PluginLibrary;

std::size_t pluginsInstalled() {
    return FlowManager::instance().getPluginManager().getPlugins().size();
}

std::string refusal(const std::string& path) {
    try {
        PluginLibrary::open(path);
    } catch (const PluginException& exception) {
        return exception.what();
    }
    return "";
}

TEST(PluginLibrary, StartsAndStops) {
    const std::size_t before = pluginsInstalled();
    {
        const auto library = PluginLibrary::open(ODD_PLUGIN);
        EXPECT_EQ(pluginsInstalled(), before + 1);
        ASSERT_EQ(library->getFactories().size(), 6u);
        EXPECT_STREQ(library->getFactories().front()->getTypeName(), "OddSettings");
    }
    EXPECT_EQ(pluginsInstalled(), before);
    const auto again = PluginLibrary::open(ODD_PLUGIN);
    EXPECT_EQ(pluginsInstalled(), before + 1) << "a stopped plug-in can be started again";
}

TEST(PluginLibrary, OpenedTwiceIsOne) {
    const std::size_t before = pluginsInstalled();
    auto first = PluginLibrary::open(ODD_PLUGIN);
    const auto second = PluginLibrary::open(ODD_PLUGIN);
    EXPECT_EQ(first, second);
    first.reset();
    EXPECT_EQ(pluginsInstalled(), before + 1) << "the second still holds it";
}

TEST(PluginLibrary, StopsAfterTheLastBlockIsGone) {
    const std::size_t before = pluginsInstalled();
    BlockPtr block;
    {
        HostCatalogue catalogue;
        catalogue.load(ODD_PLUGIN);
        block = catalogue.create("OddGenerator", "g");
    }
    EXPECT_EQ(pluginsInstalled(), before + 1);
    EXPECT_STREQ(block->getTypeName(), "OddGenerator");
    EXPECT_EQ(block->getName(), "g");
    block.reset();
    EXPECT_EQ(pluginsInstalled(), before + 1) << "an empty pointer keeps the way back";
    block = BlockPtr();
    EXPECT_EQ(pluginsInstalled(), before);
}

TEST(PluginLibrary, RefusesWhatIsNoPlugin) {
    const Support::TemporaryFolder folder;
    EXPECT_EQ(refusal(folder.path("none.so")),
              folder.path("none.so") +
                  ": found no such file; expected a plug-in (No such file or directory)");
    const std::string text = folder.write("text.so", "not a library, whatever its name");
    EXPECT_TRUE(refusal(text).starts_with(text + ": found no shared object that can be opened ("))
        << refusal(text);
    const std::string other = std::filesystem::canonical(NO_PLUGIN).string();
    EXPECT_EQ(refusal(other),
              other + ": found a shared object without 'dllGetQuillmereVersion'; expected a plug-in");
}

TEST(PluginLibrary, RefusesAPluginForAnotherFrameworkBeforeItStarts) {
    const std::size_t before = pluginsInstalled();
    const std::string path = std::filesystem::canonical(OUTDATED_PLUGIN).string();
    EXPECT_EQ(refusal(path), path + ": found a plug-in for framework version 0.9.0; expected 0.10.0");
    EXPECT_EQ(pluginsInstalled(), before);
}

} // namespace
