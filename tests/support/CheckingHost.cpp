// SPDX-License-Identifier: MIT
#include "tests/support/CheckingHost.h"

#include <Poco/Exception.h>

namespace Support {

using namespace Quillmere::Core;

CheckingHost::~CheckingHost() {
    stop();
}

void CheckingHost::add(Filter& filter) {
    for (AbstractProperty* const property : filter.getPropertyBag())
        property->addObserver(*this);
    layout.add(filter);
}

void CheckingHost::start() {
    runner = std::thread([this] {
        while (!isStopping) {
            layout.runStep();
            ++passes;
        }
    });
}

void CheckingHost::stop() {
    isStopping = true;
    layout.getSynchronizer().shutDown();
    if (runner.joinable()) runner.join();
}

std::set<std::string> CheckingHost::getComplaints() const {
    const std::lock_guard lock(complaintsMutex);
    return complaints;
}

void CheckingHost::stepBegins() {
    if (stepping.exchange(std::this_thread::get_id()) != std::thread::id())
        complain("a step was entered twice");
    if (foreignHandlers > 0) complain("a step began while another thread held a guard");
}

void CheckingHost::stepEnds() {
    if (foreignHandlers > 0) complain("a step ended while another thread held a guard");
    stepping = std::thread::id();
}

void CheckingHost::valueChanged(const AbstractProperty& property) {
    if (property.getSynchronizer() != &layout.getSynchronizer()) return; // the block is with another host now
    if (stepping == std::this_thread::get_id()) return;                  // the step itself writes
    ++foreignHandlers;
    if (!layout.getSynchronizer().getIsWanted()) complain("a handler ran outside a guard");
    if (stepping.load() != std::thread::id()) complain("a handler ran during a step");
    --foreignHandlers;
}

void CheckingHost::complain(const std::string& text) {
    const std::lock_guard lock(complaintsMutex);
    complaints.insert(text);
}

ProbeBlock::ProbeBlock(const std::string& name, CheckingHost& checkingHost)
    : Filter(name, true), host(checkingHost), in("in", this), control("control", this), out("out", this),
      gain("Gain", &getPropertyBag()), order("Order", &getPropertyBag()), mode("Mode", &getPropertyBag()),
      table("Table", &getPropertyBag()), reset("Reset", &getPropertyBag()) {
    gain.setChangeHandler(this, &ProbeBlock::onChange);
    order.setRange(0, 10, 1);
    order.setChangeHandler(this, &ProbeBlock::onChange);
    mode.addLabel("Plain");
    mode.addLabel("Inverted");
    mode.setChangeHandler(this, &ProbeBlock::onChange);
    table.setValidator(this, &ProbeBlock::checkTable);
    table.setValue(MatrixXd::Ones(1, 2));
    table.setChangeHandler(this, &ProbeBlock::onChange);
    reset.setChangeHandler(this, &ProbeBlock::onReset);
    control.setIsBlocking(false);
    gain.setValue(1.0);
}

void ProbeBlock::generate(long count) {
    const Synchronizer::DisablerLocker guard(getSynchronizer(), nullptr);
    remaining = count;
}

void ProbeBlock::process() {
    host.stepBegins();
    struct End {
        CheckingHost& host;
        ~End() { host.stepEnds(); }
    } const end{host};

    if (control.hasData()) control.take();
    if (remaining > 0) {
        --remaining;
        resizeSample(out.data.value, 1, 1);
        out.data.value(0) = nextNumber;
        out.send(nextNumber);
        nextNumber += 1.0;
        return;
    }
    if (!in.hasData()) return;
    ++changes; // shared with the handlers, without a lock: the gate is the lock
    const MatrixXd& sample = in.take();
    if (sample.size() > 0) {
        isInOrder = isInOrder && sample(0) > lastNumber;
        lastNumber = sample(0);
    }
    static_cast<void>(gain.getValue() * order.getValue() + mode.getValue());
    copySample(out.data.value, sample);
    out.send(in.getTimeStamp());
    ++taken;
}

void ProbeBlock::onReset() {
    ++changes;
    order.setValue(0); // a handler may write another setting
}

void ProbeBlock::checkTable(const MatrixXd& value) {
    if (value.size() == 0) throw Poco::DataFormatException("empty");
}

} // namespace Support
