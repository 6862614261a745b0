// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/OutputPin.h"
#include "host/ends/RecordedSource.h"
#include "host/ends/Source.h"
#include "host/ends/WakingSource.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace Python {

/// Rows on their way into a live run: given by any thread, taken by the source's. [any, guarded]
class Feed {
public:
    struct Pin {
        std::string name;
        std::size_t columns = 1;
    };
    struct Row {
        double time = 0.0;
        const double* values = nullptr; ///< Of all pins; good until the next row is taken.
    };

    /// Raises `std::system_error`.
    Feed(std::vector<Pin> feedPins, std::optional<double> rate);
    ~Feed();
    Feed(const Feed&) = delete;
    Feed& operator=(const Feed&) = delete;

    const std::vector<Pin>& getPins() const { return pins; }
    const std::optional<double>& getRate() const { return rate; }
    std::size_t getColumns() const { return columns; }
    int getDescriptor() const { return event; }

    /// Copies rows. Without `times` they are counted from `first` on by the rate, from the last row on by the
    /// rate, or stamped with the time since the start where there is none. False when no more are wanted.
    bool give(const double* values, std::size_t count, const double* times, std::optional<double> first);
    void end();

    /// Whether it has ended, and who takes has heard of it: every row has gone its way.
    bool getIsDone() const;
    /// Whether `take` has a row, or knows that there are no more.
    bool getIsReady() const;
    /// The next row; nothing at the end. Waits for it, unless a stop is requested, which is an end.
    std::optional<Row> take(const std::stop_token& stop);

private:
    /// Rows since a time that somebody has stated.
    struct Counted {
        double from = 0.0;
        std::uint64_t rows = 0;
    };

    double nextStamp(const double* stated, std::optional<double> first);
    void clearEvent() const;

    const std::vector<Pin> pins;
    const std::optional<double> rate;
    std::size_t columns = 0;
    const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    int event = -1; ///< Readable as long as there is something to take.
    mutable std::mutex state;
    std::deque<double> times;
    std::deque<double> values;
    std::vector<double> current;
    Counted counted;
    bool hasEnded = false;
    bool isDone = false; ///< The end has been taken.
};

/// Sends rows of a `Feed` as they come.
class FeedSource final : public Quillmere::Host::Source,
                         public Quillmere::Host::RecordedSource,
                         public Quillmere::Host::WakingSource {
public:
    static constexpr const char* kTypeName = "FeedSource";

    FeedSource(const std::string& instanceName, std::shared_ptr<Feed> rows);
    ~FeedSource() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }
    /// What it was told as another source it has no use for.
    void configure(const Quillmere::Host::GraphDescription::Block&, const std::string&,
                   Quillmere::Host::Complaints&) override {}
    void open(Quillmere::Host::Complaints&) override {}
    bool prepare() override;
    bool getIsPrepared() override { return row.has_value() || feed->getIsReady(); }
    double getNextTimeStamp() const override { return row->time; }
    void release() override { isReleased = true; }
    std::uint64_t getRows() const override { return rowCount.get(); }

    std::optional<Shape> getSampleShape(const Quillmere::Core::AbstractOutputPin& pin) const override;
    std::optional<Quillmere::Host::SampleRate>
    getSampleRate(const Quillmere::Core::AbstractOutputPin&) const override;
    bool getIsRateSettled() const override { return true; }
    std::string getRateHindrance(const Quillmere::Core::AbstractOutputPin&) const override {
        return "its rows are fed, and no rate was given with it";
    }
    Cell getCell(const Quillmere::Core::AbstractOutputPin& output, std::size_t element) const override;
    Quillmere::Host::SourceAccount getAccount() const override;

    bool getComesByItself() const override { return true; }
    int getDescriptor() const override { return feed->getDescriptor(); }
    void setStop(const std::stop_token& token) override { stop = token; }

private:
    const std::shared_ptr<Feed> feed;
    std::deque<Quillmere::Core::OutputPin<Quillmere::Core::MatrixXd>> outputs; ///< Pins can't move.
    std::stop_token stop;
    std::optional<Feed::Row> row; ///< Ready and not yet sent.
    bool isReleased = false;
    Quillmere::Core::Tally rowCount;
    double firstTime = 0.0; ///< Seconds, as the next.
    double lastTime = 0.0;
};

} // namespace Python
