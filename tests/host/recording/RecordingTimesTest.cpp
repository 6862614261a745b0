// SPDX-License-Identifier: MIT
#include "host/recording/RecordingSource.h"

#include "framework/Quillmere.h"
#include "host/ends/RecordingException.h"
#include "host/ends/WakingSource.h"
#include "host/text/ShortestText.h"
#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

namespace Host = Quillmere::Host;

/// What a source makes of times that aren't as they should be, as a sink right behind it writes it.
class RecordingTimesTest : public Support::GraphFixture {
protected:
    static std::string graph(const std::string& properties, const std::string& file = "in.csv") {
        return "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: " + file + ", " +
               properties +
               "}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
               "connections: [{from: in, to: out.p}]\n";
    }
    /// Of one pin with the column x.
    std::string result(const std::string& properties) {
        const std::string failure = run(graph("time: t, pins: {p: x}, " + properties));
        return failure.empty() ? folder.read("out.csv") : failure;
    }
    std::string complaint(const std::string& properties) {
        const std::string line = complaintsOf(graph("pins: {p: x}, " + properties));
        return line.substr(0, line.find('\n'));
    }
    std::string notes() const {
        std::string all;
        for (const std::string& note : outcome.recordings.at(0).account.notes)
            all += note + "\n";
        return all;
    }
};

constexpr const char* kOdd = "t,x\n0,1\n1,2\n1,3\n2,4\n0.5,5\n3,6\n7,7\n8,8\n";

TEST_F(RecordingTimesTest, OddTimesAreTakenAsTheyComeWhereNothingIsSaid) {
    folder.write("in.csv", kOdd);
    const std::string same = "t,p[0]\n0,1\n1,2\n1,3\n2,4\n0.5,5\n3,6\n7,7\n8,8\n";
    EXPECT_EQ(result(""), same);
    EXPECT_EQ(result("duplicates: keep, backwards: keep, gaps: keep"), same);
    EXPECT_EQ(warningsOfRun(), "in.csv: warning: 1 time stamp goes back, in line 6 (from 2 s to 0.5 s)\n"
                               "in.csv: warning: 1 time stamp repeats the one before, in line 4 (from 1 s to "
                               "1 s)\n");
}

TEST_F(RecordingTimesTest, WhatIsLeftOutIsToldInsteadOfWhatWasOdd) {
    folder.write("in.csv", kOdd);
    EXPECT_EQ(result("duplicates: drop, backwards: drop"), "t,p[0]\n0,1\n1,2\n2,4\n3,6\n7,7\n8,8\n");
    EXPECT_EQ(warningsOfRun(),
              "in.csv: warning: 1 time stamp goes back, in line 6 (from 2 s to 0.5 s); its row is left out\n"
              "in.csv: warning: 1 time stamp repeats the one before, in line 4 (from 1 s to 1 s); its row is "
              "left out\n");
    EXPECT_EQ(outcome.recordings[0].rows, 6u);
    EXPECT_EQ(outcome.recordings[0].processedRows, 6u);
    isStrict = true;
    EXPECT_EQ(result("duplicates: drop, backwards: drop"), "ended with 2 warnings, taken for errors");
}

TEST_F(RecordingTimesTest, ARunEndsAtTheRowThatIsWrong) {
    folder.write("in.csv", kOdd);
    EXPECT_EQ(result("duplicates: error"),
              "block 'in' (RecordingSource) at 1 s: in.csv:4: found the time stamp of the row before, 1 s; "
              "expected another for each row, or 'duplicates: drop' to leave out such rows");
    EXPECT_EQ(
        result("backwards: error"),
        "block 'in' (RecordingSource) at 2 s: in.csv:6: found a time stamp of 0.5 s, behind one of 2 s; "
        "expected times that go on, or 'backwards: drop' to leave out such rows");
    EXPECT_EQ(result("backwards: drop, gaps: error, gapLimit: 2 s"),
              "block 'in' (RecordingSource) at 3 s: in.csv:8: found a gap from 3 s to 7 s; expected steps of "
              "at most 2 s, or 'gaps: nan', 'hold' or 'keep'");
    EXPECT_EQ(result("gaps: hold, gapLimit: 2").substr(0, 60),
              "block 'in' (RecordingSource) at 2 s: in.csv:6: found a time ")
        << "gaps need time that goes on";
}

