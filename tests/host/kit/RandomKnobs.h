// SPDX-License-Identifier: MIT
#pragma once

#include "host/live/LiveRun.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace Support {

/// Whole numbers drawn from a seed.
class Dice {
public:
    explicit Dice(unsigned seed) : random(seed) {}

    /// From 0 to n - 1. Requires: n is at least 1.
    std::size_t below(std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n - 1)(random); }
    bool oneIn(std::size_t n) { return below(n) == 0; }
    double between(double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(random);
    }
    template <class Things>
    const auto& oneOf(const Things& things) {
        return things[below(things.size())];
    }

private:
    std::mt19937 random;
};

/// A value within what the setting tells that it takes, written as in a graph file.
std::string drawValue(const Quillmere::Host::SettingState& setting, Dice& dice);

/// Somebody who reads, writes and fires the settings of a live run at random. For one thread.
class RandomKnobs {
public:
    struct Counts {
        std::uint64_t reads = 0;
        std::uint64_t writes = 0;
        std::uint64_t fires = 0;
        std::uint64_t refusals = 0;
        std::uint64_t changesSeen = 0; ///< By observers.

        Counts& operator+=(const Counts& other);
    };

    RandomKnobs(Quillmere::Host::LiveRun& liveRun, unsigned seed) : run(liveRun), dice(seed) {}

    /// One turn of any knob. Raises when the run takes what it must refuse, or refuses what it must take.
    void turn();
    const Counts& getCounts() const { return counts; }

private:
    void write(const Quillmere::Host::SettingState& setting);
    void writeNonsense(const Quillmere::Host::SettingState& setting);
    void fire(const Quillmere::Host::SettingState& setting);
    void watch();

    Quillmere::Host::LiveRun& run;
    Dice dice;
    Counts counts;
    std::vector<Quillmere::Host::SettingState> settings;
};

} // namespace Support
