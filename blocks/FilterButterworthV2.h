// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/BlockPrototypeBase.h"
#include "design/ButterworthDesigner.h"

/// Filters every element of a sample with a Butterworth filter of order 1 to 10 in four band shapes. Pins,
/// settings, state and what is sent when: `BlockPoleZeroBase`. The design: `PoleZeroDesigner`,
/// `ButterworthDesigner`. Kept as is: it looks back one sample only, whatever the order
/// (`DirectFormDesigner`).
class FilterButterworthV2 final : public BlockPrototypeBase {
public:
    static constexpr const char* kTypeName = "FilterButterworthV2";

    explicit FilterButterworthV2(const std::string& instanceName);
    ~FilterButterworthV2() override;

    const char* getTypeName() const override { return kTypeName; }

private:
    ButterworthDesigner designer{Design::kLowPass, 1, true, 0.05, 0.1};
};
