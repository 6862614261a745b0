// SPDX-License-Identifier: MIT
#include "host/recording/TimeText.h"

#include "host/recording/CsvCells.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace Quillmere::Host {

namespace {

constexpr std::int64_t kSecond = 1'000'000'000; // nanoseconds
constexpr std::int64_t kDay = 86400;            // seconds
constexpr int kNanoDigits = 9;
constexpr std::size_t kMostDigits = 18; // of a number that a 64-bit integer holds
constexpr std::size_t kMostFraction = 17;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Days since 1970-01-01 of a date of the Gregorian calendar: years begin in March, so that the day which
/// only some have is the last.
std::int64_t daysOf(std::int64_t year, std::int64_t month, std::int64_t day) {
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = year / 400;
    const std::int64_t ofEra = year - era * 400;
    const std::int64_t ofYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    return era * 146097 + ofEra * 365 + ofEra / 4 - ofEra / 100 + ofYear - 719468;
}

bool getIsDay(std::int64_t year, std::int64_t month, std::int64_t day) {
    constexpr std::array kDays{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12 || day < 1 || year < 1) return false;
    const bool isLeap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return day <= kDays[static_cast<std::size_t>(month - 1)] + (month == 2 && isLeap ? 1 : 0);
}

/// Takes a text apart from its front.
class Scanner {
public:
    explicit Scanner(std::string_view all) : text(all) {}

    bool isEnd() const { return text.empty(); }
    char peek() const { return text.empty() ? '\0' : text.front(); }
    bool take(char c) {
        if (peek() != c || text.empty()) return false;
        text.remove_prefix(1);
        return true;
    }
    void skipBlanks() {
        while (take(' ') || take('\t')) {
        }
    }
    bool takeWord(std::string_view word) {
        if (text.size() < word.size()) return false;
        for (std::size_t i = 0; i < word.size(); ++i)
            if ((text[i] & ~0x20) != word[i]) return false; // in either case
        text.remove_prefix(word.size());
        return true;
    }
    /// `fewest` to `most` digits, and no more behind them.
    std::optional<std::int64_t> number(std::size_t fewest, std::size_t most) {
        std::size_t count = 0;
        std::int64_t value = 0;
        while (count < text.size() && isDigit(text[count]) && count <= most)
            value = value * 10 + (text[count++] - '0');
        if (count < fewest || count > most) return std::nullopt;
        digits = count;
        text.remove_prefix(count);
        return value;
    }
    std::size_t getDigits() const { return digits; }
    std::string_view getRest() const { return text; }

private:
    std::string_view text;
    std::size_t digits = 0; ///< Of the last number.
};

struct Date {
    std::array<std::int64_t, 3> numbers{};
    char separator = '-';
    bool isYearFirst = true;
};

/// Three numbers with the same sign between them, four digits of them at one end.
std::optional<Date> takeDate(Scanner& scanner) {
    Scanner ahead = scanner;
    Date date;
    for (std::size_t i = 0; i < 3; ++i) {
        if (i == 1) date.separator = ahead.peek();
        if (i > 0 && (date.separator == ':' || !ahead.take(date.separator))) return std::nullopt;
        const auto number = ahead.number(1, 4);
        if (!number) return std::nullopt;
        const bool isYear = ahead.getDigits() == 4;
        if (ahead.getDigits() == 3 || (isYear && i == 1) || (i == 2 && isYear == date.isYearFirst))
            return std::nullopt;
        if (i == 0) date.isYearFirst = isYear;
        date.numbers[i] = *number;
    }
    if (date.separator != '-' && date.separator != '/' && date.separator != '.') return std::nullopt;
    scanner = ahead;
    return date;
}

std::optional<std::int64_t> daysOf(const Date& date, DateOrder order) {
    const auto& [first, second, third] = date.numbers;
    const bool isDayFirst = order == DateOrder::DayFirst;
    const std::int64_t year = date.isYearFirst ? first : third;
    const std::int64_t month = date.isYearFirst || isDayFirst ? second : first;
    const std::int64_t day = date.isYearFirst ? third : isDayFirst ? first : second;
    if (!getIsDay(year, month, day)) return std::nullopt;
    return daysOf(year, month, day);
}

/// Behind the seconds: `.5`, `,5` or `:500`. A fraction without digits is none.
std::optional<std::int64_t> takeFraction(Scanner& scanner) {
    if (!scanner.take('.') && !scanner.take(',') && !scanner.take(':')) return 0;
    std::int64_t nanoseconds = 0;
    int count = 0;
    for (; isDigit(scanner.peek()); ++count) {
        if (count < kNanoDigits) nanoseconds = nanoseconds * 10 + (scanner.peek() - '0');
        scanner.take(scanner.peek());
    }
    if (count == 0) return std::nullopt;
    for (; count < kNanoDigits; ++count)
        nanoseconds *= 10;
    return nanoseconds;
}

/// Seconds east of Greenwich; 0 where nothing is said.
std::optional<std::int64_t> takeZone(Scanner& scanner) {
    scanner.skipBlanks();
    const bool isNamed = scanner.takeWord("UTC") || scanner.takeWord("GMT") || scanner.takeWord("Z");
    if (isNamed) scanner.skipBlanks();
    if (scanner.isEnd()) return 0;
    const bool isWest = scanner.peek() == '-';
    if (!isWest && scanner.peek() != '+') return std::nullopt;
    scanner.take(scanner.peek());
    const auto hours = scanner.number(1, 4);
    if (!hours) return std::nullopt;
    std::int64_t minutes = *hours * 60;
    if (scanner.getDigits() > 2)
        minutes = *hours / 100 * 60 + *hours % 100;
    else if (scanner.take(':')) {
        const auto behind = scanner.number(2, 2);
        if (!behind) return std::nullopt;
        minutes += *behind;
    }
    if (!scanner.isEnd() || minutes > 18 * 60) return std::nullopt;
    return (isWest ? -minutes : minutes) * 60;
}

/// Of a day, without its zone.
std::optional<std::int64_t> takeTime(Scanner& scanner) {
    auto hours = scanner.number(1, 2);
    if (!hours || !scanner.take(':')) return std::nullopt;
    const auto minutes = scanner.number(2, 2);
    if (!minutes) return std::nullopt;
    std::int64_t seconds = 0;
    std::int64_t fraction = 0;
    if (scanner.take(':')) {
        const auto given = scanner.number(1, 2);
        const auto behind = given ? takeFraction(scanner) : std::nullopt;
        if (!behind) return std::nullopt;
        seconds = *given;
        fraction = *behind;
    }
    scanner.skipBlanks();
    const bool isEvening = scanner.takeWord("PM");
    if (isEvening || scanner.takeWord("AM")) {
        if (*hours < 1 || *hours > 12) return std::nullopt;
        hours = *hours % 12 + (isEvening ? 12 : 0);
    }
    if (*hours > 23 || *minutes > 59 || seconds > 60) return std::nullopt; // 60: a leap second
    return (*hours * 3600 + *minutes * 60 + seconds) * kSecond + fraction;
}

} // namespace

