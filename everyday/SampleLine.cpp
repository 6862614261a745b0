// SPDX-License-Identifier: MIT
#include "everyday/SampleLine.h"

#include <algorithm>

namespace Everyday {

bool SampleLine::push(const Quillmere::Core::MatrixXd& value, double time, std::size_t most) {
    if (!(time == time)) return false;
    while (count > 0 && at(count - 1).timeStamp > time)
        --count;
    const bool isFull = count >= most;
    if (isFull) pop();
    if (count == slots.size()) grow();
    Quillmere::Core::Sample& slot = slots[slotOf(count)];
    Quillmere::Core::copySample(slot.value, value);
    slot.timeStamp = time;
    ++count;
    return isFull;
}

void SampleLine::pop() {
    first = slotOf(1);
    --count;
}

void SampleLine::grow() {
    std::rotate(slots.begin(), slots.begin() + static_cast<std::ptrdiff_t>(first), slots.end());
    first = 0;
    slots.resize(std::max<std::size_t>(4, 2 * slots.size()));
}

} // namespace Everyday
