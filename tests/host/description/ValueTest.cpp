// SPDX-License-Identifier: MIT
#include "host/description/Value.h"

#include "host/description/ValueReader.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace {

using Quillmere::Core::MatrixXd;
using Quillmere::Host::Complaints;
using Quillmere::Host::readValueText;
using Quillmere::Host::Value;
using Support::agree;
using Support::same;

std::string textOf(const Complaints& complaints) {
    std::string text;
    for (const auto& complaint : complaints.getSorted())
        text += complaint.getText() + "\n";
    return text;
}

/// What reading `text` complains of.
std::string complaintsOf(const std::string& text) {
    Complaints complaints;
    readValueText(text, "g.yaml", true, complaints);
    return textOf(complaints);
}

TEST(Value, KeepsWhatIsWrittenAndWhere) {
    Complaints complaints;
    const auto value = readValueText("a: 010\nb: {c: \"no\", d: [1, ~]}\n", "g.yaml", true, complaints);
    ASSERT_TRUE(value.has_value());
    ASSERT_EQ(value->entries.size(), 2u);
    EXPECT_EQ(value->find("a")->value.text, "010");
    const Value& b = value->find("b")->value;
    EXPECT_TRUE(b.find("c")->value.isQuoted);
    EXPECT_EQ(b.find("c")->value.where.line, 2);
    EXPECT_EQ(b.find("c")->value.where.column, 8);
    EXPECT_EQ(b.find("d")->value.items.at(1).kind, Value::Kind::Null);
    EXPECT_EQ(b.find("nothing"), nullptr);
    EXPECT_TRUE(complaints.isEmpty());
}

TEST(Value, JsonIsReadByTheSameReader) {
    Complaints complaints;
    const auto value = readValueText(R"({"a": [1, -2.5e3, true, null, "x"]})", "g.json", true, complaints);
    ASSERT_TRUE(value.has_value());
    const Value& list = value->find("a")->value;
    EXPECT_EQ(toNumber(list.items.at(1), complaints), -2500.0);
    EXPECT_EQ(toFlag(list.items.at(2), complaints), true);
    EXPECT_EQ(list.items.at(3).kind, Value::Kind::Null);
    EXPECT_TRUE(list.items.at(4).isQuoted);
    EXPECT_TRUE(complaints.isEmpty());
}

TEST(Value, RefusesWhatIsNoFileOfValues) {
    EXPECT_EQ(complaintsOf("a: 1\nb:\n  c: 2\n  c: 3\n"),
              "g.yaml:4:3: found the key 'c' a second time; expected each key "
              "once (the first is in line 3)\n");
    EXPECT_EQ(complaintsOf("a: 1\n---\nb: 2\n"),
              "g.yaml:2:1: found a second document; expected one document in a file\n");
    EXPECT_EQ(complaintsOf("a: [1,\nb: 2\n"), "g.yaml:3:1: found text that is neither YAML nor JSON (end of "
                                              "sequence flow not found); expected a graph "
                                              "file in YAML or JSON\n");
    EXPECT_EQ(complaintsOf("[1, 2]: 3\n"), "g.yaml:1:1: found a key that is no text; expected a name\n");
}

struct NumberRow {
    std::string text;
    double number;
};

TEST(Value, NumbersAreNumbers) {
    const NumberRow rows[] = {{"0.08", 0.08},
                              {"-3", -3},
                              {"+2.5", 2.5},
                              {"1e-3", 1e-3},
                              {"0", 0},
                              {"-0", -0.0},
                              {"0.5", 0.5},
                              {".inf", std::numeric_limits<double>::infinity()},
                              {"-.Inf", -std::numeric_limits<double>::infinity()},
                              {".nan", std::numeric_limits<double>::quiet_NaN()}};
    for (const NumberRow& row : rows) {
        Complaints complaints;
        const auto number = toNumber(*readValueText(row.text, "g", true, complaints), complaints);
        ASSERT_TRUE(number.has_value()) << row.text << textOf(complaints);
        EXPECT_TRUE(agree(*number, row.number, same)) << row.text;
    }
}

struct RefusalRow {
    std::string text;
    std::string complaint; ///< Of `toNumber`, behind the place.
};

TEST(Value, AMatrixIsSizedWhenAllItsRowsFit) {
    // Sized by its first row and the number of rows, this one would take 20 GB.
    std::string text = "[[1";
    for (int i = 0; i < 50000; ++i)
        text += ", 1";
    text += "]";
    for (int i = 0; i < 50000; ++i)
        text += ", [1]";
    Complaints complaints;
    EXPECT_FALSE(toMatrix(*readValueText(text + "]", "g", false, complaints), complaints).has_value());
    EXPECT_EQ(textOf(complaints), "g: found a row of 1; expected rows of 50001, as the first has\n");
}

