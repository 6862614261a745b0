// SPDX-License-Identifier: MIT
#include "host/recording/RecordingSink.h"

#include "framework/Quillmere.h"
#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <limits>
#include <string>

namespace {

class RecordingSinkTest : public Support::GraphFixture {
protected:
    static std::string graph(const std::string& properties) {
        return "format: 1\nblocks:\n"
               "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {p: [x, y], q: "
               "y}}}\n"
               "  - {id: out, type: RecordingSink, properties: {" +
               properties +
               "}}\nconnections:\n"
               "  - {from: in.q, to: out.second one}\n"
               "  - {from: in.p, to: out.first}\n";
    }
};

TEST_F(RecordingSinkTest, PinsAreInTheOrderOfTheConnections) {
    EXPECT_EQ(run(graph("file: out.csv")), "");
    EXPECT_EQ(folder.read("out.csv"),
              "t,second one[0],first[0],first[1]\n0,10,1,10\n0.5,20,2,20\n1,30,3,30\n");
}

TEST_F(RecordingSinkTest, ColumnsAndTimeMayBeNamed) {
    EXPECT_EQ(run(graph("file: out.csv, time: seconds, columns: {first: [\"a,x\", ay]}")), "");
    EXPECT_EQ(folder.read("out.csv"),
              "seconds,second one[0],\"a,x\",ay\n0,10,1,10\n0.5,20,2,20\n1,30,3,30\n");
}

TEST_F(RecordingSinkTest, NamesThatDoNotFitTheSampleEndTheRun) {
    EXPECT_EQ(
        run("format: 1\nblocks:\n"
            "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {p: [x, y]}}}\n"
            "  - {id: level, type: FilterButterworthV2}\n"
            "  - {id: out, type: RecordingSink, properties: {file: out.csv, columns: {first: [ax]}}}\n"
            "connections: [{from: in, to: level.in}, {from: level.out, to: out.first}]\n"),
        "block 'out' (RecordingSink) at 0 s: out.csv: 'first': found a sample of 2 elements for 1 column "
        "name; expected as many names as elements");
}

TEST_F(RecordingSinkTest, NamesMustFitWhatComesThroughBlocksThatKeepTheShape) {
    for (const char* const type : {"FilterGain", "FilterButterworth", "FilterBandPass", "FilterIIR"}) {
        const auto text = [&](const std::string& names) {
            return "format: 1\nblocks:\n"
                   "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {p: [x, "
                   "y]}}}\n"
                   "  - {id: g, type: FilterGain}\n  - {id: f, type: " +
                   std::string(type) +
                   "}\n  - {id: out, type: RecordingSink, properties: {file: out.csv, columns: {first: [" +
                   names + "]}}}\nconnections: [{from: in, to: g}, {from: g, to: f." +
                   (std::string(type) == "FilterGain" ? "input" : "in") + "}, {from: f, to: out.first}]\n";
        };
        EXPECT_EQ(complaintsOf(text("ax")),
                  "g.yaml:6:74: found 1 column name for 'first', whose samples have 2 elements; expected as "
                  "many names as elements\n")
            << type;
        EXPECT_EQ(complaintsOf(text("ax, ay")), "") << type;
    }
}

TEST_F(RecordingSinkTest, NamesMustFitASampleThatComesStraightFromARecording) {
    const std::string found = "g.yaml:4:74: found 1 column name for 'first', whose samples have 2 elements; "
                              "expected as many names as elements\n";
    EXPECT_EQ(complaintsOf(graph("file: out.csv, columns: {first: [ax]}")), found);
    EXPECT_EQ(complaintsOf(graph("file: out.csv, columns: {first: [ax, ay]}")), "");
    std::string framed = graph("file: out.csv, columns: {first: [a, b, c]}");
    framed.replace(framed.find("time: t"), 7, "time: t, frame: 3");
    EXPECT_EQ(complaintsOf(framed), "g.yaml:4:74: found 3 column names for 'first', whose samples have 6 "
                                    "elements; expected as many names as elements\n");
}

TEST_F(RecordingSinkTest, NamesThatCannotStandInAHeaderAreRefused) {
    const std::string expected = "; expected a name in one line, without control characters\n";
    EXPECT_EQ(complaintsOf(graph("file: out.csv, time: \"a\\nb\"")), "g.yaml:4:70: found 'a\\nb'" + expected);
    EXPECT_EQ(complaintsOf(graph("file: out.csv, time: \"\"")), "g.yaml:4:70: found ''" + expected);
    EXPECT_EQ(complaintsOf(graph("file: out.csv, columns: {first: [\"a\\rb\", c]}")),
              "g.yaml:4:82: found 'a\\rb'" + expected);
    std::string pin = graph("file: out.csv");
    pin.replace(pin.find("out.first"), 9, "\"out.fi\\nrst\"");
    EXPECT_EQ(complaintsOf(pin), "g.yaml:7:22: found the pin name 'fi\\nrst'" + expected);
}

TEST_F(RecordingSinkTest, ACountedColumnHasItsNameForItself) {
    EXPECT_EQ(
        complaintsOf(graph("file: out.csv, time: \"first[1]\"")),
        "g.yaml:4:70: found the column name 'first[1]', which a column of 'first' has too; expected each "
        "name once\n");
    EXPECT_EQ(complaintsOf(graph("file: out.csv, columns: {first: [\"second one[0]\", b]}")),
              "g.yaml:4:74: found the column name 'second one[0]', which a column of 'second one' has too; "
              "expected each name once\n");
    EXPECT_EQ(complaintsOf(graph("file: out.csv, columns: {first: [b, t]}, time: t")),
              "g.yaml:4:85: found the column name 't' a second time; expected each name once\n")
        << "wherever the time's name stands";
    EXPECT_EQ(complaintsOf(graph("file: out.csv, time: \"third[1]\"")), "");
}

/// What stands under the name of a result, and what a check says of it.
struct StandingRow {
    std::string text;
    bool isReplaced;
    std::string why;
};

TEST_F(RecordingSinkTest, AResultReplacesOnlyWhatReadsLikeOne) {
    const std::string sink = graph("file: out.csv, columns: {first: [u, v]}");
    const StandingRow rows[] = {
        {"t,second one[0],u,v\n0,1,2,3\n", true, "the sink's own"},
        {"t,u,v\n0,1e-07,\n1,,nan\n2,-0.1", true, "other pins, and a cut end"},
        {"t,second one[0],second one[1]\n", true, "other widths"},
        {"t,other[0],u,v\n1,2,3,4\n", true, "a pin that is no more"},
        {"t\n", true, "without any sample"},
        {"", true, "nothing is lost"},
        {"what a user had", false, "a text"},
        {"what a user had\nin two lines\n", false, "a text"},
        {"t\n0\n1\n", false, "times alone"},
        {"t,x,y\n0,1,2\n", false, "a recording"},
        {"s,u,v\n0,1,2\n", false, "another time column"},
        {"t,u,v,w\n0,1,2,3\n", false, "a strange column"},
        {"t,u,v\n0,1,2.50\n", false, "numbers that no run writes"},
        {"t,u,v\n0,1,2\n1,2,three\n", false, "no numbers"},
        {"t,u[1],u[2]\n0,1,2\n", false, "columns that don't count from 0"},
    };
    for (const StandingRow& row : rows) {
        folder.write("out.csv", row.text);
        EXPECT_EQ(complaintsOf(sink),
                  row.isReplaced
                      ? ""
                      : "g.yaml:4:55: found the file 'out.csv', which no run has written; expected "
                        "another name, or 'overwrite: true' or --overwrite to replace it\n")
            << row.why;
        EXPECT_EQ(folder.read("out.csv"), row.text) << "a check touches nothing";
    }
    EXPECT_THROW(run(sink), Quillmere::Host::GraphException);
    EXPECT_EQ(folder.read("out.csv"), rows[14].text);
    EXPECT_EQ(run(graph("file: out.csv, overwrite: true, columns: {first: [u, v]}")), "");
    EXPECT_EQ(folder.read("out.csv"), "t,second one[0],u,v\n0,10,1,10\n0.5,20,2,20\n1,30,3,30\n");
}

TEST_F(RecordingSinkTest, ColumnsThatARecordingHasProveNothing) {
    const std::string sink =
        "format: 1\nblocks:\n"
        "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {p: "
        "[x, y]}}}\n"
        "  - {id: out, type: RecordingSink, properties: {file: out.csv, columns: {p: [x, "
        "y]}}}\n"
        "connections: [{from: in, to: out.p}]\n";
    folder.write("out.csv", folder.read("in.csv"));
    EXPECT_NE(complaintsOf(sink), "") << "the table may be another recording";
    std::filesystem::remove(folder.path("out.csv"));
    EXPECT_EQ(run(sink), "");
    EXPECT_EQ(run(sink), "") << "known by its mark";
}

struct RefusalRow {
    std::string properties;
    std::string complaints;
};

TEST_F(RecordingSinkTest, WrongSettingsAreComplainedOf) {
    const RefusalRow rows[] = {
        {"", "g.yaml:4:10: found the RecordingSink 'out' without a file; expected 'file:' and the name of a "
             "file\n"},
        {"file: out.csv, name: x", "g.yaml:4:64: found the property 'name' of RecordingSink; expected one of "
                                   "file, time, columns, units and "
                                   "overwrite\n"},
        {"file: out.csv, columns: {frist: [a]}",
         "g.yaml:4:74: found the pin 'frist' that no connection leads to; expected one of second one and "
         "first; did you mean "
         "first?\n"},
        {"file: out.csv, columns: [a]", "g.yaml:4:73: found a list; expected for a pin the names of its "
                                        "columns, as in {accel: [ax, ay, az]}\n"},
        {"file: out.csv, columns: {first: [a, a]}",
         "g.yaml:4:85: found the column name 'a' a second time; expected each name once\n"},
        {"file: out.csv, columns: {first: [t, a]}",
         "g.yaml:4:82: found the column name 't' a second time; expected each name once\n"},
        {"file: out.csv, columns: {first: a}",
         "g.yaml:4:81: found 'a'; expected a list of names, as in [ax, ay, az]\n"},
        {"file: [a]", "g.yaml:4:55: found a list; expected a text\n"},
    };
    for (const RefusalRow& row : rows)
        EXPECT_EQ(complaintsOf(graph(row.properties)), row.complaints) << row.properties;
}

using namespace Quillmere;

/// A sink with three inputs that nobody runs: the test sends and steps.
struct Gatherer {
    Gatherer() {
        Host::Value file;
        file.kind = Host::Value::Kind::Scalar;
        file.text = folder.path("out.csv");
        Host::GraphDescription::Block description;
        description.settings.push_back({"file", {}, file, Host::GraphDescription::Setting::Origin::Caller});
        Host::Complaints complaints;
        sink.configure(description, "", complaints);
        complaints.raise();
        for (const char* const name : {"a", "b", "c"}) {
            Core::OutputPin<Core::MatrixXd>& sender = senders.emplace_back(name, nullptr);
            Core::resizeSample(sender.data.value, 1, 1);
            sender.attach(*sink.makePin(name), false);
        }
        sink.open();
    }

