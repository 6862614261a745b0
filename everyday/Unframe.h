// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Turns frames of N rows back into rows, each with its own time.
///
///     time of row r = time of the frame - (N - 1 - r) * step
///     step = 1 / Rate,  or, where "Rate" is 0, (time of the frame - time of the one before) / rows that are new
///
/// In: N by n, stamped with the time of its last row, as a recording's frames are. Out: N times 1 by n, in
/// the order of the rows, all in one step. Where frames overlap, "Hop" tells how many of the last rows are
/// new; only those are sent, but of the first frame all are. With "Rate" 0 the first frame waits for the
/// second, which tells its step. An empty frame is dropped. "Reset" and frames of another size start anew.
class Unframe final : public Filter {
public:
    static constexpr const char* kTypeName = "Unframe";

    explicit Unframe(const std::string& instanceName);
    ~Unframe() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    RangeProperty<double> rate;
    RangeProperty<int> hop;
    CommandProperty resetCommand;

    void take(const MatrixXd& frame, double time);
    void sendRows(const MatrixXd& frame, Eigen::Index newRows, double time, double step);
    void startAnew() { isNew = true; }

    bool isNew = true;     ///< the next frame is the first
    bool isFirst = false;  ///< `kept` is the first frame, which hasn't been sent
    MatrixXd kept;         ///< the frame that waits for its step; of the others the shape
    double keptTime = 0.0; ///< seconds; of the frame before
};
