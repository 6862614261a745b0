// SPDX-License-Identifier: MIT
#include "host/recording/CsvWriter.h"

#include "host/recording/CsvReader.h"
#include "tests/host/kit/TemporaryFolder.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using Quillmere::Host::CsvReader;
using Quillmere::Host::CsvWriter;
using Quillmere::Host::ResultFile;

TEST(CsvWriter, WritesTheShortestText) {
    const Support::TemporaryFolder folder;
    ResultFile file(folder.path("out.csv"));
    CsvWriter writer(file);
    writer.writeHeader({"t", "a[0]", "a,b", "say \"x\"", "#", " y"});
    for (const double value : {0.1, -0.0, 1e22, 5e-324, std::numeric_limits<double>::infinity()})
        writer.writeNumber(value);
    writer.writeEmpty();
    writer.endRow();
    writer.writeEmpty();
    writer.writeNumber(std::numeric_limits<double>::quiet_NaN());
    writer.endRow();
    EXPECT_EQ(writer.getRows(), 2u);
    writer.flush();
    file.complete();
    EXPECT_EQ(folder.read("out.csv"), "t,a[0],\"a,b\",\"say \"\"x\"\"\",\"#\",\" y\"\n"
                                      "0.1,-0,1e+22,5e-324,inf,\n"
                                      ",nan\n");
}

TEST(CsvWriter, EveryDoubleComesBackWithItsBits) {
    const Support::TemporaryFolder folder;
    constexpr int kRows = 20000; // through the buffer several times
    constexpr std::size_t kColumns = 5;
    std::mt19937_64 random(20240607);
    std::vector<double> wanted;
    {
        ResultFile file(folder.path("out.csv"));
        CsvWriter writer(file);
        writer.writeHeader({"a", "b", "c", "d", "e"});
        for (int row = 0; row < kRows; ++row) {
            for (std::size_t i = 0; i < kColumns; ++i) {
                const double any = std::bit_cast<double>(static_cast<std::uint64_t>(random()));
                wanted.push_back(std::isnan(any) ? 0.5 : any);
                writer.writeNumber(wanted.back());
            }
            writer.endRow();
        }
        writer.flush();
        file.complete();
    }
    CsvReader reader(folder.path("out.csv"));
    reader.select({0, 1, 2, 3, 4});
    double row[kColumns];
    std::size_t next = 0;
    while (reader.readRow(row))
        for (const double value : row) {
            ASSERT_LT(next, wanted.size());
            ASSERT_TRUE(Support::agree(value, wanted[next], Support::same)) << "value " << next;
            ++next;
        }
    EXPECT_EQ(next, wanted.size());
}

TEST(CsvWriter, ARowThatEndsBehindAFailureDoesNotCount) {
    ResultFile file("/dev/full");
    CsvWriter writer(file);
    writer.writeHeader({"t", "x"});
    const auto writeRow = [&] {
        writer.writeNumber(1.0);
        writer.writeEmpty();
        writer.endRow();
    };
    writeRow();
    EXPECT_EQ(writer.getRows(), 1u);
    EXPECT_ANY_THROW(writer.flush());
    EXPECT_EQ(writer.getRows(), 0u) << "nothing is in the file";
    writeRow();
    EXPECT_EQ(writer.getRows(), 0u);
}

} // namespace
