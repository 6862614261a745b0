// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quillmere::Host {

/// The links over which a layout sends and that are to lose nothing: whether they have room for another round
/// of it.
///
/// A round needs as much room as the most that it has ever sent over the link: one at first. What a round
/// sends beyond that, or beyond the whole buffer, is lost, and counted where all is. Requires of every
/// operation: the layout's gate is held, or no thread runs.
class QUILLMERE_API SendRoom {
public:
    struct Link {
        Core::InputPin<Core::MatrixXd>* input;
        const Core::AbstractOutputPin* output;
        std::size_t reader;     ///< The number of the layout that reads.
        std::uint32_t most = 1; ///< What a round has sent at the most.
        std::uint32_t sure = 0; ///< Room that there was at least at the last look; there may be more by now.
        std::uint64_t sent = 0; ///< By the output, at the last look.

        /// What a round needs, as far as the buffer can give it.
        std::uint32_t getNeeded() const;
    };

    /// Takes up these links; those that it had before keep what is known of them.
    void watch(std::vector<Link> newLinks);
    bool getIsAny() const { return !links.empty(); }
    /// A link without room for a round; null when all have it.
    const Link* findFull();
    /// Counts what the round that ends has sent.
    void countRound();

private:
    std::vector<Link> links;
};

} // namespace Quillmere::Host