TEST(Value, EverythingElseIsNoNumber) {
    const std::string zeros = " without leading zeros (readers disagree whether they mean eights)";
    const RefusalRow rows[] = {
        {"010", "found '010'; expected a number" + zeros + "; did you mean 10?"},
        {"-007.5", "found '-007.5'; expected a number" + zeros + "; did you mean -7.5?"},
        {"00", "found '00'; expected a number" + zeros + "; did you mean 0?"},
        {"0x10", "found '0x10'; expected a number"},
        {"0o17", "found '0o17'; expected a number"},
        {"1_000", "found '1_000'; expected a number"},
        {"1,5", "found '1,5'; expected a number"},
        {"three", "found 'three'; expected a number"},
        {"1e999", "found '1e999'; expected a number"},
        {"\"0.5\"", "found the text '0.5'; expected a number without quotes; did you mean 0.5?"},
        {"[1]", "found a list; expected a number"},
        {"~", "found nothing; expected a number"},
    };
    for (const RefusalRow& row : rows) {
        Complaints complaints;
        EXPECT_FALSE(toNumber(*readValueText(row.text, "g", true, complaints), complaints).has_value())
            << row.text;
        EXPECT_EQ(textOf(complaints), "g:1:1: " + row.complaint + "\n");
    }
}

TEST(Value, WholeNumbersHaveNoFraction) {
    Complaints complaints;
    EXPECT_EQ(toWhole(*readValueText("-12", "g", true, complaints), complaints), -12);
    EXPECT_TRUE(complaints.isEmpty());
    EXPECT_FALSE(toWhole(*readValueText("2.0", "g", true, complaints), complaints).has_value());
    EXPECT_FALSE(
        toWhole(*readValueText("99999999999999999999", "g", true, complaints), complaints).has_value());
    EXPECT_EQ(textOf(complaints), "g:1:1: found '2.0'; expected a whole number\n"
                                  "g:1:1: found '99999999999999999999'; expected a whole number\n");
}

TEST(Value, FlagsAreTrueOrFalse) {
    Complaints complaints;
    EXPECT_EQ(toFlag(*readValueText("true", "g", true, complaints), complaints), true);
    EXPECT_EQ(toFlag(*readValueText("0", "g", true, complaints), complaints), false);
    EXPECT_TRUE(complaints.isEmpty());
    EXPECT_FALSE(toFlag(*readValueText("no", "g", true, complaints), complaints).has_value());
    EXPECT_FALSE(toFlag(*readValueText("\"true\"", "g", true, complaints), complaints).has_value());
    EXPECT_EQ(textOf(complaints), "g:1:1: found 'no'; expected true or false; did you mean false?\n"
                                  "g:1:1: found 'true'; expected true or false\n");
}

struct MatrixRow {
    std::string text;
    MatrixXd matrix;
};

TEST(Value, MatricesAreNestedLists) {
    const MatrixRow rows[] = {{"[[1, 2], [3, 4.5]]", Support::matrix({{1, 2}, {3, 4.5}})},
                              {"[[1]]", Support::matrix({{1}})},
                              {"[]", Support::matrix({})},
                              {"[[], []]", MatrixXd(2, 0)}};
    for (const MatrixRow& row : rows) {
        Complaints complaints;
        const auto matrix = toMatrix(*readValueText(row.text, "g", true, complaints), complaints);
        ASSERT_TRUE(matrix.has_value()) << textOf(complaints);
        EXPECT_TRUE(agree(*matrix, row.matrix, same)) << row.text;
    }
}

TEST(Value, OtherShapesAreNoMatrices) {
    const std::string wanted = "expected a matrix as a list of rows, each a list of numbers";
    const RefusalRow rows[] = {
        {"[1, 2]", "g:1:1: found a list of numbers; " + wanted +
                       "; did you mean double brackets, as in [[1, 2, 3]]?\n"},
        {"3", "g:1:1: found '3'; " + wanted + "; did you mean double brackets, as in [[1, 2, 3]]?\n"},
        {"[[1], 2]", "g:1:1: found a list; " + wanted + "\n"},
        {"[[1, 2], [3]]", "g:1:10: found a row of 1; expected rows of 2, as the first has\n"},
        {"[[1, x], [y, 2]]", "g:1:6: found 'x'; expected a number\ng:1:11: found 'y'; expected a number\n"},
    };
    for (const RefusalRow& row : rows) {
        Complaints complaints;
        EXPECT_FALSE(toMatrix(*readValueText(row.text, "g", true, complaints), complaints).has_value())
            << row.text;
        EXPECT_EQ(textOf(complaints), row.complaint) << row.text;
    }
}

} // namespace
