// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/BlockWindowBase.h"

/// Multiplies a vector by the symmetric Hamming window of its own length N.
///
///     w[i] = 0.54 - 0.46 * cos(i*s),    s = 2*pi / (N - 1)
///
/// The ends are 0.08, the middle is 1; the side lobes begin at -43 dB.
/// Shapes, units and what is dropped: `BlockWindowBase`.
class FilterHammingWindow final : public BlockWindowBase {
public:
    static constexpr const char* kTypeName = "FilterHammingWindow";

    explicit FilterHammingWindow(const std::string& instanceName);
    ~FilterHammingWindow() override;

    const char* getTypeName() const override { return kTypeName; }

protected:
    double windowCoefficient(std::int32_t index, double step) const override;
};
