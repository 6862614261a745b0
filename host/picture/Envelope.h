// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace Quillmere::Host {

/// A signal at a bounded size: where it was, and between which values, in each piece of time.
///
/// Pieces lie on a grid whose width is a power of two seconds, the smallest by which at most so many pieces
/// have samples. So few samples are a piece each, exact in time and value, whatever lies between them; those
/// of a day are all as wide, and what they hold doesn't depend on the order in which samples came. A level of
/// a lower resolution is `getCoarser`; it is what would have come of the samples themselves.
class QUILLMERE_API Envelope {
public:
    struct Piece {
        double firstTime = 0.0; ///< Seconds.
        double lastTime = 0.0;
        double first = 0.0; ///< The value at the first time, and at the last.
        double last = 0.0;
        double smallest = 0.0;
        double largest = 0.0;
        std::uint64_t count = 0;
        bool isBroken = false; ///< There was no number between the piece before and this one.
    };

    static constexpr std::size_t kMostPieces = 8192; ///< Two to each column of a wide picture.

    /// Requires: at least 2 pieces.
    explicit Envelope(std::size_t mostPieces = kMostPieces) : most(mostPieces) {}

    /// Takes a sample; one that isn't finite is a break. Times may go back; it costs more. Requires: a finite
    /// time.
    void take(double time, double value) {
        if (!(value - value == 0.0)) {
            isBreaking = true;
            ++breaks;
            return;
        }
        if (value != 0.0 && value != 1.0) isLevel = false;
        if (time >= begin && time < end) {
            add(pieces[current], time, value);
            isBreaking = false;
        } else {
            enter(time, value);
        }
    }

    const std::vector<Piece>& getPieces() const { return pieces; }
    std::uint64_t getCount() const { return count; }
    std::uint64_t getBreaks() const { return breaks; } ///< Samples that weren't finite.
    /// Whether all samples are 0 or 1. Of none it is not.
    bool getIsLevel() const { return isLevel && count > 0; }
    /// Seconds of a piece.
    double getWidth() const { return width; }

    /// The median of the steps forward; of pieces with several samples their mean counts for each of them.
    /// Nothing without any.
    std::optional<double> getUsualStep() const;
    /// The step that half of, or another part of, the steps don't exceed.
    std::optional<double> getStep(double part) const;

    /// The same at most so many pieces. Requires: at least 2.
    Envelope getCoarser(std::size_t mostPieces) const;

private:
    void add(Piece& piece, double time, double value) {
        if (time < piece.firstTime) {
            piece.firstTime = time;
            piece.first = value;
        }
        if (time >= piece.lastTime) {
            piece.lastTime = time;
            piece.last = value;
        }
        if (value < piece.smallest) piece.smallest = value;
        if (value > piece.largest) piece.largest = value;
        ++piece.count;
        ++count;
    }
    void enter(double time, double value);
    void coarsen();
    double beginOf(double time) const;

    std::size_t most;
    std::vector<Piece> pieces; ///< By time; none is empty.
    double width = 0x1p-30;    ///< Seconds: finer than any clock.
    std::uint64_t count = 0;
    std::uint64_t breaks = 0;
    bool isLevel = true;
    bool isBreaking = false;
    // The piece that the last sample fell into, and its place on the grid; at first none.
    std::size_t current = 0;
    double begin = std::numeric_limits<double>::infinity();
    double end = -std::numeric_limits<double>::infinity();
};

} // namespace Quillmere::Host
