// SPDX-License-Identifier: MIT
#include "benchmarks/support/Pair.h"
#include "everyday/Affine.h"
#include "everyday/Columns.h"
#include "everyday/Durations.h"
#include "everyday/Join.h"
#include "everyday/Logic.h"
#include "everyday/MovingStatistics.h"
#include "everyday/Norm.h"
#include "everyday/Peaks.h"
#include "everyday/Resample.h"
#include "everyday/Unframe.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

// The everyday blocks, from samples sent to samples received, against loops that do the same arithmetic on
// the same storage, at 3 and at 64 columns.
//
// What works on each row by itself gets frames of 64 rows, so that the arithmetic is what is measured; a
// link and a few settings cost some nanoseconds a sample beside it, which the rows "of one row" show. What
// remembers gets single rows. "Rows at once" are those of a recording, one row a step, that somebody has as
// an array.

namespace {

constexpr double kGoal = 1.3;
constexpr double kNoGoal = 0.0;
constexpr Eigen::Index kColumns[] = {3, 64};
constexpr Eigen::Index kRows = 64;
constexpr Eigen::Index kRecording = 1000;
constexpr int kWindow = 100;

MatrixXd input(Eigen::Index rows, Eigen::Index columns) {
    MatrixXd x(rows, columns);
    for (Eigen::Index i = 0; i < x.size(); ++i)
        x(i) = 2.0 * std::sin(1.7 * static_cast<double>(i * i) + 0.3);
    return x;
}

/// Another one for each step, so that nothing can be learnt.
double valueOf(int step) {
    static const std::vector<double> values = [] {
        std::vector<double> drawn(4096);
        for (std::size_t i = 0; i < drawn.size(); ++i)
            drawn[i] = 2.0 * std::sin(1.7 * static_cast<double>(i * i) + 0.3);
        return drawn;
    }();
    return values[static_cast<std::size_t>(step) % values.size()];
}

using Setup = std::function<void(Filter&)>;

template <class T>
void set(Filter& block, const char* name, const T& value) {
    dynamic_cast<ValueProperty<T>&>(block.getProperty(name)).setValue(value);
}

/// Sends to all of `pins` in each step, and takes whatever comes.
template <class Block>
void ours(benchmark::State& state, const MatrixXd& x, const std::vector<std::string>& pins,
          const Setup& setup) {
    Block block("block");
    setup(block);
    std::deque<OutputPin<MatrixXd>> senders;
    for (const std::string& pin : pins) {
        senders.emplace_back("sender", nullptr).attach(block.getInputPin(pin), false);
        copySample(senders.back().data.value, x);
    }
    InputPin<MatrixXd> receiver("receiver", nullptr);
    block.getOutputPin("out").attach(receiver, false);
    int step = 0;
    for (auto _ : state) {
        for (OutputPin<MatrixXd>& sender : senders) {
            sender.data.value(0) = valueOf(step);
            sender.send(0.01 * step);
        }
        ++step;
        block.process();
        if (receiver.hasData()) benchmark::DoNotOptimize(receiver.take().data());
        benchmark::ClobberMemory();
    }
}

struct Entry {
    std::string name;
    std::vector<std::string> pins = {"in"};
    Setup setup = [](Filter&) {};
};

/// The rows of `x` as a recording in memory, behind a first one that goes as a sample.
template <class Block>
void oursAtOnce(benchmark::State& state, MatrixXd x, const Entry& entry) {
    Block block("block");
    entry.setup(block);
    OutputPin<MatrixXd> sender("sender", nullptr);
    sender.attach(block.getInputPin(entry.pins.front()), false);
    copySample(sender.data.value, x.row(0));
    sender.send(0.0);
    block.process();
    const Eigen::Index width = block.getRowWidth(x.cols());
    if (width == RowStepper::kOneByOne) return state.SkipWithError("the block takes no rows");
    MatrixXd results(x.rows(), width);
    int step = 0;
    for (auto _ : state) {
        x(0) = valueOf(step++);
        for (Eigen::Index row = 0; row < x.rows();) {
            const Eigen::Index count =
                std::min(x.rows() - row, static_cast<Eigen::Index>(RowStepper::kMostRows));
            benchmark::DoNotOptimize(block.getRowWidth(x.cols()));
            block.stepRows(x.data() + row * x.cols(), results.data() + row * width,
                           static_cast<std::size_t>(count), x.cols());
            row += count;
        }
        benchmark::DoNotOptimize(results.data());
        benchmark::ClobberMemory();
    }
}

/// Calls `work(x, step)` for each sample; it returns where its result is.
template <class Work>
void bare(benchmark::State& state, MatrixXd x, Work work) {
    int step = 0;
    for (auto _ : state) {
        x(0) = valueOf(step);
        benchmark::DoNotOptimize(x.data());
        benchmark::DoNotOptimize(work(x, step));
        ++step;
        benchmark::ClobberMemory();
    }
}

template <class Block, class MakeWork>
void enterOne(const Entry& entry, const std::string& what, const MatrixXd& x, double goal,
              MakeWork makeWork) {
    Bench::enter({.name = entry.name + ", " + what,
                  .bare = [=](benchmark::State& state) { bare(state, x, makeWork(x)); },
                  .ours = [=](benchmark::State& state) { ours<Block>(state, x, entry.pins, entry.setup); },
                  .goal = goal});
}

/// As many rows of a recording as several calls take.
template <class Block, class MakeWork>
void enterAtOnce(const Entry& entry, Eigen::Index columns, MakeWork makeWork) {
    const MatrixXd x = input(kRecording, columns);
    Bench::enter({.name = entry.name + ", " + std::to_string(kRecording) + " rows of " +
                          std::to_string(columns) + " columns at once",
                  .bare = [=](benchmark::State& state) { bare(state, x, makeWork(x)); },
                  .ours = [=](benchmark::State& state) { oursAtOnce<Block>(state, x, entry); },
                  .goal = kGoal});
}

/// Of a block that works on each row by itself.
template <class Block, class MakeWork>
void enterRows(const Entry& entry, MakeWork makeWork) {
    for (const Eigen::Index columns : kColumns) {
        const std::string by = std::to_string(columns) + " columns";
        enterOne<Block>(entry, "64 rows of " + by, input(kRows, columns), kGoal, makeWork);
        enterOne<Block>(entry, "one row of " + by, input(1, columns), kNoGoal, makeWork);
        if constexpr (std::is_base_of_v<RowStepper, Block>) enterAtOnce<Block>(entry, columns, makeWork);
    }
}

/// Of a block that takes single rows.
template <class Block, class MakeWork>
void enterSteps(const Entry& entry, double goal, MakeWork makeWork) {
    for (const Eigen::Index columns : kColumns)
        enterOne<Block>(entry, std::to_string(columns) + " columns", input(1, columns), goal, makeWork);
}

void enterNorm() {
    enterRows<Norm>({.name = "norm"}, [](const MatrixXd& shape) {
        return [y = std::vector<double>(static_cast<std::size_t>(shape.rows()))](const MatrixXd& x,
                                                                                 int) mutable {
            const double* from = x.data();
            for (double& length : y) {
                double sum = 0.0;
                for (Eigen::Index i = 0; i < x.cols(); ++i)
                    sum += from[i] * from[i];
                length = std::sqrt(sum);
                from += x.cols();
            }
            return y.data();
        };
    });
}

void enterAffine() {
    for (const Eigen::Index columns : kColumns) {
        const MatrixXd factors = input(columns, columns);
        const MatrixXd offset = input(1, columns);
        const Entry entry{.name = "affine", .setup = [=](Filter& block) {
                              set(block, "Matrix", factors);
                              set(block, "Offset", offset);
                          }};
        const MatrixXd transposed = factors.transpose();
        const auto makeWork = [=](const MatrixXd& shape) {
            return [transposed, offset, y = shape](const MatrixXd& x, int) mutable {
                const Eigen::Index size = x.cols();
                for (Eigen::Index r = 0; r < x.rows(); ++r) {
                    const double* const row = x.data() + r * size;
                    double* const to = y.data() + r * size;
                    for (Eigen::Index i = 0; i < size; ++i)
                        to[i] = transposed.data()[i] * row[0];
                    for (Eigen::Index j = 1; j < size; ++j)
                        for (Eigen::Index i = 0; i < size; ++i)
                            to[i] += transposed.data()[j * size + i] * row[j];
                    for (Eigen::Index i = 0; i < size; ++i)
                        to[i] += offset.data()[i];
                }
                return y.data();
            };
        };
        const std::string by = std::to_string(columns) + " columns";
        enterOne<Affine>(entry, "64 rows of " + by, input(kRows, columns), kGoal, makeWork);
        enterOne<Affine>(entry, "one row of " + by, input(1, columns), kNoGoal, makeWork);
        enterAtOnce<Affine>(entry, columns, makeWork);
    }
}

void enterColumns() {
    for (const Eigen::Index columns : kColumns) {
        MatrixXd pick(1, columns);
        std::vector<Eigen::Index> picked;
        for (Eigen::Index i = 0; i < columns; ++i) {
            picked.push_back(columns - 1 - i);
            pick(i) = static_cast<double>(picked.back());
        }
        const Entry entry{.name = "columns", .setup = [=](Filter& block) { set(block, "Pick", pick); }};
        enterOne<Columns>(entry, "64 rows of " + std::to_string(columns) + " columns", input(kRows, columns),
                          kGoal, [=](const MatrixXd& shape) {
                              return [picked, y = shape](const MatrixXd& x, int) mutable {
                                  const double* from = x.data();
                                  double* to = y.data();
                                  for (Eigen::Index r = 0; r < x.rows(); ++r, from += x.cols())
                                      for (const Eigen::Index column : picked)
                                          *to++ = from[column];
                                  return y.data();
                              };
                          });
    }
}

void enterLogic() {
    enterRows<Logic>(
        {.name = "logic, not", .pins = {"a"}, .setup = [](Filter& block) { set(block, "Operation", 2U); }},
        [](const MatrixXd& shape) {
            return [y = shape](const MatrixXd& x, int) mutable {
                const double* const from = x.data();
                double* const to = y.data();
                for (Eigen::Index i = 0; i < x.size(); ++i)
                    to[i] = from[i] > 0.0 ? 0.0 : 1.0;
                return to;
            };
        });
}

/// The mean of a window by two halves, of which the older is summed backwards once a window.
struct BareMean {
    explicit BareMean(const MatrixXd& shape)
        : width(shape.cols()), places(static_cast<std::size_t>(width * kWindow)),
          now(static_cast<std::size_t>(width)), y(static_cast<std::size_t>(width)) {}

