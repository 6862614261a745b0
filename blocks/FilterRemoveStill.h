// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Thins a trajectory of three-axis points: drops each row that hasn't moved far enough, on any axis, from
/// the last row that was kept.
///
///     row r is kept  where  |x(r) - x(k)| > distancex  or  |y(r) - y(k)| > distancey
///                    or     |z(r) - z(k)| > distancez
///
/// k is the last row that was kept; row 0 always is. No state from sample to sample. Kept as is: a difference
/// that is not-a-number drops the row.
class FilterRemoveStill final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterRemoveStill";

    explicit FilterRemoveStill(const std::string& instanceName);
    ~FilterRemoveStill() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> input;
    OutputPin<MatrixXd> output;
    RangeProperty<double> distanceX;
    RangeProperty<double> distanceY;
    RangeProperty<double> distanceZ;

    /// Gathers the rows to keep and returns how many there are.
    Eigen::Index gatherMovingRows(const MatrixXd& trajectory);

    MatrixXd gathered; ///< scratch of one step, as long as the longest sample; a member to keep its storage
};
