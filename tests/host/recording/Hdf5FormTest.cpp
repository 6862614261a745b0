// SPDX-License-Identifier: MIT
#include "host/recording/Hdf5Form.h"

#include "host/ends/RecordingException.h"
#include "host/recording/RecordingForms.h"
#include "tests/host/kit/GraphFixture.h"
#include "tests/host/kit/TemporaryFolder.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>
#include <hdf5.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

namespace {

using Quillmere::Host::DataWish;
using Quillmere::Host::openRecording;
using Quillmere::Host::RecordingException;
using Quillmere::Host::RecordingReader;
using Support::agree;
using Support::same;
using Strings = std::vector<std::string>;
using Shape = std::vector<hsize_t>;

/// Writes a file by the library; everything is closed at the end.
class Writer {
public:
    explicit Writer(const std::string& path)
        : file(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT)),
          groups(H5Pcreate(H5P_LINK_CREATE)) {
        H5Pset_create_intermediate_group(groups, 1);
    }
    ~Writer() {
        H5Pclose(groups);
        H5Fclose(file);
    }

    /// In pieces of so many rows, compressed and checked, when that isn't 0.
    void write(const char* path, hid_t stored, hid_t inMemory, const Shape& shape, const void* values,
               hsize_t piece = 0) const {
        const hid_t space = shape.empty()
                                ? H5Screate(H5S_SCALAR)
                                : H5Screate_simple(static_cast<int>(shape.size()), shape.data(), nullptr);
        const hid_t creation = H5Pcreate(H5P_DATASET_CREATE);
        if (piece > 0) {
            Shape pieces = shape;
            pieces[0] = piece;
            H5Pset_chunk(creation, static_cast<int>(pieces.size()), pieces.data());
            H5Pset_deflate(creation, 1);
            H5Pset_fletcher32(creation);
        }
        const hid_t data = H5Dcreate2(file, path, stored, space, groups, creation, H5P_DEFAULT);
        if (values != nullptr) {
            EXPECT_GE(H5Dwrite(data, inMemory, H5S_ALL, H5S_ALL, H5P_DEFAULT, values), 0) << path;
        }
        H5Dclose(data);
        H5Pclose(creation);
        H5Sclose(space);
    }
    void write(const char* path, const Shape& shape, const std::vector<double>& values,
               hsize_t piece = 0) const {
        write(path, H5T_IEEE_F64LE, H5T_NATIVE_DOUBLE, shape, values.data(), piece);
    }
    void writeTexts(const char* path, const Strings& texts, bool isFixed) const {
        const hid_t type = H5Tcopy(H5T_C_S1);
        H5Tset_size(type, isFixed ? 8 : H5T_VARIABLE);
        std::vector<const char*> pointers;
        std::string fixed(8 * texts.size(), '\0');
        for (std::size_t i = 0; i < texts.size(); ++i) {
            pointers.push_back(texts[i].c_str());
            fixed.replace(8 * i, texts[i].size(), texts[i]);
        }
        const void* const values = isFixed ? static_cast<const void*>(fixed.data()) : pointers.data();
        write(path, type, type, {texts.size()}, values);
        H5Tclose(type);
    }
    void mark(const char* path, const char* attribute, const char* text) const {
        const hid_t data = H5Dopen2(file, path, H5P_DEFAULT);
        const hid_t type = H5Tcopy(H5T_C_S1);
        H5Tset_size(type, std::string(text).size());
        const hid_t space = H5Screate(H5S_SCALAR);
        const hid_t made = H5Acreate2(data, attribute, type, space, H5P_DEFAULT, H5P_DEFAULT);
        H5Awrite(made, type, text);
        H5Aclose(made);
        H5Sclose(space);
        H5Tclose(type);
        H5Dclose(data);
    }

private:
    hid_t file;
    hid_t groups;
};

std::vector<std::vector<double>> rowsOf(RecordingReader& reader) {
    std::vector<std::size_t> all(reader.getColumns().size());
    for (std::size_t i = 0; i < all.size(); ++i)
        all[i] = i;
    reader.select(all);
    std::vector<std::vector<double>> rows;
    std::vector<double> row(all.size());
    while (reader.takeRow(row.data()) != RecordingReader::Row::End)
        rows.push_back(row);
    return rows;
}

