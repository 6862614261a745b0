// SPDX-License-Identifier: MIT
// The files are written by libmatio, which the host does without.
#include "host/recording/MatForm.h"

#include "host/ends/RecordingException.h"
#include "host/recording/RecordingForms.h"
#include "tests/host/kit/TemporaryFolder.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>
#include <matio.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using Quillmere::Host::DataWish;
using Quillmere::Host::openRecording;
using Quillmere::Host::RecordingException;
using Quillmere::Host::RecordingReader;
using Support::agree;
using Support::same;
using Rows = std::vector<std::vector<double>>;
using Strings = std::vector<std::string>;
using Shape = std::vector<std::size_t>;

matvar_t* numbers(const char* name, Shape shape, std::vector<double> values) {
    return Mat_VarCreate(name, MAT_C_DOUBLE, MAT_T_DOUBLE, static_cast<int>(shape.size()), shape.data(),
                         values.data(), 0);
}

matvar_t* text(const char* name, std::string letters) {
    std::size_t shape[] = {1, letters.size()};
    return Mat_VarCreate(name, MAT_C_CHAR, MAT_T_UTF8, 2, shape, letters.data(), 0);
}

matvar_t* cells(const char* name, const Strings& texts) {
    std::size_t shape[] = {1, texts.size()};
    matvar_t* const made = Mat_VarCreate(name, MAT_C_CELL, MAT_T_CELL, 2, shape, nullptr, 0);
    for (std::size_t i = 0; i < texts.size(); ++i)
        Mat_VarSetCell(made, static_cast<int>(i), text(nullptr, texts[i]));
    return made;
}

matvar_t* structure(const char* name, const std::vector<matvar_t*>& fields) {
    std::size_t shape[] = {1, 1};
    std::vector<const char*> names;
    for (const matvar_t* const field : fields)
        names.push_back(field->name);
    matvar_t* const made =
        Mat_VarCreateStruct(name, 2, shape, names.data(), static_cast<unsigned>(names.size()));
    for (matvar_t* const field : fields)
        Mat_VarSetStructFieldByName(made, field->name, 0, field);
    return made;
}

class MatForm : public testing::TestWithParam<matio_compression> {
protected:
    /// Writes the variables, which it frees.
    void write(const std::vector<matvar_t*>& variables) const {
        mat_t* const file = Mat_CreateVer(path.c_str(), nullptr, MAT_FT_MAT5);
        for (matvar_t* const variable : variables) {
            EXPECT_EQ(Mat_VarWrite(file, variable, GetParam()), 0);
            Mat_VarFree(variable);
        }
        Mat_Close(file);
    }

    Rows rows(const DataWish& wish = {}) const {
        const auto reader = openRecording(path, wish);
        std::vector<std::size_t> all(reader->getColumns().size());
        for (std::size_t i = 0; i < all.size(); ++i)
            all[i] = i;
        reader->select(all);
        Rows rows;
        std::vector<double> row(all.size());
        while (reader->takeRow(row.data()) != RecordingReader::Row::End)
            rows.push_back(row);
        return rows;
    }
    Strings columns(const DataWish& wish) const { return openRecording(path, wish)->getColumnNames(); }
    /// What is said behind the file's name.
    std::string refusal(const DataWish& wish = {}) const {
        try {
            rows(wish);
        } catch (const RecordingException& exception) {
            return std::string(exception.what()).substr(path.size());
        }
        return "";
    }

    const Support::TemporaryFolder folder;
    const std::string path = folder.path("in.mat");
};

INSTANTIATE_TEST_SUITE_P(Plain, MatForm, testing::Values(MAT_COMPRESSION_NONE));
INSTANTIATE_TEST_SUITE_P(Compressed, MatForm, testing::Values(MAT_COMPRESSION_ZLIB));

