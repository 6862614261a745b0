// SPDX-License-Identifier: MIT
#include "blocks/FilterButterworthV2.h"

FilterButterworthV2::FilterButterworthV2(const std::string& instanceName)
    : BlockPrototypeBase(instanceName, designer) {}

FilterButterworthV2::~FilterButterworthV2() = default;
