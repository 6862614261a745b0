// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/BlockWindowBase.h"

/// Multiplies a vector by the symmetric Hanning window of its own length N.
///
///     w[i] = 0.5 - 0.5 * cos(i*s),    s = 2*pi / (N - 1)
///
/// The ends are 0, the middle is 1; the side lobes begin at -31 dB and fall fast.
/// Shapes, units and what is dropped: `BlockWindowBase`.
class FilterHanningWindow final : public BlockWindowBase {
public:
    static constexpr const char* kTypeName = "FilterHanningWindow";

    explicit FilterHanningWindow(const std::string& instanceName);
    ~FilterHanningWindow() override;

    const char* getTypeName() const override { return kTypeName; }

protected:
    double windowCoefficient(std::int32_t index, double step) const override;
};