TEST_F(RecordingTimesTest, GapsAreFilledAndTold) {
    folder.write("in.csv", "t,x\n0,1\n1,2\n2,4\n5,7\n6,8\n");
    EXPECT_EQ(result("gaps: nan, gapLimit: 1.5"), "t,p[0]\n0,1\n1,2\n2,4\n3,nan\n4,nan\n5,7\n6,8\n");
    EXPECT_EQ(warningsOfRun(),
              "in.csv: warning: 1 time stamp jumps by more than 1.5 s, in line 5 (from 2 s to 5 "
              "s); 2 rows fill it with nan\n")
        << "that not-a-number is read there is no surprise";
    EXPECT_EQ(result("gaps: hold, gapLimit: 1500 ms"), "t,p[0]\n0,1\n1,2\n2,4\n3,4\n4,4\n5,7\n6,8\n");
    EXPECT_EQ(warningsOfRun(),
              "in.csv: warning: 1 time stamp jumps by more than 1.5 s, in line 5 (from 2 s to 5 "
              "s); 2 rows fill it with the values before\n");
    EXPECT_EQ(result("frame: 2, gaps: hold, gapLimit: 1.5"), "t,p[0],p[1]\n1,1,2\n3,4,4\n5,4,7\n")
        << "frames are made of what comes of it";
}

TEST_F(RecordingTimesTest, StartAndEndCutTheRecording) {
    folder.write("in.csv", "t,x\n0,1\n1,2\n2,4\n5,7\n6,7\nno time,8\n");
    EXPECT_EQ(result("start: 1, end: 5 s"), "t,p[0]\n1,2\n2,4\n") << "and what is behind isn't read";
    EXPECT_EQ(warningsOfRun(), "");
    EXPECT_EQ(notes(), "1 row before 1 s and all rows from 5 s on left out\n");
    EXPECT_EQ(outcome.recordings[0].rows, 2u);
    EXPECT_EQ(result("end: 0.02 min"), "t,p[0]\n0,1\n1,2\n");
    EXPECT_EQ(result("start: 8, onBadRow: skip"), "t\n");
    EXPECT_NE(warningsOfRun().find("in.csv: warning: none of its rows counts by 'start' and 'end', the last "
                                   "that was read being that of 6 s\n"),
              std::string::npos);
    EXPECT_EQ(run(graph("rate: 2, pins: {p: x}, start: 0.5, end: 1.5")), "");
    EXPECT_EQ(folder.read("out.csv"), "t,p[0]\n0.5,2\n1,4\n")
        << "a rate counts from the first row of the file";
}

TEST_F(RecordingTimesTest, ValuesOfRepairedRowsArentToldToStandInTheFilesRows) {
    folder.write("in.csv", "t,x\n0,1\n1,nan\n2,3\n");
    EXPECT_EQ(result("start: 1"), "t,p[0]\n1,nan\n2,3\n");
    EXPECT_EQ(warningsOfRun().substr(0, warningsOfRun().find('\n')),
              "g.yaml:3:56: warning: 'in' sent 1 value that isn't finite, the first in row 1 of its repaired "
              "rows (1 "
              "s), column 'x'");
}

TEST_F(RecordingTimesTest, AWrongStampIsTold) {
    folder.write("in.csv", "t,x\n0,1\n1,2\n1000000,3\n2,4\n3,5\n4,6\n");
    EXPECT_EQ(result("end: 100"), "t,p[0]\n0,1\n1,2\n2,4\n3,5\n4,6\n");
    EXPECT_EQ(warningsOfRun(),
              "in.csv: warning: 1 time stamp is behind 'end' while the next isn't, in line 4 "
              "(from 1 s to 1e+06 s); its row is left out\n");
    EXPECT_EQ(notes(), "all rows from 100 s on left out\n");
    EXPECT_EQ(result("backwards: drop"), "t,p[0]\n0,1\n1,2\n1e+06,3\n");
    EXPECT_EQ(warningsOfRun().substr(0, warningsOfRun().find('\n')),
              "in.csv: warning: 3 time stamps go back, the first in line 5 (from 1e+06 s to 2 s); their rows "
              "are left out; of these 3 rows behind the 1e+06 s in line 4, which may be the wrong time stamp "
              "itself");
}

