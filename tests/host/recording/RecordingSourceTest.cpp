// SPDX-License-Identifier: MIT
#include "host/recording/RecordingSource.h"
#include "host/run/OfflineRunner.h"

#include "framework/Quillmere.h"
#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/GraphFixture.h"
#include "tests/support/Allocations.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

/// Source settings against what a sink right behind it writes.
class RecordingSourceTest : public Support::GraphFixture {
protected:
    static std::string graph(const std::string& properties, const std::string& pins) {
        std::string text =
            "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {" + properties +
            "}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv}}\nconnections:\n";
        std::string pin;
        for (const char c : pins + ",") {
            if (c != ',') {
                pin += c;
                continue;
            }
            text += "  - {from: in." + pin + ", to: out." + pin + "}\n";
            pin.clear();
        }
        return text;
    }

    /// The table that comes out, or why none does.
    std::string result(const std::string& properties, const std::string& pins) {
        const std::string failure = run(graph(properties, pins));
        return failure.empty() ? folder.read("out.csv") : failure;
    }
};

TEST_F(RecordingSourceTest, ARowIsOneSampleOnEachPin) {
    EXPECT_EQ(result("file: in.csv, time: t, pins: {both: [y, x], x: x, again: [x]}", "both,x,again"),
              "t,both[0],both[1],x[0],again[0]\n0,10,1,1,1\n0.5,20,2,2,2\n1,30,3,3,3\n");
}

TEST_F(RecordingSourceTest, TheTimeColumnMayBeASignalToo) {
    EXPECT_EQ(result("file: in.csv, time: t, pins: {t: [t]}", "t"), "t,t[0]\n0,0\n0.5,0.5\n1,1\n");
}

TEST_F(RecordingSourceTest, ARateGivesTimesWithoutDrift) {
    EXPECT_EQ(result("file: in.csv, rate: 10, pins: {x: [x]}", "x"), "t,x[0]\n0,1\n0.1,2\n0.2,3\n");
    std::string text = "x\n";
    for (int i = 0; i < 1000; ++i)
        text += "1\n";
    folder.write("in.csv", text);
    const std::string table = result("file: in.csv, rate: 10, pins: {x: x}", "x");
    EXPECT_TRUE(table.ends_with("\n99.9,1\n")) << "the row's number over the rate, not a sum of tenths";
}

TEST_F(RecordingSourceTest, AFrameGathersRowsAndIsStampedWithItsLast) {
    EXPECT_EQ(result("file: in.csv, time: t, frame: 2, pins: {p: [x, y]}", "p"),
              "t,p[0],p[1],p[2],p[3]\n0.5,1,10,2,20\n")
        << "the row that is left fills no frame";
    ASSERT_EQ(outcome.notes.size(), 1U);
    EXPECT_EQ(outcome.notes[0].block + ": " + outcome.notes[0].text,
              "in: 1 of 3 rows fills no frame of 2, at the end");
    EXPECT_EQ(result("file: in.csv, time: t, frame: 2, hop: 1, pins: {p: [x, y]}", "p"),
              "t,p[0],p[1],p[2],p[3]\n0.5,1,10,2,20\n1,2,20,3,30\n");
    EXPECT_TRUE(outcome.notes.empty());
    EXPECT_EQ(result("file: in.csv, time: t, frame: 1, hop: 2, pins: {p: [x]}", "p"), "t,p[0]\n0,1\n1,3\n");
    EXPECT_EQ(result("file: in.csv, time: t, frame: 4, pins: {p: [x]}", "p"), "t\n");
}

TEST_F(RecordingSourceTest, AFrameInSecondsIsTheRowsOfThatTime) {
    const std::string inRows = result("file: in.csv, time: t, frame: 2, hop: 1, pins: {p: [x, y]}", "p");
    for (const char* const clock :
         {"time: t", "time: t, resample: 2 Hz", "rate: 2", "time: t, nominalRate: 2", "rate: 2 Hz"})
        EXPECT_EQ(
            result("file: in.csv, frame: 1 s, hop: 500 ms, pins: {p: [x, y]}, " + std::string(clock), "p"),
            inRows)
            << clock;
    EXPECT_EQ(outcome.recordings.at(0).account.notes,
              (std::vector<std::string>{"a frame of 1 s is 2 rows", "a hop of 500 ms is 1 row"}));
    EXPECT_EQ(complaintsOf(graph("file: in.csv, time: t, frame: 100 ms, pins: {p: x}", "p")),
              "g.yaml:3:80: found '100 ms' at 2 rows a second; expected a time of 1 to 2147483647 rows\n");
    EXPECT_EQ(complaintsOf(graph("file: in.csv, time: t, frame: 2 Hz, pins: {p: x}", "p")),
              "g.yaml:3:80: found '2 Hz'; expected a number of rows, or a time above 0, as 200 ms\n");
    EXPECT_EQ(complaintsOf(graph("file: in.csv, time: t, hop: 1 s, pins: {p: x}", "p")),
              "g.yaml:3:10: found a hop without a frame in 'in'; expected 'frame:' too\n");
}

TEST_F(RecordingSourceTest, FramesOverlapByAnyHop) {
    std::string text = "t,x\n";
    for (int i = 0; i < 12; ++i)
        text += std::to_string(i) + "," + std::to_string(i) + "\n";
    folder.write("in.csv", text);
    EXPECT_EQ(result("file: in.csv, time: t, frame: 4, hop: 3, pins: {p: x}", "p"),
              "t,p[0],p[1],p[2],p[3]\n3,0,1,2,3\n6,3,4,5,6\n9,6,7,8,9\n");
    EXPECT_EQ(result("file: in.csv, time: t, frame: 3, hop: 5, pins: {p: x}", "p"),
              "t,p[0],p[1],p[2]\n2,0,1,2\n7,5,6,7\n");
}

