// SPDX-License-Identifier: MIT
#include "host/recording/HostCatalogue.h"

#include "host/recording/RecordingSink.h"
#include "host/recording/RecordingSource.h"

namespace Quillmere::Host {

HostCatalogue::HostCatalogue() {
    add(RecordingSource::kTypeName, [](const std::string& name) { return new RecordingSource(name); });
    add(RecordingSink::kTypeName, [](const std::string& name) { return new RecordingSink(name); });
}

} // namespace Quillmere::Host
