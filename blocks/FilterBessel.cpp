// SPDX-License-Identifier: MIT
#include "blocks/FilterBessel.h"

FilterBessel::FilterBessel(const std::string& instanceName) : BlockPrototypeBase(instanceName, designer) {}

FilterBessel::~FilterBessel() = default;
