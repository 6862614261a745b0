// SPDX-License-Identifier: MIT
#include "host/picture/RecordingCurves.h"

#include "host/description/ValueReader.h"
#include "host/ends/RecordingException.h"
#include "host/picture/PictureFile.h"
#include "host/text/HostException.h"
#include "host/recording/RecordingForms.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Quillmere::Host;

class RecordingCurvesTest : public testing::Test {
protected:
    CurveTable read(const std::string& text, const CurveWishes& wishes = {}) {
        Complaints complaints;
        settings.finish(complaints);
        complaints.raise();
        const std::string path = folder.write("in.csv", text);
        const auto reader = openRecording(path, settings.wishes);
        return RecordingCurves(*reader, settings, wishes).read();
    }
    void set(const std::string& name, const std::string& text) {
        Complaints complaints;
        GraphDescription::Setting setting;
        setting.name = name;
        setting.value = *readValueText(text, name, false, complaints);
        settings.take(setting, complaints);
        complaints.raise();
    }
    static void cut(CurveWishes& wishes, const std::string& name, const std::string& text) {
        Complaints complaints;
        GraphDescription::Setting setting;
        setting.name = name;
        setting.value = *readValueText(text, name, false, complaints);
        wishes.takeCut(setting, complaints);
        complaints.raise();
    }
    static CurveWishes wishesOf(const std::string& start, const std::string& end) {
        CurveWishes wishes;
        cut(wishes, "start", start);
        cut(wishes, "end", end);
        return wishes;
    }
    /// `time:value` of each piece, `!` where it is broken off.
    static std::string told(const Curve& curve) {
        std::string text;
        for (const Envelope::Piece& piece : curve.envelope.getPieces())
            text += (text.empty() ? "" : " ") + std::string(piece.isBroken ? "!" : "") +
                    std::to_string(piece.firstTime).substr(0, 3) + ":" +
                    std::to_string(piece.first).substr(0, 3);
        return text;
    }
    static std::string names(const CurveTable& table) {
        std::string text;
        for (const Curve& curve : table.curves)
            text += (text.empty() ? "" : " ") + curve.name + "[" + curve.unit + "]";
        return text;
    }

    const Support::TemporaryFolder folder;
    InspectionSettings settings;
};

TEST_F(RecordingCurvesTest, SayWhatSecondNullIs) {
    const std::string dates = "time,a,b\n2019-08-06 10:25:50,1,2\n2019-08-06 10:25:51,2,1\n";
    const CurveTable table = read(dates);
    EXPECT_EQ(table.origin, "2019-08-06 10:25:50");
    EXPECT_EQ(read("time,a\n10:25:50.5,1\n10:25:51.5,2\n").origin, "10:25:50.5");
    EXPECT_EQ(read("time (s),a\n0,1\n1,2\n").origin, "");
    CurveWishes overB;
    overB.across = "b";
    EXPECT_EQ(read(dates, overB).origin, "") << "no seconds at all";
    EXPECT_EQ(arrange({table}).getOrigin(), "2019-08-06 10:25:50");
    CurveTable other = read("time (s),a\n0,1\n1,2\n");
    EXPECT_EQ(arrange({table, other}).getOrigin(), "2019-08-06 10:25:50 (in.csv)");
    EXPECT_NE(
        drawPicture(arrange({table}), PictureForm::Svg).find(">seconds since 2019-08-06 10:25:50</text>"),
        std::string::npos);
}

TEST_F(RecordingCurvesTest, TakesEachColumnOfNumbersWithItsUnit) {
    const CurveTable table = read("time (s),ax [g],level\n0,1,2\n0.5,3,4\n");
    EXPECT_EQ(table.name, "in.csv");
    EXPECT_EQ(table.clock, "s");
    EXPECT_EQ(table.rows, 2u);
    EXPECT_EQ(names(table), "ax[g] level[]");
    EXPECT_EQ(told(table.curves[0]), "0.0:1.0 0.5:3.0");
}

TEST_F(RecordingCurvesTest, EmptyCellsAreNoSamplesAndOthersAreGaps) {
    const CurveTable table = read("time (s),a,b\n0,1,2\n1,,3\n2,nan,4\n3,4,oops\n4,5,6\n");
    EXPECT_EQ(told(table.curves[0]), "0.0:1.0 !3.0:4.0 4.0:5.0");
    EXPECT_EQ(told(table.curves[1]), "0.0:2.0 1.0:3.0 2.0:4.0 !4.0:6.0");
}

