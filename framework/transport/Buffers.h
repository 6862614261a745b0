// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/TimeStampedData.h"

#include <algorithm>
#include <cstdint>
#include <vector>

/// What a buffer strategy keeps its samples in. No buffer locks; `S` is the sample type.
namespace Quillmere::Core {

/// One sample, by address: the sender's own, read as it is at that time.
template <class S>
class SingleValuePtrBuffer {
public:
    explicit SingleValuePtrBuffer(std::uint32_t) {}

    void write(const S& sample) {
        // The sample stays the sender's; readers leave it as it is.
        value = const_cast<S*>(&sample);
        empty = false;
    }
    bool read(S*& out) {
        if (empty) return false;
        empty = true;
        out = value;
        return true;
    }
    void clear() { empty = true; }
    std::uint32_t capacity() const { return 1; }
    bool isEmpty() const { return empty; }
    std::uint32_t size() const { return empty ? 0 : 1; }

private:
    bool empty = true;
    S* value = nullptr; ///< not owned
};

/// One sample, copied; the newest wins. What is handed out stays valid until the next `read`, whatever is
/// written.
template <class S>
class SingleValueBuffer {
public:
    explicit SingleValueBuffer(std::uint32_t) {}

    void write(const S& sample) {
        copySample(values[0], sample);
        empty = false;
    }
    bool read(S*& out) {
        if (empty) return false;
        swapSamples(values[0], values[1]);
        empty = true;
        out = &values[1];
        return true;
    }
    void clear() { empty = true; }
    std::uint32_t capacity() const { return 1; }
    bool isEmpty() const { return empty; }
    std::uint32_t size() const { return empty ? 0 : 1; }

private:
    bool empty = true;
    S values[2]; ///< [0] is written, [1] is handed out
};

/// A double-ended queue of samples that drops the oldest when full; with a capacity of 0 it is never full. It
/// is a ring whose slots keep their matrix storage and that grows only up to the largest number of samples
/// that have waited, so a steady stream allocates nothing.
template <class S>
class SampleQueue {
public:
    explicit SampleQueue(std::uint32_t maximumSize) : limit(maximumSize) {}

    std::uint32_t capacity() const { return limit; }
    std::uint32_t size() const { return static_cast<std::uint32_t>(count); }
    bool isEmpty() const { return count == 0; }
    void clear() { count = 0; }

    /// Appends a copy at the back, dropping the front of a full queue. Without memory the queue stays as it
    /// was.
    void push(const S& sample) {
        if (count == limit && count > 0) { // the ring is full, and its oldest slot becomes the newest
            copySample(slots[first], sample);
            first = slotAt(1);
            return;
        }
        if (count == slots.size()) grow();
        copySample(slots[slotAt(count)], sample);
        ++count;
    }
    /// Swaps the front, the oldest, into `out` and removes it.
    void swapOutFront(S& out) {
        swapSamples(out, slots[first]);
        dropFront();
    }
    /// Swaps the back, the newest, into `out` and removes it.
    void swapOutBack(S& out) {
        swapSamples(out, slots[slotAt(count - 1)]);
        --count;
    }

private:
    std::size_t slotAt(std::size_t index) const {
        const std::size_t slot = first + index;
        return slot < slots.size() ? slot : slot - slots.size();
    }
    void dropFront() {
        first = slotAt(1);
        --count;
    }
    void grow() {
        std::rotate(slots.begin(), slots.begin() + static_cast<std::ptrdiff_t>(first), slots.end());
        first = 0;
        const std::size_t wanted = std::max<std::size_t>(4, 2 * slots.size());
        slots.resize(limit == 0 ? wanted : std::min<std::size_t>(limit, wanted));
    }

    std::uint32_t limit; ///< 0 for none
    std::vector<S> slots;
    std::size_t first = 0;
    std::size_t count = 0;
};

/// Up to `capacity` samples, the newest handed out first.
template <class S>
class LifoBuffer {
public:
    explicit LifoBuffer(std::uint32_t capacity) : queue(capacity) {}

    void write(const S& sample) { queue.push(sample); }
    bool read(S*& out) {
        if (queue.isEmpty()) return false;
        queue.swapOutBack(current);
        out = &current;
        return true;
    }
    void clear() { queue.clear(); }
    std::uint32_t capacity() const { return queue.capacity(); }
    bool isEmpty() const { return queue.isEmpty(); }
    std::uint32_t size() const { return queue.size(); }

private:
    SampleQueue<S> queue;
    S current; ///< what was handed out last
};

/// Up to `capacity` samples, the oldest handed out first.
template <class S>
class FifoBuffer {
public:
    explicit FifoBuffer(std::uint32_t capacity) : queue(capacity) {}

    void write(const S& sample) { queue.push(sample); }
    bool read(S*& out) {
        if (queue.isEmpty()) return false;
        queue.swapOutFront(current);
        out = &current;
        return true;
    }
    void clear() { queue.clear(); }
    std::uint32_t capacity() const { return queue.capacity(); }
    bool isEmpty() const { return queue.isEmpty(); }
    std::uint32_t size() const { return queue.size(); }

private:
    SampleQueue<S> queue;
    S current; ///< what was handed out last
};

} // namespace Quillmere::Core