    const double* operator()(const MatrixXd& x, int step) {
        const int position = step % kWindow;
        if (position == 0) sumBackwards();
        const double* const from = x.data();
        double* const place = places.data() + position * width;
        for (Eigen::Index i = 0; i < width; ++i) {
            place[i] = from[i];
            now[static_cast<std::size_t>(i)] =
                position == 0 ? from[i] : now[static_cast<std::size_t>(i)] + from[i];
        }
        const double* const older = position + 1 < kWindow ? place + width : nullptr;
        for (Eigen::Index i = 0; i < width; ++i)
            y[static_cast<std::size_t>(i)] =
                ((older == nullptr ? 0.0 : older[i]) + now[static_cast<std::size_t>(i)]) / kWindow;
        return y.data();
    }
    void sumBackwards() {
        for (Eigen::Index i = (kWindow - 1) * width - 1; i >= width; --i)
            places[static_cast<std::size_t>(i)] += places[static_cast<std::size_t>(i + width)];
    }

    Eigen::Index width;
    std::vector<double> places;
    std::vector<double> now;
    std::vector<double> y;
};

/// The median of a window whose values are kept in order.
struct BareMedian {
    explicit BareMedian(const MatrixXd& shape)
        : width(static_cast<std::size_t>(shape.cols())), places(width * kWindow), sorted(width * kWindow),
          y(width) {}

