// SPDX-License-Identifier: MIT
#include "tests/support/RowTwins.h"

#include "tests/support/Allocations.h"
#include "tests/support/Numbers.h"

#include <algorithm>
#include <limits>

namespace Support {

using namespace Quillmere::Core;

namespace {
constexpr int kRuns = 40;
constexpr int kPieces = 12;
constexpr std::size_t kLongest = 600; // more than two calls take

/// Sends rows to a block's first input and keeps what its first output sends; no other pin is linked.
class Driven {
public:
    explicit Driven(const RowBlock& kind)
        : filter(kind.make()), stepper(dynamic_cast<RowStepper*>(filter.get())), sender("sender", nullptr),
          recorder("recorder") {
        sender.attach(*filter->getInputPins().front(), false);
        filter->getOutputPins().front()->attach(recorder, false);
    }

    void step(const MatrixXd& rows, Eigen::Index row) {
        copySample(sender.data.value, rows.row(row));
        sender.send(0.01);
        filter->process();
        for (const Sample& sample : recorder.samples)
            sent.push_back(sample.value);
        recorder.samples.clear();
    }
    /// As many rows from `row` on as it takes; false for none.
    bool stepRows(const MatrixXd& rows, Eigen::Index& row) {
        const Eigen::Index width = stepper->getRowWidth(rows.cols());
        if (width == RowStepper::kOneByOne) return false;
        const Eigen::Index count = std::min<Eigen::Index>(rows.rows() - row, RowStepper::kMostRows);
        // One row more on either side, which nobody may touch.
        MatrixXd results = MatrixXd::Constant(count + 2, width, kUntouched);
        const AllocationCounter counter;
        stepper->stepRows(rows.data() + row * rows.cols(), results.data() + width,
                          static_cast<std::size_t>(count), rows.cols());
        EXPECT_EQ(counter.count(), 0U);
        EXPECT_TRUE((results.row(0).array() == kUntouched).all());
        EXPECT_TRUE((results.row(count + 1).array() == kUntouched).all());
        for (Eigen::Index i = 1; i <= count; ++i)
            sent.emplace_back(results.row(i));
        row += count;
        return true;
    }

    std::unique_ptr<Filter> filter;
    RowStepper* stepper;
    std::vector<MatrixXd> sent;

private:
    static constexpr double kUntouched = -123456.75;
    OutputPin<MatrixXd> sender;
    RecordingPin recorder;
};

MatrixXd drawRows(std::mt19937_64& random, Eigen::Index columns, bool isTame) {
    const double odd[] = {-0.0, 0.0, std::numeric_limits<double>::denorm_min(), 1e-310, kNaN, kInf, -kInf};
    const std::size_t kinds = isTame ? 4 : std::size(odd); // what isn't finite stays in a recursion for ever
    std::normal_distribution<double> number;
    MatrixXd rows(1 + static_cast<Eigen::Index>(random() % kLongest), columns);
    for (double& value : rows.reshaped())
        value = random() % 50 == 0 ? odd[random() % kinds] : number(random);
    return rows;
}

/// How many rows were taken as arrays.
std::size_t feedBoth(Driven& single, Driven& many, const MatrixXd& rows) {
    for (Eigen::Index row = 0; row < rows.rows(); ++row)
        single.step(rows, row);
    std::size_t atOnce = 0;
    for (Eigen::Index row = 0; row < rows.rows();) {
        const Eigen::Index before = row;
        if (many.stepRows(rows, row))
            atOnce += static_cast<std::size_t>(row - before);
        else
            many.step(rows, row++);
    }
    return atOnce;
}
} // namespace

void fire(Filter& block, const char* command) {
    dynamic_cast<CommandProperty&>(block.getProperty(command)).fire();
}

void checkRows(const RowBlock& block) {
    std::size_t atOnce = 0;
    for (int run = 0; run < kRuns; ++run) {
        std::mt19937_64 random(static_cast<unsigned>(run));
        Driven single(block);
        Driven many(block);
        ASSERT_NE(many.stepper, nullptr) << block.name;
        Eigen::Index columns = 3;
        for (int piece = 0; piece < kPieces; ++piece) {
            if (random() % 3 == 0) columns = 1 + static_cast<Eigen::Index>(random() % 20);
            std::mt19937_64 once(random());
            std::mt19937_64 again = once;
            block.change(*single.filter, once);
            block.change(*many.filter, again);
            atOnce += feedBoth(single, many, drawRows(random, columns, run % 2 == 0));
        }
        ASSERT_TRUE(agree(many.sent, single.sent, same)) << block.name << ", run " << run;
    }
    EXPECT_GT(atOnce, 10000U) << block.name;
}

} // namespace Support
