// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/Feed.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace Support {

/// A block that offers to step many rows at once, for `checkRows`.
struct RowBlock {
    const char* name;
    std::function<std::unique_ptr<Quillmere::Core::Filter>()> make;
    /// Writes a setting, fires a command or does nothing, by the numbers that it draws.
    std::function<void(Quillmere::Core::Filter&, std::mt19937_64&)> change;
};

/// Writes a setting; `T` is its own type.
template <class T>
void write(Quillmere::Core::Filter& block, const char* property, const T& value) {
    dynamic_cast<Quillmere::Core::ValueProperty<T>&>(block.getProperty(property)).setValue(value);
}
void fire(Quillmere::Core::Filter& block, const char* command);

/// Gives two blocks the same rows, of random widths, in pieces of random length, with changes in between,
/// and with numbers that aren't finite, -0.0 and ones too small to be normal among them: to the one as
/// samples, to the other as arrays wherever it takes them. Fails the test where what comes out differs by a
/// bit, or where nothing was taken as an array.
void checkRows(const RowBlock& block);

} // namespace Support