TEST_F(RecordingCurvesTest, RowsThatAreTooShortOrHaveNoTimeAreLeftOut) {
    const CurveTable table = read("time (s),a\n0,1\n1\n,3\n3,4\n4,5\n5,6\n");
    EXPECT_EQ(told(table.curves[0]), "0.0:1.0 3.0:4.0 4.0:5.0 5.0:6.0");
    EXPECT_EQ(table.rows, 4u);
}

TEST_F(RecordingCurvesTest, RowsCountWhereThereAreNoTimesAndARateMakesSeconds) {
    const std::string text = "a,b\n1,2\n3,4\n5,6\n";
    EXPECT_EQ(read(text).clock, "row");
    EXPECT_EQ(told(read(text).curves[0]), "0.0:1.0 1.0:3.0 2.0:5.0");
    set("rate", "2");
    EXPECT_EQ(read(text).clock, "s");
    EXPECT_EQ(told(read(text).curves[0]), "0.0:1.0 0.5:3.0 1.0:5.0");
}

TEST_F(RecordingCurvesTest, ChoosesByNameAndByPattern) {
    const std::string text = "time (s),acc_x [g],acc_y [g],gx\n0,1,2,3\n1,4,5,6\n";
    CurveWishes wishes;
    wishes.columns = {"acc*"};
    EXPECT_EQ(names(read(text, wishes)), "acc_x[g] acc_y[g]");
    wishes.columns = {"gx", "acc_y"};
    EXPECT_EQ(names(read(text, wishes)), "acc_y[g] gx[]");
}

TEST_F(RecordingCurvesTest, CutsAsASourceDoes) {
    CurveWishes wishes;
    cut(wishes, "start", "1 s");
    cut(wishes, "end", "3");
    EXPECT_EQ(told(read("time (s),a\n0,1\n1,2\n2,3\n3,4\n4,5\n", wishes).curves[0]), "1.0:2.0 2.0:3.0");
    // One stamp far ahead doesn't end it.
    EXPECT_EQ(told(read("time (s),a\n0,1\n1,2\n900,3\n2,4\n4,5\n", wishes).curves[0]), "1.0:2.0 2.0:4.0");
    CurveWishes byDate;
    cut(byDate, "start", "2020-01-01 10:00:01");
    EXPECT_EQ(
        told(read("time,a\n2020-01-01 10:00:00,1\n2020-01-01 10:00:01,2\n2020-01-01 10:00:02,3\n", byDate)
                 .curves[0]),
        "1.0:2.0 2.0:3.0");
    EXPECT_THROW(read("time (s),a\n0,1\n1,2\n", byDate), RecordingException);
}

TEST_F(RecordingCurvesTest, ScalesAndDrawsOverAColumn) {
    CurveWishes wishes;
    wishes.scales.push_back({"w", 10.0, "Hz"});
    wishes.across = "f";
    const CurveTable table = read("time (s),f,w\n0,5,0.1\n1,6,0.2\n", wishes);
    EXPECT_EQ(table.clock, "f");
    EXPECT_EQ(names(table), "w[Hz]");
    EXPECT_EQ(told(table.curves[0]), "5.0:1.0 6.0:2.0");
}