using Rows = std::vector<std::vector<double>>;

class Hdf5Form : public testing::Test {
protected:
    ~Hdf5Form() override {
        EXPECT_EQ(H5Fget_obj_count(static_cast<hid_t>(H5F_OBJ_ALL), H5F_OBJ_ALL), 0) << "left open";
    }

    Rows rows(const DataWish& wish = {}) const { return rowsOf(*openRecording(path, wish)); }
    Strings columns(const DataWish& wish = {}) const { return openRecording(path, wish)->getColumnNames(); }
    /// What is said behind the file's name.
    std::string refusal(const DataWish& wish = {}) const {
        try {
            rowsOf(*openRecording(path, wish));
        } catch (const RecordingException& exception) {
            return std::string(exception.what()).substr(path.size());
        }
        return "";
    }

    const Support::TemporaryFolder folder;
    const std::string path = folder.path("in.h5");
};

TEST_F(Hdf5Form, RowsAreWhatWasWrittenBitForBitAcrossPieces) {
    constexpr std::size_t kRows = 70'000;
    std::vector<double> values(3 * kRows);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = std::sin(static_cast<double>(i)) * 1e-3;
    values[5] = -0.0;
    values[7] = std::numeric_limits<double>::quiet_NaN();
    values[8] = std::numeric_limits<double>::infinity();
    for (const hsize_t piece : {hsize_t{0}, hsize_t{1000}, hsize_t{kRows}}) {
        Writer(path).write("acc", {kRows, 3}, values, piece);
        const auto reader = openRecording(path);
        EXPECT_EQ(reader->getColumnNames(), (Strings{"1", "2", "3"}));
        reader->select({2, 0, 1});
        double row[3];
        std::size_t different = 0;
        for (std::size_t i = 0; i < kRows; ++i) {
            ASSERT_EQ(reader->takeRow(row), RecordingReader::Row::Sound);
            const double* const wanted = &values[3 * i];
            different += !agree(row[0], wanted[2], same) || !agree(row[1], wanted[0], same) ||
                         !agree(row[2], wanted[1], same);
            if (i == kRows / 2) {
                EXPECT_GT(reader->getBytesRead(), reader->getSize() / 3);
                EXPECT_LT(reader->getBytesRead(), reader->getSize());
            }
        }
        EXPECT_EQ(different, 0u) << "pieces of " << piece;
        EXPECT_EQ(reader->takeRow(row), RecordingReader::Row::End);
        EXPECT_EQ(reader->getBytesRead(), std::filesystem::file_size(path));
        EXPECT_FALSE(reader->getIsChanged());
    }
}

TEST_F(Hdf5Form, NumbersOfEveryKindAreRead) {
    const double values[] = {-3, 0, 1};
    for (const hid_t type : {H5T_STD_I8LE, H5T_STD_I16BE, H5T_STD_I32LE, H5T_STD_I64BE, H5T_IEEE_F32BE}) {
        Writer(path).write("x", type, H5T_NATIVE_DOUBLE, {3}, values);
        EXPECT_EQ(rows(), (Rows{{-3}, {0}, {1}}));
    }
    const std::uint64_t large[] = {1ull << 53, 250};
    Writer(path).write("x", H5T_STD_U64LE, H5T_NATIVE_UINT64, {2}, large);
    EXPECT_EQ(rows(), (Rows{{9007199254740992.0}, {250}}));
    const hid_t flag = H5Tenum_create(H5T_STD_I8LE);
    for (const std::int8_t value : {std::int8_t{0}, std::int8_t{1}})
        H5Tenum_insert(flag, value == 0 ? "FALSE" : "TRUE", &value);
    const std::int8_t flags[] = {1, 0, 1};
    Writer(path).write("x", flag, flag, {3}, flags);
    H5Tclose(flag);
    EXPECT_EQ(rows(), (Rows{{1}, {0}, {1}}));
}