TEST_F(RecordingSourceTest, APinWithoutAnyCellHasNoSample) {
    folder.write("in.csv", "t,x,y\n0,1,\n1,,2\n2,,\n3,4,5\n");
    EXPECT_EQ(result("file: in.csv, time: t, pins: {x: [x], y: [y]}", "x,y"),
              "t,x[0],y[0]\n0,1,\n1,,2\n3,4,5\n");
}

struct FailureRow {
    std::string name;
    std::string file;
    std::string properties;
    std::string message;
};

TEST_F(RecordingSourceTest, BadRowsEndTheRun) {
    const FailureRow rows[] = {
        {.name = "bad cell",
         .file = "t,x,y\n0,1,2\n7,1,oops\n",
         .properties = "pins: {p: [x, y]}",
         .message =
             "block 'in' (RecordingSource) at 0 s: in.csv:3: column 'y': found \"oops\"; expected a number"},
        {.name = "short row",
         .file = "t,x,y\n0,1,2\n7,1\n",
         .properties = "pins: {p: [x, y]}",
         .message = "block 'in' (RecordingSource) at 0 s: in.csv:3: column 'y': found a row that ends before "
                    "it, \"7,1\"; "
                    "expected 3 cells, as the header has"},
        {.name = "half a sample",
         .file = "t,x,y\n0,1,2\n7,1,\n",
         .properties = "pins: {p: [x, y]}",
         .message = "block 'in' (RecordingSource) at 0 s: in.csv:3: column 'y': found \"\"; expected a "
                    "number, or nothing in "
                    "all columns of the pin 'p'"},
        {.name = "hole in a frame",
         .file = "t,x,y\n0,1,2\n7,,\n",
         .properties = "frame: 2, pins: {p: [x, y]}",
         .message = "block 'in' (RecordingSource) at 0 s: in.csv:3: column 'x': found \"\"; expected a "
                    "number, since a frame "
                    "has no holes"},
        {.name = "no time",
         .file = "t,x,y\n,1,2\n",
         .properties = "pins: {p: [x, y]}",
         .message = "block 'in' (RecordingSource) at 0 s: in.csv:2: column 't': found \"\"; expected a time "
                    "in seconds"},
        {.name = "time is not a number",
         .file = "t,x,y\nnan,1,2\n",
         .properties = "pins: {p: [x, y]}",
         .message = "block 'in' (RecordingSource) at 0 s: in.csv:2: column 't': found \"nan\"; expected a "
                    "time in seconds"},
        {.name = "time is infinite",
         .file = "t,x,y\ninf,1,2\n",
         .properties = "pins: {p: [x, y]}",
         .message = "block 'in' (RecordingSource) at 0 s: in.csv:2: column 't': found \"inf\"; expected a "
                    "time in seconds"},
        {.name = "time is infinitely early",
         .file = "t,x,y\n-inf,1,2\n",
         .properties = "pins: {p: [x, y]}",
         .message = "block 'in' (RecordingSource) at 0 s: in.csv:2: column 't': found \"-inf\"; expected a "
                    "time in seconds"},
        {.name = "time is missing",
         .file = "t,x,y\nNA,1,2\n",
         .properties = "missing: [NA], pins: {p: [x, y]}",
         .message = "block 'in' (RecordingSource) at 0 s: in.csv:2: column 't': found \"NA\"; expected a "
                    "time in seconds"},
        {.name = "a last line that was cut is a row as any other",
         .file = "t,x,y\n0,1,2\n7,1",
         .properties = "pins: {p: [x, y]}",
         .message = "block 'in' (RecordingSource) at 0 s: in.csv:3: column 'y': found a row that ends before "
                    "it, \"7,1\"; expected 3 cells, as the header has"},
        {.name = "time is a word",
         .file = "t,x,y\nnoon,1,2\n",
         .properties = "pins: {p: [x, y]}",
         .message =
             "block 'in' (RecordingSource) at 0 s: in.csv:2: column 't': found \"noon\"; expected a number"},
    };
    for (const FailureRow& row : rows) {
        folder.write("in.csv", row.file);
        EXPECT_EQ(result("file: in.csv, time: t, " + row.properties, "p"), row.message) << row.name;
        EXPECT_FALSE(folder.has("out.csv")) << row.name;
        EXPECT_TRUE(folder.has("out.csv.partial")) << row.name;
    }
}

struct RefusalRow {
    std::string properties;
    std::string complaints;
};