TEST_F(RecordingCurvesTest, EndsWhenItIsTold) {
    std::string text = "time (s),a\n";
    for (int i = 0; i < 10'000; ++i)
        text += std::to_string(i) + ",1\n";
    const auto reader = openRecording(folder.write("in.csv", text), settings.wishes);
    std::stop_source stop;
    const CurveWishes wishes;
    RecordingCurves curves(*reader, settings, wishes);
    std::uint64_t told = 0;
    const auto tell = [&](const InspectionProgress& now) {
        told = now.rows;
        stop.request_stop();
    };
    EXPECT_THROW(curves.read(stop.get_token(), tell), InterruptedException);
    EXPECT_EQ(told, 4096u);
}

TEST_F(RecordingCurvesTest, OverAnotherColumnTheWayIsKeptAsItWasGone) {
    CurveWishes wishes;
    wishes.across = "x";
    const CurveTable table = read("time (s),x,y\n0,0,0\n1,1,0\n2,1,1\n3,nan,0\n4,0,1\n", wishes);
    const std::vector<CurvePath::Point>& way = table.curves.at(0).path.getPoints();
    ASSERT_EQ(table.curves[0].name, "y");
    std::string gone;
    for (const CurvePath::Point& point : way)
        gone += std::to_string(point.x).substr(0, 1) + std::to_string(point.y).substr(0, 1) + " ";
    EXPECT_EQ(gone, "00 10 11 01 ") << "a row without a place on the axis is none";
    EXPECT_EQ(table.rowsWithoutTime, 1u);
    EXPECT_EQ(table.rowsBack, 0u) << "of another column nobody expects that it goes on";
    EXPECT_TRUE(read("time (s),x,y\n0,0,0\n1,1,0\n2,2,1\n", wishes).curves[0].path.getIsEmpty())
        << "what goes on is a curve as over times";
}

TEST_F(RecordingCurvesTest, CountsRowsWhoseTimesGoBack) {
    const CurveTable table = read("time (s),a\n0,1\n2,3\n1,2\n1.5,4\n3,5\n");
    EXPECT_EQ(table.rowsBack, 2u);
    EXPECT_TRUE(table.curves[0].path.getIsEmpty());
    EXPECT_EQ(read("time (s),a\n0,1\n1,3\n1,2\n").rowsBack, 0u);
}

TEST_F(RecordingCurvesTest, CutsByTimesAsAnAxisTellsThem) {
    const std::string rows = "time (s),a\n0,1\n30,2\n60,3\n90,4\n3600,5\n";
    const struct {
        const char* start;
        const char* end;
        const char* kept;
    } cases[] = {{"1:00", "90.5", "60.:3.0 90.:4.0"},
                 {"0:00:30", "1:30", "30.:2.0 60.:3.0"},
                 {"0.5 min", "1:00.5", "30.:2.0 60.:3.0"},
                 {"60:00", "60:01", "360:5.0"}};
    for (const auto& one : cases)
        EXPECT_EQ(told(read(rows, wishesOf(one.start, one.end)).curves[0]), one.kept) << one.start;
    const CurveWishes reversed = wishesOf("1:00", "30");
    Complaints complaints;
    reversed.finish(complaints);
    ASSERT_FALSE(complaints.isEmpty());
    EXPECT_EQ(complaints.getSorted().front().found, "'end: 30' that isn't behind 'start: 60'");
    for (const char* const odd : {"1:5", "1:60", ":30", "1.5:00", "1:"}) {
        CurveWishes wishes;
        EXPECT_THROW(cut(wishes, "start", odd), GraphException) << odd;
    }
}

/// Where times count from a time of day, `10:00` is ten o'clock and not ten minutes.
TEST_F(RecordingCurvesTest, CutsByTheTimeOfDayWhereTimesHaveOne) {
    CurveWishes wishes;
    cut(wishes, "start", "10:00");
    set("time", "clock");
    EXPECT_EQ(told(read("clock,a\n09:59:59,1\n10:00:00,2\n10:00:01,3\n", wishes).curves[0]),
              "1.0:2.0 2.0:3.0");
}

/// There `0:02` is what the axis shows, and `10:00:01` what the stamps do.
TEST_F(RecordingCurvesTest, CutsByTheAxisAndByTheTimeOfDayWhereTimesAreDates) {
    const std::string rows = "time,a\n2019-08-06 23:59:58,1\n2019-08-06 23:59:59,2\n2019-08-07 00:00:00,3\n"
                             "2019-08-07 00:00:01,4\n";
    const struct {
        const char* start;
        const char* end;
        const char* kept;
    } cases[] = {{"0:01", "0:02.5", "1.0:2.0 2.0:3.0"},
                 {"23:59:59", "0:00:01", "1.0:2.0 2.0:3.0"},
                 {"2019-08-06 23:59:59", "0:00:00", "1.0:2.0"},
                 {"23:59:58.5", "2019-08-07 00:00:00", "1.0:2.0"},
                 {"1", "0:02", "1.0:2.0"}};
    for (const auto& one : cases) {
        const CurveWishes wishes = wishesOf(one.start, one.end);
        Complaints complaints;
        wishes.finish(complaints);
        EXPECT_TRUE(complaints.isEmpty()) << one.start;
        EXPECT_EQ(told(read(rows, wishes).curves[0]), one.kept) << one.start;
    }
    const std::pair<const char*, const char*> odd[] = {
        {"0:01", "23:59:59"}, {"23:59:59", "23:59:58.5"}, {"0:02", "0:01"}, {"25:00:00", "26:00:00"}};
    for (const auto& [start, end] : odd)
        EXPECT_THROW(read(rows, wishesOf(start, end)), RecordingException) << start;
}

} // namespace
