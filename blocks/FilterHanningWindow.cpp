// SPDX-License-Identifier: MIT
#include "blocks/FilterHanningWindow.h"

#include <cmath>

FilterHanningWindow::FilterHanningWindow(const std::string& instanceName) : BlockWindowBase(instanceName) {}

FilterHanningWindow::~FilterHanningWindow() = default;

double FilterHanningWindow::windowCoefficient(std::int32_t index, double step) const {
    return 0.5 - 0.5 * std::cos(index * step);
}