TEST_F(RecordingSourceTest, WrongSettingsAreComplainedOf) {
    const RefusalRow rows[] = {
        {"time: t, pins: {p: x}", "g.yaml:3:10: found the RecordingSource 'in' without a file; expected "
                                  "'file:' and the name of a file\n"},
        {"file: in.csv, time: t", "g.yaml:3:10: found the RecordingSource 'in' without pins; expected "
                                  "'pins:' and for each pin its columns, as in "
                                  "{accel: [ax, ay, az]}\n"},
        {"file: in.csv, pins: {p: x}",
         "g.yaml:3:56: found steps of 0.5 without a unit in in.csv: column 't'; expected 'timeUnit:' and s, "
         "ms, us or ns, or 'rate:' and rows a second\n"},
        {"file: in.csv, time: [t, x, y], pins: {p: x}",
         "g.yaml:3:70: found a list; expected a column, or two with the date and the time: [date, time]\n"},
        {"file: in.csv, time: t, separator: semicolom, pins: {p: x}",
         "g.yaml:3:84: found 'semicolom'; expected one of comma, semicolon, tab and bar; did you mean "
         "semicolon?\n"},
        {"file: in.csv, time: t, decimal: '.', pins: {p: x}",
         "g.yaml:3:82: found '.'; expected one of point and comma\n"},
        {"file: in.csv, time: t, headerRows: 3, pins: {p: x}",
         "g.yaml:3:85: found '3'; expected a whole number from 0 to 2\n"},
        {"file: in.csv, time: t, unitsRow: perhaps, pins: {p: x}",
         "g.yaml:3:83: found 'perhaps'; expected true or false\n"},
        {"file: in.csv, time: t, profile: GENEActive, pins: {p: x}",
         "g.yaml:3:82: found 'GENEActive'; expected one of Xsens MT, Movella DOT, Shimmer, ActiGraph, "
         "GENEActiv, Axivity, MbientLab, Sensor Logger, x-io, phyphox and none; did you mean GENEActiv?\n"},
        {"file: in.csv, time: t, timeUnit: msec, pins: {p: x}",
         "g.yaml:3:83: found 'msec'; expected one of s, ms, us and ns\n"},
        {"file: in.csv, time: t, timeStart: noon, pins: {p: x}",
         "g.yaml:3:84: found 'noon'; expected a date and a time, as in \"2019-08-06 10:25:50\"\n"},
        {"file: in.csv, time: t, pins: {p: 'a*'}",
         "g.yaml:3:83: found no column 'a*'; expected one of in.csv: t, x and y\n"},
        {"file: in.csv, time: t, pins: {p: '*'}",
         "g.yaml:3:83: found '*', which is t, x and y in in.csv; expected a pattern for one column, or for "
         "columns whose names differ by their axis alone: x, y and z, or w, x, y and z\n"},
        {"file: in.csv, time: t, rate: 5, pins: {p: x}",
         "g.yaml:3:10: found the RecordingSource 'in' with two clocks; expected either 'time:' and a column "
         "or 'rate:' and "
         "rows a second\n"},
        {"file: in.csv, rate: 0, pins: {p: x}",
         "g.yaml:3:70: found '0'; expected a rate above 0 rows a second\n"},
        {"file: in.csv, rate: .inf, pins: {p: x}",
         "g.yaml:3:70: found '.inf'; expected a rate above 0 rows a second\n"},
        {"file: in.csv, time: t, frame: 0, pins: {p: x}",
         "g.yaml:3:80: found '0'; expected a whole number from 1 to 2147483647\n"},
        {"file: in.csv, time: t, hop: 2, pins: {p: x}",
         "g.yaml:3:10: found a hop without a frame in 'in'; expected 'frame:' too\n"},
        {"file: in.csv, time: t, pins: {p: []}",
         "g.yaml:3:83: found an empty list; expected a list of columns, as in [ax, ay, az]\n"},
        {"file: in.csv, time: t, pins: p",
         "g.yaml:3:79: found 'p'; expected for each pin its columns, as in {accel: [ax, ay, az]}\n"},
        {"file: in.csv, time: t, pin: {}, pins: {p: x}",
         "g.yaml:3:73: found the property 'pin' of RecordingSource; expected one of file, data, pins and "
         "29 more; did you mean pins?\n"},
        {"file: in.csv, time: time, pins: {p: [x, z]}",
         "g.yaml:3:70: found no column 'time'; expected one of in.csv: t, x and y\n"
         "g.yaml:3:90: found no column 'z'; expected one of in.csv: t, x and y\n"},
        {"file: in.csv, time: t, onBadRow: skp, pins: {p: x}",
         "g.yaml:3:83: found 'skp'; expected one of error, skip and nan; did you mean skip?\n"},
        {"file: in.csv, time: t, onBadRow: .nan, pins: {p: x}",
         "g.yaml:3:83: found '.nan'; expected one of error, skip and nan; did you mean nan?\n"},
        {"file: in.csv, time: t, onBadRow: [skip], pins: {p: x}",
         "g.yaml:3:83: found a list; expected one of error, skip and nan\n"},
        {"file: in.csv, time: t, onCutEnd: dorp, pins: {p: x}",
         "g.yaml:3:83: found 'dorp'; expected one of keep, error and drop; did you mean drop?\n"},
        {"file: in.csv, time: t, missing: {}, pins: {p: x}",
         "g.yaml:3:82: found a map; expected a list of texts, as in [NA, \"\"]\n"},
        {"file: in.csv, time: t, missing: [NA, [x]], pins: {p: x}",
         "g.yaml:3:87: found a list; expected a text\n"},
        {"file: none.csv, time: t, pins: {p: x}",
         "g.yaml:3:56: found no recording that can be read (none.csv: cannot be opened: No such file or "
         "directory); expected "
         "a recording, such as a CSV file with a row of column names\n"},
    };
    for (const RefusalRow& row : rows) {
        const std::string text = graph(row.properties, "p");
        std::string found = complaintsOf(text);
        EXPECT_EQ(found, row.complaints) << row.properties;
    }
}

TEST_F(RecordingSourceTest, AColumnThatIsThereTwiceCannotBeChosen) {
    folder.write("in.csv", "t,x,x\n0,1,2\n");
    EXPECT_EQ(complaintsOf(graph("file: in.csv, time: t, pins: {p: x}", "p")),
              "g.yaml:3:83: found the column 'x' twice in in.csv; expected a name that one column has\n");
}

