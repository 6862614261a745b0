// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "framework/core/LossTeller.h"

#include <cstdint>
#include <string>
#include <vector>

/// Takes some columns of each row, in any order, also several times.
///
///     out(r, i) = x(r, picked(i)),  columns counted from 0
///
/// Picked are those of "Pick", a matrix whose numbers are read row by row, and behind them those of "Ranges",
/// whose rows are the first and the last column of a range, backwards where the first is the greater. Both
/// empty, they leave the sample as it is. A sample that lacks one of the columns is dropped, since nothing
/// could stand in its place, and counted. Any number of rows. Nothing else is remembered.
class Columns final : public Filter, public RowStepper, public Quillmere::Core::LossTeller {
public:
    static constexpr const char* kTypeName = "Columns";

    explicit Columns(const std::string& instanceName);
    ~Columns() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }
    Eigen::Index getRowWidth(Eigen::Index width) override;
    void stepRows(const double* rows, double* results, std::size_t count, Eigen::Index width) override;
    std::vector<std::string> getLosses() const override;

private:
    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    ValueProperty<MatrixXd> pick;
    ValueProperty<MatrixXd> ranges;

    void pickRows(const double* rows, double* results, std::size_t count, Eigen::Index width) const;
    void drop(const MatrixXd& sample);
    void readSettings();
    void append(Eigen::Index column);
    void checkPick(const MatrixXd& value);
    void checkRanges(const MatrixXd& value);
    void onChange() { hasChanged = true; }

    bool hasChanged = true;            ///< the copies below are those of another setting
    std::vector<Eigen::Index> columns; ///< empty for all
    Eigen::Index needed = 0;           ///< columns that a sample has at least
    std::uint64_t came = 0;
    std::uint64_t dropped = 0;
    Eigen::Index droppedRows = 0; ///< of the last shape that was dropped
    Eigen::Index droppedColumns = 0;
};
