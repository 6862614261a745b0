// SPDX-License-Identifier: MIT
#include "host/recording/NumberText.h"

#include <dragonbox/dragonbox.h>
#include <fast_float/fast_float.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Quillmere::Host {

namespace {

constexpr int kMostDigits = 17; ///< of the shortest text of any double
constexpr std::uint64_t kSmallestOf17 = 10'000'000'000'000'000;
constexpr std::string_view kBelowOne = "0.000000"; ///< What such numbers may begin with.
constexpr std::uint64_t kZeros = 0x3030303030303030;
/// Whole numbers below 10^15 have no digits but those of their shortest text and zeros; greater ones may.
constexpr int kExactWholeDigits = 15;
/// No text as short as this is a number too small for a double: 1e-324 is longer.
constexpr std::ptrdiff_t kSafeZero = 5;

/// Eight characters in a register, the first one in the lowest byte: the number's digits, zeros first. All of
/// them at once: halves of four digits, of those halves of two, of those tens and ones.
std::uint64_t eightDigits(std::uint64_t number) {
    const std::uint64_t fours = number / 10000 + (number % 10000 << 32);
    // 10486 / 2^20 is 1/100 and 103 / 2^10 is 1/10, closely enough for numbers so small.
    const std::uint64_t hundreds = (fours * 10486 >> 20) & 0x0000007F0000007F;
    const std::uint64_t twos = hundreds + ((fours - 100 * hundreds) << 16);
    const std::uint64_t tens = (twos * 103 >> 10) & 0x000F000F000F000F;
    return (tens + ((twos - 10 * tens) << 8)) | kZeros;
}

/// 17 digits in registers, so that they can be written anywhere without reading them back.
class Digits {
public:
    /// Takes a number of 17 digits.
    explicit Digits(std::uint64_t number) {
        const std::uint64_t behindFirst = number % 1000000000;
        first = eightDigits(number / 1000000000);
        second = eightDigits(behindFirst / 10);
        last = static_cast<char>('0' + behindFirst % 10);
    }

    /// How many there are up to the last one that isn't a zero.
    int count() const {
        if (second == kZeros && last == '0') return 8 - std::countl_zero(first ^ kZeros) / 8;
        // The bit keeps the compiler from asking whether there are only zeros.
        const int sixteenAtMost = 16 - std::countl_zero((second ^ kZeros) | 1) / 8;
        const int hasLast = last != '0' ? 1 : 0;
        return sixteenAtMost + hasLast * (kMostDigits - sixteenAtMost);
    }

    void write(char* to) const {
        std::memcpy(to, &first, 8);
        std::memcpy(to + 8, &second, 8);
        to[16] = last;
    }

