// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/transport/MatrixXd.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// A piece of a graph file: a scalar's text, a list or a map, and where it stands. Scalars keep their text:
/// what it means is decided by who asks for it, so `010` is never silently eight and `no` never silently
/// false.
struct QUILLMERE_API Value {
    enum class Kind { Null, Scalar, List, Map };
    struct Entry;

    Kind kind = Kind::Null;
    std::string text;      ///< Of a scalar.
    bool isQuoted = false; ///< A quoted scalar is a text, never a number.
    std::vector<Value> items;
    std::vector<Entry> entries; ///< Of a map, in file order; no key twice.
    Place where;
    std::string parameter; ///< The parameter that it came from, if one stood here.
    std::string madeOf;    ///< `5 Hz`, where a number was made of that.

    /// Whether it stands for a parameter that there isn't, which is a complaint already.
    bool isMissing() const { return kind == Kind::Null && !parameter.empty(); }
    bool isScalar() const { return kind == Kind::Scalar; }
    const Entry* find(std::string_view key) const;
    /// How many values it holds, itself included.
    std::size_t count() const;

    /// For messages: a scalar's text in quotes, `a list`, `a map` or `nothing`, and what it came from behind
    /// it.
    std::string describe() const;

    /// Whether both are written alike, wherever they stand and whatever brought them.
    bool operator==(const Value& other) const;
};

struct Value::Entry {
    std::string key;
    Place where;
    Value value;

    bool operator==(const Entry& other) const { return key == other.key && value == other.value; }
};

/// The other way: what reads back to the same number, flag or text. Numbers are in their shortest form.
QUILLMERE_API Value valueOf(double number);
QUILLMERE_API Value valueOf(std::int64_t number);
inline Value valueOf(int number) {
    return valueOf(std::int64_t{number});
}
QUILLMERE_API Value valueOf(bool flag);
QUILLMERE_API Value valueOf(const std::string& text);
inline Value valueOf(const char* text) {
    return valueOf(std::string(text));
}
QUILLMERE_API Value valueOf(const std::vector<std::string>& texts);
QUILLMERE_API Value valueOf(const Core::MatrixXd& matrix);

/// A scalar as a number, a whole number, a yes or no, a text, and nested lists as a matrix. What isn't one is
/// a complaint and gives nothing.
QUILLMERE_API std::optional<double> toNumber(const Value& value, Complaints& complaints);
QUILLMERE_API std::optional<std::int64_t> toWhole(const Value& value, Complaints& complaints);
QUILLMERE_API std::optional<bool> toFlag(const Value& value, Complaints& complaints);
QUILLMERE_API std::optional<std::string> toText(const Value& value, Complaints& complaints);
QUILLMERE_API std::optional<Core::MatrixXd> toMatrix(const Value& value, Complaints& complaints);

} // namespace Quillmere::Host
