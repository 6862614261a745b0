// SPDX-License-Identifier: MIT
#include "host/plugins/BlockCatalogue.h"

#include "host/graph/BlockDescription.h"
#include "host/recording/HostCatalogue.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using Quillmere::Core::MatrixXd;
using Quillmere::Host::BlockCatalogue;
using Quillmere::Host::BlockDescription;
using Quillmere::Host::describe;
using Quillmere::Host::HostCatalogue;
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

class Described : public testing::Test {
protected:
    Described() {
        catalogue.load(ODD_PLUGIN);
        block = describe(*catalogue.create("OddSettings", "odd"));
    }

    const PropertyDescription& property(const std::string& name) const {
        const auto found =
            std::find_if(block.properties.begin(), block.properties.end(),
                         [&](const PropertyDescription& candidate) { return candidate.name == name; });
        if (found == block.properties.end()) throw std::runtime_error("no property " + name);
        return *found;
    }

    HostCatalogue catalogue;
    BlockDescription block;
};

TEST_F(Described, PinsAreInOrderOfCreation) {
    EXPECT_EQ(block.type, "OddSettings");
    ASSERT_EQ(block.inputs.size(), 2u);
    EXPECT_EQ(block.inputs[0].name, "aux");
    EXPECT_FALSE(block.inputs[0].isBlocking);
    EXPECT_EQ(block.inputs[1].name, "main in.put");
    EXPECT_TRUE(block.inputs[1].isBlocking);
    ASSERT_EQ(block.outputs.size(), 2u);
    EXPECT_EQ(block.outputs[1].name, "b");
}

struct Row {
    std::string name;
    Kind kind;
    std::string value;
    std::string expected;
};

TEST_F(Described, EverySettingTellsItsKindValueAndLimits) {
    const Row rows[] = {
        {.name = "flag", .kind = Kind::Flag, .value = "false", .expected = "true or false"},
        {.name = "whole", .kind = Kind::Whole, .value = "0", .expected = "a whole number"},
        {.name = "count",
         .kind = Kind::Count,
         .value = "0",
         .expected = "a whole number from 0 to 4294967295"},
        {.name = "number", .kind = Kind::Number, .value = "0", .expected = "a number"},
        {.name = "ranged whole",
         .kind = Kind::Whole,
         .value = "0",
         .expected = "a whole number from -3 to 10"},
        {.name = "ranged.number",
         .kind = Kind::Number,
         .value = "0.5",
         .expected = "a number from 0.5 to 1.5"},
        {.name = "choice",
         .kind = Kind::Choice,
         .value = "LowPass",
         .expected = "one of LowPass, HiPass and 0, or an index from 0 to 2"},
        {.name = "matrix", .kind = Kind::Matrix, .value = "[[0.5, 0.5]]", .expected = "a matrix"},
        {.name = "Reset",
         .kind = Kind::Command,
         .value = "",
         .expected = "a setting: a command has no value"},
    };
    for (const Row& row : rows) {
        const PropertyDescription& told = property(row.name);
        EXPECT_EQ(told.kind, row.kind) << row.name;
        EXPECT_EQ(valueText(told), row.value) << row.name;
        EXPECT_EQ(expectedText(told), row.expected) << row.name;
    }
    EXPECT_EQ(block.properties.size(), 11u);
}

TEST_F(Described, LimitsLabelsAndWritabilityAreThere) {
    const PropertyDescription& whole = property("ranged whole");
    EXPECT_TRUE(whole.hasLimits);
    EXPECT_EQ(whole.minimum, -3.0);
    EXPECT_EQ(whole.maximum, 10.0);
    EXPECT_EQ(whole.step, 1.0);
    EXPECT_FALSE(property("whole").hasLimits);
    EXPECT_EQ(property("choice").labels, (Strings{"LowPass", "HiPass", "0"}));
    EXPECT_FALSE(property("locked").isWritable);
    EXPECT_TRUE(property("unlock").isWritable);
    EXPECT_FALSE(property("Reset").isWritable);
    EXPECT_TRUE(Support::agree(std::get<MatrixXd>(property("matrix").value), MatrixXd::Constant(1, 2, 0.5),
                               Support::same));
}

} // namespace
