// SPDX-License-Identifier: MIT
#include "framework/transport/InputPin.h"

#include "framework/core/LayoutManager.h"

namespace Quillmere::Core {

template <class T>
void InputPin<T>::clear() {
    pendingSample = nullptr;
    lastTimeStamp = 0.0;
    strategy->clear();
}

template <class T>
void InputPin<T>::setConnectedOutput(AbstractOutputPin* output, bool synchronous) {
    this->countFrom(output);
    this->connectedOutput = output;
    this->isSynchronous = synchronous;
    rebuildStrategy();
}

template <class T>
void InputPin<T>::rebuildStrategy() {
    pendingSample = nullptr; // it may lie in the strategy that goes now
    this->plainLink = nullptr;
    strategy = nullptr;
    const Kind kind = chooseKind();
    strategy = makeStrategy(kind);
    this->isWaking = kind == Kind::Synchronized;
    clear();
}

template <class T>
typename InputPin<T>::Kind InputPin<T>::chooseKind() const {
    if (this->connectedOutput == nullptr) return Kind::Simple;
    const LayoutManager* const out = layoutOf(*this->connectedOutput);
    const LayoutManager* const in = layoutOf(*this);
    if (in == out) {
        if (in != nullptr || this->isSynchronous) return Kind::Simple;
        return Kind::ThreadSafe;
    }
    if (in != nullptr && this->isBlocking && this->getSynchronizer() != nullptr) return Kind::Synchronized;
    return Kind::ThreadSafe;
}

template <class T>
std::unique_ptr<AbstractBufferStrategy<TimeStampedData<T>>> InputPin<T>::makeStrategy(Kind kind) {
    using S = TimeStampedData<T>;
    const std::uint32_t capacity = this->bufferCapacity;
    const bool isSingle = capacity == 1;
    switch (kind) {
    case Kind::Simple:
        if (isSingle) {
            auto plain = std::make_unique<SimpleBufferStrategy<S, SingleValuePtrBuffer>>(capacity);
            this->plainLink = &plain->getBuffer();
            return plain;
        }
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
