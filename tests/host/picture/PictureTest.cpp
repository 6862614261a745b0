// SPDX-License-Identifier: MIT
#include "host/picture/Picture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Quillmere::Host;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Column {
    std::string name;
    std::string unit = {};
    double (*at)(int row) = [](int row) { return std::sin(row); };
};

double flag(int row) {
    return row % 10 < 3 ? 1.0 : 0.0;
}

CurveTable tableOf(const std::vector<Column>& columns, const std::string& name = "walk.csv", int rows = 100) {
    CurveTable table;
    table.name = name;
    table.rows = static_cast<std::uint64_t>(rows);
    for (const Column& column : columns) {
        Curve& curve = table.curves.emplace_back(column.name, column.unit, 1000);
        for (int row = 0; row < rows; ++row)
            if (const double value = column.at(row); !std::isnan(value)) curve.envelope.take(row, value);
    }
    return table;
}

/// `title [unit]: curves | levels` of each panel.
std::vector<std::string> toldOf(const Picture& picture) {
    std::vector<std::string> told;
    for (const Panel& panel : picture.panels) {
        std::string text = panel.title + " [" + panel.unit + "]:";
        for (const Panel::Item& item : panel.curves)
            text += " " + item.label;
        if (!panel.levels.empty()) text += " |";
        for (const Panel::Item& item : panel.levels)
            text += " " + item.label;
        told.push_back(text);
    }
    return told;
}

std::vector<CurveTable> listOf(CurveTable one) {
    std::vector<CurveTable> list;
    list.push_back(std::move(one));
    return list;
}

using Told = std::vector<std::string>;

TEST(Picture, AxesShareAPanelAndSoDoThoseOfAPinAndThoseOfAUnit) {
    const Picture picture = arrange(listOf(tableOf({{"left", "N"},
                                                    {"acc_x", "g"},
                                                    {"acc_y", "g"},
                                                    {"acc_z", "g"},
                                                    {"hertz"},
                                                    {"w[0]"},
                                                    {"w[1]"},
                                                    {"right", "N"},
                                                    {"phase"}})));
    EXPECT_EQ(toldOf(picture), (Told{" [N]: left right", "acc [g]: acc_x acc_y acc_z", "hertz []: hertz",
                                     "w []: w[0] w[1]", "phase []: phase"}));
}

TEST(Picture, ZerosAndOnesAreLanesBelow) {
    const Picture picture =
        arrange(listOf(tableOf({{"on", "", flag}, {"gx"}, {"limit_x", "", flag}, {"gy"}, {"gz"}})));
    EXPECT_EQ(toldOf(picture), (Told{"g []: gx gy gz", " []: | on limit_x"}));
}

TEST(Picture, AnAxisThatRestsAtZeroAndWhatHasAUnitAreNoLevels) {
    const auto rest = [](int) { return 0.0; };
    EXPECT_EQ(
        toldOf(arrange(listOf(tableOf({{"gx", "", rest}, {"gy"}, {"gz", "", rest}, {"force", "N", rest}})))),
        (Told{"g []: gx gy gz", "force [N]: force"}));
    EXPECT_EQ(toldOf(arrange(listOf(tableOf({{"sx", "", flag}, {"sy", "", flag}, {"sz", "", rest}})))),
              (Told{" []: | sx sy sz"}));
}

TEST(Picture, AnElementOfAPinThatRestsAtOneStaysWithIt) {
    const auto one = [](int) { return 1.0; };
    const auto table = tableOf({{"acc[0]"}, {"acc[1]"}, {"acc[2]", "", one}, {"far[0]", "", one}});
    EXPECT_EQ(toldOf(arrange(listOf(table))), (Told{"acc []: acc[0] acc[1] acc[2]", " []: | far[0]"}));
    EXPECT_EQ(toldOf(arrange(listOf(table), {.panels = {{"acc*", "far*"}}})),
              (Told{"acc []: acc[0] acc[1] acc[2] | far[0]"}));
    EXPECT_EQ(toldOf(arrange(listOf(tableOf({{"v[0]"}, {"v[1]", "", flag}})))),
              (Told{"v[0] []: v[0]", " []: | v[1]"}))
        << "what goes on and off is a flag beside what it flags";
}

TEST(Picture, ManyColumnsOfAPinAreAHeatMap) {
    std::vector<Column> columns;
    for (int i = 0; i < 16; ++i)
        columns.push_back({"amplitude[" + std::to_string(i) + "]"});
    const Picture heat = arrange(listOf(tableOf(columns)), {.rowsApart = 0.5, .rowsUnit = "Hz"});
    ASSERT_EQ(heat.panels.size(), 1u);
    EXPECT_EQ(heat.panels[0].kind, Panel::Kind::Heat);
    EXPECT_EQ(heat.panels[0].rowsApart, 0.5);
    columns.pop_back();
    EXPECT_EQ(arrange(listOf(tableOf(columns))).panels[0].kind, Panel::Kind::Curves);
}

