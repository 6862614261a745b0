// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/BlockPoleZeroBase.h"
#include "design/PoleZeroDesigner.h"

/// A `BlockPoleZeroBase` whose family of filters has nothing to set but the mapping to the z-plane: matched-z
/// or, with "MatchedZ-Transform" false, bilinear. The blocks differ in their designer alone.
class BlockPrototypeBase : public BlockPoleZeroBase {
public:
    ~BlockPrototypeBase() override;

protected:
    BlockPrototypeBase(const std::string& instanceName, PoleZeroDesigner& ownDesigner);

    void passParameters(std::int32_t designCode) final;

    ValueProperty<bool> matchedZ;
    CommandProperty resetCommand;

private:
    PoleZeroDesigner& poleZeroDesigner;
};