TEST_F(Hdf5Form, AVectorIsOneColumnHoweverItLies) {
    for (const Shape& shape : {Shape{3}, Shape{3, 1}, Shape{1, 3}}) {
        Writer(path).write("x", shape, {1, 2, 3});
        EXPECT_EQ(rows(), (Rows{{1}, {2}, {3}}));
    }
    Writer(path).write("x", {}, {7});
    EXPECT_EQ(rows({.data = "x", .time = {}}), (Rows{{7}}));
}

TEST_F(Hdf5Form, AMatrixOfMatlabHasItsOwnRows) {
    {
        const Writer writer(path);
        writer.write("imu/acc", {2, 3}, {1, 2, 3, 10, 20, 30}); // as MATLAB writes 3 by 2
        writer.mark("imu/acc", "MATLAB_class", "double");
        writer.write("imu/t", {1, 3}, {0, 0.5, 1});
        writer.mark("imu/t", "MATLAB_class", "double");
        const std::uint16_t text[] = {'a', 'b', 'c'};
        writer.write("imu/note", H5T_STD_U16LE, H5T_NATIVE_UINT16, {3, 1}, text);
        writer.mark("imu/note", "MATLAB_class", "char");
    }
    EXPECT_EQ(rows({.data = "imu/acc", .time = "t"}), (Rows{{1, 10, 0}, {2, 20, 0.5}, {3, 30, 1}}));
    EXPECT_EQ(refusal({.data = "imu/note", .time = {}}),
              ": imu/note: found text; expected rows of numbers; in this file that is imu/acc and imu/t");
}

TEST_F(Hdf5Form, ColumnsHaveTheNamesThatTheFileTells) {
    struct Sample {
        double t;
        char label[4];
        float x;
    };
    const hid_t label = H5Tcopy(H5T_C_S1);
    H5Tset_size(label, 4);
    const hid_t type = H5Tcreate(H5T_COMPOUND, sizeof(Sample));
    H5Tinsert(type, "time", HOFFSET(Sample, t), H5T_NATIVE_DOUBLE);
    H5Tinsert(type, "label", HOFFSET(Sample, label), label);
    H5Tinsert(type, "ax", HOFFSET(Sample, x), H5T_NATIVE_FLOAT);
    const Sample samples[] = {{0.25, "a", 0.1f}, {0.5, "b", 2}};
    Writer(path).write("walk", type, type, {2}, samples);
    H5Tclose(type);
    H5Tclose(label);
    EXPECT_EQ(columns({.data = {}, .time = "time"}), (Strings{"time", "ax"}));
    EXPECT_EQ(rows(), (Rows{{0.25, double{0.1f}}, {0.5, 2}}));

    for (const bool isFixed : {true, false}) {
        const Writer writer(path);
        writer.write("imu/acc", {2, 3}, {1, 2, 3, 4, 5, 6});
        writer.mark("imu/acc", "units", "m/s^2");
        writer.writeTexts("imu/axes", {"ax", "ay", "az"}, isFixed);
        writer.writeTexts("imu/others", {"1", "2"}, isFixed);
        writer.writeTexts("elsewhere", {"a", "b", "c"}, isFixed);
    }
    EXPECT_EQ(columns(), (Strings{"ax", "ay", "az"}));
    EXPECT_EQ(openRecording(path)->getColumns()[1].unit, "m/s^2");
    {
        const Writer writer(path);
        writer.write("acc", {2, 3}, {1, 2, 3, 4, 5, 6});
        writer.writeTexts("axes", {"ax", "ay", "az"}, true);
        writer.writeTexts("others", {"a", "b", "c"}, true);
    }
    EXPECT_EQ(columns(), (Strings{"1", "2", "3"})) << "two lists may be meant";
}