TEST(Picture, SpectraAreRowsOfTheHeatMapOverItsColumns) {
    std::vector<Column> columns;
    for (int i = 0; i < 16; ++i)
        columns.push_back({"a[" + std::to_string(i) + "]", "", [](int row) { return 2.0 + row; }});
    const Picture picture =
        arrange(listOf(tableOf(columns)), {.spectraAt = {20.2, 77.0}, .rowsApart = 0.5, .rowsUnit = "Hz"});
    ASSERT_EQ(picture.panels.size(), 2u);
    const Panel& panel = picture.panels[1];
    EXPECT_EQ(panel.axis, "Hz");
    ASSERT_EQ(panel.curves.size(), 2u);
    EXPECT_EQ(panel.curves[0].label, "20 s");
    const auto& pieces = picture.getCurve(panel.curves[0]).envelope.getPieces();
    ASSERT_EQ(pieces.size(), 16u);
    EXPECT_EQ(pieces[3].firstTime, 1.5);
    EXPECT_EQ(pieces[3].first, 22.0);
    EXPECT_EQ(picture.getTimes(), std::pair(0.0, 99.0)); // the hertz don't count
}

TEST(Picture, ABandCutsHeatMapsAndSpectra) {
    std::vector<Column> columns;
    for (int i = 0; i < 40; ++i)
        columns.push_back({"a[" + std::to_string(i) + "]"});
    const Picture picture =
        arrange(listOf(tableOf(columns)),
                {.spectraAt = {5.0}, .rowsApart = 0.5, .lowestRow = 1.0, .highestRow = 4.2});
    ASSERT_EQ(picture.panels.size(), 2u);
    EXPECT_EQ(picture.panels[0].curves.size(), 7u); // 1, 1.5 to 4
    EXPECT_EQ(picture.panels[0].rowsBegin, 1.0);
    const auto& pieces = picture.getCurve(picture.panels[1].curves[0]).envelope.getPieces();
    EXPECT_EQ(pieces.front().firstTime, 1.0);
    EXPECT_EQ(pieces.back().firstTime, 4.0);
}

TEST(Picture, SeveralFilesAreToldApart) {
    std::vector<CurveTable> tables = listOf(tableOf({{"az", "g"}}, "raw.csv"));
    tables.push_back(tableOf({{"az", "g"}, {"calm", "g"}, {"on", "", flag}}, "calm.csv"));
    EXPECT_EQ(toldOf(arrange(tables)),
              (Told{"raw.csv: az [g]: az", "calm.csv [g]: az calm", "calm.csv []: | on"}));
    EXPECT_EQ(toldOf(arrange(tables, {.panels = {{"az", "on"}, {"c*"}}})),
              (Told{" [g]: az (raw) az (calm) | on", "calm [g]: calm"}));
}

TEST(Picture, FewUnevenSamplesAreMarksAndFewEvenOnesALine) {
    const CurveTable table =
        tableOf({{"beats", "", [](int row) { return row * row % 97 == 3 ? 2.0 : kNan; }},
                 {"slow", "", [](int row) { return row % 10 == 0 ? 2.0 * row : kNan; }},
                 {"all"},
                 {"turned", "", [](int row) { return row % (row < 500 ? 10 : 40) == 0 ? 2.0 * row : kNan; }}},
                "t", 1000);
    EXPECT_EQ(table.curves[0].getStyle(table.rows), Curve::Style::Marks);
    EXPECT_EQ(table.curves[1].getStyle(table.rows), Curve::Style::Line);
    EXPECT_EQ(table.curves[2].getStyle(table.rows), Curve::Style::Line);
    EXPECT_EQ(table.curves[3].getStyle(table.rows), Curve::Style::Line)
        << "at one rate, and later at another";
}

TEST(Picture, TooManyPanelsAreLeftOut) {
    std::vector<Column> columns;
    for (int i = 0; i < 50; ++i)
        columns.push_back({"column" + std::string(static_cast<std::size_t>(i) + 1, 'a')});
    const Picture picture = arrange(listOf(tableOf(columns)));
    EXPECT_EQ(picture.panels.size(), PictureWishes::kMostPanels);
    EXPECT_EQ(picture.panelsLeftOut, 10u);
}

} // namespace
