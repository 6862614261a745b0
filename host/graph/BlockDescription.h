// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractProperty.h"
#include "framework/core/Api.h"
#include "framework/core/Filter.h"
#include "framework/transport/MatrixXd.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace Quillmere::Host {

/// What a setting of a living block is, as its typed visit told.
struct PropertyDescription {
    enum class Kind { Flag, Whole, Count, Number, Matrix, Choice, Command, Unknown };
    /// What a choice holds is the index of its label; a command holds nothing.
    using Held = std::variant<std::monostate, bool, std::int64_t, double, Core::MatrixXd>;

    std::string name;
    Kind kind = Kind::Unknown;
    bool isReadable = false;
    bool isWritable = false;
    Held value;
    bool hasLimits = false;
    double minimum = 0.0; ///< Limits and step of whole numbers are here too: a double holds every int.
    double maximum = 0.0;
    double step = 0.0;
    std::vector<std::string> labels;
};

/// What a block is, read from a living one.
struct BlockDescription {
    struct Pin {
        std::string name;
        bool isBlocking = false; ///< Of inputs: a step waits for a sample here.
    };
    std::string type;
    std::vector<Pin> inputs; ///< In order of creation, as are the others.
    std::vector<Pin> outputs;
    std::vector<PropertyDescription> properties;
};

/// What kind of setting it is; nothing that it holds is read or copied.
QUILLMERE_API PropertyDescription::Kind kindOf(const Core::AbstractProperty& property);

/// Visits a setting.
QUILLMERE_API PropertyDescription describe(const Core::AbstractProperty& property);

/// Describes a block and visits all of its settings.
QUILLMERE_API BlockDescription describe(const Core::Filter& block);

/// For people: `whole number`, `matrix` and so on.
QUILLMERE_API std::string nameOf(PropertyDescription::Kind kind);

/// What may be written: `a whole number from 0 to 10`, `one of LowPass and HiPass`, `a number`.
QUILLMERE_API std::string expectedText(const PropertyDescription& property);

/// A held value as a graph file would give it: `0.5`, `true`, `LowPass`, `[[1, 2], [3, 4]]`; empty for a
/// command.
QUILLMERE_API std::string valueText(const PropertyDescription& property);

} // namespace Quillmere::Host