TEST_F(RecordingSourceTest, AnotherSeparatorIsNamed) {
    const std::pair<std::string, std::string> headers[] = {{"t;x;y", "';'"},
                                                           {"t\tx\ty", "tabs"},
                                                           {"\"t\"|\"x\"|\"y\"", "'|'"},
                                                           {"t x y", "blanks"},
                                                           {"a (m/s^2, raw);t;x", "';'"}};
    for (const auto& [header, separator] : headers) {
        folder.write("in.csv", header + "\n1\n");
        EXPECT_EQ(complaintsOf(graph("file: in.csv, time: t, pins: {p: x}", "p")),
                  "g.yaml:3:70: found no column 't' in in.csv, which looks separated by " + separator +
                      "; expected commas between its cells\n"
                      "g.yaml:3:83: found no column 'x' in in.csv, which looks separated by " +
                      separator + "; expected commas between its cells\n");
    }
}

struct BadRowsRow {
    std::string name;
    std::string properties;
    std::string table;
    std::uint64_t skipped;
    std::uint64_t mended;
    std::uint64_t missing;
    std::vector<std::string> faults; ///< Behind the file's name.
};

/// A graph's only source, opened.
class BadRowsTest : public RecordingSourceTest {
protected:
    void expect(const BadRowsRow& row, const std::string& pins) {
        EXPECT_EQ(result("file: in.csv, " + row.properties, pins), row.table) << row.name;
        const Quillmere::Host::SourceAccount account = accountOf("file: in.csv, " + row.properties);
        EXPECT_EQ(account.skippedRows, row.skipped) << row.name;
        EXPECT_EQ(account.mendedRows, row.mended) << row.name;
        EXPECT_EQ(account.missingCells, row.missing) << row.name;
        std::vector<std::string> faults;
        for (const std::string& fault : account.firstFaults)
            faults.push_back(withoutFolder(fault).substr(std::string("in.csv").size()));
        EXPECT_EQ(faults, row.faults) << row.name;
    }
    /// What the source has to tell when it has read its recording to the end.
    Quillmere::Host::SourceAccount accountOf(const std::string& properties) {
        Quillmere::Host::Complaints complaints;
        const auto description = Quillmere::Host::GraphDescription::fromFile(
            folder.write("account.yaml", "format: 1\nblocks: [{id: in, type: RecordingSource, properties: {" +
                                             properties + "}}]\n"),
            complaints);
        Quillmere::Host::Graph built(description, catalogue, complaints);
        built.openSources(complaints);
        complaints.raise();
        auto& source = dynamic_cast<Quillmere::Host::RecordingSource&>(*built.getSources().at(0));
        while (source.prepare()) {
            source.release();
            source.process();
        }
        return source.getAccount();
    }
};

TEST_F(BadRowsTest, AreSkippedOrMendedAndCounted) {
    const std::string text = "t,x,y\n"
                             "0,1,2\n"
                             "1,oops,3\n" // a bad cell
                             "2,4\n"      // a short row
                             "3,5,6,7\n"  // a long one
                             "noon,8,9\n" // a bad time
                             "5,NA,10\n"  // what many programs write for a missing value
                             "6,,11\n"    // half a sample
                             "7,,\n"      // none, which is no fault
                             "inf,1,1\n"  // no time either
                             "9,12,13\n";
    const std::string numbers = ":3: column 'x': found \"oops\"; expected a number";
    const std::string shortRow =
        ":4: column 'y': found a row that ends before it, \"2,4\"; expected 3 cells, as the header has";
    const std::string longRow =
        ":5: column 'y': found more cells behind it in \"3,5,6,7\"; expected 3 cells, as the header has";
    const std::string noon = ":6: column 't': found \"noon\"; expected a number";
    const std::string na = ":7: column 'x': found \"NA\"; expected a number";
    const std::string half =
        ":8: column 'x': found \"\"; expected a number, or nothing in all columns of the pin 'p'";
    const BadRowsRow rows[] = {
        {.name = "skip",
         .properties = "time: t, onBadRow: skip, pins: {p: [x, y]}",
         .table = "t,p[0],p[1]\n0,1,2\n9,12,13\n",
         .skipped = 7,
         .mended = 0,
         .missing = 0,
         .faults = {numbers, shortRow, longRow, noon, na}},
        {.name = "nan mends what it can and skips the rest",
         .properties = "time: t, onBadRow: nan, pins: {p: [x, y]}",
         .table = "t,p[0],p[1]\n0,1,2\n1,nan,3\n5,nan,10\n6,nan,11\n9,12,13\n",
         .skipped = 4,
         .mended = 3,
         .missing = 0,
         .faults = {numbers, shortRow, longRow, noon, na}},
        {.name = "a missing value is no bad cell",
         .properties = "time: t, onBadRow: skip, missing: NA, pins: {p: [x, y]}",
         .table = "t,p[0],p[1]\n0,1,2\n5,nan,10\n9,12,13\n",
         .skipped = 6,
         .mended = 0,
         .missing = 1,
         .faults = {numbers, shortRow, longRow, noon, half}},
        {.name = "an empty cell that stands for a missing value is one always",
         .properties = "time: t, onBadRow: skip, missing: [NA, \"\"], pins: {p: [x, y]}",
         .table = "t,p[0],p[1]\n0,1,2\n5,nan,10\n6,nan,11\n7,nan,nan\n9,12,13\n",
         .skipped = 5,
         .mended = 0,
         .missing = 4,
         .faults = {numbers, shortRow, longRow, noon,
                    ":10: column 't': found \"inf\"; expected a time in seconds"}},
        {.name = "a row that is skipped takes its time",
         .properties = "rate: 1, onBadRow: skip, missing: [NA, \"\"], pins: {p: [x]}",
         .table = "t,p[0]\n0,1\n4,8\n5,nan\n6,nan\n7,nan\n8,1\n9,12\n",
         .skipped = 3,
         .mended = 0,
         .missing = 3,
         .faults = {numbers, shortRow, longRow}},
    };
    for (const BadRowsRow& row : rows) {
        folder.write("in.csv", text);
        expect(row, "p");
    }
}

