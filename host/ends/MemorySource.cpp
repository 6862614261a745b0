// SPDX-License-Identifier: MIT
#include "host/ends/MemorySource.h"

#include <algorithm>
#include <utility>

namespace Quillmere::Host {

MemorySource::MemorySource(const std::string& instanceName, std::shared_ptr<const MemoryRecording> data,
                           std::vector<std::string> known)
    : Source(instanceName, true), recording(std::move(data)), knownNames(std::move(known)) {
    if (recording == nullptr) return;
    for (const MemoryRecording::Pin& pin : recording->pins)
        outputs.emplace_back(pin.name, this);
}

MemorySource::~MemorySource() = default;

void MemorySource::configure(const GraphDescription::Block& description, const std::string& folder,
                             Complaints& complaints) {
    Source::configure(description, folder, complaints);
    if (recording != nullptr)
        recording->check(getName(), description.where, complaints);
    else
        complaints.add(Complaint::unknown(
            description.where, "no samples in memory for the MemorySource '" + getName() + "'", getName(),
            knownNames, "the name of what the program has: ", "some that the program gives it"));
}

bool MemorySource::prepare() {
    if (taken == sent && sent < recording->getSize()) {
        watchTime(taken++, watch);
        if (taken == kRowsMeasured) watch.beginPart();
    }
    return taken > sent;
}

void MemorySource::process() {
    if (!isReleased || taken == sent) return;
    isReleased = false;
    const double time = getNextTimeStamp();
    for (std::size_t pin = 0; pin < outputs.size(); ++pin)
        recording->pins[pin].samples.copySample(sent, outputs[pin].data.value);
    ++sent;
    rows.add(1);
    for (Core::OutputPin<Core::MatrixXd>& output : outputs)
        output.send(time);
}

std::optional<RecordedSource::Shape> MemorySource::getSampleShape(const Core::AbstractOutputPin& pin) const {
    for (std::size_t i = 0; i < outputs.size(); ++i)
        if (&outputs[i] == &pin)
            if (const auto shape = recording->pins[i].samples.getShape())
                return Shape{static_cast<std::size_t>(shape->rows), static_cast<std::size_t>(shape->columns)};
    return std::nullopt;
}

RecordedSource::Cell MemorySource::getCell(const Core::AbstractOutputPin& pin, std::size_t element) const {
    return {sent, pin.getName() + "[" + std::to_string(element) + "]"};
}

void MemorySource::watchTime(std::size_t index, TimeStampWatch& times) const {
    if (recording->times) times.take(recording->getTime(index), index + 1, 0);
}

/// Times that are counted have no steps but one.
SourceAccount MemorySource::accountOf(std::size_t count, const TimeStampWatch& times) const {
    SourceAccount account;
    account.rows = count;
    if (count == 0) return account;
    if (recording->times) {
        times.tell(account);
    } else {
        account.lastTime = recording->getTime(count - 1);
        if (count > 1) account.firstStep = account.medianStep = 1.0 / *recording->rate;
    }
    return account;
}

std::optional<SourceAccount> MemorySource::lookAhead(std::uint64_t most) const {
    TimeStampWatch ahead;
    const std::size_t count = std::min<std::size_t>(most, recording->getSize());
    for (std::size_t i = 0; i < count; ++i)
        watchTime(i, ahead);
    return accountOf(count, ahead);
}

std::optional<SampleRate> MemorySource::getSampleRate(const Core::AbstractOutputPin&) const {
    if (recording->rate) return SampleRate{.perSecond = *recording->rate};
    RateMeter meter;
    const std::size_t count = std::min<std::size_t>(kRowsMeasured, recording->getSize());
    for (std::size_t i = 0; i < count; ++i)
        meter.take(recording->getTime(i));
    return meter.measure();
}

} // namespace Quillmere::Host
