// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/transport/MatrixXd.h"
#include "host/picture/Envelope.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// What came over one link, at a bounded size: a curve for each element of its samples, row by row.
class QUILLMERE_API SignalCurves {
public:
    /// How a report shows it: lines; points at their values for what comes now and then; marks, all of one
    /// height, for events, which hold nothing but ones; a map of colours where samples have more elements
    /// than lines could be told apart.
    enum class Kind { Curves, Points, Marks, Map };

    struct Column {
        explicit Column(std::size_t mostPieces) : envelope(mostPieces) {}
        Column(Envelope columnEnvelope, double columnSum)
            : envelope(std::move(columnEnvelope)), sum(columnSum) {}
        Envelope envelope;
        double sum = 0.0; ///< Of the values that are finite.
    };

    /// Of all signals of a page. What it holds of a piece is two numbers of four bytes in base64, and an
    /// eighth more for the coarser levels: 20 MB at most.
    static constexpr std::size_t kMostPieces = std::size_t{13} << 17;
    static constexpr std::size_t kMostCurves = 16;
    static constexpr std::size_t kMostColumns = 1024; ///< The elements behind them are left out and counted.

    /// `mostPieces` is for all columns together; none gets fewer than show its course.
    explicit SignalCurves(std::size_t mostPieces) : most(mostPieces) {}
    /// What has been gathered otherwise, of so many samples.
    SignalCurves(std::vector<Column> gathered, std::uint64_t sampleCount);

    /// A sample whose time isn't finite has no place, and is only counted. [run]
    void take(double time, const Core::MatrixXd& sample);

    const std::vector<Column>& getColumns() const { return columns; }
    std::uint64_t getSamples() const { return samples; }
    /// Elements of the largest sample that there was no room for.
    std::size_t getLeftOut() const { return leftOut; }
    /// Of the samples; 0 without any. A first time that a later one lies before isn't the begin.
    double getBegin() const { return samples > 0 ? begin : 0.0; }
    double getEnd() const { return samples > 0 ? end : 0.0; }
    /// Seconds from one sample to the next, as a rule; 0 where there are fewer than two.
    double getPeriod() const;
    /// `rounds` are those of the run, which most signals have a sample in; `unit` is that of its values,
    /// empty where nobody states it.
    Kind getKind(std::uint64_t rounds, const std::string& unit = {}) const;

private:
    std::size_t most = 0;
    std::vector<Column> columns;
    std::uint64_t samples = 0;
    std::size_t leftOut = 0;
    double begin = 0.0; ///< Seconds.
    double end = 0.0;
};

} // namespace Quillmere::Host