TEST_F(RecordingTimesTest, StartAndEndMayBeDatesWhereTimesCountFromOne) {
    folder.write("in.csv", "time,x\n2019-08-06 10:25:50.00,1\n2019-08-06 10:25:50.50,2\n"
                           "2019-08-06 10:25:51.00,3\n2019-08-06 10:25:51.50,4\n");
    EXPECT_EQ(run(graph("pins: {p: x}, start: \"2019-08-06 10:25:50.5\", end: 2019-08-06T10:25:51.25")), "");
    EXPECT_EQ(folder.read("out.csv"), "t,p[0]\n0.5,2\n1,3\n");
    EXPECT_EQ(run(graph("pins: {p: x}, timeStart: 2019-08-06 10:25:40, start: 2019-08-06 10:25:51")), "");
    EXPECT_EQ(folder.read("out.csv"), "t,p[0]\n11,3\n11.5,4\n");
    EXPECT_EQ(complaint("start: \"10:25:51\""),
              "g.yaml:3:85: found '10:25:51'; expected a date and a time, as the times of in.csv are");
    folder.write("in.csv", "time,x\n10:25:50,1\n10:25:51,2\n10:25:52,3\n");
    EXPECT_EQ(run(graph("pins: {p: x}, start: \"10:25:51\"")), "");
    EXPECT_EQ(folder.read("out.csv"), "t,p[0]\n1,2\n2,3\n");
    EXPECT_EQ(complaint("end: 2019-08-06 10:00"),
              "g.yaml:3:83: found '2019-08-06 10:00'; expected a time of day, as the times of in.csv are");
    folder.write("in.csv", "t,x\n0,1\n1,2\n");
    EXPECT_EQ(
        complaint("time: t, end: 2019-08-06 10:00"),
        "g.yaml:3:92: found '2019-08-06 10:00'; expected seconds, since the times of in.csv count from no "
        "date");
}

TEST_F(RecordingTimesTest, ATimeOfDayInFrontOfTheFirstRowIsTheNextDays) {
    folder.write("in.csv", "time,x\n23:59:58,1\n23:59:59,2\n00:00:00,3\n00:00:01,4\n00:00:02,5\n");
    const auto cut = [&](const std::string& properties) {
        const std::string failure = run(graph("pins: {p: x}, " + properties));
        return failure.empty() ? folder.read("out.csv") : failure;
    };
    EXPECT_EQ(cut("start: \"00:00:01\""), "t,p[0]\n3,4\n4,5\n");
    EXPECT_EQ(cut("end: \"00:00:01\""), "t,p[0]\n0,1\n1,2\n2,3\n");
    EXPECT_EQ(cut("start: \"23:59:59\", end: \"00:00:02\""), "t,p[0]\n1,2\n2,3\n3,4\n");
    EXPECT_EQ(complaint("start: \"00:00:02\", end: \"23:59:59\""),
              "g.yaml:3:102: found 'end: 23:59:59' that isn't behind 'start: 00:00:02' in in.csv; expected a "
              "later one");
}

TEST_F(RecordingTimesTest, AMomentAndSecondsDontGoTogether) {
    folder.write("in.csv", "time,x\n2019-08-06 10:25:50,1\n2019-08-06 10:25:51,2\n");
    EXPECT_EQ(
        complaint("start: 2019-08-06 10:25:50, end: 10"),
        "g.yaml:3:111: found 'end: 10' beside 'start: 2019-08-06 10:25:50', of which one is a moment and "
        "the other counts seconds from the first; expected both as moments, or both in seconds of the "
        "recording's time");
}

TEST_F(RecordingTimesTest, ADateIsJudgedByTheFirstRowThatIsTaken) {
    const std::string start = "pins: {p: x}, onBadRow: skip, start: \"2019-08-06 10:25:51\"";
    folder.write("in.csv",
                 "time,x\n,\n2019-08-06 10:25:50,1\n2019-08-06 10:25:51,2\n2019-08-06 10:25:52,3\n");
    EXPECT_EQ(run(graph(start)), "");
    EXPECT_EQ(folder.read("out.csv"), "t,p[0]\n1,2\n2,3\n");
    folder.write("in.csv", "time,x\n");
    EXPECT_EQ(run(graph("time: time, " + start)), "") << "nothing is wrong with it where there is no row";
}

