// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/picture/Envelope.h"
#include "host/picture/CurvePath.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// A column of a recording or of a result, as a picture shows it.
struct QUILLMERE_API Curve {
    /// `Marks`: points without lines. `Level`: on or off.
    enum class Style { Line, Marks, Level };

    Curve(std::string curveName, std::string curveUnit, std::size_t mostPieces)
        : Curve(std::move(curveName), std::move(curveUnit), mostPieces, 8 * mostPieces) {}
    Curve(std::string curveName, std::string curveUnit, std::size_t mostPieces, std::size_t mostPoints)
        : name(std::move(curveName)), unit(std::move(curveUnit)), envelope(mostPieces), path(mostPoints) {}

    // What pictures and pages go by, each in its own way.

    /// Whether it is on or off: zeros and ones that nobody states a unit of.
    static bool getIsLevel(const Envelope& envelope, const std::string& unit);
    /// Whether all of its samples are the same.
    static bool getIsConstant(const Envelope& envelope);
    /// Whether few of so many rows have it, as a rule.
    static bool getIsRare(const Envelope& envelope, std::uint64_t rows);
    /// Whether there is a distance that its samples have as a rule, be it another one later: no line would
    /// join what comes now and then. Heartbeats have one, and so has a slow sensor beside a fast one.
    static bool getIsEven(const Envelope& envelope);

    /// Of a column of a table with so many rows: a level, marks where it is rare and at no even distance,
    /// else a line.
    Style getStyle(std::uint64_t rows) const;

    std::string name; ///< Without its unit.
    std::string unit; ///< Empty where nobody states it.
    double scale = 1.0;
    /// Of a column of spectra how many hertz it is from the next one; 0 where nobody knows.
    double hertzApart = 0.0;
    Envelope envelope;
    double sum = 0.0; ///< Of the values that are finite.
    /// Over another column than the times, whose values go to and fro: the way through the samples as they
    /// came. Empty: a line through the envelope.
    CurvePath path;
};

/// Columns that share their times.
struct CurveTable {
    std::string name;        ///< Of its file or its block.
    std::string clock = "s"; ///< The unit of the times, or what counts in their place; `s` for seconds.
    std::string origin;      ///< The date, or the time of day, that seconds count from; empty: none.
    std::uint64_t rows = 0;
    std::uint64_t rowsWithoutTime = 0; ///< Which are left out,
    std::uint64_t rowsBack = 0;        ///< and in front of an earlier one's time, where they are drawn.
    std::vector<Curve> curves;
    std::size_t columnsLeftOut = 0; ///< Since there were too many to be shown.
};

/// How many pieces each of so many curves may have, so that they don't grow with their number.
QUILLMERE_API std::size_t mostPiecesOf(std::size_t curves);

} // namespace Quillmere::Host
