// SPDX-License-Identifier: MIT
#include "host/run/FiniteWatch.h"

#include "framework/Quillmere.h"
#include "host/ends/MainInput.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace Quillmere::Host {

void FiniteWatch::watch(const std::vector<Core::Filter*>& blocks) {
    watched.clear();
    next = 0;
    for (const Core::Filter* const block : blocks) {
        Watched& entry = watched.emplace_back(Watched{block, dynamic_cast<const Source*>(block), {}});
        for (const Core::AbstractOutputPin* const pin : block->getOutputPins()) {
            if (entry.source == nullptr && getFirst(*pin) != nullptr) continue;
            if (const auto* const output = dynamic_cast<const Core::OutputPin<Core::MatrixXd>*>(pin))
                entry.outputs.push_back({output, output->getSentUnderGate()});
        }
    }
}

FiniteWatch::Watched* FiniteWatch::search(const Core::Filter& block) {
    const auto known = std::find_if(watched.begin(), watched.end(),
                                    [&](const Watched& candidate) { return candidate.block == &block; });
    if (known == watched.end()) return nullptr;
    next = static_cast<std::size_t>(known - watched.begin()) + 1;
    return &*known;
}

namespace {
/// That of the sample which the block took last. What it stamps itself may be another clock's.
double timeOfInput(const Core::Filter& block, double timeOfOutput) {
    const auto* const input = dynamic_cast<const Core::InputPin<Core::MatrixXd>*>(mainInputOf(block));
    return input == nullptr ? timeOfOutput : input->getTimeStamp();
}
} // namespace

void FiniteWatch::note(Watched& block, const Core::OutputPin<Core::MatrixXd>& pin, double time) {
    const double timeOfSample = std::isnan(time) ? timeOfInput(*block.block, pin.data.timeStamp) : time;
    if (block.source == nullptr) {
        found.push_back({block.block, &pin, timeOfSample, counter++, 0, 0, 0.0, 0, {}});
        std::erase_if(block.outputs, [&](const Output& output) { return output.pin == &pin; });
    } else {
        countValues(*block.source, pin, timeOfSample);
    }
    look(block, time); // its other outputs
}

namespace {
/// Of what a source sent that reads no recording.
RecordedSource::Cell cellOf(const Core::AbstractOutputPin& output, std::size_t element) {
    return {output.getSentUnderGate(), output.getName() + "[" + std::to_string(element) + "]"};
}
} // namespace

void FiniteWatch::countValues(const Source& source, const Core::OutputPin<Core::MatrixXd>& pin, double time) {
    const auto* const recorded = dynamic_cast<const RecordedSource*>(&source);
    const Core::MatrixXd& sample = pin.data.value;
    FirstNonFinite* first = getFirst(pin);
    for (Eigen::Index i = 0; i < sample.size(); ++i) {
        if (std::isfinite(sample.data()[i])) continue;
        if (first == nullptr) {
            found.push_back({&source, &pin, time, counter++, 0, 0, 0.0, 0, {}});
            first = &found.back();
        }
        const auto element = static_cast<std::size_t>(i);
        if (recorded != nullptr && recorded->getIsMissing(pin, element)) {
            ++first->missing;
            continue;
        }
        if (first->values++ > 0) continue;
        RecordedSource::Cell cell =
            recorded != nullptr ? recorded->getCell(pin, element) : cellOf(pin, element);
        first->otherTime = time;
        first->row = cell.row;
        first->column = std::move(cell.column);
    }
}

FirstNonFinite* FiniteWatch::getFirst(const Core::AbstractOutputPin& output) {
    const auto known = std::find_if(found.begin(), found.end(),
                                    [&](const FirstNonFinite& first) { return first.output == &output; });
    return known == found.end() ? nullptr : &*known;
}

namespace {
/// Whether `sender` had sent one before `block` did. Across layouts the numbers don't tell, since a sample
/// may have been used before the step that sent it was over; times do.
bool getIsBefore(const FirstNonFinite& sender, const FirstNonFinite& block) {
    if (sender.number < block.number) return true;
    return sender.block->getManager() != block.block->getManager() && sender.time <= block.time;
}

bool getIsMade(const FirstNonFinite& first, const std::vector<FirstNonFinite>& found) {
    const auto& inputs = first.block->getInputPins();
    return std::none_of(inputs.begin(), inputs.end(), [&](const Core::AbstractInputPin* input) {
        const Core::AbstractOutputPin* const sender = input->getConnectedOutput();
        return sender != nullptr && std::any_of(found.begin(), found.end(), [&](const FirstNonFinite& other) {
                   return other.output == sender && getIsBefore(other, first);
               });
    });
}
} // namespace

const FirstNonFinite* makerOf(const std::vector<FirstNonFinite>& found, const Core::Filter* timelineSender) {
    const FirstNonFinite* maker = nullptr;
    for (const FirstNonFinite& first : found) {
        const bool isGiven =
            first.block == timelineSender || dynamic_cast<const Source*>(first.block) != nullptr;
        if (isGiven || !getIsMade(first, found)) continue;
        if (maker == nullptr || first.number < maker->number) maker = &first;
    }
    return maker;
}

namespace {
/// What is no surprise comes behind everything else.
bool getIsToldBefore(const FirstNonFinite& one, const FirstNonFinite& other) {
    const bool isExpected = one.values == 0;
    const bool isOtherExpected = other.values == 0;
    return std::tie(isExpected, one.row, one.number) < std::tie(isOtherExpected, other.row, other.number);
}
} // namespace

std::optional<FirstNonFinite> sumOf(const Core::Filter& block, const std::vector<FirstNonFinite>& found) {
    std::optional<FirstNonFinite> sum;
    for (const FirstNonFinite& first : found) {
        if (first.block != &block) continue;
        const std::uint64_t values = first.values + (sum ? sum->values : 0);
        const std::uint64_t missing = first.missing + (sum ? sum->missing : 0);
        if (!sum || getIsToldBefore(first, *sum)) sum = first;
        sum->values = values;
        sum->missing = missing;
    }
    return sum;
}

} // namespace Quillmere::Host