TEST_F(RecordingTimesTest, RowsAreResampled) {
    folder.write("in.csv", "t,x\n0,1\n0.9,10\n2.1,22\n3,31\n");
    for (const char* const rate : {"1", "1 Hz", "1000 mHz"}) {
        EXPECT_EQ(result(std::string("resample: ") + rate), "t,p[0]\n0,1\n1,11\n2,21\n3,31\n");
        EXPECT_EQ(notes(), "1 rows a second, resampled from 4 rows\n");
        EXPECT_EQ(warningsOfRun(), "");
    }
    EXPECT_EQ(result("resample: 1, interpolate: hold"), "t,p[0]\n0,1\n1,10\n2,10\n3,31\n");
    EXPECT_EQ(result("resample: 1, frame: 2"), "t,p[0],p[1]\n1,1,11\n3,21,31\n");
    EXPECT_EQ(result("resample: 1, gapLimit: 1, start: 0"), "t,p[0]\n0,1\n1,nan\n2,nan\n3,31\n");
    EXPECT_EQ(warningsOfRun(),
              "in.csv: warning: 1 time stamp jumps by more than 1 s, in line 4 (from 0.9 s to "
              "2.1 s); 2 rows fill it with nan\n");
    EXPECT_EQ(run(graph("rate: 2, pins: {p: x}, resample: 4")), "");
    EXPECT_EQ(folder.read("out.csv"), "t,p[0]\n0,1\n0.25,5.5\n0.5,10\n0.75,16\n1,22\n1.25,26.5\n1.5,31\n");
}

TEST_F(RecordingTimesTest, EachPinIsResampledInItsOwnWay) {
    folder.write("in.csv", "t,x,y,flag\n0,0,100,0\n0.5,5,,0\n1,10,102,1\n1.5,15,,0\n2,20,104,0\n");
    EXPECT_EQ(
        run("format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, "
            "pins: {x: x, y: y, f: flag}, resample: 4, interpolate: {f: hold}}}\n"
            "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
            "connections: [{from: in.x, to: out.x}, {from: in.y, to: out.y}, {from: in.f, to: out.f}]\n"),
        "");
    EXPECT_EQ(folder.read("out.csv"),
              "t,x[0],y[0],f[0]\n0,0,100,0\n0.25,2.5,100.5,0\n0.5,5,101,0\n0.75,7.5,101.5,0\n1,10,102,1\n"
              "1.25,12.5,102.5,1\n1.5,15,103,0\n1.75,17.5,103.5,0\n2,20,104,0\n");
}

TEST_F(RecordingTimesTest, HertzAreConvertedByTheRateThatRowsAreMadeInto) {
    std::string text = "t,x\n";
    for (int i = 0; i < 100; ++i)
        text += std::to_string(0.01 * (i + (i % 2) * 0.9)) + ",1\n";
    folder.write("in.csv", text);
    const auto filtered = [&](const std::string& properties, const std::string& cutOff) {
        return "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, "
               "pins: {p: x}" +
               properties +
               "}}\n  - {id: b, type: FilterButterworth, properties: {RelativeCutOffFreq: " + cutOff +
               "}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
               "connections: [{from: in, to: b.in}, {from: b.out, to: out.y}]\n";
    };
    const auto doubts = [&](const std::string& text2) {
        EXPECT_EQ(run(text2), "");
        std::string all;
        for (const Host::Warning& warning : outcome.doubts)
            all += withoutFolder(warning.getText()) + "\n";
        return all;
    };
    EXPECT_NE(doubts(filtered("", "0.1")).find("takes its samples to come evenly"), std::string::npos);
    EXPECT_EQ(doubts(filtered(", resample: 50", "0.1")), "") << "even they are now";
    EXPECT_EQ(doubts(filtered(", resample: 50, frame: 2, hop: 1", "5 Hz")), "");
    ASSERT_EQ(outcome.conversions.size(), 1u);
    EXPECT_EQ(withoutFolder(outcome.conversions[0].getText()),
              "5 Hz is 0.2 of half the rate (50 samples/s, as stated for in.csv)");
}