TEST_F(BadRowsTest, AFrameIsMadeOfTheRowsThatAreTaken) {
    const std::string text = "t,x\n0,1\n1,oops\n2,3\n3,4\n4,\n5,6\n";
    folder.write("in.csv", text);
    expect({.name = "skip",
            .properties = "time: t, frame: 2, onBadRow: skip, pins: {p: x}",
            .table = "t,p[0],p[1]\n2,1,3\n5,4,6\n",
            .skipped = 2,
            .mended = 0,
            .missing = 0,
            .faults = {":3: column 'x': found \"oops\"; expected a number",
                       ":6: column 'x': found \"\"; expected a number, since a frame has no holes"}},
           "p");
    folder.write("in.csv", text);
    expect({.name = "nan",
            .properties = "time: t, frame: 2, onBadRow: nan, pins: {p: x}",
            .table = "t,p[0],p[1]\n1,1,nan\n3,3,4\n5,nan,6\n",
            .skipped = 0,
            .mended = 2,
            .missing = 0,
            .faults = {":3: column 'x': found \"oops\"; expected a number",
                       ":6: column 'x': found \"\"; expected a number, since a frame has no holes"}},
           "p");
}

TEST_F(BadRowsTest, PinsThatHaveTheirCellsAreSentBesideThoseThatAreMended) {
    folder.write("in.csv", "t,x,y,z\n0,1,2,\n1,,oops,4\n");
    expect({.name = "nan",
            .properties = "time: t, onBadRow: nan, pins: {x: x, y: y, z: z}",
            .table = "t,x[0],y[0],z[0]\n0,1,2,\n1,,nan,4\n",
            .skipped = 0,
            .mended = 1,
            .missing = 0,
            .faults = {":3: column 'y': found \"oops\"; expected a number"}},
           "x,y,z");
}

TEST_F(BadRowsTest, ALastLineWithoutItsEndMayBeLeftOut) {
    const std::string properties = "time: t, onCutEnd: drop, pins: {p: x}";
    folder.write("in.csv", "t,x\n0,1\n1,25"); // of 1,250?
    EXPECT_EQ(result("file: in.csv, " + properties, "p"), "t,p[0]\n0,1\n");
    const auto account = accountOf("file: in.csv, " + properties);
    EXPECT_TRUE(account.isCutEndDropped);
    EXPECT_EQ(account.rows, 1u);
    EXPECT_EQ(account.skippedRows, 0u);
    ASSERT_EQ(account.firstFaults.size(), 1u);
    EXPECT_EQ(withoutFolder(account.firstFaults[0]),
              "in.csv:3: found \"1,25\", the last line, without its end");
    folder.write("in.csv", "t,x\n0,1\n1,2\n");
    EXPECT_EQ(result("file: in.csv, " + properties, "p"), "t,p[0]\n0,1\n1,2\n");
    EXPECT_FALSE(accountOf("file: in.csv, " + properties).isCutEndDropped);
    folder.write("in.csv", "t,x\n0,1\n1,2");
    for (const char* const keeping : {"", "onCutEnd: keep, "})
        EXPECT_EQ(result(std::string("file: in.csv, ") + keeping + "time: t, pins: {p: x}", "p"),
                  "t,p[0]\n0,1\n1,2\n")
            << "many files end so";
}

TEST_F(BadRowsTest, ALastLineWithoutItsEndEndsTheRunWhereTheUserSaysSo) {
    const std::string text =
        graph("file: in.csv, time: t, onCutEnd: error, onBadRow: skip, pins: {p: x}", "p");
    for (const char* const last : {"1,25", "1,", "1"}) {
        folder.write("in.csv", std::string("t,x\n0,1\n") + last);
        EXPECT_EQ(run(text),
                  std::string("block 'in' (RecordingSource) at 0 s: in.csv:3: found \"") + last +
                      "\", the last line, without its end; expected a line end behind every row, or "
                      "'onCutEnd: keep' to take it, 'onCutEnd: drop' to leave it out");
    }
    folder.write("in.csv", "t,x\n0,1\n1,25\n");
    EXPECT_EQ(run(text), "");
}

TEST_F(BadRowsTest, TheAccountTellsOfTimes) {
    folder.write("in.csv", "t,x\n0,1\n1,1\n1.1,1\n1.2,1\noops,1\n1.3,1\n1.3,1\n1.2,1\n1.3,1\n");
    const auto account = accountOf("file: in.csv, time: t, onBadRow: skip, pins: {p: x}");
    EXPECT_EQ(account.rows, 8u);
    EXPECT_EQ(account.firstStep, 1.0);
    EXPECT_NEAR(account.medianStep.value(), 0.1, 1e-12);
    EXPECT_EQ(account.getLength(), 1.3);
    EXPECT_EQ(account.equal.count, 1u);
    EXPECT_EQ(account.equal.first.row, 7u) << "skipped rows count";
    EXPECT_EQ(account.equal.first.line, 8u);
    EXPECT_EQ(account.backward.count, 1u);
    const auto steady = accountOf("file: in.csv, rate: 4, pins: {p: x}");
    EXPECT_EQ(steady.rows, 9u);
    EXPECT_EQ(steady.firstStep, 0.25);
    EXPECT_EQ(steady.medianStep, 0.25);
    EXPECT_EQ(steady.getLength(), 2.0);
    EXPECT_EQ(steady.equal.count + steady.backward.count + steady.jumps.count, 0u);
    folder.write("in.csv", "t,x\n");
    EXPECT_EQ(accountOf("file: in.csv, time: t, pins: {p: x}").rows, 0u);
}

