// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Everyday {

/// What became of those samples of the first input of `Join` that didn't find what they were to find, counted
/// by the other input at which it lay, and told in sentences.
class JoinAccount {
public:
    static constexpr std::size_t kMostOthers = 7;

    enum class Fate {
        GivenUp,   ///< dropped, since an input was too far behind
        Hurried,   ///< sent with what there was, since an input was too far behind
        Unlike,    ///< dropped, since an input's had another number of rows
        Early,     ///< dropped, being before the first sample of an input
        Unmatched, ///< dropped without a sample of that time
        Held,      ///< sent with the last sample of an input, being behind it
        Count
    };

    void countFirst() { ++firsts; }
    void count(Fate fate, std::size_t other) { ++counts[static_cast<std::size_t>(fate)][other]; }
    void countHeld(std::size_t other, double lastTime) {
        count(Fate::Held, other);
        lastTimes[other] = lastTime;
    }
    /// A sample of an input that was too far ahead of the first one.
    void countForgotten(std::size_t other) { ++forgotten[other]; }

    std::vector<std::string> getLosses() const;
    std::vector<std::string> getNotes() const;

private:
    using PerOther = std::array<std::uint64_t, kMostOthers>;

    std::string sentence(Fate fate, std::size_t other) const;
    void add(std::vector<std::string>& sentences, Fate fate, std::size_t other) const;

    std::uint64_t firsts = 0;
    std::array<PerOther, static_cast<std::size_t>(Fate::Count)> counts{};
    PerOther forgotten{};
    std::array<double, kMostOthers> lastTimes{}; ///< seconds
};

} // namespace Everyday
