// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Quillmere::Core {
class Filter;
}

namespace Quillmere::Host {

/// What a live run's blocks and links have done so far.
struct LiveStatistics {
    struct Block {
        std::string id;
        std::string type;
        std::string layout;
        std::uint64_t steps = 0;
        std::uint64_t samplesIn = 0;  ///< Used up, of all inputs.
        std::uint64_t samplesOut = 0; ///< Sent, by all outputs.
        std::uint64_t lost = 0;       ///< On the way to any of its inputs.
        double seconds = 0.0;         ///< In all its steps, by those whose time was taken.
    };
    /// An input that is linked, or was; the counts are all that it has ever had.
    struct Link {
        std::string from; ///< `block.pin`; empty when the input is linked no more.
        std::string to;
        std::uint64_t received = 0;
        std::uint64_t taken = 0;
        std::uint64_t lost = 0;
        std::uint32_t waiting = 0;
    };
    std::vector<Block> blocks; ///< In the order of the file, then in that in which they were added.
    std::vector<Link> links;

    /// Reads what these blocks have counted. Requires: links and layouts don't change meanwhile. [any]
    static LiveStatistics of(const std::vector<Core::Filter*>& blocks);

    /// Two tables for people, a line each entry.
    QUILLMERE_API std::vector<std::string> getText() const;
    /// The same for programs, in JSON.
    QUILLMERE_API std::string getJson() const;
};

} // namespace Quillmere::Host
