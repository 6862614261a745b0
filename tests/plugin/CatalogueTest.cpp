// SPDX-License-Identifier: MIT
#include "tests/plugin/LoadedPlugin.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>
#include <vector>

namespace {
/// A letter's place in the order of blocks: the alphabet's, `_` before all letters.
int placeOf(char letter) {
    return std::tolower(static_cast<unsigned char>(letter));
}

bool comesBefore(const std::string& a, const std::string& b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](char x, char y) { return placeOf(x) < placeOf(y); });
}

/// The blocks that there are: each has a header of its own name.
std::vector<std::string> written() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(BLOCKS_FOLDER))
        if (entry.path().extension() == ".h" && entry.path().stem().string().starts_with("Filter"))
            names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end(), comesBefore);
    return names;
}

std::vector<std::string> registered() {
    const LoadedPlugin plugin;
    plugin.start();
    std::vector<std::string> names;
    for (const auto* const factory : registry().getFactories())
        names.emplace_back(factory->getTypeName());
    return names;
}
} // namespace

/// The order is interface: hosts show blocks in it, and files may refer to a block by its place.
TEST(CatalogueTest, ThePluginListsEveryBlockInItsPlace) {
    const std::vector<std::string> names = registered();
    EXPECT_FALSE(names.empty());
    EXPECT_EQ(names, written());
}

TEST(CatalogueTest, CapitalsStandAmongSmallLetters) {
    EXPECT_TRUE(comesBefore("FilterFastFourierTransform", "FilterFFT"));
    EXPECT_TRUE(comesBefore("FilterButterworth", "FilterButterworth_v2"));
    EXPECT_TRUE(comesBefore("FilterButterworth_v2", "FilterButterworthV2"));
    EXPECT_TRUE(comesBefore("FilterFFT", "FilterFlagStatic"));
    EXPECT_FALSE(comesBefore("FilterButterworthV2", "FilterButterworth_v2"));
}
