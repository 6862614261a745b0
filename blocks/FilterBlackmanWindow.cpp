// SPDX-License-Identifier: MIT
#include "blocks/FilterBlackmanWindow.h"

#include <cmath>

FilterBlackmanWindow::FilterBlackmanWindow(const std::string& instanceName) : BlockWindowBase(instanceName) {}

FilterBlackmanWindow::~FilterBlackmanWindow() = default;

double FilterBlackmanWindow::windowCoefficient(std::int32_t index, double step) const {
    return 0.42 - 0.5 * std::cos(index * step) + 0.08 * std::cos(2.0 * step * index);
}
