// SPDX-License-Identifier: MIT
#include "framework/properties/TextConversion.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>

using namespace Support;
using namespace Quillmere::Core::Private;

namespace {
template <class T>
T parsed(const std::string& text) {
    T value{};
    textToValue(text, value);
    return value;
}

template <class T>
std::string printedText(const T& value) {
    std::string text;
    valueToText(value, text);
    return text;
}

/// A locale that would spoil every number: thousands apart, a comma for the point, words for truth.
class Spoiling final : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

struct Unprintable {
    friend std::ostream& operator<<(std::ostream& out, const Unprintable&) {
        out.setstate(std::ios::failbit);
        return out;
    }
};
} // namespace

TEST(TextConversionTest, ReadsWhatAStreamReads) {
    EXPECT_EQ(parsed<int>("12"), 12);
    EXPECT_EQ(parsed<int>(" \t\n-12abc"), -12) << "white space before, anything behind";
    EXPECT_EQ(parsed<int>("12.9"), 12);
    EXPECT_EQ(parsed<int>("+5"), 5);
    EXPECT_EQ(parsed<int>("010"), 10);
    EXPECT_EQ(parsed<unsigned>("4294967295"), 4294967295u);
    EXPECT_EQ(parsed<bool>("1"), true);
    EXPECT_EQ(parsed<bool>("0 or not"), false);
    EXPECT_TRUE(agree(parsed<double>("0.1"), 0.1, same));
    EXPECT_TRUE(agree(parsed<double>("-1e-3x"), -1e-3, same));
    EXPECT_TRUE(agree(parsed<double>("-0"), -0.0, same));
    EXPECT_TRUE(agree(parsed<double>("3.14159265358979312"), 3.14159265358979312, same));
}

TEST(TextConversionTest, RefusesWhatAStreamRefuses) {
    for (const char* const text : {"", " ", "x", "true", "2", "10"})
        EXPECT_EQ(refusal<Poco::DataFormatException>([&] { parsed<bool>(text); }), "") << text;
    for (const char* const text : {"", " ", "x", ".5", "--1", "2147483648"})
        EXPECT_EQ(refusal<Poco::DataFormatException>([&] { parsed<int>(text); }), "") << text;
    for (const char* const text : {"", "x", "1e400", "nan", "e5"})
        EXPECT_EQ(refusal<Poco::DataFormatException>([&] { parsed<double>(text); }), "") << text;
}

TEST(TextConversionTest, AValueThatCannotBePrintedIsRefused) {
    std::string text = "as it was";
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { valueToText(Unprintable(), text); }), "");
    EXPECT_EQ(text, "as it was");
}

TEST(TextConversionTest, PrintsAMatrixAsRowsColumnsAndElements) {
    EXPECT_EQ(printedText(matrix({{1, 2}, {3, 4}})), "2 2 1 2 3 4");
    EXPECT_EQ(printedText(MatrixXd()), "0 0") << "no trailing blank";
    EXPECT_EQ(printedText(MatrixXd(0, 3)), "0 3");
    EXPECT_EQ(printedText(matrix({{-0.5, 1234567, 1e-9}})), "1 3 -0.5 1.23457e+06 1e-09");
}

TEST(TextConversionTest, ReadsAMatrix) {
    struct Row {
        const char* name;
        const char* text;
        MatrixXd wanted;
    };
    const Row rows[] = {
        {.name = "by rows", .text = "2 2 1 2 3 4", .wanted = matrix({{1, 2}, {3, 4}})},
        {.name = "any white space", .text = "\t2\n 1\n1\n\n2", .wanted = matrix({{1}, {2}})},
        {.name = "three of four", .text = "2 2 1 2 3", .wanted = matrix({{1, 2}, {3, 0}})},
        {.name = "none of four", .text = "2 2", .wanted = matrix({{0, 0}, {0, 0}})},
        {.name = "more than fit", .text = "1 2 5 6 7 8", .wanted = matrix({{5, 6}})},
        {.name = "rubbish behind the last", .text = "1 2 5 6 rubbish", .wanted = matrix({{5, 6}})},
        {.name = "empty", .text = "0 0", .wanted = MatrixXd()},
        {.name = "empty with elements", .text = "0 0 1 2", .wanted = MatrixXd()},
        {.name = "both below zero", .text = "-3 -4 1", .wanted = MatrixXd()},
        {.name = "no columns", .text = "3 0", .wanted = MatrixXd(3, 0)},
        {.name = "no rows", .text = "0 3", .wanted = MatrixXd(0, 3)},
    };
    for (const Row& row : rows)
        EXPECT_TRUE(agree(parsed<MatrixXd>(row.text), row.wanted, same)) << row.name;
}

TEST(TextConversionTest, RefusesTextsThatGiveNoMatrix) {
    for (const char* const text : {"", " ", "x", "2", "2 x", "2 2 1 x 3 4", "1 2 5 x", "99999999999 1",
                                   "1 1 1e999", "2 2 1 2 3 " /* the blank hides the end */})
        EXPECT_EQ(refusal<Poco::DataFormatException>([&] { parsed<MatrixXd>(text); }), "") << text;
}

TEST(TextConversionTest, RefusesSizesOutOfBounds) {
    for (const char* const text : {"-1 3", "3 -1", "65536 65536", "1 536870912", "536870912 1", "46341 46341",
                                   "3 99999999999", "-1 1 5"}) {
        MatrixXd value = matrix({{1, 2}});
        EXPECT_EQ(refusal<Quillmere::Core::MatrixAllocationException>([&] { textToValue(text, value); }),
                  "bad allocation")
            << text;
    }
}

TEST(TextConversionTest, ReadsBackWhatIsPrinted) {
    for (const MatrixXd& value :
         {matrix({{1, 2.5, -3}, {1e300, -1e-300, 0}}), matrix({{123456}}), MatrixXd(0, 3)})
        EXPECT_TRUE(agree(parsed<MatrixXd>(printedText(value)), value, same));
}

TEST(TextConversionTest, NoLocaleChangesTheText) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Spoiling));
    EXPECT_EQ(printedText(1234567), "1234567");
    EXPECT_EQ(printedText(0.5), "0.5");
    EXPECT_EQ(printedText(matrix({{1234.5}})), "1 1 1234.5");
    EXPECT_EQ(parsed<double>("0.5"), 0.5);
    EXPECT_EQ(parsed<int>("1.234"), 1);
    std::locale::global(before);
}
