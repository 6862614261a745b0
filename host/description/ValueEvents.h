// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What the YAML reader tells of a document, one thing after the other, as it comes. References stay
/// references, so this is never longer than the text.
struct ValueEvent {
    enum class Kind { Null, Scalar, List, Map, End, Reference };

    Kind kind = Kind::Null;
    bool isQuoted = false;
    int line = 0;   ///< From 0; -1 where the reader knows none.
    int column = 0; ///< From 0.
    /// Behind the last event of this value; of a reference the first event of what it refers to.
    std::size_t other = 0;
    std::string text; ///< Of a scalar.
};

/// What ends the reading of a text, and where.
class ValueRefusal : public std::runtime_error {
public:
    ValueRefusal(int errorLine, int errorColumn, const std::string& what, std::string expectedText)
        : std::runtime_error(what), line(errorLine), column(errorColumn), expected(std::move(expectedText)) {}

    int line; ///< As in `ValueEvent`.
    int column;
    std::string expected;
};

/// The events of the one document in `text`; none for an empty text. Raises `ValueRefusal` for a text that is
/// no YAML, goes on behind its first document, holds too much or nests too deep, and for a value that
/// contains itself. `aGraph` is what was expected, as in `a graph file in YAML or JSON`, and `one` what there
/// may be one of.
std::vector<ValueEvent> valueEvents(const std::string& text, const std::string& aGraph,
                                    const std::string& one);

} // namespace Quillmere::Host
