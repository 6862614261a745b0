// SPDX-License-Identifier: MIT
#include "host/response/FrequencyResponse.h"

#include "framework/Quillmere.h"
#include "host/text/Counted.h"
#include "host/text/NearestName.h"
#include "host/text/CaughtText.h"
#include "host/plugins/PluginLibrary.h"
#include "host/text/Complaint.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>

namespace Quillmere::Host {

namespace {
using Complex = std::complex<double>;
using Core::MatrixXd;

const Complex kUnmeasured{std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN()};

// A filter has settled when two windows agree to nine digits, or both are below what a double keeps of 1.
constexpr double kSettled = 1e-9;
constexpr double kSilence = 1e-13;
constexpr std::size_t kMostWindows = 400;

template <class Pins>
std::string choosePin(const Pins& pins, const std::string& wanted, const std::string& usual,
                      const char* side) {
    std::vector<std::string> names;
    for (const auto* const pin : pins)
        names.push_back(pin->getName());
    const std::string& name = !wanted.empty() ? wanted : names.size() == 1 ? names.front() : usual;
    if (std::find(names.begin(), names.end(), name) == names.end())
        throw ResponseException(
            {{}, "no " + std::string(side) + " '" + name + "'", "one of " + listOfNames(names)});
    return name;
}

/// A block between a sender and a receiver.
class Bench {
public:
    Bench(const BlockMaker& makeBlock, const ResponseSettings& settings) : block(makeBlock()) {
        const std::string input = choosePin(block->getInputPins(), settings.input, "in", "input");
        const std::string output = choosePin(block->getOutputPins(), settings.output, "out", "output");
        sender.data.value = MatrixXd::Zero(1, 1);
        sender.attach(block->getInputPin(input), false);
        block->getOutputPin(output).attach(receiver, false);
    }

    double step(double value) {
        sender.data.value(0) = value;
        sender.send(time);
        time += 1.0;
        try {
            block->process();
        } catch (...) {
            Complaint raised = Complaint::sentence({}, caughtText(), "a step that raises nothing");
            raised.part = "block " + blockText(*block);
            throw ResponseException(raised);
        }
        if (!receiver.hasData()) refuse("nothing");
        const MatrixXd& answer = receiver.take();
        if (answer.size() != 1)
            refuse("a sample of " + counted(static_cast<std::uint64_t>(answer.size()), "element"));
        return answer(0);
    }

    Core::Filter& getBlock() { return *block; }

private:
    [[noreturn]] void refuse(const std::string& answer) const {
        const bool hasChoice = block->getInputPins().size() > 1 || block->getOutputPins().size() > 1;
        throw ResponseException(
            {{},
             "that " + blockText(*block) + " sent " + answer + " for a sample of one element",
             std::string("a block that sends one such sample for each that it gets, as filters do") +
                 (hasChoice ? ", or another --from or --to" : "")});
    }

