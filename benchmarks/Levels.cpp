// SPDX-License-Identifier: MIT
#include "benchmarks/support/Pair.h"
#include "blocks/FilterAbsoluteErode.h"
#include "blocks/FilterDeadband.h"
#include "blocks/FilterDerivate.h"
#include "blocks/FilterDiscarder.h"
#include "blocks/FilterEdge.h"
#include "blocks/FilterFrequency.h"
#include "blocks/FilterHysteresis.h"
#include "blocks/FilterPeriodCounter.h"
#include "blocks/FilterRelativeErode.h"
#include "blocks/FilterRemoveStill.h"
#include "blocks/FilterResample.h"
#include "blocks/FilterThreshold.h"
#include "blocks/FilterThresholdLeveler.h"

#include <Poco/Timestamp.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

// The level, event and shaping blocks, from one sample sent to one sample received, against a loop that does
// the same arithmetic on the same storage.
//
// Blocks that look at every element have a goal at 64 by 64. The others look at one element or at none, so at
// any size the bare side is a comparison or two, and the ratio only tells what a link and a few settings
// cost: no goal. What that means where samples of 64 by 64 really arrive is told by the rows "arriving":
// there both sides first write the sample, as its sender has to, and the goal counts again. FilterHysteresis
// takes 1 by 1 samples only, FilterRemoveStill samples of three columns only; theirs stand in the names.

