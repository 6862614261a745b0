// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What a source has seen of its recording, up to now or to its end: what can be told of it when a run is
/// over.
struct SourceAccount {
    /// Two rows that follow each other, of which the second is told of.
    struct Spot {
        std::uint64_t row = 0;  ///< 1 is the first behind the column names; skipped rows count.
        std::uint64_t line = 0; ///< Of the file, 1 being its first; 0 where there is none.
        double before = 0.0;    ///< Seconds: the time stamp of the row in front,
        double time = 0.0;      ///< and its own.
    };
    struct Finding {
        std::uint64_t count = 0;
        Spot first; ///< Of nothing when there are none.

        void note(const Spot& spot) {
            if (count++ == 0) first = spot;
        }
    };
    /// What was done about times since the graph asks for it.
    struct TimeRepairs {
        /// Rows left out, whole or in part, that repeat the time stamp before,
        Finding duplicates;
        Finding backward;             ///< and those that go back.
        Finding wildest;              ///< Of these the most behind one stamp far ahead, whose row is `first`.
        Finding behindEnd;            ///< Rows left out that alone lie behind the end.
        Finding gaps;                 ///< Steps of more than the limit that weren't kept as they are.
        double gapLimit = 0.0;        ///< Seconds.
        bool isHeld = false;          ///< Gaps were filled with the values in front of them, else with nan.
        std::uint64_t rowsFilled = 0; ///< Made in gaps, whole or in part.
        std::uint64_t gapsLeft = 0;   ///< Since the rows in front of them have no step that fills them.
        std::uint64_t earlyRows = 0;  ///< Cut off in front of the start.
        double lastSeen = 0.0;        ///< Seconds, of the last row that was read, cut off or not.
        std::optional<double> resampledRate; ///< Rows a second,
        std::uint64_t resampledRows = 0;     ///< and of how many they were made.
    };
    /// A column that looks like a clock and goes at another pace than the rate that the graph gives.
    struct OtherClock {
        std::string column;
        double rate = 0.0; ///< Rows a second, by the unit of time that comes nearest.
    };

    /// The column of times is named for another unit than seconds, for which its numbers are taken all the
    /// same.
    struct OtherUnit {
        std::string column;
        std::string unit;     ///< `milliseconds` and the like.
        double seconds = 1.0; ///< One of that unit.
    };

    std::uint64_t rows = 0;         ///< Taken, mended ones included.
    std::uint64_t skippedRows = 0;  ///< Passed over, since something in them was wrong.
    std::uint64_t mendedRows = 0;   ///< Taken with not-a-number in place of bad cells.
    std::uint64_t missingCells = 0; ///< Cells whose text the graph takes for a missing value.
    bool isCutEndDropped = false;   ///< A last line without its end was left out.
    /// Of skipped, mended and dropped rows, each as a message has it: place, text found.
    std::vector<std::string> firstFaults;
    /// What was guessed about the file or mended in it and changes numbers, each a part of a sentence.
    std::vector<std::string> notes;
    std::string origin;              ///< The date, or the time of day, that times count from; empty: none.
    bool isChangedMeanwhile = false; ///< The file was written to while it was read; it got no shorter.

    double firstTime = 0.0; ///< Seconds, of the first row taken and of the last; 0 without any.
    double lastTime = 0.0;
    std::optional<double> firstStep;  ///< Seconds from the first row taken to the second.
    std::optional<double> medianStep; ///< Seconds; of the steps forward, so nothing when time never goes on.

    /// About time stamps that a column gives; those that a rate gives are never odd.
    Finding backward;
    Finding equal;
    Finding jumps; ///< Forward by more than ten median steps.
    TimeRepairs repairs;

    std::optional<OtherClock> otherClock;
    std::optional<OtherUnit> otherUnit;

    /// Seconds from the first row taken to the last.
    double getLength() const { return lastTime - firstTime; }
    /// Rows a second.
    std::optional<double> getMedianRate() const {
        return medianStep ? std::optional(1.0 / *medianStep) : std::nullopt;
    }
};

} // namespace Quillmere::Host
