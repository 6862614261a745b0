// SPDX-License-Identifier: MIT
#include "blocks/FilterHammingWindow.h"

#include <cmath>

FilterHammingWindow::FilterHammingWindow(const std::string& instanceName) : BlockWindowBase(instanceName) {}

FilterHammingWindow::~FilterHammingWindow() = default;

double FilterHammingWindow::windowCoefficient(std::int32_t index, double step) const {
    return 0.54 - 0.46 * std::cos(index * step);
}