TEST_F(RecordingTimesTest, WhatDoesNotGoTogetherIsRefusedInItsPlace) {
    folder.write("in.csv", "t,x\n0,1\n1,2\n");
    EXPECT_EQ(
        complaint("rate: 2, duplicates: drop"),
        "g.yaml:3:99: found 'duplicates: drop' where a rate counts the times; expected 'time:' and a column "
        "of time stamps, or no 'duplicates:'");
    EXPECT_EQ(complaint("rate: 2, gaps: nan, gapLimit: 1").substr(0, 63),
              "g.yaml:3:93: found 'gaps: nan' where a rate counts the times; e");
    EXPECT_EQ(
        complaint("time: t, gaps: nan"),
        "g.yaml:3:93: found 'gaps: nan' without a limit; expected 'gapLimit:' too, and the seconds behind "
        "which a step is a gap");
    EXPECT_EQ(
        complaint("time: t, gapLimit: 3"),
        "g.yaml:3:97: found a 'gapLimit' that nothing asks for; expected 'gaps:' with error, nan or hold, or "
        "'resample:' too");
    EXPECT_EQ(
        complaint("time: t, interpolate: hold"),
        "g.yaml:3:100: found 'interpolate' without 'resample'; expected 'resample:' too, and rows a second");
    EXPECT_EQ(
        complaint("time: t, resample: 5, backwards: keep"),
        "g.yaml:3:111: found 'backwards: keep' beside 'resample'; expected 'error' or 'drop', since time has "
        "to go on for it");
    EXPECT_EQ(complaint("time: t, start: 5, end: 5 s"),
              "g.yaml:3:102: found 'end: 5 s' that isn't behind 'start: 5'; expected a later one");
    EXPECT_EQ(complaint("time: t, resample: 5, interpolate: {q: hold}"),
              "g.yaml:3:114: found no pin 'q'; expected one of p");
    EXPECT_EQ(complaint("time: t, resample: -5"),
              "g.yaml:3:97: found '-5'; expected a rate above 0 rows a second, as 100 or 100 Hz");
    EXPECT_EQ(complaint("time: t, resample: 5 s"),
              "g.yaml:3:97: found '5 s'; expected a rate above 0 rows a second, as 100 or 100 Hz");
    EXPECT_EQ(
        complaint("time: t, resample: 5 hz"),
        "g.yaml:3:97: found '5 hz'; expected a rate above 0 rows a second, as 100 or 100 Hz; did you mean 5 "
        "Hz?");
    EXPECT_EQ(complaint("time: t, gaps: nan, gapLimit: 0"),
              "g.yaml:3:108: found '0'; expected seconds above 0, as 0.05 or 50 ms");
    EXPECT_EQ(
        complaint("time: t, start: soon"),
        "g.yaml:3:94: found 'soon'; expected a time in seconds, as 12.5 or 2 min, or a date and a time, as "
        "in \"2019-08-06 10:25:50\"");
    EXPECT_EQ(complaint("time: t, duplicates: dorp"),
              "g.yaml:3:99: found 'dorp'; expected one of keep, drop and error; did you mean drop?");
}

/// A source whose rows come when they come.
class PipedTimesTest : public RecordingTimesTest {
protected:
    PipedTimesTest() { pipe.write("t,x\n"); }

    void build(const std::string& properties) {
        Host::Complaints complaints;
        description = std::make_unique<Host::GraphDescription>(Host::GraphDescription::fromFile(
            folder.write("g.yaml", graph("time: t, pins: {p: x}, " + properties, "pipe")), complaints));
        built = std::make_unique<Host::Graph>(*description, catalogue, complaints);
        built->openSources(complaints);
        complaints.raise();
        source = built->getSources().at(0);
    }
    /// Sends what is ready, and gives back its times.
    std::string sent() {
        std::string times;
        while (source->getIsPrepared() && source->prepare()) {
            times += Host::shortestText(source->getNextTimeStamp()) + " ";
            source->release();
            source->process();
        }
        return times;
    }

    Support::Fifo pipe{folder.path("pipe")};
    std::unique_ptr<Host::GraphDescription> description;
    std::unique_ptr<Host::Graph> built;
    Host::Source* source = nullptr;
};

TEST_F(PipedTimesTest, ARowIsHeldBackNoLongerThanItsTimeIsKnown) {
    build("resample: 2, start: 0");
    pipe.write("0,1\n");
    EXPECT_EQ(sent(), "0 ");
    pipe.write("0.4,2\n");
    EXPECT_EQ(sent(), "");
    pipe.write("1.2,3\n");
    EXPECT_EQ(sent(), "0.5 1 ");
    pipe.close();
    EXPECT_EQ(sent(), "");
    EXPECT_FALSE(source->prepare());
}

