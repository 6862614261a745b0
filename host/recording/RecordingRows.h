// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/SourceAccount.h"
#include "host/recording/RecordingReader.h"
#include "host/recording/WorkThread.h"
#include "host/ends/TimeStampWatch.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What becomes of a row in which something is wrong: it ends the run, it is passed over, or it is taken with
/// not-a-number in place of what is wrong.
enum class OnBadRow { Error, Skip, Nan };
/// What becomes of a last line without a line end: it is a row as any other, as many programs end their files
/// so; it ends the run; or it is left out. What is in it doesn't matter to the last two, since a number that
/// was cut looks like a whole one.
enum class OnCutEnd { Keep, Error, Drop };

/// What is wanted of each row of a recording. Cells are places in the list `chosen`.
struct RowPlan {
    struct Pin {
        std::string name;
        std::vector<std::size_t> cells;
    };

    std::vector<std::size_t> chosen; ///< Columns of the file, each once.
    std::optional<std::size_t> timeCell;
    bool hasOwnTimes = false; ///< The reader makes the times, and no cell is asked for them.
    double rate = 0.0;        ///< Rows a second, where there are no times.
    std::vector<Pin> pins;
    bool isFramed = false; ///< Rows are gathered, so none may lack a pin's sample.
    OnBadRow onBadRow = OnBadRow::Error;
    OnCutEnd onCutEnd = OnCutEnd::Keep;
    std::vector<std::string> missing; ///< Texts of cells that stand for not-a-number.
};

/// Takes the rows of a recording one by one, by a plan, and keeps account of them.
///
/// A row is bad when a cell that is wanted isn't a number, when it has too few or too many cells, when its
/// time isn't finite, and when some cells of a pin are empty while others aren't. Only bad cells can be
/// mended, and not that of the time: a row that can't be is skipped where it should be mended.
class QUILLMERE_API RecordingRows {
public:
    enum class Row { Taken, Skipped, End };

    RecordingRows(std::unique_ptr<RecordingReader> reader, RowPlan plan);

    /// Leaves it to that thread to read ahead, but for a pipe, which may have to be waited for. [setup]
    void setThread(std::shared_ptr<WorkThread> thread);

    /// Reads the next row. Raises `RecordingException` for a bad one that ends the run. [run]
    Row take();
    const RecordingReader& getReader() const { return *reader; }
    /// Whether `take` wouldn't wait. [run]
    bool getIsReady() { return reader->getIsRowReady(); }
    void setStop(const std::stop_token& token) { reader->setStop(token); }
    const RowPlan& getPlan() const { return plan; }
    /// How many rows were read, also those that were not taken.
    std::uint64_t getNumber() const { return number; }

    /// Of the row: its time in seconds, the elements of a pin's sample, and whether there is a sample, which
    /// there isn't where all cells of the pin are empty. Requires: the last `take` took it.
    double getTime() const { return time; }
    double getElement(std::size_t pin, std::size_t element) const {
        return values[plan.pins[pin].cells[element]];
    }
    /// All elements of a pin's sample.
    void copyElements(std::size_t pin, double* to) const {
        for (const std::size_t cell : plan.pins[pin].cells)
            *to++ = values[cell];
    }
    /// Whether that element is a missing value, by the plan.
    bool getIsMissing(std::size_t pin, std::size_t element) const {
        return reader->getIsMissing(plan.pins[pin].cells[element]);
    }
    bool getHasSample(std::size_t pin) const { return isWhole || hasSample[pin] != 0; }

    SourceAccount getAccount() const;
    /// Of the rows that were taken, by their time stamps; nothing where a rate counts the times.
    std::optional<SampleRate> measureRate() const { return watch.measureRate(); }

private:
    /// An empty cell where none may be, in a pin whose cells are all empty or only some of them.
    struct Hole {
        std::size_t pin;
        std::size_t cell;
        bool isOfAll;
    };

    bool takeUnsound(bool isFaulty);
    Complaint getFaultOfTime() const;
    Complaint getFaultOf(const Hole& hole) const;
    bool getHasTime() const;
    bool getHasTimes() const { return plan.timeCell || plan.hasOwnTimes; }
    std::optional<Hole> mendHoles();
    Row endAtCut();
    void tellTimesOfRate(SourceAccount& account) const;

    std::unique_ptr<RecordingReader> reader;
    RowPlan plan;
    std::vector<double> values;  ///< The cells of one row.
    std::vector<char> hasSample; ///< For each pin, in a row that isn't whole.
    bool isWhole = true;         ///< Every pin has a sample.
    double time = 0.0;           ///< Seconds.
    std::uint64_t number = 0;    ///< Rows read, also those that were not taken.
    std::uint64_t firstTaken = 0;
    std::uint64_t lastTaken = 0;
    SourceAccount account; ///< As far as it is counted row by row.
    TimeStampWatch watch;
};

} // namespace Quillmere::Host
