// SPDX-License-Identifier: MIT
#include "host/picture/TextPage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Quillmere::Host;

Picture pictureOf(CurveTable table) {
    std::vector<CurveTable> tables;
    tables.push_back(std::move(table));
    return arrange(std::move(tables), {.title = "walk"});
}

Picture rampAndFlag() {
    CurveTable table;
    table.rows = 45;
    table.curves.emplace_back("ramp", "m", 1000);
    table.curves.emplace_back("on", "", 1000);
    for (int row = 0; row < 45; ++row) {
        table.curves[0].envelope.take(row, row * 0.5);
        table.curves[1].envelope.take(row, row >= 20 && row < 40 ? 1.0 : 0.0);
    }
    return pictureOf(std::move(table));
}

TEST(TextPage, DrawsInPlainAscii) {
    EXPECT_EQ(pictureAsText(rampAndFlag(), 63, false),
              "walk\n"
              "\n"
              "ramp [m]\n"
              "               22                                    ......''''\n"
              "             ramp                        ......''''''\n"
              "                            ......|''''''\n"
              "                0 ....''''''\n"
              "\n"
              "               on                     ####################\n"
              "                  +-------------------+-------------------+----\n"
              "          seconds 0                  20                  40\n");
}

TEST(TextPage, DrawsInDotsOfBraille) {
    const std::string text = pictureAsText(rampAndFlag(), 63, true);
    EXPECT_NE(text.find("⣀"), std::string::npos);
    EXPECT_NE(text.find("████"), std::string::npos);
    EXPECT_NE(text.find("┬─────"), std::string::npos);
}

std::string textOf(const std::vector<std::pair<const char*, double>>& curves, double change) {
    CurveTable table;
    table.rows = 10;
    for (const auto& [name, value] : curves) {
        table.curves.emplace_back(name, "", 1000);
        for (int row = 0; row < 10; ++row)
            table.curves.back().envelope.take(row, value + change * row);
    }
    return pictureAsText(pictureOf(std::move(table)), 60, false);
}

TEST(TextPage, TheNumbersOfAStripDiffer) {
    const std::string text = textOf({{"x", 1000.5}}, 0.0);
    EXPECT_NE(text.find("1100.55\n"), std::string::npos) << text;
    EXPECT_NE(text.find(" 900.45\n"), std::string::npos) << text;
    const std::string close = textOf({{"x", 1565090000000.0}}, 1.0);
    EXPECT_NE(close.find(" 1565090000009 "), std::string::npos) << close;
    EXPECT_NE(close.find(" 1565090000000 "), std::string::npos) << close;
}

TEST(TextPage, LowStripsHaveBothNumbersWhateverTheirName) {
    const char* const longName = "a name that is much longer than its room";
    const std::string text = textOf(
        {{longName, 7.25}, {"b", 1.0}, {"c", 1.0}, {"d", 1.0}, {"e", 1.0}, {"f", 1.0}, {"g", 1.0}}, 1.0);
    EXPECT_NE(text.find("a name t... 16.25 "), std::string::npos) << text;
    EXPECT_NE(text.find("             7.25 "), std::string::npos) << text;
}

TEST(TextPage, RowsOfAHeatMapAreNumberedOnceEach) {
    CurveTable table;
    table.rows = 10;
    for (int i = 0; i < 18; ++i) {
        table.curves.emplace_back("s[" + std::to_string(i) + "]", "", 1000);
        for (int row = 0; row < 10; ++row)
            table.curves.back().envelope.take(row, i);
    }
    std::vector<CurveTable> tables;
    tables.push_back(std::move(table));
    const Picture picture =
        arrange(std::move(tables), {.rowsApart = 0.125, .lowestRow = 1.0, .highestRow = 1.25});
    ASSERT_EQ(picture.panels.size(), 1u);
    const std::string text = pictureAsText(picture, 60, false);
    EXPECT_NE(text.find("             1.25 "), std::string::npos) << text;
    EXPECT_NE(text.find("            1.125 "), std::string::npos) << text;
    EXPECT_EQ(text.find("1.25 "), text.rfind("1.25 ")) << text;
    EXPECT_EQ(text.find("1.375"), std::string::npos) << "none such is drawn\n" << text;
}

TEST(TextPage, NoLineIsWiderThanAsked) {
    CurveTable table;
    table.rows = 1000;
    for (const char* const name :
         {"a name that is much longer than its room", "b", "c", "d", "e", "f", "g", "h"})
        table.curves.emplace_back(name, "", 1000);
    for (Curve& curve : table.curves)
        for (int row = 0; row < 1000; ++row)
            curve.envelope.take(row * 12.7, std::sin(row) * 1e5);
    const Picture picture = pictureOf(std::move(table));
    for (const std::size_t width : {40u, 80u, 133u}) {
        std::istringstream lines(pictureAsText(picture, width, false));
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), width) << line;
    }
}

TEST(TextPage, AGapStaysEmpty) {
    CurveTable table;
    table.rows = 20;
    table.curves.emplace_back("x", "", 1000);
    for (int row = 0; row < 20; ++row)
        table.curves[0].envelope.take(row < 10 ? row : row + 80, row < 10 ? 2.0 : 3.0);
    const std::string text = pictureAsText(pictureOf(std::move(table)), 118, false);
    // Twice ten samples a character apart, and nothing between them.
    EXPECT_NE(text.find(" ..........\n"), std::string::npos) << text;
    EXPECT_NE(text.find(" ''''''''''\n"), std::string::npos) << text;
}

} // namespace