TEST_F(PipedTimesTest, AGapIsFilledWhenItsEndComes) {
    build("gaps: hold, gapLimit: 1.5, duplicates: drop");
    pipe.write("0,1\n1,2\n1,3\n");
    EXPECT_EQ(sent(), "0 1 ");
    pipe.write("4,");
    EXPECT_EQ(sent(), "");
    pipe.write("5\n");
    EXPECT_EQ(sent(), "2 3 4 ");
}

TEST_F(PipedTimesTest, ALookAtRowsThatDontCountIsBoundedAndAReadingOfThemEndsWithTheRun) {
    build("start: 1");
    const auto early = [&] {
        std::string rows;
        for (int i = 0; i < 10000; ++i)
            rows += "0,1\n";
        return rows;
    };
    const auto* const waking = dynamic_cast<Host::WakingSource*>(source);
    ASSERT_NE(waking, nullptr);
    pipe.write(early());
    EXPECT_FALSE(source->getIsPrepared());
    EXPECT_TRUE(waking->getHasMore());
    int looks = 1;
    while (!source->getIsPrepared() && waking->getHasMore())
        ++looks;
    EXPECT_EQ(looks, 2) << "and one more that ends with what has come";
    pipe.write("2,1\n");
    EXPECT_TRUE(source->getIsPrepared());
    EXPECT_FALSE(waking->getHasMore());
    source->release();
    source->process();

    built->setStop(stop.get_token());
    stop.request_stop();
    pipe.write(early());
    EXPECT_THROW(source->prepare(), Host::InterruptedException) << "before it waits for more";
}

TEST_F(RecordingTimesTest, RowsThatAreLeftOutDontKeepARunFromItsStop) {
    std::string rows = "t,x\n";
    for (int i = 0; i < 10000; ++i)
        rows += "0,1\n";
    folder.write("in.csv", rows);
    Host::Complaints complaints;
    const Host::GraphDescription description = Host::GraphDescription::fromFile(
        folder.write("g.yaml", graph("time: t, pins: {p: x}, duplicates: drop")), complaints);
    Host::Graph built(description, catalogue, complaints);
    built.openSources(complaints);
    complaints.raise();
    Host::Source& source = *built.getSources().at(0);
    built.setStop(stop.get_token());
    stop.request_stop();
    ASSERT_TRUE(source.prepare());
    source.release();
    source.process();
    EXPECT_THROW(source.prepare(), Host::InterruptedException);
}

TEST_F(RecordingTimesTest, AFileIsLookedIntoOnceForTheRatesOfAllPinsAndNoLongerThanItsStop) {
    std::string rows = "t,x,y\n";
    for (int i = 0; i < 10000; ++i)
        rows += "0,1,1\n";
    folder.write("in.csv", rows + "5,1,1\n6,1,1\n7,1,1\n");
    Host::Complaints complaints;
    const Host::GraphDescription description = Host::GraphDescription::fromFile(
        folder.write("g.yaml", graph("time: t, pins: {p: x, q: y}, start: 4")), complaints);
    const auto rateOf = [](const Host::Graph& built, std::size_t pin) {
        const auto* const recorded = dynamic_cast<const Host::RecordedSource*>(built.getSources().at(0));
        const auto rate = recorded->getSampleRate(*built.getSources().at(0)->getOutputPins().at(pin));
        return rate ? rate->perSecond : 0.0;
    };
    Host::Graph built(description, catalogue, complaints);
    built.openSources(complaints);
    EXPECT_EQ(rateOf(built, 0), 1.0);
    folder.write("in.csv", rows);
    EXPECT_EQ(rateOf(built, 1), 1.0) << "of what was read for the other";

    Host::Graph stopped(description, catalogue, complaints);
    stopped.openSources(complaints);
    auto* const waking = dynamic_cast<Host::WakingSource*>(stopped.getSources().at(0));
    stop.request_stop();
    waking->setStopOfOpening(stop.get_token());
    EXPECT_THROW(rateOf(stopped, 0), Host::InterruptedException);
}

TEST_F(PipedTimesTest, AtTheEndThatIsSetNobodyWaitsForMore) {
    build("start: 1, end: 3");
    pipe.write("0,1\n");
    EXPECT_EQ(sent(), "");
    pipe.write("1,2\n2,2\n3,3\n4,4\n");
    EXPECT_EQ(sent(), "1 2 ");
    EXPECT_TRUE(source->getIsPrepared()) << "the pipe is open still";
    EXPECT_FALSE(source->prepare());
}

} // namespace
