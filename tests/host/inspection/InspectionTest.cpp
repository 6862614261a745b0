// SPDX-License-Identifier: MIT
#include "host/ends/RecordingException.h"
#include "host/inspection/Inspection.h"
#include "host/inspection/InspectionFiles.h"
#include "host/inspection/InspectionReport.h"
#include "host/recording/RecordingForms.h"

#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Clock = Inspection::Clock;
using Strings = std::vector<std::string>;

class InspectionTest : public testing::Test {
protected:
    /// `said` has names and values.
    Inspection look(const std::string& text, const std::vector<std::pair<std::string, Value>>& said = {}) {
        settings = {};
        Complaints complaints;
        for (const auto& [name, value] : said) {
            GraphDescription::Setting setting;
            setting.name = name;
            setting.value = value;
            settings.take(std::move(setting), complaints);
        }
        settings.finish(complaints);
        complaints.raise();
        return inspect(*openRecording(folder.write("in.csv", text), settings.wishes), settings);
    }
    Support::TemporaryFolder folder;
    InspectionSettings settings;
};

/// Steps of 0.1 s with a gap of 2 s, a row twice and one step back.
constexpr const char* kOddTimes =
    "time,a\n0,1\n0.1,2\n0.2,3\n0.2,3\n0.3,4\n2.3,5\n2.4,6\n2.3,7\n2.4,8\n2.5,9\n";

TEST_F(InspectionTest, TellsOfTimes) {
    const Inspection found = look(kOddTimes);
    EXPECT_EQ(found.clock, Clock::Column);
    EXPECT_EQ(found.rows, 10U);
    EXPECT_EQ(found.times.getLength(), 2.5);
    EXPECT_EQ(found.times.equal.count, 1U);
    EXPECT_EQ(found.times.equal.first.line, 5U);
    EXPECT_EQ(found.times.backward.count, 1U);
    EXPECT_EQ(found.times.backward.first.line, 9U);
    EXPECT_EQ(found.times.jumps.count, 1U);
    EXPECT_EQ(found.times.jumps.first.line, 7U);
    EXPECT_NEAR(found.middleStep.value(), 0.1, 1e-12);
    EXPECT_EQ(found.longestStep, 2.3 - 0.3);
    EXPECT_NEAR(found.measuredRate.value().perSecond, 10.0, 1e-4);
    EXPECT_FALSE(found.statedRate);
    EXPECT_TRUE(found.columns[0].isTime);
}

TEST_F(InspectionTest, SaysWhatASourceCanDoAboutOddTimes) {
    EXPECT_TRUE(inspectionAsText(look(kOddTimes), false)
                    .ends_with("\n\n  'duplicates: drop' leaves out rows that repeat a time stamp\n"
                               "  'backwards: drop' leaves out rows that go back\n"
                               "  'gaps: nan' and 'gapLimit: 1' fill the gaps of more than ten median steps\n"
                               "  'resample: 10' makes the steps even\n"));
    EXPECT_EQ(inspectionAsText(look("time,x\n0,1\n0.1,2\n0.2,3\n"), false).find("duplicates:"),
              std::string::npos);
}

TEST_F(InspectionTest, TellsOfColumns) {
    const Inspection found = look("time (s),acc [g],level,where\n0,1.5,7,home\n0.1,,7,home\n0.2,-2,7,away\n");
    ASSERT_EQ(found.columns.size(), 4U);
    EXPECT_EQ(found.columns[1].described.unit, "g");
    EXPECT_EQ(found.columns[1].smallest, -2.0);
    EXPECT_EQ(found.columns[1].largest, 1.5);
    EXPECT_EQ(found.columns[1].emptyCells, 1U);
    EXPECT_DOUBLE_EQ(found.columns[1].getShareWithout(), 1.0 / 3.0);
    EXPECT_TRUE(found.columns[2].isConstant);
    EXPECT_FALSE(found.columns[3].isRead);
    EXPECT_EQ(found.mendedRows, 0U) << "texts aren't looked at, and an empty cell is no fault";
}

TEST_F(InspectionTest, CountsBadCellsAndRows) {
    const Inspection found = look("time,a,b\n0,1,1\n0.1,NA,nan\n0.2,oops,3\n0.3,4\nnan,5,5\n0.5,6,inf\n",
                                  {{"missing", valueOf("NA")}});
    EXPECT_EQ(found.rows, 4U);
    EXPECT_EQ(found.badRows, 2U) << "a cell too few, and no time";
    EXPECT_EQ(found.mendedRows, 1U);
    EXPECT_EQ(found.firstFaults.size(), 3U);
    EXPECT_EQ(found.columns[1].missingCells, 1U);
    EXPECT_EQ(found.columns[1].oddCells, 1U);
    EXPECT_EQ(found.columns[1].numbers, 2U);
    EXPECT_EQ(found.columns[2].oddCells, 2U) << "nan, and infinite";
    EXPECT_EQ(found.columns[2].largest, 3.0);
}