TEST_P(MatForm, RowsAreWhatWasWrittenBitForBitAcrossPieces) {
    constexpr std::size_t kRows = 70'000;
    std::vector<double> values(3 * kRows);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = std::sin(static_cast<double>(i)) * 1e-3;
    values[5] = -0.0;
    values[7] = std::numeric_limits<double>::quiet_NaN();
    write({numbers("acc", {kRows, 3}, values)});
    const auto reader = openRecording(path);
    EXPECT_EQ(reader->getColumnNames(), (Strings{"1", "2", "3"}));
    reader->select({2, 0});
    double row[2];
    std::size_t different = 0;
    for (std::size_t i = 0; i < kRows; ++i) {
        ASSERT_EQ(reader->takeRow(row), RecordingReader::Row::Sound);
        different += !agree(row[0], values[2 * kRows + i], same) || !agree(row[1], values[i], same);
        if (i == kRows / 2) {
            EXPECT_LT(reader->getBytesRead(), reader->getSize());
        }
    }
    EXPECT_EQ(different, 0u);
    EXPECT_EQ(reader->takeRow(row), RecordingReader::Row::End);
    EXPECT_EQ(reader->getBytesRead(), std::filesystem::file_size(path));
}

template <class Number>
matvar_t* numbersOf(matio_classes kind, matio_types type) {
    std::vector<Number> values{1, 2, 100};
    std::size_t shape[] = {3, 1};
    return Mat_VarCreate("x", kind, type, 2, shape, values.data(), 0);
}

TEST_P(MatForm, NumbersOfEveryKindAreRead) {
    matvar_t* const all[] = {numbersOf<std::int8_t>(MAT_C_INT8, MAT_T_INT8),
                             numbersOf<std::uint8_t>(MAT_C_UINT8, MAT_T_UINT8),
                             numbersOf<std::int16_t>(MAT_C_INT16, MAT_T_INT16),
                             numbersOf<std::uint16_t>(MAT_C_UINT16, MAT_T_UINT16),
                             numbersOf<std::int32_t>(MAT_C_INT32, MAT_T_INT32),
                             numbersOf<std::uint32_t>(MAT_C_UINT32, MAT_T_UINT32),
                             numbersOf<std::int64_t>(MAT_C_INT64, MAT_T_INT64),
                             numbersOf<std::uint64_t>(MAT_C_UINT64, MAT_T_UINT64),
                             numbersOf<float>(MAT_C_SINGLE, MAT_T_SINGLE)};
    for (matvar_t* const variable : all) {
        write({variable});
        EXPECT_EQ(rows(), (Rows{{1}, {2}, {100}}));
    }
}

TEST_P(MatForm, FieldsOfStructsAreFoundByTheirPaths) {
    write({numbers("rate", {1, 1}, {100}),
           structure("imu",
                     {structure("LowerBack", {numbers("Acc", {3, 2}, {1, 2, 3, 10, 20, 30}),
                                              numbers("t", {1, 3}, {0, 0.5, 1}), cells("axes", {"ax", "ay"}),
                                              cells("more", {"a", "b", "c"}), text("note", "slow")}),
                      numbers("Wrist", {2, 2}, {1, 2, 3, 4})})});
    EXPECT_EQ(columns({.data = "imu/LowerBack/Acc", .time = "t"}), (Strings{"ax", "ay", "t"}));
    EXPECT_EQ(rows({.data = "imu/LowerBack/Acc", .time = "t"}), (Rows{{1, 10, 0}, {2, 20, 0.5}, {3, 30, 1}}));
    EXPECT_EQ(rows({.data = "imu/Wrist", .time = {}}), (Rows{{1, 3}, {2, 4}}));
    EXPECT_EQ(refusal(), ": found 3 variables that may be the recording; expected 'data:' and one of "
                         "imu/LowerBack/Acc, imu/LowerBack/t and imu/Wrist");
    EXPECT_EQ(refusal({.data = "imu/LowerBack/acc", .time = {}}),
              ": found no data 'imu/LowerBack/acc'; expected one of imu/LowerBack/Acc, imu/LowerBack/t and "
              "imu/Wrist; did you mean imu/LowerBack/Acc?");
    const std::string expected =
        "; expected rows of numbers; in this file that is imu/LowerBack/Acc, imu/LowerBack/t and imu/Wrist";
    EXPECT_EQ(refusal({.data = "imu", .time = {}}), ": imu: found a struct, which holds others" + expected);
    EXPECT_EQ(refusal({.data = "imu/LowerBack/note", .time = {}}),
              ": imu/LowerBack/note: found text" + expected);
    EXPECT_EQ(refusal({.data = "imu/LowerBack/axes", .time = {}}),
              ": imu/LowerBack/axes: found a cell array" + expected);
}