    /// `a0` sends to pin a with time 0 (`an` with none that is a number), a value that counts up; `|` steps.
    void play(const std::string& score) {
        for (std::size_t i = 0; i < score.size(); ++i) {
            if (score[i] == '|') step();
            if (score[i] < 'a' || score[i] > 'c') continue;
            Core::OutputPin<Core::MatrixXd>& sender = senders[static_cast<std::size_t>(score[i] - 'a')];
            sender.data.value(0) = ++count;
            const char time = score[++i];
            sender.send(time == 'n' ? std::numeric_limits<double>::quiet_NaN() : time - '0');
        }
    }
    void step() {
        sink.process();
        if (handsOver) sink.handOver();
    }
    /// The rows so far, without the header.
    std::string rows() const {
        const std::string name = folder.has("out.csv") ? "out.csv" : "out.csv.partial";
        const std::string table = folder.read(name);
        return table.substr(std::min(table.find('\n') + 1, table.size()));
    }

    const Support::TemporaryFolder folder;
    std::deque<Core::OutputPin<Core::MatrixXd>> senders;
    Host::RecordingSink sink{"out"};
    bool handsOver = true; ///< Behind each step.
    int count = 0;
};

struct GatherRow {
    std::string name;
    std::string score;
    std::string rows;     ///< So far, the header of the three in one column each being left out.
    std::string rowsLeft; ///< What the end adds.
};

const GatherRow kGathers[] = {
    {.name = "all at once", .score = "a0 b0 c0 |", .rows = "0,1,2,3\n", .rowsLeft = ""},
    {.name = "one after the other", .score = "a0 | c0 | | b0 |", .rows = "0,1,3,2\n", .rowsLeft = ""},
    {.name = "another time ends a row",
     .score = "a0 b0 c0 | a1 | b2 |",
     .rows = "0,1,2,3\n1,4,,\n",
     .rowsLeft = "2,,5,\n"},
    {.name = "an earlier time too",
     .score = "a0 b0 c0 | a5 | b4 |",
     .rows = "0,1,2,3\n5,4,,\n",
     .rowsLeft = "4,,5,\n"},
    {.name = "a pin that gives a second time",
     .score = "a0 b0 c0 | a1 | a1 |",
     .rows = "0,1,2,3\n1,4,,\n",
     .rowsLeft = "1,5,,\n"},
    {.name = "two times in one step",
     .score = "a0 b0 c0 | a1 b2 |",
     .rows = "0,1,2,3\n1,4,,\n",
     .rowsLeft = "2,,5,\n"},
    {.name = "times that are no numbers are like no other",
     .score = "a0 b0 c0 | an | bn cn |",
     .rows = "0,1,2,3\nnan,4,,\nnan,,5,\n",
     .rowsLeft = "nan,,,6\n"},
    {.name = "nothing came", .score = "a0 b0 c0 | | |", .rows = "0,1,2,3\n", .rowsLeft = ""},
};

TEST(GatheringSink, ARowIsWhatCameWithOneTime) {
    for (const GatherRow& row : kGathers) {
        Gatherer gatherer;
        gatherer.sink.setGathersByTime(true);
        gatherer.sink.setStreamTime(77.0); // the time of rounds isn't that of samples
        gatherer.play(row.score);
        EXPECT_EQ(gatherer.rows(), row.rows) << row.name;
        gatherer.sink.complete();
        EXPECT_EQ(gatherer.rows(), row.rows + row.rowsLeft) << row.name;
    }
}

TEST(GatheringSink, TheTimeOfRoundsMayGoOnWhileARowIsGathered) {
    Gatherer gatherer;
    gatherer.sink.setGathersByTime(true);
    gatherer.play("a0 b0 c0 | a1 |");
    gatherer.sink.setStreamTime(2.0);
    gatherer.play("b1 |");
    gatherer.sink.setStreamTime(3.0);
    gatherer.play("c1 |");
    EXPECT_EQ(gatherer.rows(), "0,1,2,3\n1,4,5,6\n");
}

TEST(GatheringSink, ARowWaitsForNoPinThatIsDetached) {
    Gatherer gatherer;
    gatherer.sink.setGathersByTime(true);
    gatherer.play("a0 b0 c0 | a1 b1 |");
    EXPECT_EQ(gatherer.rows(), "0,1,2,3\n");
    gatherer.senders[2].detachAll();
    gatherer.play("|");
    EXPECT_EQ(gatherer.rows(), "0,1,2,3\n1,4,5,\n");
    gatherer.play("a2 b2 |");
    EXPECT_EQ(gatherer.rows(), "0,1,2,3\n1,4,5,\n2,6,7,\n");
}

TEST(GatheringSink, AGatheredSampleIsTheOneThatWasSent) {
    Gatherer gatherer;
    gatherer.sink.setGathersByTime(true);
    gatherer.play("a0 b0 c0 | a1 |");
    gatherer.senders[0].data.value(0) = -1.0; // a link within a layout hands out the sender's own
    gatherer.play("b1 c1 |");
    EXPECT_EQ(gatherer.rows(), "0,1,2,3\n1,4,5,6\n");
}

TEST(GatheringSink, ARowThatWasBegunByTimeIsWrittenBeforeThoseOfRounds) {
    Gatherer gatherer;
    gatherer.sink.setStreamTime(0.0);
    gatherer.play("a0 b0 c0 |");
    gatherer.sink.setGathersByTime(true);
    gatherer.play("a1 |");
    EXPECT_EQ(gatherer.rows(), "0,1,2,3\n");
    gatherer.sink.setGathersByTime(false);
    EXPECT_EQ(gatherer.rows(), "0,1,2,3\n") << "by the step, not by who changes the links";
    gatherer.sink.setStreamTime(9.0);
    gatherer.play("b1 |");
    EXPECT_EQ(gatherer.rows(), "0,1,2,3\n1,4,,\n9,,5,\n");
    gatherer.sink.setGathersByTime(true);
    gatherer.play("c2 |");
    gatherer.sink.complete();
    EXPECT_EQ(gatherer.rows(), "0,1,2,3\n1,4,,\n9,,5,\n2,,,6\n") << "with nothing of the round before";
}

TEST(GatheringSink, AnAbandonedTableHasTheRowThatWasGathered) {
    Gatherer gatherer;
    gatherer.sink.setGathersByTime(true);
    gatherer.play("a0 b0 c0 | a1 |");
    gatherer.sink.abandon();
    EXPECT_EQ(gatherer.rows(), "0,1,2,3\n1,4,,\n");
    EXPECT_FALSE(gatherer.folder.has("out.csv"));
}

TEST(GatheringSink, RowsAreHandedOverWhenTheyAreAskedForOrAtTheEnd) {
    Gatherer gatherer;
    gatherer.handsOver = false;
    EXPECT_FALSE(gatherer.sink.getHoldsRows());
    gatherer.sink.setStreamTime(5.0);
    gatherer.play("a0 b0 c0 |");
    EXPECT_TRUE(gatherer.sink.getHoldsRows());
    EXPECT_EQ(gatherer.rows(), "");
    gatherer.sink.handOver();
    EXPECT_FALSE(gatherer.sink.getHoldsRows());
    EXPECT_EQ(gatherer.rows(), "5,1,2,3\n");
    gatherer.play("a0 b0 c0 |");
    EXPECT_EQ(gatherer.rows(), "5,1,2,3\n");
    EXPECT_EQ(gatherer.sink.getRows(), 2u);
    gatherer.sink.complete();
    EXPECT_EQ(gatherer.rows(), "5,1,2,3\n5,4,5,6\n");
}

} // namespace
