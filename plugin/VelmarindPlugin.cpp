// SPDX-License-Identifier: MIT
#include "plugin/VelmarindPlugin.h"

#include "blocks/FilterAbsoluteErode.h"
#include "blocks/FilterBandPass.h"
#include "blocks/FilterBessel.h"
#include "blocks/FilterBlackmanWindow.h"
#include "blocks/FilterButterworth.h"
#include "blocks/FilterButterworth_v2.h"
#include "blocks/FilterButterworthV2.h"
#include "blocks/FilterChebyshev.h"
#include "blocks/FilterDeadband.h"
#include "blocks/FilterDerivate.h"
#include "blocks/FilterDiscarder.h"
#include "blocks/FilterEdge.h"
#include "blocks/FilterEllipticV1.h"
#include "blocks/FilterFastFourierTransform.h"
#include "blocks/FilterFFT.h"
#include "blocks/FilterFlagStatic.h"
#include "blocks/FilterFrequency.h"
#include "blocks/FilterFunctionGenerator.h"
#include "blocks/FilterGain.h"
#include "blocks/FilterGaussianWhiteNoiseGenerator.h"
#include "blocks/FilterHammingWindow.h"
#include "blocks/FilterHanningWindow.h"
#include "blocks/FilterHysteresis.h"
#include "blocks/FilterIIR.h"
#include "blocks/FilterInvGain.h"
#include "blocks/FilterPeriodCounter.h"
#include "blocks/FilterRelativeErode.h"
#include "blocks/FilterRemoveStill.h"
#include "blocks/FilterResample.h"
#include "blocks/FilterSaturationDetector.h"
#include "blocks/FilterSmartSaturationDetector.h"
#include "blocks/FilterSphericalFiltering.h"
#include "blocks/FilterThreshold.h"
#include "blocks/FilterThresholdLeveler.h"
#include "blocks/FilterWFLC.h"
#include "framework/core/Version.h"
#include "plugin/BuildInfo.h"
#include "plugin/FilterFactory.h"

namespace {
constexpr const char* kName = "Velmarind";
} // namespace

VelmarindPlugin::VelmarindPlugin() : DefaultPlugin(kName, BuildInfo::kVersion) {
    metaData.pluginVersion = BuildInfo::kVersion;
    metaData.hostVersion = Quillmere::Core::kFrameworkVersion;
    metaData.pluginName = kName;
    metaData.description = "This is the plugin that wraps Velmarind elements.";
    metaData.platform = BuildInfo::kPlatform;
    metaData.buildDate = BuildInfo::kBuildDate;

    // The order is interface: the alphabet's, capitals among the small letters, `_` before all of them.
    registerBlock<FilterAbsoluteErode>();
    registerBlock<FilterBandPass>();
    registerBlock<FilterBessel>();
    registerBlock<FilterBlackmanWindow>();
    registerBlock<FilterButterworth>();
    registerBlock<FilterButterworth_v2>();
    registerBlock<FilterButterworthV2>();
    registerBlock<FilterChebyshev>();
    registerBlock<FilterDeadband>();
    registerBlock<FilterDerivate>();
    registerBlock<FilterDiscarder>();
    registerBlock<FilterEdge>();
    registerBlock<FilterEllipticV1>();
    registerBlock<FilterFastFourierTransform>();
    registerBlock<FilterFFT>();
    registerBlock<FilterFlagStatic>();
    registerBlock<FilterFrequency>();
    registerBlock<FilterFunctionGenerator>();
    registerBlock<FilterGain>();
    registerBlock<FilterGaussianWhiteNoiseGenerator>();
    registerBlock<FilterHammingWindow>();
    registerBlock<FilterHanningWindow>();
    registerBlock<FilterHysteresis>();
    registerBlock<FilterIIR>();
    registerBlock<FilterInvGain>();
    registerBlock<FilterPeriodCounter>();
    registerBlock<FilterRelativeErode>();
    registerBlock<FilterRemoveStill>();
    registerBlock<FilterResample>();
    registerBlock<FilterSaturationDetector>();
    registerBlock<FilterSmartSaturationDetector>();
    registerBlock<FilterSphericalFiltering>();
    registerBlock<FilterThreshold>();
    registerBlock<FilterThresholdLeveler>();
    registerBlock<FilterWFLC>();
}

template <class T>
void VelmarindPlugin::registerBlock() {
    addFactory(
        std::make_unique<FilterFactory<T>>(getName(), Quillmere::Core::ComponentVersion(getVersion())));
}
