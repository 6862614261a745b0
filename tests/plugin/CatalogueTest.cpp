// SPDX-License-Identifier: MIT
#include "tests/plugin/LoadedPlugin.h"

#include <gtest/gtest.h>

#include <algorithm>
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

/// Blocks of the catalogue that aren't written yet. Who writes one takes its line away here.
const std::set<std::string> kMissing = {
    "FilterAbsoluteErode", //
    "FilterDerivate",      //
    "FilterDiscarder",     //
    "FilterFrequency",     //
    "FilterPeriodCounter", //
    "FilterRelativeErode", //
    "FilterRemoveStill",   //
    "FilterResample",      //
    "FilterThresholdLeveler",
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
    for (const std::string& name : kMissing)
        EXPECT_EQ(std::count(kCatalogue.begin(), kCatalogue.end(), name), 1) << name;
}

TEST(CatalogueTest, ListsEveryBlockInItsPlaceButTheMissing) {
    std::vector<std::string> wanted;
    for (const std::string& name : kCatalogue)
        if (!kMissing.contains(name)) wanted.push_back(name);
    EXPECT_EQ(registered(), wanted);
}
