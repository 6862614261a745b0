// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractOutputPin.h"
#include "framework/core/StampClock.h"
#include "framework/transport/InputPin.h"
#include "framework/transport/TimeStampedData.h"

#include <set>
#include <string>
#include <vector>

namespace Quillmere::Core {

/// Keeps the attached inputs of an output pin that carries `T`, and makes and takes down links.
template <class T>
class QUILLMERE_API OutputPinBase : public AbstractOutputPin {
public:
    OutputPinBase(const std::string& name, PinManager* const manager)
        : Pin(name, manager), AbstractOutputPin(name, manager) {}

    void attach(AbstractInputPin& input, bool silent) override;
    void detach(AbstractInputPin& input, bool synchronousOnly) override;
    std::set<AbstractInputPin*> getAttachedInputs() const override;
    std::vector<ConnectionName> getConnections() const override;
    void refreshInputs() override;

    void detachAll() override;
    void detachSynchronous() override;
    bool isAttached() const override {
        const Synchronizer::SubjectLocker<const Pin> guard(*this);
        return !this->inputs.empty();
    }
    const std::string& getDataTypeName() const override { return dataTypeName<T>(); }

protected:
    /// `attach` after the test of the data types.
    virtual void doAttach(AbstractInputPin& input, bool silent) = 0;

private:
    void rebuildInput(AbstractInputPin& input);
    AbstractInputPin* firstInput() const;
};

/// The sending end of links: owns the one sample that goes out, and hands it to all attached inputs.
template <class T>
class QUILLMERE_API OutputPin final : public OutputPinBase<T> {
public:
    /// `manager` is not owned and may be null.
    OutputPin(const std::string& name, PinManager* const manager)
        : Pin(name, manager), OutputPinBase<T>(name, manager) {}
    ~OutputPin() override { this->detachAll(); }

    /// What goes out: the block writes the payload, `send` the time stamp. Inputs of the same thread read it
    /// in place, so it is written before it is sent, and again only in the next step. [run]
    TimeStampedData<T> data;

    /// Stamps `data` with `timeStamp` (seconds) and hands it to each attached input. [run]
    void send(double timeStamp) {
        data.timeStamp = timeStamp;
        this->sent.add(1);
        for (AbstractInputPin* const input : this->inputs)
            static_cast<InputPinBase<T>*>(input)->accept(data); // `attach` has compared the data types
    }
    /// Stamps `data` with the wall clock: seconds since 15 October 1582, midnight UTC; or with what the host
    /// has lent the thread in its place. [run]
    void send() { send(StampClock::now()); }

protected:
    void doAttach(AbstractInputPin& input, bool silent) override;
};

extern template class QUILLMERE_API OutputPinBase<MatrixXd>;
extern template class QUILLMERE_API OutputPin<MatrixXd>;

} // namespace Quillmere::Core