TEST_F(InspectionTest, TellsWhatShareOfAColumnIsMissing) {
    const std::string text = inspectionAsText(look("time,a,b\n0,,1\n0.1,,\n0.2,,3\n"), false);
    EXPECT_NE(text.find("  100 %"), std::string::npos) << text;
    EXPECT_NE(text.find("  33 %"), std::string::npos) << text;
}

TEST_F(InspectionTest, GuessesAUnitWhereNoneIsStated) {
    const Inspection plain = look("time,acc_x,acc_y,acc_z\n0,0,0,9.81\n0.1,9.81,0,0\n");
    ASSERT_EQ(plain.groups.size(), 1U);
    EXPECT_EQ(plain.groups[0].guessedUnit, "m/s^2");
    EXPECT_NE(
        inspectionAsText(plain, false).find("no unit is stated for acc, whose median length is 9.81: m/s^2?"),
        std::string::npos);
    EXPECT_EQ(plain.columns[1].described.unit, "") << "a guess is not acted upon";
    const Inspection stated = look("time,acc_x (g),acc_y (g),acc_z (g)\n0,0,0,9.81\n0.1,9.81,0,0\n");
    ASSERT_EQ(stated.groups.size(), 1U);
    EXPECT_FALSE(stated.groups[0].medianLength);
}

TEST_F(InspectionTest, TakesUnitsThatAreSaid) {
    Value units;
    units.kind = Value::Kind::Map;
    Value::Entry& entry = units.entries.emplace_back();
    entry.key = "*";
    entry.value = valueOf("mg");
    const Inspection said =
        look("time,acc_x,acc_y,acc_z (g)\n0,0,0,9.81\n0.1,9.81,0,0\n", {{"units", units}});
    EXPECT_EQ(said.columns[1].described.unit, "mg");
    EXPECT_EQ(said.columns[3].described.unit, "mg") << "whatever the file states";
    EXPECT_EQ(said.columns[0].described.unit, "") << "times have theirs by 'timeUnit'";
    units.entries[0].key = "time";
    EXPECT_THROW(look("time,acc\n0,0\n0.1,9.81\n", {{"units", units}}), GraphException);
}

TEST_F(InspectionTest, NeedsNoTimes) {
    const Inspection found = look("a,b\n1,2\n3,4\n5,6\n");
    EXPECT_EQ(found.clock, Clock::None);
    EXPECT_EQ(found.rows, 3U);
    ASSERT_TRUE(findHindrance(found));
    EXPECT_EQ(findHindrance(found)->expected, "'--set time=COLUMN' or '--set rate=N' with rows a second");
    const Inspection rated = look("a,b\n1,2\n3,4\n5,6\n", {{"rate", valueOf(10.0)}});
    EXPECT_EQ(rated.clock, Clock::SaidRate);
    EXPECT_EQ(rated.times.getLength(), 0.2);
    EXPECT_FALSE(findHindrance(rated));
    const Inspection named = look("a,b\n1,2\n3,4\n5,6\n", {{"time", valueOf("a")}});
    EXPECT_EQ(named.clock, Clock::Column);
    EXPECT_EQ(named.times.getLength(), 4.0);
}

TEST_F(InspectionTest, NamesTheFormAndWhy) {
    EXPECT_EQ(look("time,a\n0,1\n0.1,2\n").form,
              Strings{"a table of the plain form: commas, one row of column names"});
    const Inspection semicolons = look("time;a\n0,0;1,5\n0,1;2,5\n0,2;3,5\n");
    ASSERT_EQ(semicolons.form.size(), 2U);
    EXPECT_EQ(semicolons.form[0], "a table separated by semicolons, with decimal commas");
    EXPECT_EQ(semicolons.form[1], "column names; 1 line in front of the first row");
    const Inspection known = look("2020-01-01 10:00:00.00,1,2,3\n2020-01-01 10:00:00.01,1,2,3\n");
    ASSERT_EQ(known.form.size(), 3U);
    EXPECT_EQ(known.form[2], "profile Axivity, known by a time and numbers in 4 columns");
    EXPECT_EQ(known.notes, Strings{"times count from 2020-01-01 10:00:00"});
}

TEST_F(InspectionTest, RefusesSettingsThatItHasNoUseFor) {
    const auto complaintOf = [&](const std::string& name, const Value& value) -> std::string {
        try {
            look("time,a\n0,1\n", {{name, value}});
        } catch (const GraphException& exception) {
            return exception.what();
        }
        return "none";
    };
    EXPECT_TRUE(complaintOf("pins", valueOf("a"))
                    .starts_with("found the setting 'pins' of a recording, which says what becomes of its "
                                 "rows; expected it in a graph (--graph writes one), or one of data, "));
    EXPECT_EQ(complaintOf("rate", valueOf(0.0)), "found '0'; expected a rate above 0 rows a second");
    EXPECT_EQ(complaintOf("decimal", valueOf("comma")), "none");
}

