// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractOutputPin.h"
#include "framework/core/Api.h"
#include "host/ends/SampleRate.h"
#include "host/ends/SourceAccount.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What a `Source` has beside it that reads a recording: rows with columns, of which something can be told
/// before and behind the run. What it can't tell it leaves as it is.
class QUILLMERE_API RecordedSource {
public:
    struct Shape {
        std::size_t rows = 0;
        std::size_t columns = 0;
    };
    struct Cell {
        std::uint64_t row = 0; ///< 1 is the first that was taken.
        std::string column;
    };

    virtual ~RecordedSource() = default;

    /// How much of it has been read, and how much there is; 0 when unknown. [run]
    virtual std::uint64_t getBytesRead() const { return 0; }
    virtual std::uint64_t getSize() const { return 0; }

    /// The columns of its recording, or those that it was told of before it is open. [setup]
    virtual std::vector<std::string> getColumnNames() const { return {}; }
    /// The shape of each sample of an output; nothing when that can't be known beforehand. [setup]
    virtual std::optional<Shape> getSampleShape(const Core::AbstractOutputPin&) const { return std::nullopt; }
    /// The unit that all elements have of what an output sends; empty where nobody states it, or they differ.
    /// Requires: open. [setup]
    virtual std::string getUnit(const Core::AbstractOutputPin&) const { return {}; }
    /// How often an output sends; nothing when that can't be known beforehand. Takes nothing away from the
    /// run. Requires: open, or settled. [setup]
    virtual std::optional<SampleRate> getSampleRate(const Core::AbstractOutputPin&) const {
        return std::nullopt;
    }
    /// Whether `getSampleRate` says before it is open what it will say then. [setup]
    virtual bool getIsRateSettled() const { return false; }
    /// Why there is no rate to count on, as in `it comes through a pipe`; empty where that is unknown.
    /// [setup]
    virtual std::string getRateHindrance(const Core::AbstractOutputPin&) const { return {}; }
    /// The setting that would state it; empty where there is none. [setup]
    virtual std::string getRateSetting() const { return {}; }
    /// The rate of all that it has sent so far, by the time stamps; nothing where it isn't measured by them.
    /// [run, or when nothing runs]
    virtual std::optional<SampleRate> getRateSoFar(const Core::AbstractOutputPin&) const {
        return std::nullopt;
    }
    /// Where an element stands in the recording of the sample that an output has sent last. [run]
    virtual Cell getCell(const Core::AbstractOutputPin& output, std::size_t element) const = 0;

    /// Whether an element of the sample that an output sent last stands for a missing value, as the graph
    /// declares them: no surprise to anybody. [run]
    virtual bool getIsMissing(const Core::AbstractOutputPin&, std::size_t) const { return false; }

    /// What it has seen of its recording so far. [run, or when nothing runs]
    virtual SourceAccount getAccount() const = 0;
    /// What the first rows look like, at most `rows` of them, up to the first that would end the run; nothing
    /// for what can't be read twice, as a pipe. Takes nothing away from the run. Requires: open. [setup]
    virtual std::optional<SourceAccount> lookAhead(std::uint64_t rows) const;
};

} // namespace Quillmere::Host