TEST_P(MatForm, WhatIsNoTableOfNumbersIsNamed) {
    std::vector<double> real{1, 2};
    std::vector<double> imaginary{3, 4};
    mat_complex_split_t split{real.data(), imaginary.data()};
    std::size_t shape[] = {2, 1};
    write({Mat_VarCreate("complex", MAT_C_DOUBLE, MAT_T_DOUBLE, 2, shape, &split, MAT_F_COMPLEX),
           numbers("cube", {2, 2, 2}, {1, 2, 3, 4, 5, 6, 7, 8}), numbers("empty", {0, 3}, {})});
    const std::string expected = "; expected rows of numbers; in this file that is nothing";
    EXPECT_EQ(refusal({.data = "complex", .time = {}}), ": complex: found complex numbers" + expected);
    EXPECT_EQ(refusal({.data = "cube", .time = {}}), ": cube: found 3 dimensions" + expected);
    EXPECT_EQ(refusal({.data = "empty", .time = {}}), ": empty: found nothing in it" + expected);
}

TEST_P(MatForm, ACutFileIsRefusedWhereverItIsCut) {
    write({structure("imu", {numbers("Acc", {3, 2}, {1, 2, 3, 10, 20, 30}), text("note", "slow")}),
           numbers("x", {3, 1}, {1, 2, 3})});
    const std::string bytes = folder.read("in.mat");
    int whole = 0;
    for (std::size_t length = 20; length < bytes.size(); ++length) {
        folder.write("in.mat", bytes.substr(0, length));
        const std::string told = refusal({.data = "imu/Acc", .time = {}});
        whole += told.empty() ? 1 : 0;
        if (length > 128) continue;
        EXPECT_EQ(told.find(length < 128 ? ": found its end behind " : ": found no data 'imu/Acc'"), 0u)
            << told;
    }
    EXPECT_EQ(whole, 1) << "between two variables, where a file may end";
}

TEST_P(MatForm, AFlippedBitCrashesNothing) {
    write({structure("imu", {numbers("Acc", {3, 2}, {1, 2, 3, 10, 20, 30}), cells("axes", {"ax", "ay"})}),
           numbers("x", {3, 1}, {1, 2, 3})});
    const std::string bytes = folder.read("in.mat");
    const Rows whole = rows({.data = "imu/Acc", .time = {}});
    int refused = 0;
    int different = 0;
    for (std::size_t bit = 8 * 120; bit < 8 * bytes.size(); bit += 3) {
        std::string damaged = bytes;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
        folder.write("in.mat", damaged);
        try {
            if (rows({.data = "imu/Acc", .time = {}}) != whole) ++different;
        } catch (const RecordingException&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 100);
    // Numbers that aren't compressed have no checksum, nor has anything that tells their type.
    if (GetParam() == MAT_COMPRESSION_ZLIB) {
        EXPECT_EQ(different, 0);
    }
}

TEST(MatFile, TheOtherByteOrderIsReadAsWell) {
    const Support::TemporaryFolder folder;
    const auto word = [](std::uint32_t value) {
        std::string bytes;
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes += static_cast<char>(value >> shift & 0xFF);
        return bytes;
    };
    std::string array = word(6) + word(8) + word(10) + word(0);              // 16-bit whole numbers
    array += word(5) + word(8) + word(3) + word(1);                          // 3 by 1
    array += word(1 << 16 | 1) + std::string("x\0\0\0", 4);                  // named x
    array += word(3) + word(6) + std::string("\0\x01\xFF\xFE\x01\0\0\0", 8); // 1, -2, 256
    std::string header(128, ' ');
    header.replace(0, 19, "MATLAB 5.0 MAT-file");
    header.replace(124, 4, std::string("\1\0MI", 4));
    const auto reader = openRecording(
        folder.write("in.mat", header + word(14) + word(static_cast<std::uint32_t>(array.size())) + array));
    reader->select({0});
    for (const double wanted : {1.0, -2.0, 256.0}) {
        double value = 0.0;
        ASSERT_EQ(reader->takeRow(&value), RecordingReader::Row::Sound);
        EXPECT_EQ(value, wanted);
    }
}

} // namespace
