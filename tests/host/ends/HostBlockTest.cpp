// SPDX-License-Identifier: MIT
#include "host/ends/HostBlock.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

/// Has no settings, and says nothing of that.
class Plain : public HostBlock {
public:
    Plain() : HostBlock("plain", true) {}
    void process() override {}
    const char* getTypeName() const override { return "Plain"; }
};

/// Takes two and leaves what else there is to be refused.
class Choosy final : public Plain {
public:
    const char* getTypeName() const override { return "Choosy"; }
    const std::vector<SettingDescription>& getSettingDescriptions() const override {
        static const std::vector<SettingDescription> both{{"file", "a path", "", "what it reads"},
                                                          {"time", "a column", "t", "when"}};
        return both;
    }
    void configure(const GraphDescription::Block& description, const std::string&,
                   Complaints& complaints) override {
        for (const GraphDescription::Setting& setting : description.settings)
            if (setting.name == "file" || setting.name == "time")
                taken += setting.name + " ";
            else
                refuseSetting(setting, complaints);
    }

    std::string taken;
};

/// What `block` complains of when it is given a setting of each of these names, the first in line 1.
std::string complaintsOf(HostBlock& block, const std::vector<std::string>& names) {
    GraphDescription::Block description;
    for (const std::string& name : names) {
        GraphDescription::Setting& setting = description.settings.emplace_back();
        setting.name = name;
        setting.where.file = "g.yaml";
        setting.where.line = static_cast<int>(description.settings.size());
        setting.where.column = 1;
    }
    Complaints complaints;
    block.configure(description, "folder", complaints);
    std::string lines;
    for (const Complaint& complaint : complaints.getSorted())
        lines += complaint.getText() + "\n";
    return lines;
}

TEST(HostBlock, OneThatSaysNothingOfSettingsHasNoneAndRefusesEach) {
    Plain block;
    EXPECT_TRUE(block.getSettingDescriptions().empty());
    EXPECT_EQ(complaintsOf(block, {}), "");
    EXPECT_EQ(complaintsOf(block, {"file", "rate"}),
              "g.yaml:1:1: found the property 'file' of Plain; expected no properties, since it has none\n"
              "g.yaml:2:1: found the property 'rate' of Plain; expected no properties, since it has none\n");
}

TEST(HostBlock, WhatItRefusesNamesThoseThatItHasAndTheNearest) {
    Choosy block;
    EXPECT_EQ(complaintsOf(block, {"file", "tiem", "colour", "time"}),
              "g.yaml:2:1: found the property 'tiem' of Choosy; expected one of file and time; "
              "did you mean time?\n"
              "g.yaml:3:1: found the property 'colour' of Choosy; expected one of file and time\n");
    EXPECT_EQ(block.taken, "file time ");
}

TEST(HostBlock, IsABlockLikeEveryOther) {
    Choosy block;
    const Quillmere::Core::Filter& filter = block;
    EXPECT_EQ(filter.getName(), "plain");
    EXPECT_STREQ(filter.getTypeName(), "Choosy");
    EXPECT_EQ(filter.getPropertyBag().begin(), filter.getPropertyBag().end())
        << "its settings are no properties";
}

} // namespace
