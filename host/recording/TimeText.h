// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Times as recordings write them.
namespace Quillmere::Host {

/// Which of a date's numbers is which.
enum class DateOrder { YearFirst, DayFirst, MonthFirst };

/// A stamp in two parts, so that the difference of two late ones keeps its digits: nanoseconds since 1970 of
/// today have none left behind the point in a 64-bit float.
struct Tick {
    std::int64_t whole = 0;
    double fraction = 0.0; ///< From 0 up to 1.

    double getValue() const { return static_cast<double>(whole) + fraction; }
    /// `this` less `other`, in the units of both.
    double since(const Tick& other) const {
        return static_cast<double>(whole - other.whole) + (fraction - other.fraction);
    }
};

/// The number in a cell, with every digit; nothing for what is no finite number below 10^18. [any]
QUILLMERE_API std::optional<Tick> tickOfNumber(std::string_view text, char decimal);

/// A date, a date and a time, or a time alone (since midnight), as nanoseconds since 1970 (UTC where a zone
/// is given, else as the clock stood): `2019-08-06 10:25:50:000`, `2019-08-06T10:25:50,5+02:00`,
/// `6.8.2019 10:25:50`, `8/6/2019 1:02:03.5 PM`, `10:25:50.123`. Of the digits of a fraction nine count. A
/// year in front says which number is which, whatever `order` has; nothing for what is no such text or no
/// time of any day. [any]
QUILLMERE_API std::optional<std::int64_t> nanosecondsOf(std::string_view text, DateOrder order);

/// Whether a text looks like one of these at all. [any]
QUILLMERE_API bool getIsTimeText(std::string_view text);

/// What the first two numbers of a date say that has its year behind: neither can be a month above 12. Two
/// points between them mean day first. Nothing for other texts and where both may be months. [any]
QUILLMERE_API std::optional<DateOrder> dateOrderOf(std::string_view text);
/// Whether a text begins with such a date. [any]
QUILLMERE_API bool getIsYearLast(std::string_view text);

/// `2019-08-06 10:25:50.02`, of nanoseconds since 1970. [any]
QUILLMERE_API std::string dateText(std::int64_t nanoseconds);

/// What the times of a recording count from: a date and a time, or, of so few nanoseconds as a day has, a
/// time of day, `10:25:50`. [any]
QUILLMERE_API std::string originText(std::int64_t nanoseconds);

} // namespace Quillmere::Host
