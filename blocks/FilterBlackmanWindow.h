// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/BlockWindowBase.h"

/// Multiplies a vector by the symmetric Blackman window of its own length N.
///
///     w[i] = 0.42 - 0.5 * cos(i*s) + 0.08 * cos(2*s*i),    s = 2*pi / (N - 1)
///
/// The ends are 0 but for rounding, the middle is 1; the side lobes begin at -58 dB.
/// Shapes, units and what is dropped: `BlockWindowBase`.
class FilterBlackmanWindow final : public BlockWindowBase {
public:
    static constexpr const char* kTypeName = "FilterBlackmanWindow";

    explicit FilterBlackmanWindow(const std::string& instanceName);
    ~FilterBlackmanWindow() override;

    const char* getTypeName() const override { return kTypeName; }

protected:
    double windowCoefficient(std::int32_t index, double step) const override;
};
