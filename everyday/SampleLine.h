// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/TimeStampedData.h"

#include <cstddef>
#include <vector>

namespace Everyday {

/// Samples that wait, the oldest first, in the order of their times. Their storage is kept, so that a
/// steady stream allocates nothing.
class SampleLine {
public:
    /// Appends a copy. What is later than it goes, as behind a clock that was set back; beyond `most`
    /// samples the oldest goes: true then. A time that is no number stands nowhere in line: nothing is
    /// appended.
    bool push(const Quillmere::Core::MatrixXd& value, double time, std::size_t most);
    void pop();
    void clear() { count = 0; }

    std::size_t size() const { return count; }
    bool isEmpty() const { return count == 0; }
    /// Counted from the oldest. Requires: there are more.
    const Quillmere::Core::Sample& at(std::size_t index) const { return slots[slotOf(index)]; }

private:
    std::size_t slotOf(std::size_t index) const {
        const std::size_t slot = first + index;
        return slot < slots.size() ? slot : slot - slots.size();
    }
    void grow();

    std::vector<Quillmere::Core::Sample> slots;
    std::size_t first = 0;
    std::size_t count = 0;
};

} // namespace Everyday
