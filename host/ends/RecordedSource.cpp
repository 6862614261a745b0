// SPDX-License-Identifier: MIT
#include "host/ends/RecordedSource.h"

namespace Quillmere::Host {

std::optional<SourceAccount> RecordedSource::lookAhead(std::uint64_t) const {
    return std::nullopt;
}

} // namespace Quillmere::Host
