// SPDX-License-Identifier: MIT
// Nothing is missing on the page of a block, and nothing is on it that the living block hasn't.
#include "host/graph/BlockDescription.h"
#include "tests/manual/ManualFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Kind = PropertyDescription::Kind;

std::string contentOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The categories that the guide to pages has.
std::set<std::string> knownCategories() {
    const std::string guide = contentOf(MANUAL_GUIDE);
    const std::size_t begin = guide.find("| category | for |");
    const std::string table = guide.substr(begin, guide.find("\n\n", begin) - begin);
    std::set<std::string> categories;
    const std::regex row("\n\\| `([^`]+)` \\|");
    for (std::sregex_iterator match(table.begin(), table.end(), row), end; match != end; ++match)
        categories.insert((*match)[1]);
    return categories;
}

/// The names of what a page tells, or of what a block has.
template <class Parts>
std::multiset<std::string> namesOf(const Parts& parts) {
    std::multiset<std::string> names;
    for (const auto& part : parts)
        names.insert(part.name);
    return names;
}

class ManualPages : public Support::ManualFixture {
protected:
    static void expectPins(const std::vector<BlockDescription::Pin>& pins,
                           const std::vector<BlockPage::Pin>& told) {
        EXPECT_EQ(namesOf(told), namesOf(pins));
        for (const BlockPage::Pin& pin : told) {
            EXPECT_NE(pin.meaning, "") << pin.name;
            EXPECT_NE(pin.shape, "") << pin.name;
            EXPECT_NE(pin.unit, "") << pin.name;
        }
    }

    static void expectSettings(const std::vector<PropertyDescription>& properties, const BlockPage& page) {
        EXPECT_EQ(namesOf(page.settings), namesOf(properties));
        for (const PropertyDescription& property : properties) {
            const BlockPage::Setting* const told = page.findSetting(property.name);
            if (told == nullptr) continue; // told above
            SCOPED_TRACE(property.name);
            const bool isMeasure = property.kind == Kind::Number || property.kind == Kind::Matrix;
            const bool isCount = property.kind == Kind::Whole || property.kind == Kind::Count;
            EXPECT_NE(told->meaning, "");
            EXPECT_TRUE(!isMeasure || !told->unit.empty()) << "without a unit";
            EXPECT_TRUE(isMeasure || isCount || told->unit.empty()) << "with a unit";
            EXPECT_EQ(told->why.empty(), property.kind == Kind::Command) << "why the default is what it is";
        }
    }

    /// What people read of seconds and hertz graphs take as such.
    static void expectTimeUnits(const BlockPage& page) {
        for (const BlockPage::Setting& setting : page.settings) {
            const bool isTime = std::regex_search(setting.unit, std::regex("^(s|that of SampleRate)\\b"));
            const bool isFrequency = std::regex_search(setting.unit, std::regex("^(Hz|samples a second)\\b"));
            const auto told = page.relations.settingUnits.find(setting.name);
            ASSERT_EQ(told != page.relations.settingUnits.end(), isTime || isFrequency) << setting.name;
            if (!isTime && !isFrequency) continue;
            if (told->second.setting.empty()) {
                EXPECT_EQ(told->second.unit == BlockManual::TimeUnit::Seconds, isTime) << setting.name;
            }
        }
    }

    /// Types that the text of a page names.
    void expectTypes(const std::string& type) const {
        const std::string page = contentOf(BlockManual::fileOf(type, catalogue));
        const std::regex name("\\bFilter[A-Z]\\w+");
        for (std::sregex_iterator match(page.begin(), page.end(), name), end; match != end; ++match)
            EXPECT_NE(catalogue.getPluginName(match->str()), "") << match->str() << " is no type";
    }
};

TEST_F(ManualPages, AreWhole) {
    const std::set<std::string> categories = knownCategories();
    EXPECT_GE(categories.size(), 7u);
    const auto types = catalogue.getTypeNames();
    EXPECT_GE(types.size(), 35u);
    for (const std::string& type : types) {
        SCOPED_TRACE(type);
        const BlockPage page = pageOf(type);
        EXPECT_TRUE(categories.contains(page.category)) << "in the category '" << page.category << "'";
        EXPECT_NE(page.text, "");
        EXPECT_NE(page.formula, "");
        EXPECT_FALSE(page.odd.empty());
        EXPECT_FALSE(page.mistakes.empty());
        EXPECT_NE(page.example.text, "");
        EXPECT_NE(page.example.graph, "");
        EXPECT_FALSE(page.example.results.empty());
        const BlockDescription block = describe(*catalogue.create(type, type));
        {
            SCOPED_TRACE("inputs");
            expectPins(block.inputs, page.inputs);
        }
        {
            SCOPED_TRACE("outputs");
            expectPins(block.outputs, page.outputs);
        }
        expectSettings(block.properties, page);
        expectTimeUnits(page);
        expectTypes(type);
    }
}

TEST_F(ManualPages, SayInOneShortSentenceWhatABlockIsFor) {
    for (const std::string& type : catalogue.getTypeNames()) {
        const std::string purpose = pageOf(type).purpose;
        EXPECT_LE(purpose.size(), 90u) << type;
        EXPECT_TRUE(std::regex_match(purpose, std::regex("[A-Z]([^.]|\\.[^ ])*\\.")))
            << type << ": " << purpose;
    }
}

TEST_F(ManualPages, AreRelatedToOthers) {
    for (const std::string& type : catalogue.getTypeNames()) {
        const std::vector<std::string> related = pageOf(type).related;
        EXPECT_FALSE(related.empty()) << type;
        for (const std::string& other : related) {
            EXPECT_NE(other, type);
            EXPECT_NE(catalogue.getPluginName(other), "") << type << " is related to " << other;
            EXPECT_EQ(std::count(related.begin(), related.end(), other), 1) << type << " to " << other;
        }
    }
}

TEST_F(ManualPages, AreOfBlocksThatThereAre) {
    for (const std::string& plugin : plugins) {
        const auto pages = std::filesystem::path(plugin).replace_extension("manual");
        for (const auto& file : std::filesystem::directory_iterator(pages)) {
            const std::string type = file.path().stem().string();
            EXPECT_EQ(catalogue.getPluginPath(type), plugin) << file.path();
        }
    }
}

} // namespace