namespace {

constexpr double kGoal = 1.5;
constexpr double kDeadbandGoal = 2.0; // its mask and product are its rule
constexpr double kNoGoal = 0.0;

struct Shape {
    Eigen::Index rows;
    Eigen::Index cols;
};
constexpr Shape kSmall{1, 3};
constexpr Shape kLarge{64, 64};

/// Values between -2 and 2 that a branch predictor can't learn.
MatrixXd input(const Shape& shape) {
    MatrixXd x(shape.rows, shape.cols);
    for (Eigen::Index i = 0; i < x.size(); ++i)
        x(i) = 2.0 * std::sin(1.7 * static_cast<double>(i * i) + 0.3);
    return x;
}

using Setup = std::function<void(Filter&)>;

template <class T>
void set(Filter& block, const char* name, const T& value) {
    dynamic_cast<ValueProperty<T>&>(block.getProperty(name)).setValue(value);
}

template <class Block>
void ours(benchmark::State& state, const Shape& shape, const Setup& setup, const char* pin, bool arrives) {
    const MatrixXd x = input(shape);
    OutputPin<MatrixXd> sender("sender", nullptr);
    Block block("block");
    setup(block);
    sender.attach(block.getInputPin(pin), false); // a plain link, as inside a layout
    std::vector<std::unique_ptr<InputPin<MatrixXd>>> receivers;
    for (auto* const output : block.getOutputPins()) {
        receivers.push_back(std::make_unique<InputPin<MatrixXd>>("receiver", nullptr));
        output->attach(*receivers.back(), false);
    }
    copySample(sender.data.value, x);
    double time = 0.0;
    for (auto _ : state) {
        if (arrives) copySample(sender.data.value, x);
        sender.send(time += 0.01);
        block.process();
        for (const auto& receiver : receivers)
            if (receiver->hasData()) benchmark::DoNotOptimize(receiver->take().data());
        benchmark::ClobberMemory();
    }
}

/// A bare loop that calls `step(x)` for each sample; `step` returns where its result is.
template <class Step>
void bare(benchmark::State& state, const Shape& shape, bool arrives, Step step) {
    const MatrixXd source = input(shape);
    MatrixXd x = source;
    for (auto _ : state) {
        if (arrives) std::copy_n(source.data(), source.size(), x.data());
        benchmark::DoNotOptimize(x.data());
        benchmark::DoNotOptimize(step(x));
        benchmark::ClobberMemory();
    }
}

struct Entry {
    const char* name;
    const char* pin;
    Setup setup = [](Filter&) {};
};

std::string named(const Entry& entry, const Shape& shape, const char* suffix) {
    std::ostringstream text;
    text << entry.name << '/' << shape.rows << 'x' << shape.cols << suffix;
    return text.str();
}

/// Enters a block whose work grows with the sample.
template <class Block, class MakeStep>
void enterShaping(const Entry& entry, const Shape& small, const Shape& large, double goal,
                  MakeStep makeStep) {
    for (const Shape& shape : {small, large}) {
        const bool isLarge = shape.rows == large.rows;
        Bench::enter(
            {.name = named(entry, shape, ""),
             .bare = [=](benchmark::State& state) { bare(state, shape, false, makeStep(shape)); },
             .ours =
                 [=](benchmark::State& state) { ours<Block>(state, shape, entry.setup, entry.pin, false); },
             .goal = isLarge ? goal : kNoGoal});
    }
}

/// Enters a block whose work doesn't.
template <class Block, class MakeStep>
void enterScalar(const Entry& entry, std::vector<Shape> shapes, MakeStep makeStep) {
    for (const Shape& shape : shapes) {
        for (const bool arrives : {false, true}) {
            if (arrives && shape.rows != kLarge.rows) continue;
            Bench::enter(
                {.name = named(entry, shape, arrives ? " arriving" : ""),
                 .bare = [=](benchmark::State& state) { bare(state, shape, arrives, makeStep(shape)); },
                 .ours =
                     [=](benchmark::State& state) {
                         ours<Block>(state, shape, entry.setup, entry.pin, arrives);
                     },
                 .goal = arrives ? kGoal : kNoGoal});
        }
    }
}

void enterDeadband() {
    const Entry entry{.name = "deadband", .pin = "in", .setup = [](Filter& b) { set(b, "Threshold", 1.0); }};
    enterShaping<FilterDeadband>(entry, kSmall, kLarge, kDeadbandGoal, [](const Shape& shape) {
        return [y = MatrixXd(shape.rows, shape.cols)](const MatrixXd& x) mutable {
            const double* const from = x.data();
            double* const to = y.data();
            const Eigen::Index size = x.size();
            for (Eigen::Index i = 0; i < size; ++i)
                to[i] = std::abs(from[i]) >= 1.0 ? 1.0 : 0.0;
            for (Eigen::Index i = 0; i < size; ++i)
                to[i] *= from[i];
            return to;
        };
    });
}

void enterDerivate() {
    const Entry entry{.name = "derivate", .pin = "Input"};
    enterShaping<FilterDerivate>(entry, kSmall, kLarge, kGoal, [](const Shape& shape) {
        return [y = MatrixXd(shape.rows, shape.cols),
                before = MatrixXd(MatrixXd::Zero(shape.rows, shape.cols))](const MatrixXd& x) mutable {
            const double* const from = x.data();
            double* const to = y.data();
            for (Eigen::Index i = 0; i < x.size(); ++i)
                to[i] = from[i] - before.data()[i];
            std::copy_n(from, x.size(), before.data());
            return to;
        };
    });
}

void enterDiscarder() {
    const Entry entry{.name = "discarder", .pin = "in"};
    enterShaping<FilterDiscarder>(entry, kSmall, kLarge, kGoal, [](const Shape& shape) {
        return [y = MatrixXd(shape.rows, shape.cols)](const MatrixXd& x) mutable {
            std::copy_n(x.data(), x.size(), y.data());
            return y.data();
        };
    });
}

void enterResample() {
    const Entry entry{
        .name = "resample to 48 rows", .pin = "in", .setup = [](Filter& b) { set(b, "Matrix size", 48); }};
    enterShaping<FilterResample>(entry, kSmall, kLarge, kGoal, [](const Shape& shape) {
        const Eigen::Index kept = std::min<Eigen::Index>(48, shape.rows);
        return [kept, y = MatrixXd(kept, shape.cols)](const MatrixXd& x) mutable {
            const Eigen::Index cols = x.cols();
            const double ratio =
                kept > 1 ? static_cast<double>(x.rows() - 1) / static_cast<double>(kept - 1) : 0.0;
            for (Eigen::Index i = 0; i < kept; ++i) {
                const auto row = static_cast<Eigen::Index>(std::floor(static_cast<double>(i) * ratio + 0.5));
                std::copy_n(x.data() + row * cols, cols, y.data() + i * cols);
            }
            return y.data();
        };
    });
}

void enterRemoveStill() {
    const Entry entry{.name = "remove still", .pin = "signal", .setup = [](Filter& b) {
                          for (const char* const axis : {"distancex", "distancey", "distancez"})
                              set(b, axis, 1.5);
                      }};
    // As many elements as 64 by 64 has, less one: samples of another width are dropped.
    enterShaping<FilterRemoveStill>(entry, kSmall, {1365, 3}, kGoal, [](const Shape& shape) {
        return [y = MatrixXd(shape.rows, 3)](const MatrixXd& x) mutable {
            const double* kept = x.data();
            double* to = y.data();
            const auto keep = [&to](const double* row) {
                for (int axis = 0; axis < 3; ++axis)
                    *to++ = row[axis];
            };
            keep(kept);
            for (const double* row = kept + 3; row != x.data() + x.size(); row += 3) {
                if (!(std::abs(row[0] - kept[0]) > 1.5 || std::abs(row[1] - kept[1]) > 1.5 ||
                      std::abs(row[2] - kept[2]) > 1.5))
                    continue;
                keep(kept = row);
            }
            return to;
        };
    });
}

/// A copy of the block without `margin` rows and columns at the top and the left, where the sample has so
/// many.
auto makeCrop(const Shape& shape, Eigen::Index margin) {
    const Eigen::Index top = shape.rows > margin ? margin : 0;
    const Eigen::Index left = shape.cols > margin ? margin : 0;
    return [=, y = MatrixXd(shape.rows - top, shape.cols - left)](const MatrixXd& x) mutable {
        for (Eigen::Index r = 0; r < y.rows(); ++r)
            std::copy_n(x.data() + (r + top) * x.cols() + left, y.cols(), y.data() + r * y.cols());
        return y.data();
    };
}

void enterErodes() {
    const Entry absolute{.name = "absolute erode", .pin = "in", .setup = [](Filter& b) {
                             for (const char* const name : {"TopErode", "LeftErode"})
                                 set(b, name, 8);
                             for (const char* const name : {"MinRows", "MinCols"})
                                 set(b, name, 3);
                         }};
    enterShaping<FilterAbsoluteErode>(absolute, kSmall, kLarge, kGoal,
                                      [](const Shape& shape) { return makeCrop(shape, 8); });
    const Entry relative{.name = "relative erode", .pin = "in", .setup = [](Filter& b) {
                             for (const char* const name : {"TopErode (%)", "LeftErode (%)"})
                                 set(b, name, 12.5);
                         }};
    enterShaping<FilterRelativeErode>(relative, kSmall, kLarge, kGoal,
                                      [](const Shape& shape) { return makeCrop(shape, 8); });
}

void enterThreshold() {
    const Entry entry{.name = "threshold", .pin = "Input"};
    enterScalar<FilterThreshold>(entry, {kSmall, kLarge}, [](const Shape&) {
        return [y = 0.0](const MatrixXd& x) mutable { return y = x(0) > 0.0 ? 1.0 : 0.0; };
    });
}

void enterHysteresis() {
    const Entry entry{.name = "hysteresis", .pin = "input"};
    enterScalar<FilterHysteresis>(entry, {{1, 1}}, [](const Shape&) {
        return [level = false](const MatrixXd& x) mutable {
            level = level ? !(x(0) < -5.0) : x(0) > 5.0;
            return level ? 1.0 : 0.0;
        };
    });
}

void enterEdge() {
    const Entry entry{.name = "edge", .pin = "input"};
    enterScalar<FilterEdge>(entry, {kSmall, kLarge}, [](const Shape&) {
        return [armed = false, stamp = 0.0](const MatrixXd& x) mutable {
            const bool isAbove = x(0) >= 1.0;
            const bool isEdge = armed && isAbove;
            armed = x(0) < 1.0 || (armed && !isAbove);
            stamp = static_cast<double>(Poco::Timestamp().utcTime()) * 1e-7; // the block's rule, too
            benchmark::DoNotOptimize(stamp);
            return isEdge ? 1.0 : 0.0;
        };
    });
}

void enterLeveler() {
    const Entry entry{.name = "threshold leveler", .pin = "In", .setup = [](Filter& b) {
                          set(b, "Thresholds", MatrixXd{{-2.0, 0.0}, {0.0, 2.0}});
                          set(b, "Levels", MatrixXd{{1.0}, {2.0}});
                      }};
    enterScalar<FilterThresholdLeveler>(entry, {kSmall, kLarge}, [](const Shape&) {
        return [intervals = MatrixXd{{-2.0, 0.0}, {0.0, 2.0}},
                levels = MatrixXd{{1.0}, {2.0}}](const MatrixXd& x) {
            const MatrixXd table = intervals; // copied at each step, as the block's are
            const MatrixXd values = levels;
            benchmark::DoNotOptimize(table.data());
            benchmark::DoNotOptimize(values.data());
            for (Eigen::Index i = 0; i < table.rows(); ++i)
                if (x(0) >= table(i, 0) && x(0) <= table(i, 1)) return values(i, 0);
            return -1.0;
        };
    });
}

void enterCounters() {
    const Entry counter{.name = "period counter", .pin = "in", .setup = [](Filter& b) {
                            set(b, "Nb Period", 200);
                            dynamic_cast<CommandProperty&>(b.getProperty("Reset")).fire();
                        }};
    enterScalar<FilterPeriodCounter>(counter, {kSmall, kLarge}, [](const Shape&) {
        return [armed = false, count = -1](const MatrixXd& x) mutable {
            const int side = 0.0 > x(0) ? -1 : 0.0 < x(0) ? 1 : 0;
            if (armed && side == 1) ++count;
            armed = side == -1 || (armed && side != 1);
            return count < 200 ? 1.0 : 0.0;
        };
    });
    const Entry frequency{.name = "frequency", .pin = "in"};
    enterScalar<FilterFrequency>(frequency, {kSmall, kLarge}, [](const Shape&) {
        return [count = 0, start = 0.0, time = 0.0, rate = 0.0](const MatrixXd&) mutable {
            time += 0.01;
            if (count++ < 100) return rate;
            rate = 100 / (time - start);
            start = time;
            count = 1;
            return rate;
        };
    });
}

const Bench::Suite suite([] {
    enterDeadband();
    enterDerivate();
    enterDiscarder();
    enterResample();
    enterRemoveStill();
    enterErodes();
    enterThreshold();
    enterHysteresis();
    enterEdge();
    enterLeveler();
    enterCounters();
});

} // namespace