using namespace Quillmere;
using Support::agree;
using Support::matrix;
using Support::same;

/// A source that reads a pipe, asked as a live run asks it.
class PipedSourceTest : public RecordingSourceTest {
protected:
    PipedSourceTest() { pipe.write("t,x,y\n"); }

    void build(const std::string& properties) {
        Host::Complaints complaints;
        description = std::make_unique<Host::GraphDescription>(Host::GraphDescription::fromFile(
            folder.write("g.yaml", graph("file: pipe, time: t, " + properties, "p")), complaints));
        built = std::make_unique<Host::Graph>(*description, catalogue, complaints);
        built->openSources(complaints);
        complaints.raise();
        source = dynamic_cast<Host::RecordingSource*>(built->getSources().at(0));
        output = dynamic_cast<Core::OutputPin<Core::MatrixXd>*>(source->getOutputPins().at(0));
    }
    /// Sends what is ready. Requires: something is.
    const Core::MatrixXd& send() {
        EXPECT_TRUE(source->prepare());
        source->release();
        source->process();
        return output->data.value;
    }

    Support::Fifo pipe{folder.path("pipe")};
    std::unique_ptr<Host::GraphDescription> description;
    std::unique_ptr<Host::Graph> built;
    Host::RecordingSource* source = nullptr;
    Core::OutputPin<Core::MatrixXd>* output = nullptr;
};

TEST_F(PipedSourceTest, IsPreparedWhenARowHasCome) {
    build("pins: {p: [x, y]}");
    EXPECT_TRUE(source->getComesByItself());
    EXPECT_GE(source->getDescriptor(), 0);
    EXPECT_FALSE(source->getIsPrepared());
    pipe.write("0.5,1,");
    EXPECT_FALSE(source->getIsPrepared());
    pipe.write("2\n1,3,4\n");
    EXPECT_TRUE(source->getIsPrepared());
    EXPECT_TRUE(source->getIsPrepared());
    EXPECT_EQ(source->getRows(), 0u) << "a look reads no row";
    EXPECT_TRUE(agree(send(), matrix({{1, 2}}), same));
    EXPECT_EQ(output->data.timeStamp, 0.5);
    EXPECT_EQ(source->getRows(), 1u);
    EXPECT_TRUE(source->getIsPrepared());
    EXPECT_TRUE(agree(send(), matrix({{3, 4}}), same));
    EXPECT_FALSE(source->getIsPrepared());
    pipe.close();
    EXPECT_TRUE(source->getIsPrepared()) << "for the end";
    EXPECT_FALSE(source->prepare());
}

TEST_F(PipedSourceTest, WhatWasPreparedStaysUntilItIsReleased) {
    build("pins: {p: x}");
    pipe.write("0,1,0\n1,2,0\n");
    EXPECT_TRUE(source->prepare());
    EXPECT_TRUE(source->prepare());
    source->process();
    EXPECT_EQ(output->getSentCount(), 0u);
    source->release();
    source->process();
    source->process();
    EXPECT_EQ(output->getSentCount(), 1u);
    EXPECT_EQ(output->data.timeStamp, 0.0);
}

TEST_F(PipedSourceTest, AFrameIsPreparedWhenItsLastRowHasCome) {
    build("frame: 3, hop: 2, pins: {p: x}");
    pipe.write("0,1,0\n1,2,0\n");
    EXPECT_FALSE(source->getIsPrepared());
    EXPECT_EQ(source->getRows(), 2u) << "they are gathered already";
    pipe.write("2,3,0");
    EXPECT_FALSE(source->getIsPrepared());
    pipe.write("\n3,4,0\n");
    EXPECT_TRUE(source->getIsPrepared());
    EXPECT_EQ(source->getNextTimeStamp(), 2.0);
    EXPECT_EQ(source->getRows(), 3u) << "what comes behind a frame waits until it is sent";
    EXPECT_TRUE(agree(send(), matrix({{1}, {2}, {3}}), same));
    EXPECT_FALSE(source->getIsPrepared());
    pipe.write("4,5,0\n");
    EXPECT_TRUE(source->getIsPrepared());
    EXPECT_TRUE(agree(send(), matrix({{3}, {4}, {5}}), same));
    EXPECT_EQ(output->data.timeStamp, 4.0);
}

TEST_F(PipedSourceTest, ALastRowWithoutALineEndMayFillAFrameAndOneThatDoesNotIsLeft) {
    build("frame: 2, pins: {p: x}");
    pipe.write("0,1,0\n1,2,0");
    EXPECT_FALSE(source->getIsPrepared());
    pipe.close();
    EXPECT_TRUE(source->getIsPrepared());
    EXPECT_TRUE(agree(send(), matrix({{1}, {2}}), same));
    EXPECT_TRUE(source->getIsPrepared());
    EXPECT_FALSE(source->prepare());
}

TEST_F(PipedSourceTest, FramesThatLieApartPassOverWhatIsBetween) {
    build("frame: 1, hop: 3, pins: {p: x}");
    pipe.write("0,1,0\n1,2,0\n2,3,0\n3,4,0\n");
    EXPECT_TRUE(source->getIsPrepared());
    EXPECT_TRUE(agree(send(), matrix({{1}}), same));
    EXPECT_TRUE(source->getIsPrepared());
    EXPECT_TRUE(agree(send(), matrix({{4}}), same));
    EXPECT_FALSE(source->getIsPrepared());
}