std::optional<Tick> tickOfNumber(std::string_view text, char decimal) {
    std::string_view digits = text;
    const bool isNegative = digits.starts_with('-');
    if (isNegative || digits.starts_with('+')) digits.remove_prefix(1);
    const std::size_t point = digits.find(decimal);
    const std::string_view whole = digits.substr(0, point);
    const std::string_view behind =
        point == std::string_view::npos ? std::string_view() : digits.substr(point + 1);
    Tick tick;
    const auto isDigits = [](std::string_view some) {
        return some.find_first_not_of("0123456789") == std::string_view::npos;
    };
    if (!digits.empty() && whole.size() + behind.size() > 0 && isDigits(whole) && isDigits(behind) &&
        whole.size() <= kMostDigits + 1 && behind.size() <= kMostFraction) {
        if (!whole.empty() &&
            std::from_chars(whole.data(), whole.data() + whole.size(), tick.whole).ec != std::errc())
            return std::nullopt;
        const std::string fraction = "0." + std::string(behind) + "0";
        std::from_chars(fraction.data(), fraction.data() + fraction.size(), tick.fraction);
    } else { // with an exponent, or none at all
        std::string plain(digits);
        if (decimal != '.' && plain.find('.') != std::string::npos) return std::nullopt;
        if (point != std::string_view::npos) plain[point] = '.';
        double value = 0.0;
        const char* const end = plain.data() + plain.size();
        const auto [stop, error] = std::from_chars(plain.data(), end, value);
        if (error != std::errc() || stop != end || !(std::abs(value) < 1e18) || plain.starts_with('-'))
            return std::nullopt;
        tick.whole = static_cast<std::int64_t>(std::floor(value));
        tick.fraction = value - std::floor(value);
    }
    if (!isNegative) return tick;
    if (tick.fraction == 0.0) return Tick{-tick.whole, 0.0};
    return Tick{-tick.whole - 1, 1.0 - tick.fraction};
}

