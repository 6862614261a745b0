// SPDX-License-Identifier: MIT
#include "framework/transport/OutputPin.h"

#include "framework/core/LayoutManager.h"

#include <Poco/Exception.h>

#include <algorithm>
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
        // The data types agree, so this is what it is.
        auto* const typedInput = static_cast<InputPinBase<T>*>(&input);
        auto& set = this->inputs;
        const bool isInSet = std::find(set.begin(), set.end(), typedInput) != set.end();
        if (input.getConnectedOutput() != nullptr || isInSet) throw Poco::ExistsException();

        bool isSynchronous = !silent;
        if (!silent) this->notifyAttached(input, isSynchronous);
        set.insert(std::lower_bound(set.begin(), set.end(), typedInput, std::less<>()), typedInput);
        try {
            input.setConnectedOutput(this, isSynchronous);
        } catch (...) {
            std::erase(set, typedInput);
            throw;
        }
    });
}

template <class T>
void OutputPinBase<T>::detach(AbstractInputPin& input, bool synchronousOnly) {
    if (synchronousOnly && !input.getIsSynchronous()) return;
    withBothGates(*this, input, [&] {
        const auto entry = std::find(inputs.begin(), inputs.end(), &input);
        if (entry == inputs.end()) return;
        if (input.getIsSynchronous()) this->notifyDetached(input);
        input.setConnectedOutput(nullptr, true);
        inputs.erase(entry);
    });
}

template <class T>
std::set<AbstractInputPin*> OutputPinBase<T>::getAttachedInputs() const {
    return {inputs.begin(), inputs.end()};
}

template <class T>
std::vector<ConnectionName> OutputPinBase<T>::getConnections() const {
    const Synchronizer::SubjectLocker<const Pin> guard(*this);
    std::vector<ConnectionName> connections;
    for (const AbstractInputPin* const input : inputs)
        if (const LayoutManager* const layout = layoutOf(*input))
            connections.push_back({layout->getName(), input->getManager()->getName(), input->getName()});
    return connections;
}

template <class T>
void OutputPinBase<T>::refreshInputs() {
    for (AbstractInputPin* const input : inputs) {
        if (input->getSynchronizer() == this->getSynchronizer()) {
            input->rebuildStrategy();
            continue;
        }
        const Synchronizer::SubjectLocker<const Pin> guard(*input);
        input->rebuildStrategy();
    }
}

template <class T>
void OutputPinBase<T>::detachAll() {
    for (;;) {
        const std::vector<InputPinBase<T>*> attached = copyOfInputs();
        if (attached.empty()) return;
        this->detach(*attached.front(), false);
    }
}

template <class T>
void OutputPinBase<T>::detachSynchronous() {
    for (InputPinBase<T>* const input : copyOfInputs()) // elements leave the set meanwhile
        this->detach(*input, true);
}

template <class T>
std::vector<InputPinBase<T>*> OutputPinBase<T>::copyOfInputs() const {
    const Synchronizer::SubjectLocker<const Pin> guard(*this);
    return inputs;
}

template class OutputPinBase<MatrixXd>;
template class OutputPin<MatrixXd>;

} // namespace Quillmere::Core