TEST_F(PipedSourceTest, ABadRowInAFrameIsRefusedWhenItIsGathered) {
    build("frame: 2, pins: {p: x}");
    pipe.write("0,1,0\n1,oops,0\n");
    try {
        static_cast<void>(source->getIsPrepared());
        ADD_FAILURE() << "nothing was refused";
    } catch (const std::exception& exception) {
        EXPECT_EQ(withoutFolder(exception.what()), "pipe:3: column 'x': found \"oops\"; expected a number");
    }
}

TEST_F(PipedSourceTest, AnOfflineRunWaitsForThePipe) {
    pipe.close(); // and what was in it is gone: another writer has to come
    std::thread writer([this] {
        std::ofstream late(folder.path("pipe"));
        late << "t,x,y\n5,6,7\n";
    });
    EXPECT_EQ(result("file: pipe, time: t, pins: {p: [x, y]}", "p"), "t,p[0],p[1]\n5,6,7\n");
    writer.join();
}

TEST_F(RecordingSourceTest, ADashIsStandardInputWhereverTheGraphLies) {
    Support::StandardPipe input(STDIN_FILENO);
    input.write("t,x\n0,1\n2,3");
    input.close();
    EXPECT_EQ(result("file: \"-\", time: t, pins: {p: x}", "p"), "t,p[0]\n0,1\n2,3\n");
}

TEST_F(RecordingSourceTest, AFileOfTheFolderMayBeNamedLikeStandardInput) {
    folder.write("-", "t,x\n4,5\n");
    EXPECT_EQ(result("file: ./-, time: t, pins: {p: x}", "p"), "t,p[0]\n4,5\n");
}

TEST_F(RecordingSourceTest, OneSourceReadsStandardInput) {
    Support::StandardPipe input(STDIN_FILENO);
    input.write("t,x\n");
    input.close();
    const std::string properties = "properties: {file: \"-\", time: t, pins: {p: x}}}\n";
    EXPECT_EQ(
        complaintsOf("format: 1\nblocks:\n  - {id: a, type: RecordingSource, " + properties +
                     "  - {id: b, type: RecordingSource, " + properties),
        "g.yaml:4:55: found standard input, which 'a' reads too; expected one source that reads it\n"
        "g.yaml:4:55: found no recording that can be read (standard input: found no header row; expected "
        "a row of column names); expected a recording, such as a CSV file with a row of column names\n");
}

TEST_F(PipedSourceTest, AGarbledRowIsPassedOverWithoutWaiting) {
    build("onBadRow: skip, pins: {p: x}");
    for (int i = 0; i < 200; ++i)
        pipe.write(i == 100 ? "0.98,garb#ge\n" : std::to_string(i) + "," + std::to_string(2 * i) + ",0\n");
    int samples = 0;
    while (source->getIsPrepared()) {
        send();
        ++samples;
    }
    EXPECT_EQ(samples, 199);
    pipe.write("200,x,0\n");
    EXPECT_FALSE(source->getIsPrepared()) << "there is none behind it yet";
    pipe.write("201,402,0\n");
    EXPECT_TRUE(source->getIsPrepared());
    EXPECT_TRUE(agree(send(), matrix({{402}}), same));
    EXPECT_EQ(source->getRows(), 200u);
    EXPECT_EQ(source->getAccount().skippedRows, 2u);
    pipe.write("202,x,0");
    pipe.close();
    EXPECT_TRUE(source->getIsPrepared()) << "for the end";
    EXPECT_FALSE(source->prepare());
}

TEST_F(PipedSourceTest, AFrameWaitsForTheRowBehindAGarbledOne) {
    build("frame: 2, onBadRow: skip, pins: {p: x}");
    pipe.write("0,1,0\n1,oops,0\n");
    EXPECT_FALSE(source->getIsPrepared());
    pipe.write("2,3,0\n");
    EXPECT_TRUE(source->getIsPrepared());
    EXPECT_TRUE(agree(send(), matrix({{1}, {3}}), same));
}

TEST_F(PipedSourceTest, CannotBeLookedInto) {
    build("pins: {p: x}");
    EXPECT_FALSE(source->lookAhead(1000));
}

TEST_F(PipedSourceTest, AWishToStopEndsAnOfflineRunThatWaits) {
    pipe.write("5,6,7\n");
    std::thread stopper([this] {
        Support::waitUntil([this] { return folder.has("out.csv.partial"); });
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        stop.request_stop();
    });
    const std::string failure = run(graph("file: pipe, time: t, pins: {p: [x, y]}", "p"));
    stopper.join();
    EXPECT_TRUE(failure == "at 5 s: interrupted" || failure == "at 0 s: interrupted") << failure;
    EXPECT_TRUE(folder.has("out.csv.partial"));
    EXPECT_FALSE(folder.has("out.csv"));
}

/// A source of a file, opened and not read.
class LookAheadTest : public RecordingSourceTest {
protected:
    std::optional<Host::SourceAccount> lookAhead(const std::string& properties, std::uint64_t rows) {
        Host::Complaints complaints;
        const auto description =
            Host::GraphDescription::fromFile(folder.write("g.yaml", graph(properties, "p")), complaints);
        Host::Graph built(description, catalogue, complaints);
        built.openSources(complaints);
        complaints.raise();
        auto& source = dynamic_cast<Host::RecordingSource&>(*built.getSources().at(0));
        const auto account = source.lookAhead(rows);
        EXPECT_EQ(source.getRows(), 0u);
        EXPECT_EQ(source.getAccount().rows, 0u) << "the run finds everything where it was";
        EXPECT_EQ(source.prepare(), account->rows > 0);
        return account;
    }
    /// Rows with times at `step` from each other, times `unit`.
    void write(const std::string& name, double step, double unit) {
        std::string text = name + ",x\n";
        for (int i = 0; i < 100; ++i)
            text += std::to_string(std::llround(i * step * unit)) + ",1\n";
        folder.write("in.csv", text);
    }
};

