// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Maps a scalar signal to discrete levels: the row of "Thresholds" that holds the signal picks the row of
/// "Levels".
///
///     Level = Levels(i),  min(i) <= In <= max(i),  one interval [min; max] a row of Thresholds
///
/// Where none holds it, nothing is sent. Where two rows share a bound, "OnIntersectionUse" decides; where
/// that doesn't say, the row that comes first. No state. Kept as is: an interval may lie inside an earlier
/// one, but not inside a later one; a not-a-number bound is accepted and holds nothing; "None" sends nothing
/// wherever two rows match, nested ones included.
class FilterThresholdLeveler final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterThresholdLeveler";

    explicit FilterThresholdLeveler(const std::string& instanceName);
    ~FilterThresholdLeveler() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> input;
    OutputPin<MatrixXd> output;
    EnumProperty<std::string> onIntersectionUse;
    ValueProperty<MatrixXd> thresholds;
    ValueProperty<MatrixXd> levels;

    /// Refuse what "Thresholds" and "Levels" can't be, with `Poco::DataFormatException`.
    void checkThresholds(const MatrixXd& proposed);
    void checkLevels(const MatrixXd& proposed);
};