std::optional<std::int64_t> nanosecondsOf(std::string_view text, DateOrder order) {
    Scanner scanner(trimmed(text));
    std::int64_t seconds = 0;
    if (const auto date = takeDate(scanner)) {
        const auto days = daysOf(*date, order);
        if (!days || *days > 100'000) return std::nullopt; // beyond, nanoseconds don't fit
        seconds = *days * kDay;
        if (*days < -100'000) return std::nullopt;
        if (scanner.isEnd()) return seconds * kSecond;
        if (!scanner.take('T') && !scanner.take('t') && scanner.peek() != ' ') return std::nullopt;
        scanner.skipBlanks();
    }
    const auto time = takeTime(scanner);
    const auto zone = time ? takeZone(scanner) : std::nullopt;
    if (!zone) return std::nullopt;
    return (seconds - *zone) * kSecond + *time;
}

bool getIsTimeText(std::string_view text) {
    return nanosecondsOf(text, DateOrder::DayFirst) || nanosecondsOf(text, DateOrder::MonthFirst);
}

bool getIsYearLast(std::string_view text) {
    Scanner scanner(trimmed(text));
    const auto date = takeDate(scanner);
    return date && !date->isYearFirst;
}

std::optional<DateOrder> dateOrderOf(std::string_view text) {
    Scanner scanner(trimmed(text));
    const auto date = takeDate(scanner);
    if (!date || date->isYearFirst) return std::nullopt;
    if (date->separator == '.' || date->numbers[0] > 12) return DateOrder::DayFirst;
    if (date->numbers[1] > 12) return DateOrder::MonthFirst;
    return std::nullopt;
}

std::string dateText(std::int64_t nanoseconds) {
    std::int64_t seconds = nanoseconds / kSecond;
    std::int64_t behind = nanoseconds % kSecond;
    if (behind < 0) {
        behind += kSecond;
        --seconds;
    }
    std::int64_t days = seconds / kDay;
    std::int64_t ofDay = seconds % kDay;
    if (ofDay < 0) {
        ofDay += kDay;
        --days;
    }
    // The way back from `daysOf`.
    const std::int64_t shifted = days + 719468;
    const std::int64_t era = (shifted >= 0 ? shifted : shifted - 146096) / 146097;
    const std::int64_t ofEra = shifted - era * 146097;
    const std::int64_t yearOfEra = (ofEra - ofEra / 1460 + ofEra / 36524 - ofEra / 146096) / 365;
    const std::int64_t ofYear = ofEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t month = (5 * ofYear + 2) / 153;
    const std::int64_t day = ofYear - (153 * month + 2) / 5 + 1;
    const std::int64_t year = yearOfEra + era * 400 + (month >= 10 ? 1 : 0);
    std::array<char, 96> text{};
    std::snprintf(text.data(), text.size(), "%04lld-%02lld-%02lld %02lld:%02lld:%02lld",
                  static_cast<long long>(year), static_cast<long long>(month < 10 ? month + 3 : month - 9),
                  static_cast<long long>(day), static_cast<long long>(ofDay / 3600),
                  static_cast<long long>(ofDay / 60 % 60), static_cast<long long>(ofDay % 60));
    std::string result = text.data();
    if (behind == 0) return result;
    std::snprintf(text.data(), text.size(), ".%09lld", static_cast<long long>(behind));
    result += text.data();
    return result.substr(0, result.find_last_not_of('0') + 1);
}

std::string originText(std::int64_t nanoseconds) {
    const std::string text = dateText(nanoseconds);
    const bool isOfDay = nanoseconds >= 0 && nanoseconds / kSecond < kDay;
    return isOfDay ? text.substr(text.find(' ') + 1) : text;
}

} // namespace Quillmere::Host