    /// The same with `point` behind the first `before` digits, 0 to 16 of them.
    void writeAround(char point, char* to, int before) const {
        const std::uint64_t firstMask =
            before < 8 ? (std::uint64_t{1} << (8 * before)) - 1 : ~std::uint64_t{0};
        const std::uint64_t secondMask = before <= 8   ? 0
                                         : before < 16 ? (std::uint64_t{1} << (8 * (before - 8))) - 1
                                                       : ~std::uint64_t{0};
        const std::uint64_t movedFirst = first << 8;
        const std::uint64_t movedSecond = second << 8 | first >> 56;
        const std::uint64_t low = (first & firstMask) | (movedFirst & ~firstMask);
        const std::uint64_t high = (second & secondMask) | (movedSecond & ~secondMask);
        std::memcpy(to, &low, 8);
        std::memcpy(to + 8, &high, 8);
        to[16] = static_cast<char>(second >> 56);
        to[17] = last;
        to[before] = point;
    }

private:
    std::uint64_t first;
    std::uint64_t second;
    char last;
};

/// As C prints it: a sign always, two digits at least.
char* writeExponent(char* to, int exponent) {
    *to++ = 'e';
    *to++ = exponent < 0 ? '-' : '+';
    const int magnitude = exponent < 0 ? -exponent : exponent;
    if (magnitude >= 100) *to++ = static_cast<char>('0' + magnitude / 100);
    *to++ = static_cast<char>('0' + magnitude / 10 % 10);
    *to++ = static_cast<char>('0' + magnitude % 10);
    return to;
}

/// Numbers from 0.001 to 10^8 with six decimals at most, as most recordings have them, or returns null. They
/// are found by trying: where a number over 10^6 rounds to the value, no other text of up to 15 digits reads
/// back as it.
char* writeShort(char* to, double value) {
    constexpr double kUnits = 1e6;
    const double magnitude = std::abs(value);
    if (!(magnitude >= 0.001 && magnitude < 1e8)) return nullptr;
    const double nearest = magnitude * kUnits + 0.5; // a wrong guess is found out below
    const auto units = static_cast<std::int64_t>(nearest);
    if (static_cast<double>(units) / kUnits != magnitude) return nullptr;
    const auto whole = static_cast<std::uint64_t>(units / 1000000);
    const auto rest = static_cast<std::uint64_t>(units % 1000000);
    if (rest == 0 && whole % 100000 == 0) return nullptr; // may be shorter with an exponent

    *to = '-';
    to += std::signbit(value) ? 1 : 0;
    const std::uint64_t before = eightDigits(whole);
    const int blanks = whole == 0 ? 7 : std::countr_zero(before ^ kZeros) / 8;
    const std::uint64_t aligned = before >> (8 * blanks);
    std::memcpy(to, &aligned, 8);
    to += 8 - blanks;
    if (rest == 0) return to;
    *to++ = '.';
    const std::uint64_t behind = eightDigits(100 * rest);
    std::memcpy(to, &behind, 8);
    return to + 8 - std::countl_zero(behind ^ kZeros) / 8;
}

/// All the rest, except what `numberToText` leaves to the standard library.
char* writeShortest(char* to, double value) {
    using namespace jkj::dragonbox;
    const auto decimal = to_decimal(value, policy::sign::ignore, policy::trailing_zero::ignore);
    // Most have 16 or 17 digits, in no order that a processor could learn: no branch between those two.
    const std::uint64_t has16 = decimal.significand < kSmallestOf17 ? 1 : 0;
    std::uint64_t number = decimal.significand * (1 + 9 * has16);
    int before = kMostDigits - static_cast<int>(has16) + decimal.exponent;
    for (; number < kSmallestOf17; number *= 10)
        --before;
    const Digits digits(number);
    // `before` digits stand before the point in plain notation, which is taken where it isn't longer than the
    // other. A single digit has no point in the other, which is why it is the shorter one by a character
    // there.
    const int count = digits.count();
    const int single = count == 1 ? 1 : 0;
    const bool isPlain = before >= single - 3 && before - count <= 5 - single;
    if (isPlain && before > kExactWholeDigits && before >= count) return nullptr;

    // Signs and sizes come in no order that a processor could learn, so what follows for usual numbers has no
    // branches.
    *to = '-';
    to += std::signbit(value) ? 1 : 0;
    if (!isPlain) {
        digits.writeAround('.', to, 1);
        return writeExponent(to + (count == 1 ? 1 : count + 1), before - 1);
    }
    if (before >= count) {
        digits.write(to);
        return to + before;
    }
    // Below 1 the digits follow on "0." and zeros, the last of which stands where the point would be
    // otherwise.
    const int isBelowOne = before <= 0 ? 1 : 0;
    const int offset = isBelowOne * (1 - before);
    std::memcpy(to, kBelowOne.data(), kBelowOne.size());
    digits.writeAround(before < 0 ? '0' : '.', to + offset, (1 - isBelowOne) * before);
    return to + offset + count + 1;
}

constexpr int kMostDigitsRead = 19; ///< that surely fit 64 bits
constexpr std::uint64_t kMostExact = std::uint64_t{1} << 53;
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                   1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};
constexpr std::uint64_t kWholePowersOfTen[] = {1,       10,        100,        1'000,      10'000,
                                               100'000, 1'000'000, 10'000'000, 100'000'000};

bool getIsDigit(char c) {
    return static_cast<unsigned char>(c - '0') <= 9;
}

/// The number that the lowest `count` characters of a register are, 1 to 8 digits, the first one in the
/// lowest byte: tens and ones first, of those hundreds, of those all.
std::uint64_t digitsToNumber(std::uint64_t characters, int count) {
    std::uint64_t digits = (characters ^ kZeros) << (64 - 8 * count); // zeros in front
    digits = digits * 10 + (digits >> 8);
    constexpr std::uint64_t kTwos = 0x000000FF000000FF;
    return ((digits & kTwos) * 0x000F424000000064 + (digits >> 16 & kTwos) * 0x0000271000000001) >> 32;
}

/// How many digits a register begins with, its lowest byte being the first character.
int countDigits(std::uint64_t characters) {
    // The sign of a byte shows what is above '9' or below '0'; carries go to bytes behind the first of them.
    const std::uint64_t others =
        ((characters + 0x4646464646464646) | (characters - kZeros)) & 0x8080808080808080;
    return std::countr_zero(others) / 8;
}

/// Appends the digits from `at` on to `number`, which overflows where there are many, and returns their end.
const char* readDigits(const char* at, const char* end, std::uint64_t& number) {
    while (end - at >= 8) {
        std::uint64_t characters = 0;
        std::memcpy(&characters, at, 8);
        const int count = countDigits(characters);
        if (count == 0) return at;
        number = number * kWholePowersOfTen[count] + digitsToNumber(characters, count);
        at += count;
        if (count < 8) return at;
    }
    for (; at != end && getIsDigit(*at); ++at)
        number = 10 * number + static_cast<std::uint64_t>(*at - '0');
    return at;
}

/// Reads digits with a point or none between them, as most recordings have them, and returns their end; null
/// for whatever else there may be.
const char* readPlain(const char* begin, const char* end, double& value) {
    const std::uint64_t isNegative = begin != end && *begin == '-' ? 1 : 0;
    const char* const first = begin + isNegative;
    const char* at = first;
    std::uint64_t number = 0;
    for (; at != end && getIsDigit(*at); ++at)
        number = 10 * number + static_cast<std::uint64_t>(*at - '0');
    std::ptrdiff_t digits = at - first;
    std::ptrdiff_t decimals = 0;
    if (digits == 0) return nullptr;
    if (at != end && *at == '.') {
        const char* const point = at;
        at = readDigits(point + 1, end, number);
        decimals = at - point - 1;
        if (decimals == 0) return nullptr;
        digits += decimals;
    }
    if (digits > kMostDigitsRead || (at != end && (*at == 'e' || *at == 'E'))) return nullptr;
    std::uint64_t bits = 0;
    if (number <= kMostExact) { // of two exact numbers, so rounded once
        bits = std::bit_cast<std::uint64_t>(static_cast<double>(number) / kPowersOfTen[decimals]);
    } else {
        using Double = fast_float::binary_format<double>;
        const auto rounded = fast_float::compute_float<Double>(-decimals, number);
        if (rounded.power2 < 0) return nullptr; // in doubt
        bits = rounded.mantissa | static_cast<std::uint64_t>(rounded.power2) << 52;
    }
    value = std::bit_cast<double>(bits | isNegative << 63);
    return at;
}

/// Whatever else there may be. Out of line, so that the road of most numbers keeps few registers.
[[gnu::noinline]] std::from_chars_result readAny(const char* begin, const char* end, double& value) {
    const fast_float::from_chars_result read = fast_float::from_chars(begin, end, value);
    // It takes numbers too large for infinity and numbers too small for zero, both of which are refused here.
    const bool isSure =
        read.ec != std::errc() || (!std::isinf(value) && (value != 0.0 || read.ptr - begin <= kSafeZero));
    if (!isSure) return std::from_chars(begin, end, value);
    return {read.ptr, read.ec};
}

} // namespace

char* numberToText(char* to, double value) {
    if constexpr (std::endian::native == std::endian::little) {
        if (char* const end = writeShort(to, value)) return end;
        if (std::isfinite(value) && value != 0.0)
            if (char* const end = writeShortest(to, value)) return end;
    }
    return std::to_chars(to, to + kNumberRoom, value).ptr;
}

std::from_chars_result textToNumber(const char* begin, const char* end, double& value) {
    if constexpr (std::endian::native == std::endian::little)
        if (const char* const stop = readPlain(begin, end, value)) return {stop, std::errc()};
    return readAny(begin, end, value);
}

} // namespace Quillmere::Host
