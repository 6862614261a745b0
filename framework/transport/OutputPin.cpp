// SPDX-License-Identifier: MIT
#include "framework/transport/OutputPin.h"

#include "framework/core/LayoutManager.h"

#include <Poco/Exception.h>

#include <algorithm>
#include <exception>
#include <functional>

namespace Quillmere::Core {

namespace {
/// Runs `action` with the gates of both ends held, those that the ends have at that time.
template <class Action>
void withBothGates(const Pin& output, const Pin& input, Action action) {
    for (;;) {
        Synchronizer* const ofOutput = output.getSynchronizer();
        Synchronizer* const ofInput = input.getSynchronizer();
        const Synchronizer::DisablerLocker guard(ofOutput, ofInput);
        if (output.getSynchronizer() != ofOutput || input.getSynchronizer() != ofInput) continue;
        action();
        return;
    }
}
} // namespace

template <class T>
void OutputPinBase<T>::attach(AbstractInputPin& input, bool silent) {
    if (getDataTypeName() != input.getDataTypeName()) throw Poco::DataFormatException();
    doAttach(input, silent);
}

template <class T>
void OutputPin<T>::doAttach(AbstractInputPin& input, bool silent) {
    withBothGates(*this, input, [&] {
        auto& set = this->inputs;
        const bool isInSet = std::find(set.begin(), set.end(), &input) != set.end();
        if (input.getConnectedOutput() != nullptr || isInSet) throw Poco::ExistsException();

        bool isSynchronous = !silent;
        if (!silent) this->notifyAttached(input, isSynchronous);
        try {
            // Room in the set comes first: once the input knows of the link, nothing may fail.
            if (set.size() == set.capacity()) set.reserve(2 * set.size() + 1);
            input.setConnectedOutput(this, isSynchronous);
        } catch (...) {
            if (isSynchronous) this->notifyDetached(input); // the host has heard of a link that isn't there
            throw;
        }
        set.insert(std::lower_bound(set.begin(), set.end(), &input, std::less<>()), &input);
    });
}

template <class T>
void OutputPinBase<T>::detach(AbstractInputPin& input, bool synchronousOnly) {
    if (synchronousOnly && !input.getIsSynchronous()) return;
    withBothGates(*this, input, [&] {
        auto& set = this->inputs;
        const auto entry = std::find(set.begin(), set.end(), &input);
        if (entry == set.end()) return;
        if (input.getIsSynchronous()) this->notifyDetached(input);
        input.setConnectedOutput(nullptr, true);
        set.erase(entry);
    });
}

template <class T>
std::set<AbstractInputPin*> OutputPinBase<T>::getAttachedInputs() const {
    return {this->inputs.begin(), this->inputs.end()};
}

template <class T>
std::vector<ConnectionName> OutputPinBase<T>::getConnections() const {
    const Synchronizer::SubjectLocker<const Pin> guard(*this);
    std::vector<ConnectionName> connections;
    for (const AbstractInputPin* const input : this->inputs)
        if (const LayoutManager* const layout = layoutOf(*input))
            connections.push_back({layout->getName(), input->getManager()->getName(), input->getName()});
    return connections;
}

template <class T>
void OutputPinBase<T>::refreshInputs() {
    std::exception_ptr firstReason;
    for (std::size_t i = 0; i < this->inputs.size();) {
        AbstractInputPin* const input = this->inputs[i];
        try {
            rebuildInput(*input);
            ++i;
        } catch (...) {
            if (firstReason == nullptr) firstReason = std::current_exception();
            this->detach(*input, false); // the next one stands at `i` now
        }
    }
    if (firstReason != nullptr) std::rethrow_exception(firstReason);
}

template <class T>
void OutputPinBase<T>::rebuildInput(AbstractInputPin& input) {
    if (input.getSynchronizer() == this->getSynchronizer()) return input.rebuildStrategy();
    const Synchronizer::SubjectLocker<const Pin> guard(input);
    input.rebuildStrategy();
}

template <class T>
void OutputPinBase<T>::detachAll() {
    // No copy of the set: destructors come here, where nothing may fail.
    while (AbstractInputPin* const input = firstInput())
        this->detach(*input, false);
}

template <class T>
AbstractInputPin* OutputPinBase<T>::firstInput() const {
    const Synchronizer::SubjectLocker<const Pin> guard(*this);
    return this->inputs.empty() ? nullptr : this->inputs.front();
}

template <class T>
void OutputPinBase<T>::detachSynchronous() {
    const auto copyOfInputs = [this] {
        const Synchronizer::SubjectLocker<const Pin> guard(*this);
        return this->inputs;
    };
    for (AbstractInputPin* const input : copyOfInputs()) // elements leave the set meanwhile
        this->detach(*input, true);
}

template class OutputPinBase<MatrixXd>;
template class OutputPin<MatrixXd>;

} // namespace Quillmere::Core
