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
    double* const place = firsts.data() + position * width;
    ++position;
    if (!isWhole) ++count;
    const std::size_t older = isWhole ? length - position : 0; // of the round before
    const Weights ofSample(position - 1, 1);
    const Weights ofRounds(older, position);
    const auto all = static_cast<double>(count);
    const double* const oldSecond = Rule::kHasTwo ? seconds.data() + position * width : nullptr;
    const auto takeEach = [&](auto gather, auto join) {
        // None of them overlaps another; told so, the compiler takes several elements at once.
        const double* __restrict const x = sample;
        double* __restrict const kept = place;
        double* __restrict const nowFirst = newFirsts.data();
        double* __restrict const nowSecond = newSeconds.data();
        double* __restrict const y = result;
        for (std::size_t i = 0; i < width; ++i) {
            kept[i] = x[i];
            const State now = gather(load<Rule>(nowFirst, nowSecond, i), Rule::lift(x[i]));
            store<Rule>(now, nowFirst, nowSecond, i);
            y[i] = Rule::finish(join(now, i), all);
        }
    };
    const auto begin = [](const State&, const State& x) { return x; };
    const auto go = [&](const State& now, const State& x) { return Rule::combine(now, x, ofSample); };
    const auto alone = [](const State& now, std::size_t) { return now; };
    const auto withOlder = [&](const State& now, std::size_t i) {
        return Rule::combine(load<Rule>(place + width, oldSecond, i), now, ofRounds);
    };
    if (position == 1)
        older == 0 ? takeEach(begin, alone) : takeEach(begin, withOlder);
    else
        older == 0 ? takeEach(go, alone) : takeEach(go, withOlder);
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
