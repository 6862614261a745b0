// SPDX-License-Identifier: MIT
#pragma once

#include "host/recording/RowSink.h"

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace Python {

/// Rows with times: a column for each element of what comes to some pins, not-a-number where a pin had
/// nothing in a row. A value.
struct TableRows {
    struct Pin {
        std::string name;
        std::string unit = {};                 ///< Empty where nobody says.
        std::vector<std::string> columns = {}; ///< Names of its own, or empty.
        std::size_t width = 0;                 ///< Elements of a sample; 0 before the first.
        std::vector<double> values = {};       ///< Row by row.
    };

    std::string timeName = "t";
    std::vector<double> times; ///< Seconds.
    std::vector<Pin> pins;

    /// Columns of all pins, of one at least each: a pin to which nothing came has one of not-a-numbers.
    std::size_t countColumns() const;
    static std::string nameOfColumn(const Pin& pin, std::size_t element);
};

/// What has come to a `TableSink` in a run. [any, guarded]
class TableResult {
public:
    void begin(TableRows empty);
    /// Null stands for a pin to which nothing came. Raises `HostException` for a sample of another size than
    /// those before.
    void add(double time, const std::vector<const Quillmere::Core::MatrixXd*>& samples);
    void clear();
    void end();

    /// Gives the rows away; those that come later are the first again.
    TableRows take();
    /// A copy from that row on.
    TableRows read(std::size_t first) const;
    /// Waits until there are rows or no more come, so many seconds at most; true when there are.
    bool waitFor(double seconds) const;

private:
    mutable std::mutex state;
    mutable std::condition_variable hasMore;
    TableRows rows;
    bool hasEnded = false;
};

/// A `RecordingSink` that keeps its table in memory: the same settings, names and rows; of the file
/// nothing is touched.
class TableSink final : public Quillmere::Host::RowSink {
public:
    static constexpr const char* kTypeName = "TableSink";

    TableSink(const std::string& instanceName, std::shared_ptr<TableResult> tableResult);
    ~TableSink() override;

    const char* getTypeName() const override { return kTypeName; }

    void setUnit(const Quillmere::Core::AbstractInputPin& pin, const std::string& unit) override;
    void open() override;
    void finish() override { endGatheredRow(); }
    void complete() override;
    void abandon() override;
    void discard() override;
    std::uint64_t getRows() const override { return rowCount.get(); }
    bool getIsComplete() const override { return isComplete; }

private:
    bool takeOwn(const Quillmere::Host::GraphDescription::Setting& setting, const std::string& folder,
                 Quillmere::Host::Complaints& complaints) override;
    void writeRow(double time, const Samples& samples) override;

    const std::shared_ptr<TableResult> result;
    std::unordered_map<std::string, std::string> units;
    Quillmere::Core::Tally rowCount;
    bool isComplete = false;
};

} // namespace Python
