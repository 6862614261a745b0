// SPDX-License-Identifier: MIT
#include "host/plugins/BlockCatalogue.h"

#include "host/graph/BlockDescription.h"
#include "host/recording/HostCatalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace {

using Quillmere::Host::HostCatalogue;
using Quillmere::Host::kindOf;
using Quillmere::Host::PropertyDescription;
using Kind = PropertyDescription::Kind;
using Strings = std::vector<std::string>;

TEST(BlockCatalogue, ListsTypesInThePluginsOrder) {
    HostCatalogue catalogue;
    catalogue.load(ODD_PLUGIN);
    EXPECT_EQ(catalogue.getTypeNames(),
              (Strings{"OddSettings", "OddFailing", "OddSum", "OddGenerator", "OddThrice", "OddInOrder"}));
    catalogue.load(VELMARIND_PLUGIN);
    const Strings names = catalogue.getTypeNames();
    EXPECT_EQ(names.front(), "OddSettings") << "what was loaded first stays first";
    EXPECT_NE(std::find(names.begin(), names.end(), "FilterGain"), names.end());
    EXPECT_EQ(catalogue.getPluginName("FilterGain"), "Velmarind");
    EXPECT_EQ(catalogue.getPluginVersion("FilterGain"), "1.3.3");
    EXPECT_EQ(catalogue.getPluginName("RecordingSink"), "");
}

TEST(BlockCatalogue, OfTwoTypesWithOneNameTheFirstIsTaken) {
    HostCatalogue catalogue;
    catalogue.load(ODD_PLUGIN);
    catalogue.load(ODD_PLUGIN);
    EXPECT_EQ(catalogue.getTypeNames().size(), 6u);
}

TEST(BlockCatalogue, TheHostsBlocksAreApart) {
    const HostCatalogue catalogue;
    EXPECT_TRUE(catalogue.getTypeNames().empty());
    EXPECT_EQ(catalogue.getHostTypeNames(), (Strings{"RecordingSource", "RecordingSink"}));
    EXPECT_TRUE(catalogue.getIsHostType("RecordingSource"));
    EXPECT_FALSE(catalogue.getIsHostType("FilterGain"));
    for (const std::string& type : catalogue.getHostTypeNames())
        EXPECT_EQ(catalogue.create(type, "x")->getTypeName(), type);
    EXPECT_EQ(catalogue.create("FilterGain", "x"), nullptr);
}

TEST(BlockCatalogue, SettingsOfAPlugInsBlockAreKnownByTheirTypes) {
    HostCatalogue catalogue;
    catalogue.load(ODD_PLUGIN);
    const auto block = catalogue.create("OddSettings", "odd");
    const std::pair<const char*, Kind> kinds[] = {
        {"flag", Kind::Flag},     {"whole", Kind::Whole},        {"count", Kind::Count},
        {"number", Kind::Number}, {"ranged whole", Kind::Whole}, {"ranged.number", Kind::Number},
        {"choice", Kind::Choice}, {"matrix", Kind::Matrix},      {"Reset", Kind::Command}};
    for (const auto& [name, kind] : kinds) {
        ASSERT_NE(block->getPropertyBag().find(name), nullptr) << name;
        EXPECT_EQ(kindOf(*block->getPropertyBag().find(name)), kind) << name;
    }
}

} // namespace
