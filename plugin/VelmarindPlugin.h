// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Plugin.h"

/// The plug-in: who it is, and the ordered list of its blocks.
class VelmarindPlugin final : public Quillmere::Core::DefaultPlugin {
public:
    VelmarindPlugin();

private:
    template <class T>
    void registerBlock();
};