    const double* operator()(const MatrixXd& x, int step) {
        const auto position = static_cast<std::size_t>(step % kWindow);
        for (std::size_t i = 0; i < width; ++i) {
            double& place = places[i * kWindow + position];
            double* const first = sorted.data() + i * kWindow;
            double* const last = first + kWindow;
            double* at = std::lower_bound(first, last, place);
            std::copy(at + 1, last, at);
            place = x.data()[i];
            at = std::lower_bound(first, last - 1, place);
            std::copy_backward(at, last - 1, last);
            *at = place;
            y[i] = 0.5 * (first[kWindow / 2 - 1] + first[kWindow / 2]);
        }
        return y.data();
    }

    std::size_t width;
    std::vector<double> places;
    std::vector<double> sorted;
    std::vector<double> y;
};

void enterMoving() {
    const auto makeRows = [](const MatrixXd& shape) {
        return [mean = BareMean(shape), row = MatrixXd(1, shape.cols()), y = shape,
                step = 0](const MatrixXd& x, int) mutable {
            for (Eigen::Index r = 0; r < x.rows(); ++r, ++step) {
                std::copy_n(x.data() + r * x.cols(), x.cols(), row.data());
                std::copy_n(mean(row, step), x.cols(), y.data() + r * x.cols());
            }
            return y.data();
        };
    };
    for (const Eigen::Index columns : kColumns)
        enterAtOnce<MovingStatistics>({.name = "moving mean of 100"}, columns, makeRows);
    enterSteps<MovingStatistics>({.name = "moving mean of 100"}, kGoal,
                                 [](const MatrixXd& shape) { return BareMean(shape); });
    enterSteps<MovingStatistics>(
        {.name = "moving median of 100", .setup = [](Filter& block) { set(block, "Kind", 5U); }}, kGoal,
        [](const MatrixXd& shape) { return BareMedian(shape); });
}

// Of rows so short what is measured is sending them, some nanoseconds each: no goal.
void enterUnframe() {
    const Entry entry{.name = "unframe", .setup = [](Filter& block) { set(block, "Rate", 100.0); }};
    for (const Eigen::Index columns : kColumns)
        enterOne<Unframe>(entry, "64 rows of " + std::to_string(columns) + " columns", input(kRows, columns),
                          kNoGoal, [](const MatrixXd& shape) {
                              return [y = MatrixXd(1, shape.cols())](const MatrixXd& x, int) mutable {
                                  for (Eigen::Index r = 0; r < x.rows(); ++r) {
                                      std::copy_n(x.data() + r * x.cols(), x.cols(), y.data());
                                      benchmark::DoNotOptimize(y.data());
                                      benchmark::ClobberMemory();
                                  }
                                  return y.data();
                              };
                          });
}

void enterJoin() {
    enterRows<Join>({.name = "join of two", .pins = {"in1", "in2"}}, [](const MatrixXd& shape) {
        // Both are kept until it is known what belongs together.
        return [one = shape, other = shape, y = MatrixXd(shape.rows(), 2 * shape.cols())](const MatrixXd& x,
                                                                                          int) mutable {
            std::copy_n(x.data(), x.size(), one.data());
            benchmark::DoNotOptimize(one.data());
            std::copy_n(x.data(), x.size(), other.data());
            benchmark::DoNotOptimize(other.data());
            double* to = y.data();
            for (Eigen::Index r = 0; r < x.rows(); ++r) {
                to = std::copy_n(one.data() + r * x.cols(), x.cols(), to);
                to = std::copy_n(other.data() + r * x.cols(), x.cols(), to);
            }
            return y.data();
        };
    });
}

/// From 100 to 25 samples a second: at each step a weight for each sample of 20 steps on either side, by its
/// distance, between two points of a table, and by the time that it stands for.
struct BareDown {
    explicit BareDown(const MatrixXd& shape)
        : width(shape.cols()), times(kLine), line(static_cast<std::size_t>(width * kLine)), y(1, width) {
        for (int i = 0; i < kTable + 2; ++i)
            table.push_back(1.0 / (1.0 + i));
    }
    const double* operator()(const MatrixXd& x, int step) {
        if (end == kLine) {
            std::copy_n(times.data() + kLine - kTaps, kTaps, times.data());
            std::copy_n(line.data() + (kLine - kTaps) * width, kTaps * width, line.data());
            end = kTaps;
        }
        times[static_cast<std::size_t>(end)] = 0.01 * step;
        std::copy_n(x.data(), width, line.data() + end * width);
        ++end;
        if (step % 4 == 0 && end >= kTaps) reckon(0.01 * (step - kTaps / 2));
        return y.data();
    }
    void reckon(double time) {
        double sum = 0.0;
        y.setZero();
        for (auto i = static_cast<std::size_t>(end - kTaps + 1); i + 1 < static_cast<std::size_t>(end); ++i) {
            const double at = std::abs(times[i] - time) * 25.0 * 512.0;
            const auto point = std::min<std::size_t>(static_cast<std::size_t>(at), kTable);
            const double part = at - static_cast<double>(point);
            const double height = table[point] + (table[point + 1] - table[point]) * part;
            const double weight = height * (times[i + 1] - times[i - 1]);
            sum += weight;
            const double* const sample = line.data() + static_cast<Eigen::Index>(i) * width;
            for (Eigen::Index column = 0; column < width; ++column)
                y.data()[column] += weight * sample[column];
        }
        for (Eigen::Index column = 0; column < width; ++column)
            y.data()[column] /= sum;
    }

