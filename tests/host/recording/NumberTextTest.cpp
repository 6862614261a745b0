// SPDX-License-Identifier: MIT
#include "host/recording/NumberText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <string_view>

using namespace Quillmere::Host;

namespace {

constexpr char kGuard = '#';

std::string standardText(double value) {
    std::array<char, 64> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

/// The text of a number, or a complaint where bytes beyond its room were touched.
std::string ownText(double value) {
    std::array<char, 2 * kNumberRoom> text{};
    text.fill(kGuard);
    const std::string got(text.data(), numberToText(text.data(), value));
    const bool isKept =
        std::all_of(text.begin() + kNumberRoom, text.end(), [](char c) { return c == kGuard; });
    return isKept ? got : got + " wrote beyond its room";
}

/// Compares both ways for a number: its text, and the number read from that text.
void check(double value) {
    const std::string wanted = standardText(value);
    const std::string got = ownText(value);
    if (got != wanted)
        ADD_FAILURE() << got << " was written, wanted " << wanted; // a million successes say nothing
    double again = 0.0;
    const auto [stop, error] = textToNumber(wanted.data(), wanted.data() + wanted.size(), again);
    const bool isRead = error == std::errc() && stop == wanted.data() + wanted.size() &&
                        std::bit_cast<std::uint64_t>(again) == std::bit_cast<std::uint64_t>(value);
    if (!isRead && !std::isnan(value)) ADD_FAILURE() << wanted << " was not read as it was written";
}

/// Compares what is read from a text: number, end and error.
void checkReading(std::string_view text) {
    double wanted = -7.0;
    double got = -7.0;
    const auto standard = std::from_chars(text.data(), text.data() + text.size(), wanted);
    const auto own = textToNumber(text.data(), text.data() + text.size(), got);
    if (own.ptr != standard.ptr || own.ec != standard.ec)
        ADD_FAILURE() << '"' << text << "\" was read up to " << own.ptr - text.data() << " with error "
                      << static_cast<int>(own.ec) << ", wanted " << standard.ptr - text.data() << " with "
                      << static_cast<int>(standard.ec);
    if (standard.ec == std::errc() &&
        std::bit_cast<std::uint64_t>(got) != std::bit_cast<std::uint64_t>(wanted))
        ADD_FAILURE() << '"' << text << "\" was read as " << got << ", wanted " << wanted;
}

} // namespace

TEST(NumberTextTest, WritesWhatRecordingsAndResultsHold) {
    const struct {
        double value;
        const char* text;
    } rows[] = {
        {.value = 0.0, .text = "0"},
        {.value = -0.0, .text = "-0"},
        {.value = 1.0, .text = "1"},
        {.value = -12.25, .text = "-12.25"},
        {.value = 0.1 + 0.2, .text = "0.30000000000000004"},
        {.value = 0.001, .text = "0.001"},
        {.value = 0.00012, .text = "0.00012"},
        {.value = 0.0001, .text = "1e-04"},
        {.value = 10000.0, .text = "10000"},
        {.value = 100000.0, .text = "1e+05"},
        {.value = 1200000.0, .text = "1200000"},
        {.value = 12000000.0, .text = "1.2e+07"},
        {.value = 1e22, .text = "1e+22"},
        {.value = 1.5e-300, .text = "1.5e-300"},
        {.value = 9007199254740993.0, .text = "9007199254740992"},
        {.value = 0x1p60, .text = "1152921504606846976"},
        {.value = std::numeric_limits<double>::denorm_min(), .text = "5e-324"},
        {.value = std::numeric_limits<double>::max(), .text = "1.7976931348623157e+308"},
        {.value = std::numeric_limits<double>::infinity(), .text = "inf"},
        {.value = -std::numeric_limits<double>::infinity(), .text = "-inf"},
        {.value = std::numeric_limits<double>::quiet_NaN(), .text = "nan"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ownText(row.value), row.text);
        check(row.value);
    }
}

TEST(NumberTextTest, WritesAndReadsEveryKindOfNumberAsTheStandardLibraryDoes) {
    std::mt19937_64 random(7);
    const auto power = [&](int range) {
        return std::pow(10.0, static_cast<int>(random() % 100) % range - range / 2);
    };
    for (int i = 0; i < 60000; ++i) {
        const double anything = std::bit_cast<double>(random());
        check(anything);
        const double wave = static_cast<double>(random() >> 11) * 0x1p-53 * 20.0 - 10.0;
        check(wave);
        check(wave * power(24));
        const double scale = std::pow(10.0, static_cast<int>(random() % 18));
        check(std::round(wave * scale) / scale);
        check(static_cast<double>(random() >> (random() % 64)));
        check(-static_cast<double>(random() % 1000) * power(40));
        check(std::ldexp(1.0, static_cast<int>(random() % 2100) - 1075));
        check(std::nextafter(power(60), random() % 2 == 0 ? 0.0 : 1e300));
    }
    for (int i = 0; i < 20000; ++i) {
        check(0.01 * i);
        check(i);
        check(-1e-6 * i);
    }
}

TEST(NumberTextTest, ReadsOddTextsAsTheStandardLibraryDoes) {
    for (const std::string_view text : {"",
                                        "-",
                                        "+1",
                                        "1",
                                        "-0",
                                        "0",
                                        "0.",
                                        "0.0",
                                        ".5",
                                        "5.",
                                        ".",
                                        "-.",
                                        "-.5",
                                        "1e5",
                                        "1e",
                                        "1e+",
                                        "1e+5",
                                        "1e-5",
                                        "1e400",
                                        "-1e400",
                                        "1e-400",
                                        "-1e-400",
                                        "0e400",
                                        "0e-400",
                                        "0e99999999999",
                                        "1e99999999999",
                                        "1e-99999999999",
                                        "inf",
                                        "INF",
                                        "-inf",
                                        "infinity",
                                        "infinit",
                                        "nan",
                                        "-nan",
                                        "nan(12)",
                                        "nan(",
                                        "nan(*)",
                                        "0x10",
                                        "1_000",
                                        "1,5",
                                        " 1",
                                        "1 ",
                                        "1e5.5",
                                        "1.2.3",
                                        "4.9406564584124654e-324",
                                        "2.4e-324",
                                        "2.5e-324",
                                        "1.7976931348623157e308",
                                        "1.7976931348623159e308",
                                        "00001",
                                        "-00001.50",
                                        "0.00000",
                                        "0.0000000",
                                        "1E5",
                                        "1d5",
                                        "123456789012345678901234567890",
                                        "9007199254740993",
                                        "--1",
                                        "e5",
                                        "1e0005"})
        checkReading(text);
}

TEST(NumberTextTest, ReadsRandomTextsAsTheStandardLibraryDoes) {
    constexpr std::string_view kCharacters = "0123456789.eE-+ninfa,() 000..";
    std::mt19937_64 random(1);
    std::string text;
    for (int i = 0; i < 300000; ++i) {
        text.resize(1 + random() % 12);
        for (char& c : text)
            c = kCharacters[random() % kCharacters.size()];
        checkReading(text);
    }
}

TEST(NumberTextTest, ReadsDigitsOfEveryLengthAroundAPointAsTheStandardLibraryDoes) {
    constexpr std::string_view kDigits = "9007199254740993901234567";
    constexpr std::string_view kZeros = "0000000000000000000000000";
    constexpr std::size_t kMost = 24; // more than fit 64 bits, in front of the point or behind it
    for (std::size_t before = 0; before <= kMost; ++before)
        for (std::size_t behind = 0; behind <= kMost; ++behind)
            for (const std::string_view end : {"", ",", ",8", "e3", "e-3,", "x", ".5", ",12345678"})
                for (const std::string_view digits : {kDigits, kZeros}) {
                    const std::string whole = std::string(digits.substr(0, before));
                    const std::string decimals(kDigits.substr(0, behind));
                    checkReading(whole + "." + decimals + std::string(end));
                    checkReading("-" + whole + "." + decimals + std::string(end));
                    checkReading(whole + std::string(end));
                }
}
