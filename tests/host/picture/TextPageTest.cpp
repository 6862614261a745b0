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