    std::shared_ptr<Core::Filter> block;
    Core::OutputPin<MatrixXd> sender{"response", nullptr};
    Core::InputPin<MatrixXd> receiver{"response", nullptr};
    double time = 0.0;
};

/// The unit circle at the angles that all frequencies meet: 2 * intervals of them.
std::vector<Complex> circle(std::size_t intervals) {
    std::vector<Complex> points(2 * intervals);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double angle = std::numbers::pi * static_cast<double>(i) / static_cast<double>(intervals);
        points[i] = {std::cos(angle), std::sin(angle)};
    }
    points[intervals] = -1.0; // exact, since a rounded one would tell on a block without a gain there
    return points;
}

Complex measureSine(Bench& bench, const std::vector<Complex>& turns, std::size_t index) {
    const std::size_t window = turns.size();
    // a constant, or one that alternates: no phase to find
    const bool isReal = index == 0 || 2 * index == window;
    const double scale = (isReal ? 1.0 : 2.0) / static_cast<double>(window);
    Complex former = kUnmeasured;
    for (std::size_t count = 0; count < kMostWindows; ++count) {
        Complex sum = 0.0;
        for (std::size_t n = 0; n < window; ++n) {
            const Complex turn = turns[n * index % window];
            sum += bench.step(turn.real()) * std::conj(turn);
        }
        const Complex response = scale * sum;
        if (!std::isfinite(std::abs(response))) return kUnmeasured;
        if (std::abs(response - former) <= kSettled * std::abs(response) + kSilence) return response;
        former = response;
    }
    return kUnmeasured;
}

/// What follows a single 1, until it has died away; empty when it doesn't.
std::vector<double> impulseAnswer(Bench& bench, std::size_t window) {
    for (std::size_t n = 0; n < window; ++n)
        bench.step(0.0);
    std::vector<double> answer;
    double largest = 0.0;
    for (std::size_t count = 0; count < kMostWindows; ++count) {
        double late = 0.0;
        for (std::size_t n = 0; n < window; ++n) {
            answer.push_back(bench.step(answer.empty() ? 1.0 : 0.0));
            if (!std::isfinite(answer.back())) return {};
            late = std::max(late, std::fabs(answer.back()));
        }
        largest = std::max(largest, late);
        if (count > 0 && late <= kSettled * kSettled * largest) return answer;
    }
    return {};
}

Complex transform(const std::vector<double>& answer, const std::vector<Complex>& turns, std::size_t index) {
    if (answer.empty()) return kUnmeasured;
    Complex sum = 0.0;
    for (std::size_t n = 0; n < answer.size(); ++n)
        sum += answer[n] * std::conj(turns[n * index % turns.size()]);
    return sum;
}

/// What a block publishes with its first sample, if it publishes a design.
std::optional<PublishedDesign> takeDesign(Bench& bench) {
    Core::Filter& block = bench.getBlock();
    if (!getPublishesDesign(block)) return std::nullopt;
    Core::InputPin<MatrixXd> gainReceiver(PublishedDesign::kGainPin, nullptr);
    Core::InputPin<MatrixXd> coeffsReceiver(PublishedDesign::kCoefficientsPin, nullptr);
    block.getOutputPin(PublishedDesign::kGainPin).attach(gainReceiver, false);
    block.getOutputPin(PublishedDesign::kCoefficientsPin).attach(coeffsReceiver, false);
    bench.step(0.0);
    if (!gainReceiver.hasData() || !coeffsReceiver.hasData()) return std::nullopt;
    const MatrixXd gain = gainReceiver.take();
    const MatrixXd coeffs = coeffsReceiver.take();
    if (gain.size() != 1 || coeffs.rows() != 2 || coeffs.cols() == 0) return std::nullopt;
    return PublishedDesign(gain(0), coeffs);
}

} // namespace

double getDegrees(std::complex<double> response) {
    return std::arg(response) * 180.0 / std::numbers::pi;
}

std::size_t FrequencyResponse::countUnsettled() const {
    return static_cast<std::size_t>(
        std::count_if(points.begin(), points.end(),
                      [](const ResponsePoint& point) { return !std::isfinite(std::abs(point.sine)); }));
}

FrequencyResponse measureResponse(const BlockMaker& makeBlock, const ResponseSettings& settings) {
    const std::vector<Complex> turns = circle(settings.intervals);
    Bench impulseBench(makeBlock, settings);
    const std::vector<double> answer = impulseAnswer(impulseBench, turns.size());
    Bench designBench(makeBlock, settings);
    const std::optional<PublishedDesign> design = takeDesign(designBench);

    FrequencyResponse response;
    response.hasDesign = design.has_value();
    for (std::size_t index = 0; index <= settings.intervals; ++index) {
        Bench bench(makeBlock, settings);
        response.points.push_back(
            {.frequency = static_cast<double>(index) / static_cast<double>(settings.intervals),
             .sine = measureSine(bench, turns, index),
             .impulse = transform(answer, turns, index),
             .design = response.hasDesign ? design->evaluate(turns[index]) : kUnmeasured});
    }
    return response;
}

bool getPublishesDesign(const Core::Filter& block) {
    const auto& pins = block.getOutputPins();
    const auto has = [&](const char* name) {
        return std::any_of(pins.begin(), pins.end(), [&](const auto* pin) { return pin->getName() == name; });
    };
    return has(PublishedDesign::kGainPin) && has(PublishedDesign::kCoefficientsPin);
}

std::optional<PublishedDesign> measureDesign(const BlockMaker& makeBlock) {
    Bench bench(makeBlock, {});
    return takeDesign(bench);
}

} // namespace Quillmere::Host
