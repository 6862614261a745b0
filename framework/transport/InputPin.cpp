// SPDX-License-Identifier: MIT
#include "framework/transport/InputPin.h"

#include "framework/core/LayoutManager.h"

#include <utility>

namespace Quillmere::Core {

template <class T>
void InputPin<T>::clear() {
    pendingSample = nullptr;
    lastTimeStamp = 0.0;
    strategy->clear();
}

template <class T>
void InputPin<T>::setConnectedOutput(AbstractOutputPin* output, bool synchronous) {
    const Kind kind = chooseKind(output, synchronous);
    std::unique_ptr<Strategy> next;
    // Whatever may fail comes before anything changes.
    if (output != nullptr)
        next = makeStrategy(kind);
    else
        next = unlinked != nullptr ? std::move(unlinked) : std::move(strategy);
    this->countFrom(output);
    this->connectedOutput = output;
    this->isSynchronous = synchronous;
    if (output != nullptr && unlinked == nullptr) unlinked = std::move(strategy);
    install(std::move(next), kind);
}

template <class T>
void InputPin<T>::rebuildStrategy() {
    const AbstractOutputPin* const output = this->connectedOutput;
    const Kind kind = chooseKind(output, this->isSynchronous);
    std::unique_ptr<Strategy> next = makeStrategy(kind);
    if (output != nullptr) unlinked = makeStrategy(Kind::Simple); // of the capacity and the order of now
    install(std::move(next), kind);
}

/// Puts a strategy in the place of the one that goes, and what waited there with it. Raises nothing.
template <class T>
void InputPin<T>::install(std::unique_ptr<Strategy> next, Kind kind) {
    using Plain = SimpleBufferStrategy<TimeStampedData<T>, SingleValuePtrBuffer>;
    pendingSample = nullptr; // it may lie in the strategy that goes now
    strategy = std::move(next);
    auto* const plain = dynamic_cast<Plain*>(strategy.get());
    this->plainLink = plain != nullptr ? &plain->getBuffer() : nullptr;
    this->isWaking = kind == Kind::Synchronized;
    clear();
}

template <class T>
typename InputPin<T>::Kind InputPin<T>::chooseKind(const AbstractOutputPin* output, bool synchronous) const {
    if (output == nullptr) return Kind::Simple;
    const LayoutManager* const out = layoutOf(*output);
    const LayoutManager* const in = layoutOf(*this);
    if (in == out) {
        if (in != nullptr || synchronous) return Kind::Simple;
        return Kind::ThreadSafe;
    }
    if (in != nullptr && this->isBlocking && this->getSynchronizer() != nullptr) return Kind::Synchronized;
    return Kind::ThreadSafe;
}

template <class T>
std::unique_ptr<AbstractBufferStrategy<TimeStampedData<T>>> InputPin<T>::makeStrategy(Kind kind) const {
    using S = TimeStampedData<T>;
    const std::uint32_t capacity = this->bufferCapacity;
    const bool isSingle = capacity == 1;
    switch (kind) {
    case Kind::Simple:
        if (isSingle) return std::make_unique<SimpleBufferStrategy<S, SingleValuePtrBuffer>>(capacity);
        if (this->isLifo) return std::make_unique<SimpleBufferStrategy<S, LifoBuffer>>(capacity);
        return std::make_unique<SimpleBufferStrategy<S, FifoBuffer>>(capacity);
    case Kind::ThreadSafe:
        if (isSingle) return std::make_unique<ThreadSafeBufferStrategy<S, SingleValueBuffer>>(capacity);
        if (this->isLifo) return std::make_unique<ThreadSafeBufferStrategy<S, LifoBuffer>>(capacity);
        return std::make_unique<ThreadSafeBufferStrategy<S, FifoBuffer>>(capacity);
    case Kind::Synchronized:
        break;
    }
    Synchronizer* const gate = this->getSynchronizer();
    if (isSingle) return std::make_unique<SynchronizedBufferStrategy<S, SingleValueBuffer>>(capacity, gate);
    if (this->isLifo) return std::make_unique<SynchronizedBufferStrategy<S, LifoBuffer>>(capacity, gate);
    return std::make_unique<SynchronizedBufferStrategy<S, FifoBuffer>>(capacity, gate);
}

template class InputPinBase<MatrixXd>;
template class InputPin<MatrixXd>;

} // namespace Quillmere::Core
