// SPDX-License-Identifier: MIT
#include "tests/plugin/LoadedPlugin.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {
/// The order is interface: hosts show blocks in it, and files may refer to a block by its place.
const std::vector<std::string> kCatalogue = {
    "FilterAbsoluteErode",
    "FilterBandPass",
    "FilterBessel",
    "FilterBlackmanWindow",
    "FilterButterworth",
    "FilterButterworth_v2",
    "FilterButterworthV2",
    "FilterChebyshev",
    "FilterDeadband",
    "FilterDerivate",
    "FilterDiscarder",
    "FilterEdge",
    "FilterEllipticV1",
    "FilterFastFourierTransform",
    "FilterFFT",
    "FilterFlagStatic",
    "FilterFrequency",
    "FilterFunctionGenerator",
    "FilterGain",
    "FilterGaussianWhiteNoiseGenerator",
    "FilterHammingWindow",
    "FilterHanningWindow",
    "FilterHysteresis",
    "FilterIIR",
    "FilterInvGain",
    "FilterPeriodCounter",
    "FilterRelativeErode",
    "FilterRemoveStill",
    "FilterResample",
    "FilterSaturationDetector",
    "FilterSmartSaturationDetector",
    "FilterSphericalFiltering",
    "FilterThreshold",
    "FilterThresholdLeveler",
    "FilterWFLC",
};

std::vector<std::string> registered() {
    const LoadedPlugin plugin;
    plugin.start();
    std::vector<std::string> names;
    for (const auto* const factory : registry().getFactories())
        names.emplace_back(factory->getTypeName());
    return names;
}
} // namespace

TEST(CatalogueTest, HoldsThirtyFiveBlocks) {
    EXPECT_EQ(kCatalogue.size(), 35u);
    EXPECT_EQ(std::set(kCatalogue.begin(), kCatalogue.end()).size(), 35u);
}

TEST(CatalogueTest, ThePluginListsEveryBlockInItsPlace) {
    EXPECT_EQ(registered(), kCatalogue);
}
