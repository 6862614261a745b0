// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"
#include "host/ends/Finite.h"
#include "host/ends/RecordedSource.h"
#include "host/ends/Source.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// The first time that an output of a block sent something which isn't finite.
struct FirstNonFinite {
    const Core::Filter* block = nullptr;
    const Core::AbstractOutputPin* output = nullptr;
    double time = 0.0;        ///< Seconds of stream time.
    std::uint64_t number = 0; ///< In the order in which they were seen, over all layouts.

    // Of a source only, which is looked at to its end:
    std::uint64_t missing = 0; ///< How many such values it has sent that the graph declares to be missing,
    std::uint64_t values = 0;  ///< and how many others.
    double otherTime = 0.0;    ///< The first other's time,
    std::uint64_t row = 0;     ///< its row, 1 being the first that was taken,
    /// and its column; of what is no recording the sample, and the element as `accel[2]`.
    std::string column;
};

/// Looks behind each step at what the block has sent, for the first of it that isn't finite.
///
/// Every output is looked at from the begin: when a result first shows that something is wrong, the step it
/// began with is long over, since recursions keep it. It costs a load and a compare a pin, a cycle or so an
/// element, and nothing more once an output has been found, unless it is a source's. Of several samples that
/// one step sends the last is looked at.
class QUILLMERE_API FiniteWatch {
public:
    /// `numbers` counts over all watches of a run, and isn't owned.
    explicit FiniteWatch(std::atomic<std::uint64_t>& numbers) : counter(numbers) {}

    /// Takes up blocks, in the order in which they are stepped; none is owned. Requires: their gate is held.
    /// [any]
    void watch(const std::vector<Core::Filter*>& blocks);
    /// Requires: the block has just been stepped at that time, which is not-a-number where nobody tells it,
    /// and its gate is held. [run]
    void look(const Core::Filter& block, double time) {
        if (Watched* const entry = find(block)) look(*entry, time);
    }
    /// Requires: no step is under way.
    const std::vector<FirstNonFinite>& getFound() const { return found; }

private:
    struct Output {
        const Core::OutputPin<Core::MatrixXd>* pin;
        std::uint64_t sent; ///< At the last look.
    };
    struct Watched {
        const Core::Filter* block;
        const Source* source;        ///< The block, if it is one.
        std::vector<Output> outputs; ///< Empty when there is nothing to look for any more.
    };

    /// The block behind the one found before, as a rule; null for one that isn't watched.
    Watched* find(const Core::Filter& block) {
        if (next >= watched.size()) next = 0; // a new round
        if (next < watched.size() && watched[next].block == &block) return &watched[next++];
        return search(block);
    }
    Watched* search(const Core::Filter& block);
    /// Small, so that it becomes part of the round's loop; what follows a hit is not.
    void look(Watched& block, double time) {
        for (Output& output : block.outputs) {
            const std::uint64_t sent = output.pin->getSentUnderGate();
            if (sent == output.sent) continue;
            output.sent = sent;
            if (getIsFinite(output.pin->data.value)) continue;
            note(block, *output.pin, time);
            return;
        }
    }
    void note(Watched& block, const Core::OutputPin<Core::MatrixXd>& pin, double time);
    void countValues(const Source& source, const Core::OutputPin<Core::MatrixXd>& pin, double time);
    FirstNonFinite* getFirst(const Core::AbstractOutputPin& output);

    std::atomic<std::uint64_t>& counter;
    std::vector<Watched> watched;
    std::size_t next = 0;
    std::vector<FirstNonFinite> found;
};

/// The first block that made such a value out of finite ones, of all that watches have found: none of those
/// that send to it had been seen to send one before over a link to it. Null when there is none but sources,
/// which have read it, and the timeline, whose sender is told if there is one. Requires: no step is under
/// way.
const FirstNonFinite* makerOf(const std::vector<FirstNonFinite>& found, const Core::Filter* timelineSender);

/// What one block has sent, over all its outputs and wherever it stood: the first of it, and all values.
/// Nothing when all of it was finite.
std::optional<FirstNonFinite> sumOf(const Core::Filter& block, const std::vector<FirstNonFinite>& found);

} // namespace Quillmere::Host
