// SPDX-License-Identifier: MIT
#include "everyday/MovingWindow.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace Everyday {

namespace {
/// What some samples that follow each other give: for most statistics one number, for some two.
struct State {
    double first;
    double second;
};

/// How many samples stand on both sides of a combination, as the factors that a spread needs.
struct Weights {
    Weights(std::size_t older, std::size_t newer)
        : ofNewer(static_cast<double>(newer) / static_cast<double>(older + newer)),
          ofSquare(static_cast<double>(older) * ofNewer) {}
    double ofNewer;
    double ofSquare;
};

struct MeanRule {
    static constexpr bool kHasTwo = false;
    static State lift(double x) { return {x, 0.0}; }
    static State combine(const State& older, const State& newer, const Weights&) {
        return {older.first + newer.first, 0.0};
    }
    static double finish(const State& all, double count) { return all.first / count; }
};

struct RmsRule : MeanRule {
    static State lift(double x) { return {x * x, 0.0}; }
    static double finish(const State& all, double count) { return std::sqrt(all.first / count); }
};

/// Mean and sum of squared distances from it.
struct SpreadRule {
    static constexpr bool kHasTwo = true;
    static State lift(double x) { return {x, 0.0}; }
    static State combine(const State& older, const State& newer, const Weights& weights) {
        const double distance = newer.first - older.first;
        return {older.first + distance * weights.ofNewer,
                (older.second + newer.second) + distance * distance * weights.ofSquare};
    }
    static double finish(const State& all, double count) { return std::sqrt(all.second / count); }
};

// Of equal values, as 0.0 and -0.0 are, the older one stays; a not-a-number on either side is the result.
double least(double older, double newer) {
    return newer < older || newer != newer ? newer : older;
}
double most(double older, double newer) {
    return newer > older || newer != newer ? newer : older;
}

struct MinimumRule {
    static constexpr bool kHasTwo = false;
    static State lift(double x) { return {x, 0.0}; }
    static State combine(const State& older, const State& newer, const Weights&) {
        return {least(older.first, newer.first), 0.0};
    }
    static double finish(const State& all, double) { return all.first; }
};

struct MaximumRule : MinimumRule {
    static State combine(const State& older, const State& newer, const Weights&) {
        return {most(older.first, newer.first), 0.0};
    }
};

struct RangeRule {
    static constexpr bool kHasTwo = true;
    static State lift(double x) { return {x, x}; }
    static State combine(const State& older, const State& newer, const Weights&) {
        return {least(older.first, newer.first), most(older.second, newer.second)};
    }
    static double finish(const State& all, double) { return all.second - all.first; }
};

template <class Rule>
State load(const double* firsts, const double* seconds, std::size_t i) {
    if constexpr (Rule::kHasTwo)
        return {firsts[i], seconds[i]};
    else
        return {firsts[i], 0.0};
}

template <class Rule>
void store(const State& state, double* firsts, double* seconds, std::size_t i) {
    firsts[i] = state.first;
    if constexpr (Rule::kHasTwo) seconds[i] = state.second;
}
} // namespace

void MovingWindow::begin(Kind statistic, std::size_t samples, std::size_t elements) {
    const bool hasTwo = statistic == Kind::StandardDeviation || statistic == Kind::Range;
    std::vector<double> places(samples * elements);
    std::vector<double> more(hasTwo ? samples * elements : 0);
    std::vector<double> now(elements);
    std::vector<double> moreNow(hasTwo ? elements : 0);
    firsts.swap(places);
    seconds.swap(more);
    newFirsts.swap(now);
    newSeconds.swap(moreNow);
    kind = statistic;
    length = samples;
    width = elements;
    position = count = 0;
}

void MovingWindow::take(const double* sample, double* result) {
    switch (kind) {
    case Kind::Mean:
        return takeBy<MeanRule>(sample, result);
    case Kind::StandardDeviation:
        return takeBy<SpreadRule>(sample, result);
    case Kind::Rms:
        return takeBy<RmsRule>(sample, result);
    case Kind::Minimum:
        return takeBy<MinimumRule>(sample, result);
    case Kind::Maximum:
        return takeBy<MaximumRule>(sample, result);
    case Kind::Range:
        return takeBy<RangeRule>(sample, result);
    }
}

template <class Rule>
void MovingWindow::takeBy(const double* sample, double* result) {
    if (position == length) {
        combineBackwards<Rule>();
        position = 0;
    }
    const bool isWhole = count == length;
    std::copy_n(sample, width, firsts.data() + position * width);
    double* const nowFirst = newFirsts.data();
    double* const nowSecond = newSeconds.data();
    if (position == 0) {
        for (std::size_t i = 0; i < width; ++i)
            store<Rule>(Rule::lift(sample[i]), nowFirst, nowSecond, i);
    } else {
        const Weights weights(position, 1);
        for (std::size_t i = 0; i < width; ++i)
            store<Rule>(Rule::combine(load<Rule>(nowFirst, nowSecond, i), Rule::lift(sample[i]), weights),
                        nowFirst, nowSecond, i);
    }
    ++position;
    if (!isWhole) ++count;
    const auto all = static_cast<double>(count);
    const std::size_t older = isWhole ? length - position : 0; // of the round before
    if (older == 0) {
        for (std::size_t i = 0; i < width; ++i)
            result[i] = Rule::finish(load<Rule>(nowFirst, nowSecond, i), all);
        return;
    }
    const Weights weights(older, position);
    const double* const oldFirst = firsts.data() + position * width;
    const double* const oldSecond = Rule::kHasTwo ? seconds.data() + position * width : nullptr;
    for (std::size_t i = 0; i < width; ++i)
        result[i] = Rule::finish(
            Rule::combine(load<Rule>(oldFirst, oldSecond, i), load<Rule>(nowFirst, nowSecond, i), weights),
            all);
}

/// The oldest sample of a round leaves the window with the first of the next one: its place needs nothing.
template <class Rule>
void MovingWindow::combineBackwards() {
    double* const secondOf = Rule::kHasTwo ? seconds.data() : nullptr;
    const auto lift = [&](std::size_t i) { return Rule::lift(firsts[i]); };
    for (std::size_t i = (length - 1) * width; i < length * width; ++i)
        store<Rule>(lift(i), firsts.data(), secondOf, i);
    for (std::size_t place = length - 1; place-- > 1;) {
        const Weights weights(1, length - 1 - place);
        for (std::size_t i = place * width; i < (place + 1) * width; ++i)
            store<Rule>(Rule::combine(lift(i), load<Rule>(firsts.data(), secondOf, i + width), weights),
                        firsts.data(), secondOf, i);
    }
}

} // namespace Everyday