TEST_F(Hdf5Form, DataAndTimesAreFoundByTheirPaths) {
    {
        const Writer writer(path);
        writer.write("imu/LowerBack/Acc", {3, 2}, {1, 2, 3, 4, 5, 6});
        writer.write("imu/LowerBack/t", {3}, {0, 0.5, 1});
        writer.write("imu/Wrist/Acc", {4, 2}, {1, 2, 3, 4, 5, 6, 7, 8});
        writer.write("rate", {}, {100});
    }
    EXPECT_EQ(columns({.data = "imu/LowerBack/Acc", .time = "t"}), (Strings{"1", "2", "t"}));
    EXPECT_EQ(rows({.data = "/imu/LowerBack/Acc", .time = "/imu/LowerBack/t"}),
              (Rows{{1, 2, 0}, {3, 4, 0.5}, {5, 6, 1}}));
    EXPECT_EQ(refusal(), ": found 3 variables that may be the recording; expected 'data:' and one of "
                         "imu/LowerBack/Acc, imu/LowerBack/t and imu/Wrist/Acc");
    EXPECT_EQ(refusal({.data = "imu/LowerBck/Acc", .time = {}}),
              ": found no data 'imu/LowerBck/Acc'; expected one of imu/LowerBack/Acc, imu/LowerBack/t and "
              "imu/Wrist/Acc; did you mean imu/LowerBack/Acc?");
    EXPECT_EQ(refusal({.data = "imu/LowerBack/Acc", .time = "imu/LowerBack/tt"}),
              ": found no times 'imu/LowerBack/tt'; expected one of 1, 2 and imu/LowerBack/t; did you mean "
              "imu/LowerBack/t?");
    EXPECT_EQ(refusal({.data = "imu/Wrist/Acc", .time = "imu/LowerBack/t"}),
              ": imu/LowerBack/t: found 3 rows of 1 column; expected one column of times, 4 rows as "
              "'imu/Wrist/Acc' has");
    EXPECT_EQ(refusal({.data = "imu/LowerBack", .time = {}}),
              ": imu/LowerBack: found a group, which holds others; expected rows of numbers; in this file "
              "that is imu/LowerBack/Acc, imu/LowerBack/t and imu/Wrist/Acc");
}

TEST_F(Hdf5Form, TheOneThatHasRowsNeedsNoName) {
    {
        const Writer writer(path);
        writer.write("acc", {2, 2}, {1, 2, 3, 4});
        writer.write("t", {2}, {0, 1});
        writer.write("rate", {1}, {100});
    }
    EXPECT_EQ(rows({.data = {}, .time = "t"}), (Rows{{1, 2, 0}, {3, 4, 1}}));
}

TEST_F(Hdf5Form, WhatIsNoTableOfNumbersIsNamed) {
    struct Complex {
        double r, i;
    };
    const hid_t complexType = H5Tcreate(H5T_COMPOUND, sizeof(Complex));
    H5Tinsert(complexType, "r", HOFFSET(Complex, r), H5T_NATIVE_DOUBLE);
    H5Tinsert(complexType, "i", HOFFSET(Complex, i), H5T_NATIVE_DOUBLE);
    const Complex numbers[] = {{1, 2}, {3, 4}};
    {
        const Writer writer(path);
        writer.write("complex", complexType, complexType, {2}, numbers);
        writer.write("cube", {2, 2, 2}, {1, 2, 3, 4, 5, 6, 7, 8});
        writer.write("empty", H5T_IEEE_F64LE, H5T_NATIVE_DOUBLE, {0, 3}, nullptr);
        writer.writeTexts("names", {"a", "b"}, true);
    }
    H5Tclose(complexType);
    const std::string expected = "; expected rows of numbers; in this file that is nothing";
    EXPECT_EQ(refusal({.data = "complex", .time = {}}), ": complex: found complex numbers" + expected);
    EXPECT_EQ(refusal({.data = "cube", .time = {}}), ": cube: found 3 dimensions" + expected);
    EXPECT_EQ(refusal({.data = "empty", .time = {}}), ": empty: found nothing in it" + expected);
    EXPECT_EQ(refusal({.data = "names", .time = {}}), ": names: found text" + expected);
    EXPECT_EQ(refusal(),
              ": found nothing that has rows of numbers; expected a variable whose rows are points "
              "of time");
}

