// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/Synchronizer.h"
#include "framework/transport/Buffers.h"

#include <cstdint>

#include <Poco/Event.h>
#include <Poco/Mutex.h>
#include <Poco/ScopedUnlock.h>
#include <Poco/Thread.h>

namespace Quillmere::Core {

/// What stands between an output pin and an input pin, and belongs to the input pin: how many samples wait,
/// which one is handed out, and whether the reader sleeps when none waits. A writer never sleeps and never
/// fails; the oldest samples are lost when the reader lags.
template <class S>
class QUILLMERE_API AbstractBufferStrategy {
public:
    virtual ~AbstractBufferStrategy() = default;
    /// The sender's side. [run of the sender]
    virtual void write(const S& sample) = 0;
    /// Sets `out` to a sample that stays valid until the next `read` and returns true; false, with `out`
    /// untouched, when there is none. Requires: the reader doesn't write to it. [run of the reader]
    virtual bool read(S*& out) = 0;
    /// Forgets what waits. [any, guarded]
    virtual void clear() = 0;
    virtual std::uint32_t capacity() = 0; ///< [run of either end; any, guarded]
    virtual bool isEmpty() = 0;           ///< [run of either end; any, guarded]
    virtual std::uint32_t size() = 0;     ///< [run of either end; any, guarded]

protected:
    AbstractBufferStrategy() = default;
    AbstractBufferStrategy(const AbstractBufferStrategy&) = delete;
    AbstractBufferStrategy& operator=(const AbstractBufferStrategy&) = delete;
};

/// No lock: sender and reader share a thread.
template <class S, template <class> class Buffer>
class QUILLMERE_API SimpleBufferStrategy final : public AbstractBufferStrategy<S> {
public:
    explicit SimpleBufferStrategy(std::uint32_t bufferCapacity) : buffer(bufferCapacity) {}

    void write(const S& sample) override { buffer.write(sample); }
    bool read(S*& out) override { return buffer.read(out); }
    void clear() override { buffer.clear(); }
    std::uint32_t capacity() override { return buffer.capacity(); }
    bool isEmpty() override { return buffer.isEmpty(); }
    std::uint32_t size() override { return buffer.size(); }

    /// What the operations above work on, for pins that know the kind of their link. [run]
    Buffer<S>& getBuffer() { return buffer; }

private:
    Buffer<S> buffer;
};

/// A lock around each operation; the reader never sleeps.
template <class S, template <class> class Buffer>
class QUILLMERE_API ThreadSafeBufferStrategy final : public AbstractBufferStrategy<S> {
public:
    explicit ThreadSafeBufferStrategy(std::uint32_t bufferCapacity) : buffer(bufferCapacity) {}

    void write(const S& sample) override {
        const Poco::FastMutex::ScopedLock lock(mutex);
        buffer.write(sample);
    }
    bool read(S*& out) override {
        const Poco::FastMutex::ScopedLock lock(mutex);
        return buffer.read(out);
    }
    void clear() override {
        const Poco::FastMutex::ScopedLock lock(mutex);
        buffer.clear();
    }
    std::uint32_t capacity() override { return buffer.capacity(); }
    bool isEmpty() override {
        const Poco::FastMutex::ScopedLock lock(mutex);
        return buffer.isEmpty();
    }
    std::uint32_t size() override {
        const Poco::FastMutex::ScopedLock lock(mutex);
        return buffer.size();
    }

private:
    Buffer<S> buffer;
    Poco::FastMutex mutex;
};

/// A lock around each operation, and a reader that sleeps until there is something, or until it is released.
template <class S, template <class> class Buffer>
class QUILLMERE_API SynchronizedBufferStrategy final : public AbstractBufferStrategy<S> {
public:
    /// `readersSynchronizer` is not owned and must outlive the strategy.
    SynchronizedBufferStrategy(std::uint32_t bufferCapacity, Synchronizer* readersSynchronizer)
        : buffer(bufferCapacity), synchronizer(readersSynchronizer) {}

    /// Wakes a reader that is asleep, and waits until it has left `read`.
    ~SynchronizedBufferStrategy() override {
        const Poco::FastMutex::ScopedLock lock(mutex);
        synchronizer->signal(event);
        while (readers > 0) {
            const Poco::ScopedUnlock<Poco::FastMutex> unlocked(mutex);
            Poco::Thread::yield();
        }
    }

    void write(const S& sample) override {
        const Poco::FastMutex::ScopedLock lock(mutex);
        buffer.write(sample);
        synchronizer->signal(event);
    }
    /// May return false without having slept out: the reader's step then ends, and somebody gets the gate.
    bool read(S*& out) override {
        const Poco::FastMutex::ScopedLock lock(mutex);
        if (buffer.isEmpty()) {
            ++readers;
            synchronizer->wait(mutex, event);
            --readers;
        }
        return buffer.read(out);
    }
    void clear() override {
        const Poco::FastMutex::ScopedLock lock(mutex);
        buffer.clear();
    }
    std::uint32_t capacity() override {
        const Poco::FastMutex::ScopedLock lock(mutex);
        return buffer.capacity();
    }
    bool isEmpty() override {
        const Poco::FastMutex::ScopedLock lock(mutex);
        return buffer.isEmpty();
    }
    std::uint32_t size() override {
        const Poco::FastMutex::ScopedLock lock(mutex);
        return buffer.size();
    }

private:
    Buffer<S> buffer;
    Poco::FastMutex mutex;
    Synchronizer* const synchronizer;
    Poco::Event event{Poco::Event::EVENT_AUTORESET};
    unsigned readers = 0; ///< readers inside `wait`; under `mutex`
};

extern template class QUILLMERE_API AbstractBufferStrategy<Sample>;
extern template class QUILLMERE_API SimpleBufferStrategy<Sample, SingleValuePtrBuffer>;
extern template class QUILLMERE_API SimpleBufferStrategy<Sample, LifoBuffer>;
extern template class QUILLMERE_API SimpleBufferStrategy<Sample, FifoBuffer>;
extern template class QUILLMERE_API ThreadSafeBufferStrategy<Sample, SingleValueBuffer>;
extern template class QUILLMERE_API ThreadSafeBufferStrategy<Sample, LifoBuffer>;
extern template class QUILLMERE_API ThreadSafeBufferStrategy<Sample, FifoBuffer>;
extern template class QUILLMERE_API SynchronizedBufferStrategy<Sample, SingleValueBuffer>;
extern template class QUILLMERE_API SynchronizedBufferStrategy<Sample, LifoBuffer>;
extern template class QUILLMERE_API SynchronizedBufferStrategy<Sample, FifoBuffer>;

} // namespace Quillmere::Core
