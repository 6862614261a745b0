// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/plugins/BlockCatalogue.h"

namespace Quillmere::Host {

/// A catalogue that has the blocks for recordings and results, `RecordingSource` and `RecordingSink`; those
/// of plug-ins are loaded.
class QUILLMERE_API HostCatalogue : public BlockCatalogue {
public:
    HostCatalogue();
};

} // namespace Quillmere::Host