TEST_F(Hdf5Form, AFaultyCellIsToldWithItsPlace) {
    Writer(path).write("imu/acc", {3, 2}, {1, 2, 3, 4.5, 5, 6});
    const auto reader = openRecording(path);
    reader->select({0, 1});
    double row[2];
    reader->takeRow(row);
    reader->takeRow(row);
    EXPECT_EQ(reader->getPlace(), path + ": imu/acc: row 2");
    EXPECT_EQ(reader->getRowText(), "\"3,4.5\"");
    EXPECT_EQ(reader->getFaultOfCell(1, "a time in seconds").getText(),
              path + ": imu/acc: row 2: column '2': found 4.5; expected a time in seconds");
}

TEST_F(Hdf5Form, DamagedFilesAreRefusedOrReadAsTheyWereAndNothingIsPrinted) {
    std::vector<double> values(600);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = std::sqrt(static_cast<double>(i));
    Writer(path).write("acc", {200, 3}, values, 50);
    const Rows whole = rows();
    const std::string bytes = folder.read("in.h5");
    testing::internal::CaptureStderr();
    for (std::size_t length = 8; length < bytes.size(); length += 61) {
        folder.write("in.h5", bytes.substr(0, length));
        EXPECT_NE(refusal(), "") << "cut behind " << length;
    }
    // The numbers themselves, which a checksum guards.
    int refused = 0;
    for (std::size_t bit = 8 * (bytes.size() - 600); bit < 8 * bytes.size(); bit += 7) {
        std::string damaged = bytes;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
        folder.write("in.h5", damaged);
        try {
            EXPECT_EQ(rows(), whole) << "bit " << bit;
        } catch (const RecordingException&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 100);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Hdf5Form, AStreamIsRefused) {
    Writer(path).write("acc", {2, 2}, {1, 2, 3, 4});
    EXPECT_EQ(freopen(path.c_str(), "rb", stdin), stdin);
    try {
        openRecording("-");
        ADD_FAILURE() << "it was opened";
    } catch (const RecordingException& exception) {
        EXPECT_STREQ(
            exception.what(),
            "standard input: found an HDF5 file that comes as a stream; expected the name of a file, "
            "unpacked: its rows don't lie one behind the other");
    }
}

/// The same through a source of a graph.
class Hdf5Source : public Support::GraphFixture {
protected:
    static std::string graph(const std::string& properties) {
        return "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.h5, " +
               properties +
               "}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv}}\nconnections:\n"
               "  - {from: in.x, to: out.x}\n";
    }
    std::string result(const std::string& properties) {
        const std::string failure = run(graph(properties));
        return failure.empty() ? folder.read("out.csv") : failure;
    }
    std::string refusal(const std::string& properties) { return complaintsOf(graph(properties)); }
};

TEST_F(Hdf5Source, ReadsTheDataThatTheGraphNames) {
    {
        const Writer writer(folder.path("in.h5"));
        writer.write("imu/acc", {2, 2}, {1, 2, 3, 4});
        writer.write("imu/gyr", {2, 2}, {5, 6, 7, 8});
        writer.write("imu/t", {2}, {0.25, 0.5});
    }
    EXPECT_EQ(result("data: imu/gyr, time: imu/t, pins: {x: [2, 1]}"), "t,x[0],x[1]\n0.25,6,5\n0.5,8,7\n");
    EXPECT_EQ(result("data: imu/acc, rate: 4, pins: {x: 2}"), "t,x[0]\n0,2\n0.25,4\n");
    EXPECT_EQ(
        refusal("data: imu/ac, rate: 4, pins: {x: 2}"),
        "g.yaml:3:56: found no data 'imu/ac' in in.h5; expected one of imu/acc, imu/gyr and imu/t; did you "
        "mean imu/acc?\n");
    EXPECT_EQ(
        refusal("rate: 4, pins: {x: 2}"),
        "g.yaml:3:56: found 3 variables that may be the recording in in.h5; expected 'data:' and one of "
        "imu/acc, imu/gyr and imu/t\n");
    folder.write("in.h5", "a,b\n1,2\n");
    EXPECT_EQ(
        refusal("data: imu/ac, rate: 4, pins: {x: b}"),
        "g.yaml:3:56: found one table, which has no 'imu/ac' in in.h5; expected no 'data:', which chooses "
        "among the variables of a MAT or an HDF5 file\n");
}

} // namespace
