// SPDX-License-Identifier: MIT
#include "everyday/Affine.h"
#include "everyday/Columns.h"
#include "everyday/Logic.h"
#include "everyday/MovingStatistics.h"
#include "everyday/Norm.h"
#include "tests/support/Numbers.h"
#include "tests/support/RowTwins.h"

#include <gtest/gtest.h>

// Many rows in one call give the bits of as many steps, and what only a step can do is left to one.

using namespace Support;

namespace {
MatrixXd drawMatrix(std::mt19937_64& random, Eigen::Index rows, Eigen::Index columns) {
    std::normal_distribution<double> number;
    return MatrixXd::NullaryExpr(rows, columns, [&] { return number(random); });
}

/// What doesn't go together with the other setting is refused, and stays as it was.
void tryToWrite(Filter& block, const char* property, const MatrixXd& value) {
    try {
        write(block, property, value);
    } catch (const Poco::InvalidArgumentException&) {
    }
}
} // namespace

TEST(RowStepperTest, Affine) {
    checkRows({.name = "Affine",
               .make = [] { return std::make_unique<Affine>("turn"); },
               .change =
                   [](Filter& block, std::mt19937_64& random) {
                       const auto results = 1 + static_cast<Eigen::Index>(random() % 4);
                       switch (random() % 4) {
                       case 0:
                           write(block, "Offset", MatrixXd());
                           return tryToWrite(block, "Matrix", drawMatrix(random, results, 3));
                       case 1:
                           return tryToWrite(block, "Offset", drawMatrix(random, 1, results));
                       case 2:
                           write(block, "Matrix", MatrixXd());
                           return tryToWrite(block, "Offset", drawMatrix(random, 1, 3));
                       default:
                           return;
                       }
                   }});
}

TEST(RowStepperTest, Columns) {
    checkRows({.name = "Columns",
               .make = [] { return std::make_unique<Columns>("some"); },
               .change =
                   [](Filter& block, std::mt19937_64& random) {
                       if (random() % 2 == 0) return;
                       MatrixXd picked(1, static_cast<Eigen::Index>(random() % 5));
                       for (double& column : picked.reshaped())
                           column = static_cast<double>(random() % 4);
                       write(block, "Pick", picked);
                   }});
}

TEST(RowStepperTest, Logic) {
    checkRows({.name = "Logic",
               .make = [] { return std::make_unique<Logic>("level"); },
               .change =
                   [](Filter& block, std::mt19937_64& random) {
                       write(block, "Operation", static_cast<unsigned>(random() % 5));
                   }});
}

TEST(RowStepperTest, MovingStatistics) {
    checkRows({.name = "MovingStatistics",
               .make = [] { return std::make_unique<MovingStatistics>("window"); },
               .change =
                   [](Filter& block, std::mt19937_64& random) {
                       switch (random() % 6) {
                       case 0:
                           return write(block, "Samples", 1 + static_cast<int>(random() % 200));
                       case 1:
                           return write(block, "Kind", static_cast<unsigned>(random() % 7));
                       case 2:
                           return write(block, "OnlyFull", random() % 2 == 0);
                       case 3:
                           return fire(block, "Reset");
                       default:
                           return;
                       }
                   }});
}

TEST(RowStepperTest, Norm) {
    checkRows(
        {.name = "Norm",
         .make = [] { return std::make_unique<Norm>("length"); },
         .change = [](Filter& block,
                      std::mt19937_64& random) { write(block, "Columns", static_cast<int>(random() % 5)); }});
}

TEST(RowStepperTest, PartsThatSomebodyTakesAreSentByAStep) {
    MovingStatistics block("window");
    Feed feed(block); // takes both outputs
    feed.give("in", matrix({{1, 2, 3}}));
    feed.step();
    EXPECT_EQ(block.getRowWidth(3), RowStepper::kOneByOne);
}
