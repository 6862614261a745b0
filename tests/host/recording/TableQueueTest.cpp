// SPDX-License-Identifier: MIT
#include "host/recording/TableQueue.h"

#include "host/ends/LateRowException.h"
#include "tests/host/kit/RefusalText.h"
#include "tests/host/kit/TemporaryFolder.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Quillmere::Core::MatrixXd;
using Support::matrix;
using Support::TemporaryFolder;
using Samples = std::vector<const MatrixXd*>;

const MatrixXd kOne = matrix({{7}});
const MatrixXd kRow = matrix({{0.1, -0.0, 3e300}});
const MatrixXd kEmpty = matrix({});
constexpr int kRows = 60000;

/// Samples of a row: widths that grow, pins that get nothing, a sample without elements.
Samples samplesOf(int row) {
    if (row % 1000 == 999) return {&kEmpty, nullptr};
    if (row % 3 == 0) return {&kOne, nullptr};
    return {row < kRows / 2 ? nullptr : &kRow, &kRow};
}

const std::vector<TableWriter::Group> kGroups{{"a", {}}, {"b", {}}};

class TableQueueTest : public testing::Test {
protected:
    const TemporaryFolder folder;
    const std::shared_ptr<WorkThread> thread = std::make_shared<WorkThread>();
};

TEST_F(TableQueueTest, TheTableIsTheSameToTheByte) {
    TableWriter plain(folder.path("plain.csv"), "t", kGroups);
    TableWriter table(folder.path("out.csv"), "t", kGroups);
    {
        TableQueue queue(table, thread);
        for (int row = 0; row < kRows; ++row) {
            plain.writeRow(0.1 * row, samplesOf(row));
            queue.writeRow(0.1 * row, samplesOf(row));
        }
        EXPECT_EQ(queue.getRows(), static_cast<std::uint64_t>(kRows));
        queue.wait();
    }
    plain.complete();
    table.complete();
    EXPECT_EQ(table.getRows(), plain.getRows());
    EXPECT_TRUE(folder.read("out.csv") == folder.read("plain.csv"));
}

/// Who hands rows over is ahead of a thread that begins late, and prints some of them.
class LateTableQueueTest : public TableQueueTest {
protected:
    void write(int rows, const Samples& samples) {
        thread->post([] { std::this_thread::sleep_for(std::chrono::milliseconds(50)); });
        for (int row = 0; row < rows; ++row) {
            plain.writeRow(row / 7.0, samples);
            queue.writeRow(row / 7.0, samples);
        }
    }
    void expectTheSame() {
        queue.wait();
        plain.complete();
        table.complete();
        EXPECT_EQ(table.getRows(), plain.getRows());
        EXPECT_TRUE(folder.read("out.csv") == folder.read("plain.csv"));
    }

    TableWriter plain{folder.path("plain.csv"), "t", kGroups};
    TableWriter table{folder.path("out.csv"), "t", kGroups};
    TableQueue queue{table, thread};
};

TEST_F(LateTableQueueTest, TheTableIsTheSameToTheByte) {
    write(kRows, {&kOne, &kOne});
    write(kRows, {&kRow, &kOne}); // printed, and too wide for the table
    write(kRows, {&kOne, &kEmpty});
    expectTheSame();
}

/// A row is longer than what goes to the file at a time.
TEST_F(LateTableQueueTest, LongRowsAreTheSameToTheByte) {
    MatrixXd many(1, 30000);
    for (Eigen::Index i = 0; i < many.size(); ++i)
        many(i) = std::sin(static_cast<double>(i));
    write(20, {&many, &kOne});
    expectTheSame();
}

TEST_F(TableQueueTest, TwoTablesOfOneThreadDontMix) {
    std::vector<std::unique_ptr<TableWriter>> tables;
    std::vector<std::unique_ptr<TableQueue>> queues;
    for (const char* const name : {"x.csv", "y.csv"}) {
        tables.push_back(std::make_unique<TableWriter>(folder.path(name), "t", kGroups));
        queues.push_back(std::make_unique<TableQueue>(*tables.back(), thread));
    }
    for (int row = 0; row < kRows; ++row)
        for (const auto& queue : queues)
            queue->writeRow(row, samplesOf(row));
    for (std::size_t i = 0; i < queues.size(); ++i) {
        queues[i]->wait();
        tables[i]->complete();
    }
    EXPECT_TRUE(folder.read("x.csv") == folder.read("y.csv"));
}

TEST_F(TableQueueTest, WhatTheThreadRaisesComesToWhoHandsRowsOver) {
    TableWriter table("/dev/full", "t", kGroups);
    TableQueue queue(table, thread);
    const auto failure = [&](auto work) -> std::string {
        try {
            work();
        } catch (const RecordingException& exception) {
            return Support::refusalText(exception);
        }
        return "";
    };
    const std::string full = "/dev/full: cannot be written: No space left on device";
    EXPECT_EQ(failure([&] {
                  for (int row = 0; row < 10 * kRows; ++row)
                      queue.writeRow(row, {&kOne, &kOne});
              }),
              full);
    EXPECT_LT(queue.getRows(), 10u * kRows) << "nobody goes on behind a failure";
    EXPECT_EQ(failure([&] { queue.wait(); }), full);
}

TEST_F(TableQueueTest, ASampleThatDoesntFitIsRefusedAsWithoutAThread) {
    TableWriter table(folder.path("out.csv"), "t", {{"a", {"x", "y"}}});
    TableQueue queue(table, thread);
    queue.writeRow(7.5, {&kOne});
    try {
        queue.wait();
        ADD_FAILURE() << "it is taken";
    } catch (const LateRowException& exception) {
        EXPECT_EQ(exception.getTime(), 7.5);
    }
}

} // namespace
