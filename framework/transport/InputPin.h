// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractInputPin.h"
#include "framework/core/AbstractOutputPin.h"
#include "framework/core/Synchronizer.h"
#include "framework/transport/BufferStrategies.h"
#include "framework/transport/TimeStampedData.h"

#include <atomic>
#include <cassert>
#include <memory>
#include <string>
#include <typeinfo>

namespace Quillmere::Core {

/// The one text by which both ends of a link know what it carries. [any]
template <class T>
const std::string& dataTypeName() {
    static const std::string name = typeid(T).name();
    return name;
}

/// What an output pin needs of an input pin that carries `T`.
template <class T>
class QUILLMERE_API InputPinBase : public AbstractInputPin {
public:
    InputPinBase(const std::string& name, PinManager* const manager)
        : Pin(name, manager), AbstractInputPin(name, manager) {}
    ~InputPinBase() override { InputPinBase::detachAll(); }

    AbstractOutputPin* getConnectedOutput() const final { return connectedOutput; }
    /// The sender's call: only the buffer strategy is touched. [run of the sender]
    virtual void receive(const TimeStampedData<T>& sample) = 0;
    /// What `receive` does, without a virtual call where the link is the plain one. [run of the sender]
    void accept(const TimeStampedData<T>& sample) {
        if (plainLink == nullptr) return receive(sample);
        plainLink->write(sample);
    }

    void detachAll() override {
        if (AbstractOutputPin* const output = connectedOutput) output->detach(*this, false);
    }
    void detachSynchronous() override {
        if (AbstractOutputPin* const output = connectedOutput) output->detach(*this, true);
    }
    bool isAttached() const override { return connectedOutput != nullptr; }
    const std::string& getDataTypeName() const override { return dataTypeName<T>(); }

protected:
    /// Not owned; changed with the gates of both ends held, and read without a guard by who detaches.
    std::atomic<AbstractOutputPin*> connectedOutput{nullptr};
    /// The buffer inside the strategy of a plain link; null for every other kind. Most links are plain, and
    /// their samples small, so a virtual call to either side would show.
    SingleValuePtrBuffer<TimeStampedData<T>>* plainLink = nullptr;
};

/// The receiving end of a link. Owns the buffer strategy, chooses its kind by how the link crosses threads,
/// and hands out samples in three steps: `hasData`, `take`, `getTimeStamp`.
template <class T>
class QUILLMERE_API InputPin final : public InputPinBase<T> {
public:
    /// `manager` is not owned and may be null.
    InputPin(const std::string& name, PinManager* const manager)
        : Pin(name, manager), InputPinBase<T>(name, manager) {
        this->countWaiting = [](const AbstractInputPin& pin) {
            return static_cast<const InputPin&>(pin).getWaitingCount();
        };
        rebuildStrategy();
    }
    ~InputPin() override { InputPinBase<T>::detachAll(); }

    /// Whether a sample waits; fetches one if none does. A blocking pin whose sender is in another layout
    /// sleeps here until a sample comes or somebody wants the gate. When false, the step ends: nothing is
    /// sent, no state changes. [run]
    bool hasData() {
        if (pendingSample != nullptr) return true;
        if (this->plainLink != nullptr) return this->plainLink->read(pendingSample);
        return strategy->read(pendingSample);
    }
    /// Uses the waiting sample up. What is returned is read in place and stays valid until the next
    /// `hasData`. Requires: `hasData()` has just been true. [run]
    const T& take() {
        assert(pendingSample != nullptr);
        const TimeStampedData<T>* const sample = pendingSample;
        lastTimeStamp = sample->timeStamp;
        pendingSample = nullptr;
        this->taken.add(1);
        return sample->value;
    }
    /// Seconds: of the sample that waits, else of the one taken last; 0.0 after `clear`. [run]
    double getTimeStamp() const {
        return pendingSample != nullptr ? pendingSample->timeStamp : lastTimeStamp;
    }

    void clear() override;
    void rebuildStrategy() override;
    void setConnectedOutput(AbstractOutputPin* output, bool synchronous) override;
    void receive(const TimeStampedData<T>& sample) override { strategy->write(sample); }

    /// How many samples the link could take by now without losing one. Takes no gate, so that a sender may
    /// ask within its pass. Requires: the gate of one of its ends is held. [any, guarded]
    std::uint32_t getRoom() const {
        const std::uint32_t waiting = strategy->size(); // without what was fetched and not yet taken
        return waiting < this->bufferCapacity ? this->bufferCapacity - waiting : 0;
    }

    /// How many samples wait in the link, the one that `hasData` has fetched not among them. [any, guarded]
    std::uint32_t getQueueLength() const {
        const Synchronizer::SubjectLocker<const Pin> guard(*this);
        return strategy->size();
    }

private:
    enum class Kind { Simple, ThreadSafe, Synchronized };
    using Strategy = AbstractBufferStrategy<TimeStampedData<T>>;

    Kind chooseKind(const AbstractOutputPin* output, bool synchronous) const;
    std::unique_ptr<Strategy> makeStrategy(Kind kind) const;
    void install(std::unique_ptr<Strategy> next, Kind kind);
    std::uint32_t getWaitingCount() const { return strategy->size() + (pendingSample != nullptr ? 1 : 0); }

    std::unique_ptr<Strategy> strategy;
    /// The strategy of the pin without its link, kept beside while there is one: links are taken down in
    /// destructors, too, where nothing may fail. Null while unconnected.
    std::unique_ptr<Strategy> unlinked;
    /// fetched and not yet taken; the strategy's or the sender's
    TimeStampedData<T>* pendingSample = nullptr;
    double lastTimeStamp = 0.0; ///< seconds; of the sample taken last
};

extern template class QUILLMERE_API InputPinBase<MatrixXd>;
extern template class QUILLMERE_API InputPin<MatrixXd>;

} // namespace Quillmere::Core
