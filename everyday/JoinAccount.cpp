// SPDX-License-Identifier: MIT
#include "everyday/JoinAccount.h"

#include <cstdio>

namespace Everyday {

namespace {
constexpr JoinAccount::Fate kLosses[] = {JoinAccount::Fate::GivenUp, JoinAccount::Fate::Hurried,
                                         JoinAccount::Fate::Unlike};
constexpr JoinAccount::Fate kNotes[] = {JoinAccount::Fate::Early, JoinAccount::Fate::Unmatched,
                                        JoinAccount::Fate::Held};

std::string countText(std::uint64_t count) {
    return std::to_string(count) + (count == 1 ? " sample" : " samples");
}

std::string timeText(double seconds) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.9g s", seconds);
    return text.data();
}
} // namespace

std::vector<std::string> JoinAccount::getLosses() const {
    std::vector<std::string> sentences;
    for (std::size_t other = 0; other < kMostOthers; ++other) {
        for (const Fate fate : kLosses)
            add(sentences, fate, other);
        if (forgotten[other] > 0)
            sentences.push_back(countText(forgotten[other]) + " of 'in" + std::to_string(other + 2) +
                                "' were lost, since it was too far ahead of 'in1'");
    }
    return sentences;
}

std::vector<std::string> JoinAccount::getNotes() const {
    std::vector<std::string> sentences;
    for (std::size_t other = 0; other < kMostOthers; ++other)
        for (const Fate fate : kNotes)
            add(sentences, fate, other);
    return sentences;
}

void JoinAccount::add(std::vector<std::string>& sentences, Fate fate, std::size_t other) const {
    const std::uint64_t count = counts[static_cast<std::size_t>(fate)][other];
    if (count == 0) return;
    sentences.push_back(std::to_string(count) + " of " + countText(firsts) + " of 'in1' " +
                        sentence(fate, other));
}

std::string JoinAccount::sentence(Fate fate, std::size_t other) const {
    const std::string name = "'in" + std::to_string(other + 2) + "'";
    switch (fate) {
    case Fate::GivenUp:
        return "were given up, since " + name + " was farther behind than 'Waiting' lets them wait";
    case Fate::Hurried:
        return "were sent with what had come to " + name +
               " by then, since it was farther behind than 'Waiting' lets them wait";
    case Fate::Unlike:
        return "were given up, since the sample of " + name + " has another number of rows";
    case Fate::Early:
        return "came before the first sample of " + name + " and made no row";
    case Fate::Unmatched:
        return "found no sample of " + name + " of their time and made no row";
    case Fate::Held:
        return "came behind the last sample of " + name + ", of " + timeText(lastTimes[other]) +
               ", and were sent with it";
    case Fate::Count:
        break;
    }
    return {};
}

} // namespace Everyday
