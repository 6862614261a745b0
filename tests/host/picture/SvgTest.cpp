// SPDX-License-Identifier: MIT
#include "host/picture/PictureFile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <regex>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Quillmere::Host;

Picture examplePicture() {
    CurveTable table;
    table.name = "walk.csv";
    table.rows = 500;
    for (const char* const name : {"ax", "ay", "az"})
        table.curves.emplace_back(name, "m/s^2", 1000);
    table.curves.emplace_back("rest <on> & \"off\"", "", 1000);
    for (int row = 0; row < 500; ++row) {
        const double time = row * 0.01 + (row >= 300 ? 20.0 : 0.0); // a gap
        for (std::size_t axis = 0; axis < 3; ++axis)
            table.curves[axis].envelope.take(time, 9.81 * std::sin(0.02 * row + static_cast<double>(axis)));
        table.curves[3].envelope.take(time, row / 100 % 2);
    }
    std::vector<CurveTable> tables;
    tables.push_back(std::move(table));
    return arrange(std::move(tables), {.title = "a walk"});
}

std::size_t count(const std::string& text, const std::string& pattern) {
    const std::regex regex(pattern);
    return static_cast<std::size_t>(
        std::distance(std::sregex_iterator(text.begin(), text.end(), regex), std::sregex_iterator()));
}

/// The part between the begin of the group with that title and the end of the group.
std::string groupOf(const std::string& svg, const std::string& title) {
    const std::size_t begin = svg.find("<title>" + title + "</title>");
    return begin == std::string::npos ? "" : svg.substr(begin, svg.find("</g>", begin) - begin);
}

TEST(Svg, HasPanelsCurvesAndLanesWithTheirNames) {
    const std::string svg = drawPicture(examplePicture(), PictureForm::Svg);
    EXPECT_EQ(count(svg, "<g class=\"panel\">"), 2u);
    EXPECT_EQ(count(svg, "<g class=\"curve\">"), 3u);
    EXPECT_EQ(count(svg, "<g class=\"level\">"), 1u);
    EXPECT_EQ(count(svg, "<g "), count(svg, "</g>"));
    EXPECT_EQ(count(svg, "<text [^>]*>ay</text>"), 1u); // the legend
    EXPECT_EQ(count(svg, "<text [^>]*>m/s\\^2</text>"), 1u);
    EXPECT_EQ(count(svg, "<text [^>]*>seconds</text>"), 1u);
    EXPECT_EQ(count(svg, "<text [^>]*>a walk</text>"), 1u);
    EXPECT_EQ(count(svg, "<desc>2 panels, from 0 to 24.99 s. a: ax, ay, az, between -9.81 and 9.81 m/s\\^2"),
              1u);
}

TEST(Svg, TextsOfOthersCantLeaveTheirPlace) {
    const std::string svg = drawPicture(examplePicture(), PictureForm::Svg);
    EXPECT_EQ(svg.find("<on>"), std::string::npos);
    EXPECT_NE(svg.find("rest &lt;on&gt; &amp; &quot;off&quot;"), std::string::npos);
}

TEST(Svg, AGapIsNotDrawnAcross) {
    const std::string svg = drawPicture(examplePicture(), PictureForm::Svg);
    const std::string curve = groupOf(svg, "ay");
    EXPECT_EQ(count(curve, "<path fill=\"none\""), 2u);
}

TEST(Svg, IsTheSameEachTimeAndKnownAgain) {
    const std::string svg = drawPicture(examplePicture(), PictureForm::Svg);
    EXPECT_EQ(drawPicture(examplePicture(), PictureForm::Svg), svg);
    EXPECT_TRUE(getIsPicture(svg));
    EXPECT_FALSE(getIsPicture("<svg xmlns=\"http://www.w3.org/2000/svg\"><path/></svg>"));
    EXPECT_FALSE(getIsPicture(""));
}

TEST(Svg, OfADayIsNoLargerThanOfAnHour) {
    CurveTable table;
    table.curves.emplace_back("x", "", Envelope::kMostPieces);
    for (int row = 0; row < 8'640'000; ++row)
        table.curves[0].envelope.take(row * 0.01, std::sin(row * 0.37) * (row % 1000));
    table.rows = 8'640'000;
    EXPECT_LE(table.curves[0].envelope.getPieces().size(), Envelope::kMostPieces);
    std::vector<CurveTable> tables;
    tables.push_back(std::move(table));
    const std::string svg = drawPicture(arrange(std::move(tables)), PictureForm::Svg);
    EXPECT_LT(svg.size(), 100'000u);
    EXPECT_EQ(count(svg, "<text [^>]*>hours:minutes</text>"), 1u);
}

TEST(Svg, WhatHasNoRangeIsDrawnAllTheSame) {
    for (const double value : {0.0, 1e-310, 3.0, -1e308}) {
        CurveTable table;
        table.curves.emplace_back("x", "", 100);
        table.curves[0].envelope.take(5.0, value);
        table.curves[0].envelope.take(5.0, value == -1e308 ? 1e308 : value);
        std::vector<CurveTable> tables;
        tables.push_back(std::move(table));
        const std::string svg = drawPicture(arrange(std::move(tables)), PictureForm::Svg);
        EXPECT_EQ(svg.find("nan"), std::string::npos) << value;
        EXPECT_EQ(svg.find("inf"), std::string::npos) << value;
    }
    EXPECT_TRUE(getIsPicture(drawPicture(Picture(), PictureForm::Svg)));
}

TEST(Svg, FormsGoByTheName) {
    Complaints complaints;
    EXPECT_EQ(pictureFormOf("a.SVG", {"--output"}, complaints), PictureForm::Svg);
    EXPECT_EQ(pictureFormOf("-", {"--output"}, complaints), PictureForm::Svg);
    EXPECT_TRUE(complaints.isEmpty());
    EXPECT_EQ(pictureFormOf("a.pdf", {"--output"}, complaints), std::nullopt);
    EXPECT_EQ(complaints.getSorted().size(), 1u);
}

} // namespace
