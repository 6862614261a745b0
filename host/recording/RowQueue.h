// SPDX-License-Identifier: MIT
#pragma once

#include "host/recording/TimedRow.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// Rows that wait, each with the number that it got when it came, from 0 on. Room that was needed once stays,
/// so in the steady state nothing is allocated.
class RowQueue {
public:
    struct Entry {
        TimedRow row;
        bool isBehindGap = false;
    };

    bool isEmpty() const { return first == end; }
    std::size_t getSize() const { return static_cast<std::size_t>(end - first); }
    std::uint64_t getFirst() const { return first; }
    std::uint64_t getEnd() const { return end; } ///< The number that the next one gets.
    const Entry& operator[](std::uint64_t number) const { return entries[placeOf(number)]; }
    const Entry& front() const { return (*this)[first]; }
    const Entry& back() const { return (*this)[end - 1]; }

    void push(const TimedRow& row, bool isBehindGap) {
        if (getSize() == entries.size()) grow();
        Entry& entry = entries[placeOf(end++)];
        entry.row = row; // into room that is there
        entry.isBehindGap = isBehindGap;
    }
    void pop() { ++first; }
    void clear() { first = end; }

private:
    std::size_t placeOf(std::uint64_t number) const {
        return static_cast<std::size_t>(number) & (entries.size() - 1);
    }
    void grow() {
        std::vector<Entry> more(entries.empty() ? 4 : 2 * entries.size());
        for (std::uint64_t number = first; number != end; ++number)
            more[static_cast<std::size_t>(number) & (more.size() - 1)] = std::move(entries[placeOf(number)]);
        entries = std::move(more);
    }

    std::vector<Entry> entries; ///< As many as a power of two, round and round.
    std::uint64_t first = 0;
    std::uint64_t end = 0;
};

} // namespace Quillmere::Host