TEST_F(InspectionTest, RefusesTwoClocks) {
    EXPECT_THROW(look("time,a\n0,1\n", {{"time", valueOf("time")}, {"rate", valueOf(5.0)}}), GraphException);
}

TEST_F(InspectionTest, WritesAPinForEachGroupAndColumn) {
    const Inspection found = look("time,Acc Y,Acc X,Acc Z,emg 1,1,note\n0,1,2,3,4,5,hi\n0.1,1,2,3,4,5,ho\n");
    const std::string graph = inspectionAsGraph(found, settings, folder.path("walk.yaml"));
    Complaints complaints;
    const GraphDescription read = GraphDescription::fromText(graph, folder.path("walk.yaml"), complaints);
    EXPECT_TRUE(complaints.isEmpty());
    ASSERT_EQ(read.blocks.size(), 2U);
    const Value& pins = read.blocks[0].settings.back().value;
    ASSERT_EQ(pins.entries.size(), 3U) << graph;
    EXPECT_EQ(pins.entries[0].key, "Acc");
    ASSERT_EQ(pins.entries[0].value.items.size(), 3U);
    EXPECT_EQ(pins.entries[0].value.items[0].text, "Acc X");
    EXPECT_EQ(pins.entries[0].value.items[2].text, "Acc Z");
    EXPECT_EQ(pins.entries[1].key, "emg_1");
    EXPECT_EQ(pins.entries[2].key, "c1");
    EXPECT_EQ(read.connections.size(), 3U);
    EXPECT_EQ(read.blocks[1].settings.at(0).value.text, "walk-result.csv");
    EXPECT_TRUE(getIsOfInspection(graph));
    EXPECT_EQ(graph.find("onBadRow"), std::string::npos);
}

TEST_F(InspectionTest, WritesWhatWasSaidAndWhatBadRowsNeed) {
    const Inspection found = look("a,b\n1,2\nx,4\n5,6\n", {{"rate", valueOf(10.0)}});
    EXPECT_EQ(inspectionAsProfile(found, settings, folder.path("p.yaml")),
              "# Written by 'quillmere inspect'. Properties of a RecordingSource.\nfile: \"" +
                  folder.path("in.csv") + "\"\nrate: 10\npins: {a: [a], b: [b]}\nonBadRow: \"nan\"\n");
    const Inspection holes = look("time,x,y,z\n0,1,2,3\n0.1,1,,3\n");
    EXPECT_NE(inspectionAsProfile(holes, settings, folder.path("p.yaml")).find("onBadRow: \"nan\""),
              std::string::npos);
    const Inspection none = look("time,x,y,z\n0,1,2,3\n0.1,,,\n");
    EXPECT_EQ(inspectionAsProfile(none, settings, folder.path("p.yaml")).find("onBadRow"), std::string::npos);
}

TEST_F(InspectionTest, WritesNoGraphThatIsTooLarge) {
    std::string names = "time";
    std::string row = "0";
    for (int i = 0; i < 10001; ++i) {
        names += ",c" + std::to_string(i);
        row += ",1";
    }
    const Inspection found = look(names + "\n" + row + "\n0.1" + row.substr(1) + "\n");
    ASSERT_TRUE(findHindrance(found));
    EXPECT_EQ(findHindrance(found)->found, "10001 groups and single columns");
}

TEST_F(InspectionTest, WritesNoGraphWithoutNumbers) {
    ASSERT_TRUE(findHindrance(look("time,a\n0,x\n0.1,y\n")));
    EXPECT_EQ(findHindrance(look("time,a\n0,x\n0.1,y\n"))->found, "no column with numbers in it");
}

TEST_F(InspectionTest, EndsWhenAStopIsRequested) {
    std::string text = "time,a\n";
    for (int i = 0; i < 5000; ++i)
        text += std::to_string(0.01 * i) + ",1\n";
    const std::string path = folder.write("long.csv", text);
    InspectionSettings none;
    Complaints complaints;
    none.finish(complaints);
    std::stop_source stop;
    std::uint64_t told = 0;
    const auto tell = [&](const InspectionProgress& progress) { told = progress.rows; };
    const Inspection whole = inspect(*openRecording(path, none.wishes), none, stop.get_token(), tell);
    EXPECT_EQ(whole.rows, 5000U);
    EXPECT_EQ(told, 4096U);
    stop.request_stop();
    EXPECT_THROW(inspect(*openRecording(path, none.wishes), none, stop.get_token()), InterruptedException);
}

} // namespace