    static constexpr int kTaps = 160; // 20 steps of 4 samples on either side
    static constexpr int kLine = 2048;
    static constexpr int kTable = 20 * 512;
    Eigen::Index width;
    std::vector<double> times;
    std::vector<double> line;
    std::vector<double> table;
    MatrixXd y;
    int end = 0;
};

void enterResample() {
    enterSteps<Resample>(
        {.name = "resample 100 to 25 Hz", .setup = [](Filter& block) { set(block, "Rate", 25.0); }}, kGoal,
        [](const MatrixXd& shape) { return BareDown(shape); });
}

void enterEvents() {
    enterOne<Durations>({.name = "durations"}, "1 column", input(1, 1), kNoGoal, [](const MatrixXd&) {
        return [begin = 0.0, end = 0.0, isOn = false](const MatrixXd& x, int step) mutable {
            if (x(0) > 0.0 && !isOn) begin = 0.01 * step;
            if (!(x(0) > 0.0) && isOn) end = 0.01 * step;
            isOn = x(0) > 0.0;
            return end - begin;
        };
    });
    enterOne<Peaks>({.name = "peaks"}, "1 column", input(1, 1), kNoGoal, [](const MatrixXd&) {
        return [top = 0.0, valley = 0.0, at = 0.0, isRising = false](const MatrixXd& x, int step) mutable {
            if (isRising && x(0) > top)
                top = x(0), at = 0.01 * step;
            else if (isRising && x(0) < top)
                isRising = false, valley = x(0);
            else if (!isRising && x(0) < valley)
                valley = x(0);
            else if (!isRising && x(0) > valley)
                isRising = true, top = x(0);
            return at;
        };
    });
}

const Bench::Suite suite([] {
    enterNorm();
    enterAffine();
    enterColumns();
    enterLogic();
    enterMoving();
    enterUnframe();
    enterJoin();
    enterResample();
    enterEvents();
});

} // namespace
