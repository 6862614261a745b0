// SPDX-License-Identifier: MIT
// Blocks under random settings, shapes and values: bytes choose a block and what happens to it, one thing
// after the other.
#include "framework/Quillmere.h"
#include "fuzz/Kit.h"
#include "host/graph/PropertyWriter.h"
#include "host/graph/BlockDescription.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <Poco/Exception.h>

#include <array>
#include <cmath>
#include <deque>
#include <limits>
#include <new>

using namespace Quillmere;

namespace {
using Core::MatrixXd;

constexpr int kMostEvents = 200;
constexpr int kWidest = 9; ///< Rows and columns of a sample.
/// Steps with samples of one shape, as recordings bring them: only these fill windows and find peaks.
constexpr int kLongestStretch = 64;

double numberFrom(FuzzedDataProvider& bytes) {
    using Limits = std::numeric_limits<double>;
    static constexpr std::array<double, 16> kOdd{0.0,
                                                 -0.0,
                                                 1.0,
                                                 -1.0,
                                                 0.5,
                                                 1e-9,
                                                 1e9,
                                                 Limits::quiet_NaN(),
                                                 2.0,
                                                 10.0,
                                                 1e300,
                                                 -1e300,
                                                 Limits::infinity(),
                                                 -Limits::infinity(),
                                                 Limits::denorm_min(),
                                                 Limits::max()};
    if (bytes.ConsumeBool()) return kOdd[bytes.ConsumeIntegralInRange<std::size_t>(0, kOdd.size() - 1)];
    if (bytes.ConsumeBool()) return static_cast<double>(bytes.ConsumeIntegral<std::int16_t>()) / 256.0;
    return bytes.ConsumeFloatingPoint<double>();
}

MatrixXd matrixFrom(FuzzedDataProvider& bytes) {
    MatrixXd matrix;
    Core::resizeSample(matrix, bytes.ConsumeIntegralInRange<int>(0, kWidest),
                       bytes.ConsumeIntegralInRange<int>(0, kWidest));
    const double first = numberFrom(bytes);
    const bool isConstant = bytes.ConsumeBool();
    for (Eigen::Index i = 0; i < matrix.size(); ++i)
        matrix(i) = isConstant ? first : numberFrom(bytes);
    return matrix;
}

std::string textFrom(FuzzedDataProvider& bytes) {
    switch (bytes.ConsumeIntegralInRange<int>(0, 2)) {
    case 0:
        return std::to_string(bytes.ConsumeIntegral<std::int8_t>());
    case 1: {
        std::ostringstream out;
        out << numberFrom(bytes);
        return out.str();
    }
    default: {
        const MatrixXd matrix = matrixFrom(bytes);
        std::ostringstream out;
        out << matrix.rows() << ' ' << matrix.cols();
        for (Eigen::Index i = 0; i < matrix.size(); ++i)
            out << ' ' << matrix(i);
        return out.str();
    }
    }
}

/// A course that goes up and down, of a step and a length that bytes choose.
class Course {
public:
    explicit Course(FuzzedDataProvider& bytes)
        : height(numberFrom(bytes)), period(bytes.ConsumeIntegralInRange<int>(1, kLongestStretch)) {}
    double at(int step) const { return height * (step % period); }

private:
    double height;
    int period;
};

/// A block with something to send to each of its inputs, and somebody who takes what comes.
class Bench {
public:
    explicit Bench(Core::Filter& tested) : block(tested) {
        for (Core::AbstractInputPin* const input : block.getInputPins()) {
            input->setBufferCapacity(2);
            senders.emplace_back(input->getName(), nullptr).attach(*input, false);
        }
        for (Core::AbstractOutputPin* const output : block.getOutputPins()) {
            Core::InputPin<MatrixXd>& receiver = receivers.emplace_back(output->getName(), nullptr);
            receiver.setBufferCapacity(kMostTaken);
            output->attach(receiver, false);
        }
    }

    void doNext(FuzzedDataProvider& bytes) {
        const int event = bytes.ConsumeIntegralInRange<int>(0, 7);
        if (event == 0)
            write(bytes);
        else if (event < 3 && !senders.empty())
            send(bytes);
        else if (event == 3 && !senders.empty())
            sendStretch(bytes);
        else
            step();
    }

private:
    void write(FuzzedDataProvider& bytes) {
        const std::vector<Core::AbstractProperty*> properties(block.getPropertyBag().begin(),
                                                              block.getPropertyBag().end());
        if (properties.empty()) return;
        Core::AbstractProperty& property =
            *properties[bytes.ConsumeIntegralInRange<std::size_t>(0, properties.size() - 1)];
        if (auto* const command = dynamic_cast<Core::CommandProperty*>(&property))
            command->fire();
        else
            property.setValueFromString(textFrom(bytes));
    }

    void send(FuzzedDataProvider& bytes) {
        Core::OutputPin<MatrixXd>& sender =
            senders[bytes.ConsumeIntegralInRange<std::size_t>(0, senders.size() - 1)];
        Core::copySample(sender.data.value, matrixFrom(bytes));
        time += std::abs(numberFrom(bytes));
        sender.send(bytes.ConsumeBool() ? time : numberFrom(bytes));
    }

    /// To all inputs, at times that a step lies between.
    void sendStretch(FuzzedDataProvider& bytes) {
        const int steps = bytes.ConsumeIntegralInRange<int>(1, kLongestStretch);
        const auto rows = bytes.ConsumeIntegralInRange<Eigen::Index>(1, kWidest);
        const auto columns = bytes.ConsumeIntegralInRange<Eigen::Index>(1, kWidest);
        const double pause = std::abs(numberFrom(bytes));
        const Course course(bytes);
        for (int i = 0; i < steps; ++i) {
            time += pause;
            for (Core::OutputPin<MatrixXd>& sender : senders) {
                Core::resizeSample(sender.data.value, rows, columns);
                sender.data.value.setConstant(course.at(i));
                sender.data.value(0) = course.at(i + 1);
                sender.send(time);
            }
            step();
        }
    }

    void step() {
        block.process();
        for (Core::InputPin<MatrixXd>& receiver : receivers)
            while (receiver.hasData())
                taken += receiver.take().sum();
    }

    static constexpr std::uint32_t kMostTaken = 16; ///< Of a step; what is beyond is lost.

    Core::Filter& block;
    std::deque<Core::OutputPin<MatrixXd>> senders; ///< Pins can't move.
    std::deque<Core::InputPin<MatrixXd>> receivers;
    double taken = 0.0; ///< So that what comes is read.
    double time = 0.0;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider bytes(data, size);
    const Host::BlockPtr block = Fuzz::blockOf(bytes.ConsumeIntegral<std::uint8_t>());
    Bench bench(*block);
    for (int event = 0; event < kMostEvents && bytes.remaining_bytes() > 0; ++event) {
        try {
            bench.doNext(bytes);
        } catch (const Poco::Exception&) { // a setting that is refused
        } catch (const std::bad_alloc&) {  // a matrix too large
        }
    }
    return 0;
}
