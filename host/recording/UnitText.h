// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Units as the names of columns have them.
namespace Quillmere::Host {

/// Whether a text is nothing but a unit, in brackets or not: `m/s^2`, `[deg/s]`, `(g)`, `no_units`. [any]
QUILLMERE_API bool getIsUnit(std::string_view text);

/// Whether such a text says that there is none: `no_units`, `n/a`. [any]
QUILLMERE_API bool getSaysNoUnit(std::string_view unit);

/// The unit that a cell of a row of units holds: `m/s^2`, also in brackets. [any]
QUILLMERE_API std::string unitOfCell(std::string_view cell);

/// The unit in a column's name: what stands in brackets at its end, as in `Time (s)` and `acc [g]`, or behind
/// its last `_` where that is a unit, as in `acc_x_m/s^2`; else empty. [any]
QUILLMERE_API std::string unitOfName(std::string_view name);
/// The name without that. [any]
QUILLMERE_API std::string nameWithoutUnit(std::string_view name);

/// A unit as it can stand in brackets behind the name of a column, `accel[0] [g]`, and be found there again:
/// as it is written, or as the host calls it; empty where neither will do. [any]
QUILLMERE_API std::string unitForName(const std::string& unit);

/// How many of a unit of time make a second: of `ms`, `[ms]` or `milliseconds` a thousand; nothing for what
/// is no unit of time. [any]
QUILLMERE_API std::optional<double> unitsPerSecond(std::string_view unit);

/// Several of a unit of time, which are no unit.
struct UnitMultiple {
    std::string text; ///< `10ms`.
    double seconds = 0.0;
};
/// What stands so in brackets in a column's name, as in `Time (10ms)`; nothing for a unit, for one of it
/// (`1 ms`) and for whatever else stands there, as the zone in `timestamp (-0400)`. [any]
QUILLMERE_API std::optional<UnitMultiple> multipleOfUnit(std::string_view name);

/// The words of a name in small letters: `time (ms)`, `t_ms` and `timeMs` have two. A micro sign is a `u`.
/// [any]
QUILLMERE_API std::vector<std::string> wordsOfName(const std::string& name);

} // namespace Quillmere::Host
