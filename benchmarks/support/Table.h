// SPDX-License-Identifier: MIT
#pragma once

#include "host/recording/CsvWriter.h"
#include "tests/support/OwnFolder.h"

#include <cmath>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace Bench {

inline constexpr std::size_t kColumns = 10;
/// So many that the look into a file's begin, 0.4 ms, is a small part of an iteration.
inline constexpr std::size_t kRows = 200000;

/// One table for all bodies, in memory and as a file: times in steps of 0.01 s, and nine columns of noise.
struct Table {
    /// Of that many decimals; 0: with all their digits.
    explicit Table(int digits) : values(kRows * kColumns) {
        std::mt19937_64 random(1);
        std::normal_distribution<double> noise;
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = i % kColumns == 0 ? 0.01 * static_cast<double>(i / kColumns) : noise(random);
            if (digits > 0) values[i] = std::round(values[i] * std::pow(10, digits)) / std::pow(10, digits);
        }
        Quillmere::Host::ResultFile file(path(), {.overwrites = true, .looksOwn = {}});
        Quillmere::Host::CsvWriter writer(file);
        write(writer);
        writer.flush();
        file.complete();
        std::ifstream in(path(), std::ios::binary);
        text.assign(std::istreambuf_iterator<char>(in), {});
        body = text.find('\n') + 1;
    }

    std::string path() const { return (folder.getPath() / "table.csv").string(); }

    void write(Quillmere::Host::CsvWriter& writer) const {
        writer.writeHeader({"t", "a", "b", "c", "d", "e", "f", "g", "h", "i"});
        for (std::size_t row = 0; row < kRows; ++row) {
            for (std::size_t i = 0; i < kColumns; ++i)
                writer.writeNumber(values[row * kColumns + i]);
            writer.endRow();
        }
    }

    std::vector<double> values;
    Support::OwnFolder folder{"quillmere-bench"};
    std::string text;
    std::size_t body;
};

} // namespace Bench