TEST_F(LookAheadTest, TellsOfTheFirstRowsAndTakesNothingAway) {
    folder.write("in.csv", "t,x\n0,1\n1,2\n1.5,3\n2,4\n2.5,5\n9,6\n");
    const auto account = lookAhead("file: in.csv, time: t, pins: {p: x}", 5);
    ASSERT_TRUE(account);
    EXPECT_EQ(account->rows, 5u);
    EXPECT_EQ(account->firstStep, 1.0);
    EXPECT_EQ(account->medianStep, 0.5);
    EXPECT_EQ(account->getLength(), 2.5);
}

TEST_F(LookAheadTest, ABadRowIsTheRunsConcern) {
    folder.write("in.csv", "t,x\n0,1\n1,2\n2,oops\n3,4\n");
    EXPECT_EQ(lookAhead("file: in.csv, time: t, pins: {p: x}", 1000)->rows, 2u);
    EXPECT_EQ(lookAhead("file: in.csv, time: t, onBadRow: skip, pins: {p: x}", 1000)->skippedRows, 1u);
    folder.write("in.csv", "t,x\n");
    EXPECT_EQ(lookAhead("file: in.csv, time: t, pins: {p: x}", 1000)->rows, 0u);
}

TEST_F(LookAheadTest, AColumnOfTimesMayContradictTheRate) {
    struct Row {
        std::string column;
        double unit;
        std::optional<double> other;
    };
    const Row rows[] = {{"t", 1e6, 50.0},         {"Time (ms)", 1e3, 50.0},     {"time_stamp", 1e9, 50.0},
                        {"T", 1e6, std::nullopt}, {"level", 1e6, std::nullopt}, {"timer", 1e6, std::nullopt}};
    for (const Row& row : rows) {
        write(row.column, 0.02, row.unit);
        EXPECT_FALSE(lookAhead("file: in.csv, rate: 50, pins: {p: x}", 1000)->otherClock) << row.column;
        EXPECT_FALSE(lookAhead("file: in.csv, rate: 49.5, pins: {p: x}", 1000)->otherClock) << "near enough";
        const auto other = lookAhead("file: in.csv, rate: 100, pins: {p: x}", 1000)->otherClock;
        ASSERT_EQ(other.has_value(), row.other.has_value()) << row.column;
        if (!other) continue;
        EXPECT_EQ(other->column, row.column);
        EXPECT_NEAR(other->rate, *row.other, 1e-6) << row.column;
    }
}

TEST_F(LookAheadTest, WhatDoesNotGoOnTellsNoTime) {
    folder.write("in.csv", "t,x\n0,1\n1,1\n1,1\n2,1\n");
    EXPECT_FALSE(lookAhead("file: in.csv, rate: 100, pins: {p: x}", 1000)->otherClock);
    folder.write("in.csv", "t,x\n0,1\n1,1\n0.5,1\n2,1\n");
    EXPECT_FALSE(lookAhead("file: in.csv, rate: 100, pins: {p: x}", 1000)->otherClock);
    folder.write("in.csv", "time,x\nMonday,1\nTuesday,1\nFriday,1\n");
    EXPECT_FALSE(lookAhead("file: in.csv, rate: 100, pins: {p: x}", 1000)->otherClock);
}

TEST_F(LookAheadTest, WholeMillisecondsAgreeWithARateBetweenThem) {
    write("ms", 1 / 102.4, 1e3); // steps of 9 and of 10
    EXPECT_FALSE(lookAhead("file: in.csv, rate: 102.4, pins: {p: x}", 1000)->otherClock);
}

/// The allocations of a run over so many rows, some of whose cells are quoted, signed, empty or missing.
class SteadyRowsTest : public RecordingSourceTest {
protected:
    std::uint64_t allocationsOf(int rows, const std::string& properties) {
        std::string text = "t,x,y\n";
        for (int i = 0; i < rows; ++i)
            text += std::to_string(1e-4 * i) + ",\"0.12345678901234567890\",+0.1234567890123456789\n" +
                    std::to_string(1e-4 * i) + ",,\n" + std::to_string(1e-4 * i) + ",1,\"not to be had\"\n";
        folder.write("in.csv", text);
        Host::Job job = jobOf(graph("file: in.csv, " + properties, "p"));
        job.begin(Host::RunMode::Offline, {});
        Host::OfflineRunner runner(job.getGraph());
        const Support::AllocationCounter counter;
        runner.run({});
        EXPECT_EQ(job.getGraph().getSources().at(0)->getRows(), static_cast<std::uint64_t>(3 * rows));
        return counter.count();
    }
};

TEST_F(SteadyRowsTest, AllocateNothing) {
    for (const std::string settings : {"time: t", "rate: 100", "time: t, frame: 3"}) {
        const std::string properties = settings + ", missing: [\"not to be had\"" +
                                       (settings.ends_with("3") ? ", \"\"" : "") + "], pins: {p: [x, y]}";
        // Counts of as many digits, so that what is told at the end takes as much room.
        EXPECT_EQ(allocationsOf(300, properties), allocationsOf(110, properties)) << settings;
    }
}

} // namespace
