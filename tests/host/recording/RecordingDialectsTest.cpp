// SPDX-License-Identifier: MIT
#include "host/ends/RecordingException.h"
#include "host/recording/RecordingForms.h"

#include "tests/host/kit/TemporaryFolder.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using namespace std::string_literals;
using Strings = std::vector<std::string>;
using Numbers = std::vector<double>;

/// What a reader makes of a file, as a person would note it.
struct Reading {
    Strings columns;
    Strings units;
    Numbers times;             ///< Seconds; rows' numbers over the rate where there is one.
    std::vector<Numbers> rows; ///< Of columns of numbers.
    Strings notes;
    std::string complaint;
};

class DialectTest : public testing::Test {
protected:
    Reading read(const std::string& text, ReadingWishes wishes = {}) {
        wishes.findsTimes = wishes.time.empty();
        const std::string path = folder.write("in.csv", text);
        Reading reading;
        try {
            take(*openRecording(path, wishes), reading);
        } catch (const RecordingException& exception) {
            reading.complaint = exception.what();
            reading.complaint.erase(0, path.size());
        }
        return reading;
    }

    static void take(RecordingReader& reader, Reading& reading) {
        std::vector<std::size_t> chosen;
        for (std::size_t i = 0; i < reader.getColumns().size(); ++i) {
            const RecordingReader::Column& column = reader.getColumns()[i];
            reading.columns.push_back(column.name);
            reading.units.push_back(column.unit);
            const bool isTimeItself = column.kind == RecordingReader::Column::Kind::Time;
            if (column.kind == RecordingReader::Column::Kind::Number ||
                (isTimeItself && !reader.getHasOwnTimes()))
                chosen.push_back(i);
        }
        reader.select(chosen);
        Numbers row(chosen.size());
        for (;;) {
            const RecordingReader::Row kind = reader.takeRow(row.data());
            if (kind == RecordingReader::Row::End) break;
            if (kind == RecordingReader::Row::Faulty) throw RecordingException(reader.getFault());
            reading.rows.push_back(row);
            if (reader.getHasOwnTimes()) {
                if (!std::isfinite(reader.getTime()))
                    throw RecordingException(reader.getFaultOfCell(*reader.getTimeColumn(), "a time"));
                reading.times.push_back(reader.getTime());
            } else if (reader.getTimeColumn()) {
                for (std::size_t i = 0; i < chosen.size(); ++i)
                    if (chosen[i] == *reader.getTimeColumn()) reading.times.push_back(row[i]);
            } else if (reader.getRate()) {
                reading.times.push_back(static_cast<double>(reading.times.size()) / *reader.getRate());
            }
        }
        reading.notes = reader.getNotes();
    }

    const Support::TemporaryFolder folder;
};

struct FormRow {
    std::string name;
    std::string text;
    Strings columns;
    Strings units;
    std::vector<Numbers> rows;
    Strings notes = {};
};

TEST_F(DialectTest, TablesAreReadAsTheyLook) {
    const std::string body = "0;1,5;2\n0,01;2,5;3\n";
    const std::vector<Numbers> numbers = {{0, 1.5, 2}, {0.01, 2.5, 3}};
    const Strings names = {"time_s", "x", "y"};
    const Strings units = {"s", "", ""};
    const Strings comma = {"numbers taken with a decimal comma"};
    const FormRow rows[] = {
        {"plain", "time_s,x,y\n0,1.5,2\n0.01,2.5,3\n", names, units, numbers},
        {"semicolons and decimal commas", "time_s;x;y\n" + body, names, units, numbers, comma},
        {"semicolons alone", "time_s;x;y\n0;1.5;2\n0.01;2.5;3\n", names, units, numbers},
        {"tabs", "time_s\tx\ty\n0\t1.5\t2\n0.01\t2.5\t3\n", names, units, numbers},
        {"bars", "time_s|x|y\n0|1.5|2\n0.01|2.5|3\n", names, units, numbers},
        {"commas in quotes", "time_s,x,y\n\"0,00\",\"1,5\",\"2,0\"\n\"0,01\",\"2,5\",\"3,0\"\n", names, units,
         numbers, comma},
        {"CRLF and a mark", "\xEF\xBB\xBFtime_s;x;y\r\n0;1.5;2\r\n0.01;2.5;3\r\n", names, units, numbers},
        {"sep line", "sep=;\ntime_s;x;y\n" + body, names, units, numbers, comma},
        {"quoted sep line", "\"sep=\t\"\ntime_s\tx\ty\n0\t1.5\t2\n0.01\t2.5\t3\n", names, units, numbers},
        {"trailing separators",
         "time_s,x,y,\n0,1.5,2,\n0.01,2.5,3,\n",
         {"time_s", "x", "y", ""},
         {"s", "", "", ""},
         {{0, 1.5, 2, 0}, {0.01, 2.5, 3, 0}}},
        {"trailing separators of rows", "time_s,x,y\n0,1.5,2,\n0.01,2.5,3,\n", names, units, numbers},
        {"trailing separator of names", "time_s;x;y;\n0;1.5;2\n0.01;2.5;3\n", names, units, numbers},
        {"slashes", "// made by\n// somebody, 3.1\ntime_s,x,y\n0,1.5,2\n0.01,2.5,3\n", names, units, numbers},
        {"percents", "% made by\ntime_s;x;y\n0;1.5;2\n0.01;2.5;3\n", names, units, numbers},
        {"names in a comment", "# time_s,x,y\n0,1.5,2\n0.01,2.5,3\n", names, units, numbers},
        {"a preamble", "Device,A 1\n\nSerial,77\nRange,-8 to 8\ntime_s,x,y\n0,1.5,2\n0.01,2.5,3\n", names,
         units, numbers},
        {"a row of units",
         "time,x,y\ns,g,m/s^2\n0,1.5,2\n0.01,2.5,3\n",
         {"time", "x", "y"},
         {"s", "g", "m/s^2"},
         numbers},
        {"units in brackets",
         "time [s];x [g];y (deg/s)\n" + body,
         {"time [s]", "x [g]", "y (deg/s)"},
         {"s", "g", "deg/s"},
         numbers,
         comma},
        {"groups and axes",
         "time_s,left,left\n,acc_x,acc_y\n0,1.5,2\n0.01,2.5,3\n",
         {"time_s", "left.acc_x", "left.acc_y"},
         units,
         numbers},
        {"groups named once",
         "time;acc;\ns;x;y\n0;1.5;2\n0.01;2.5;3\n",
         {"time.s", "acc.x", "acc.y"},
         {"", "", ""},
         numbers},
        {"an index name below",
         "sensor,left,left\naxis,x,y\ntime_s,,\n0,1.5,2\n0.01,2.5,3\n",
         {"time_s", "left.x", "left.y"},
         units,
         numbers},
        {"blank lines between",
         "time_s,left,left\n,x,y\n\n0,1.5,2\n\n0.01,2.5,3\n",
         {"time_s", "left.x", "left.y"},
         units,
         numbers},
        {"a bad row later on is no reason", "time_s;x;y\n0;1.5;2\n0.01;2.5;3\n\n", names, units, numbers},
    };
    for (const FormRow& row : rows) {
        const Reading reading = read(row.text);
        EXPECT_EQ(reading.complaint, "") << row.name;
        EXPECT_EQ(reading.columns, row.columns) << row.name;
        EXPECT_EQ(reading.units, row.units) << row.name;
        EXPECT_EQ(reading.rows, row.rows) << row.name;
        EXPECT_EQ(reading.notes, row.notes) << row.name;
    }
}

TEST_F(DialectTest, RowsWithoutNamesHaveNumberedColumns) {
    ReadingWishes wishes;
    wishes.perSecond = 1.0;
    const Reading reading = read("2019-08-06T10:25:50.00,1.5\n2019-08-06T10:25:50.01,2.5\n");
    EXPECT_EQ(reading.columns, (Strings{"1", "2"}));
    EXPECT_EQ(reading.rows, (std::vector<Numbers>{{1.5}, {2.5}}));
    EXPECT_EQ(reading.times, (Numbers{0, 0.01}));
    ReadingWishes named; // as it has always been: who asks for what stands in the first row gets what follows
    named.names = {"2"};
    EXPECT_EQ(read("1,2\n3,4\n5,6\n", named).rows, (std::vector<Numbers>{{3, 4}, {5, 6}}));
    EXPECT_EQ(read("1,2\n3,4\n5,6\n").rows.size(), 3u);
}

struct TimeRow {
    std::string name;
    std::string text;
    Numbers times;
    Strings notes = {};
};

std::string column(const std::string& name, const Strings& cells) {
    std::string text = name + ",x\n";
    for (const std::string& cell : cells)
        text += cell + ",1\n";
    return text;
}

TEST_F(DialectTest, TimesAreFoundByNameUnitAndSize) {
    const TimeRow rows[] = {
        {"seconds", column("Time", {"0", "0.01", "0.02"}), {0, 0.01, 0.02}},
        {"milliseconds in the header", column("time (ms)", {"0", "10", "20"}), {0, 0.01, 0.02}},
        {"microseconds in the name", column("t_us", {"0", "10000"}), {0, 0.01}},
        {"milliseconds by size",
         column("t", {"5", "15", "25"}),
         {0.005, 0.015, 0.025},
         {"the column 't': taken for milliseconds, by the size of its numbers"}},
        {"microseconds by size",
         column("timestamp", {"0", "10000", "20000"}),
         {0, 0.01, 0.02},
         {"the column 'timestamp': taken for microseconds, by the size of its numbers"}},
        {"nanoseconds by size",
         column("timestamp", {"0", "10000000", "20000000"}),
         {0, 0.01, 0.02},
         {"the column 'timestamp': taken for nanoseconds, by the size of its numbers"}},
        {"nanoseconds since 1970",
         column("time", {"1565087150000000001", "1565087150000000003"}),
         {0, 2e-9},
         {"the column 'time': taken for nanoseconds, by the size of its numbers",
          "times count from 2019-08-06 10:25:50.000000001"}},
        {"seconds since 1970",
         column("time", {"1565087150.5", "1565087150.515625"}),
         {0, 0.015625},
         {"times count from 2019-08-06 10:25:50.5"}},
        {"ISO with a zone",
         column("Timestamp", {"2019-08-06T10:25:50.000+02:00", "2019-08-06T08:25:50.02Z"}),
         {0, 0.02},
         {"times count from 2019-08-06 08:25:50"}},
        {"day first by a later row",
         column("time", {"03/04/2021 23:59:59.5", "13/04/2021 00:00:00.5"}),
         {0, 9 * 86400 + 1.0},
         {"times count from 2021-04-03 23:59:59.5"}},
        {"date and time apart",
         "Date,Time,x\n2019-08-06,23:59:59.5,1\n2019-08-07,00:00:00.5,1\n",
         {0, 1},
         {"times count from 2019-08-06 23:59:59.5"}},
        {"times of day past midnight",
         column("time", {"23:59:59.5", "00:00:00.5"}),
         {0, 1},
         {"times count from 23:59:59.5", "1 turn of midnight mended in its times"}},
        {"a counter that begins anew",
         column("time_us", {"4294950000", "4294960000", "2704", "12704"}),
         {4294.95, 4294.96, 4294.97, 4294.98},
         {"1 turn of the 32-bit counter mended in its times"}},
        {"a counter that would begin anew, were it stated",
         column("t_ms", {"65515", "65525", "65535", "9"}),
         {65.515, 65.525, 65.535, 0.009},
         {"1 step back at 65536, as a counter of 16 bits makes; 'counterBits: 16' would mend it"}},
        {"in German", column("Zeit [ms]", {"0", "10", "20"}), {0, 0.01, 0.02}},
        {"in French", column("Temps (s)", {"0", "0.01", "0.02"}), {0, 0.01, 0.02}},
        {"in Spanish", column("tiempo", {"0", "0.01", "0.02"}), {0, 0.01, 0.02}},
        {"in Italian", column("Tempo_ms", {"0", "10", "20"}), {0, 0.01, 0.02}},
        {"in Dutch", column("TIJD", {"0", "0.01", "0.02"}), {0, 0.01, 0.02}},
        {"one of a unit", column("Time (1 ms)", {"0", "10", "20"}), {0, 0.01, 0.02}},
        {"a step back that is none", column("time_us", {"10000", "30000", "20000"}), {0.01, 0.03, 0.02}},
        {"whole seconds",
         column("time (s)", {"7", "7", "8", "8", "8", "8", "9", "9", "9", "9", "10"}),
         {7.5, 7.75, 8, 8.25, 8.5, 8.75, 9, 9.25, 9.5, 9.75, 10},
         {"the column 'time (s)': the rows of each whole second spread evenly over it"}},
    };
    for (const TimeRow& row : rows) {
        const Reading reading = read(row.text);
        EXPECT_EQ(reading.complaint, "") << row.name;
        EXPECT_EQ(reading.times, row.times) << row.name;
        EXPECT_EQ(reading.notes, row.notes) << row.name;
    }
}

TEST_F(DialectTest, AWordThatMeansOtherThingsTooNeedsAUnitOfTime) {
    for (const char* const name : {"tempo", "temps", "Tempo (bpm)", "Temps (degC)"}) {
        const Reading reading = read(column(name, {"60", "120", "180"}));
        EXPECT_EQ(reading.complaint, "") << name;
        EXPECT_EQ(reading.times, Numbers()) << name;
        EXPECT_EQ(reading.rows.size(), 3u) << name;
    }
    EXPECT_EQ(read("tempo,seconds\n60,0\n60,0.5\n").times, (Numbers{0, 0.5}));
    EXPECT_EQ(read(column("tempo", {"10:00:00.0", "10:00:00.5"})).times, (Numbers{0, 0.5}));
    EXPECT_EQ(read("temps,x\ns,g\n0,1\n0.5,1\n").times, (Numbers{0, 0.5})) << "a row of units";
    EXPECT_EQ(read(column("tempoMs", {"0", "10"})).times, (Numbers{0, 0.01}));
}

TEST_F(DialectTest, ANamedColumnHoldsSecondsAsItAlwaysDid) {
    ReadingWishes wishes;
    wishes.time = {"time (ms)"};
    const std::string whole = column("time (ms)", {"0", "0", "10", "10", "20"});
    EXPECT_EQ(read(whole, wishes).times, (Numbers{0, 0, 10, 10, 20}));
    wishes.perSecond = 1e3;
    EXPECT_EQ(read(whole, wishes).times, (Numbers{0, 0, 0.01, 0.01, 0.02}));
    EXPECT_EQ(read(whole, wishes).notes, Strings()) << "nothing was guessed";
}

TEST_F(DialectTest, WhatAGraphSaysIsNotGuessed) {
    ReadingWishes start;
    start.start = *nanosecondsOf("2019-08-06 10:25:50", DateOrder::YearFirst);
    EXPECT_EQ(read(column("time", {"2019-08-06 10:25:51", "2019-08-06 10:25:52.5"}), start).times,
              (Numbers{1, 2.5}));
    ReadingWishes order;
    order.dateOrder = DateOrder::MonthFirst;
    EXPECT_EQ(read(column("time", {"03/04/2021 10:00:00", "03/05/2021 10:00:00"}), order).times,
              (Numbers{0, 86400}));
    ReadingWishes bits;
    bits.perSecond = 1e3;
    bits.counterBits = 16;
    EXPECT_EQ(read(column("time", {"65530", "4"}), bits).times, (Numbers{65.53, 65.54}));
    bits.counterBits = 0;
    EXPECT_EQ(read(column("time", {"65530", "4"}), bits).times, (Numbers{65.53, 0.004}));
    ReadingWishes form;
    form.skipLines = 2;
    form.separator = ';';
    EXPECT_EQ(read("a;b\nc;d\ntime_s;x\n0;1\n1;2\n", form).columns, (Strings{"time_s", "x"}));
    ReadingWishes headless;
    headless.headerRows = 0;
    EXPECT_EQ(read("7,8\n0.01,1\n0.02,2\n", headless).rows.size(), 3u);
    ReadingWishes comment;
    comment.comment = "$";
    EXPECT_EQ(read("$ no\ntime_s,x\n0,1\n", comment).columns, (Strings{"time_s", "x"}));
    ReadingWishes comma;
    comma.decimal = ',';
    comma.separator = ';';
    EXPECT_EQ(read("time_s\n0,5\n1,5\n", comma).rows, (std::vector<Numbers>{{0.5}, {1.5}}));
}

TEST_F(DialectTest, WhatMayBeReadInTwoWaysNamesTheProperty) {
    const struct {
        std::string text;
        std::string complaint;
    } rows[] = {
        {"x\n1,5\n2,5\n",
         ":2: found 2 cells below 1 name, so commas may be decimal commas; expected 'separator: semicolon' "
         "and "
         "'decimal: comma' for numbers such as 1,5, or 'separator: comma' and 'headerRows: 0' for cells "
         "without names"},
        {"a,b\n1,5,2,5\n2,5,3,5\n",
         ":2: found 4 cells below 2 names, so commas may be decimal commas; expected another separator than "
         "the comma between numbers with a decimal comma, or 'separator: comma' and 'headerRows: 0' for "
         "cells without names"},
        {column("time", {"03/04/2021 10:00:00", "04/04/2021 10:00:00"}),
         ": column 'time': found \"03/04/2021 10:00:00\", of which both may be the month; expected "
         "'timeFormat: dmy' with the day first, or 'timeFormat: mdy' with the month"},
        {column("time", {"0", "1", "2"}), ": column 'time': found steps of 1 without a unit, which may count "
                                          "rows; expected 'timeUnit:' and s, ms, us or ns, or 'rate:' and "
                                          "rows a second"},
        {column("time", {"0", "300", "600"}),
         ": column 'time': found steps of 300 without a unit; expected "
         "'timeUnit:' and s, ms, us or ns, or 'rate:' and rows a second"},
        {column("time (s)", {"7", "7", "7", "8", "8", "8"}),
         ":2: found times in whole seconds, none of which is there from its first row to its last, so "
         "nothing "
         "tells how many rows a second has; expected 'rate:' and rows a second"},
        {column("Time (10ms)", {"0", "1", "2"}), ": column 'Time (10ms)': found the unit '10ms', which is "
                                                 "several of one; expected 'timeUnit:' and s, "
                                                 "ms, us or ns, or 'rate:' and rows a second"},
        {"time,x\n[5 ms],g\n0,1\n1,2\n2,3\n", ": column 'time': found the unit '5 ms', which is several of "
                                              "one; expected 'timeUnit:' and s, ms, us "
                                              "or ns, or 'rate:' and rows a second"},
        {"time_s;x\n0;1.234,5\n0,01;-2.345,6\n0,02;3.456,7\n",
         ": found numbers such as 1.234,5, whose points stand between thousands; expected numbers without a "
         "sign between thousands: 1234,5 or 1234.5"},
        {"time_s\tx\n0\t1,234.5\n0.01\t2,345.6\n0.02\t3,456.7\n",
         ": found numbers such as 1,234.5, whose commas stand between thousands; expected numbers without a "
         "sign between thousands: 1234,5 or 1234.5"},
        {"time_s;x\n0;1,5\n0,01;2,5\n1;1.002,5\n",
         ":4: column 'x': found \"1.002,5\"; expected a number with a decimal comma; did you mean 1002,5?"},
        {"time_s;x\n0;1,5\n0,01;2.5\n1;2,5\n",
         ":3: column 'x': found \"2.5\"; expected a number with a decimal comma"},
        {column("time", {"2019-08-06 10:25:50.0", "later"}),
         ":3: column 'time': found \"later\"; expected a time"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(row.text).complaint, row.complaint) << row.text;
}

TEST_F(DialectTest, ABadFirstRowIsOneAndTakesNoNamesAway) {
    const std::string names = "time (s);x\n";
    const std::string rest = "0.01;2\n0.02;3\n0.03;4\n";
    const struct {
        std::string text;
        std::string complaint;
    } rows[] = {
        {names + "0.00\n" + rest,
         ":2: column 'x': found a row that ends before it, \"0.00\"; expected 2 cells, as the header has"},
        {names + "0.00;1;5\n" + rest,
         ":2: column 'x': found more cells behind it in \"0.00;1;5\"; expected 2 cells, as the header has"},
        {names + "0.00;\"1\n" + rest, ":2: column 'x': found \"\"1\"; expected a number"},
        {names + "\"0.00;1\n" + rest, ":2: column 'time (s)': found \"\"0.00;1\"; expected a number"},
        {names + "oops;oops\n" + rest, ":2: column 'time (s)': found \"oops\"; expected a number"},
        {names + "sensor;failed\n" + rest, ":2: column 'time (s)': found \"sensor\"; expected a number"},
        {names + "0.00;oops\n" + rest, ":2: column 'x': found \"oops\"; expected a number"},
        {names + "0.00\n0.005\n" + rest,
         ":2: column 'x': found a row that ends before it, \"0.00\"; expected 2 cells, as the header has"},
        {"Device;A 1\n" + names + "0.00\n" + rest,
         ":3: column 'x': found a row that ends before it, \"0.00\"; expected 2 cells, as the header has"},
        {"time (s)\tx\ty\n0.00\t1\n0.01\t2\t3\n0.02\t2\t3\n",
         ":2: column 'y': found a row that ends before it, \"0.00\\t1\"; expected 3 cells, as the header "
         "has"},
        {"Serial: 7\ntime (s),x,y\n0.00,1\n0.01,2,3\n0.02,2,3\n",
         ":3: column 'y': found a row that ends before it, \"0.00,1\"; expected 3 cells, as the header has"},
    };
    for (const auto& row : rows) {
        const Reading reading = read(row.text);
        EXPECT_EQ(reading.complaint, row.complaint) << row.text;
        EXPECT_EQ(reading.columns.front(), "time (s)") << row.text;
    }
    // Lines that look like it, and aren't.
    EXPECT_EQ(read("Device;A 1\nSerial;B 1\ntime (s);x\n" + rest).columns, (Strings{"time (s)", "x"}));
    EXPECT_EQ(read("Range (g);low\ntime;x\n" + rest).columns, (Strings{"time", "x"}));
    EXPECT_EQ(read("time;x\ns;g\n" + rest).columns, (Strings{"time", "x"}));
    EXPECT_EQ(read("time;a\ns;s\n" + rest).units, (Strings{"s", "s"}));
}

TEST_F(DialectTest, ALineTellsTheRateOnlyWhereItSpeaksOfRows) {
    const auto rateWith = [&](const std::string& line) {
        const std::string path = folder.write("in.csv", "# " + line + "\na,b\n1,2\n3,4\n5,6\n");
        ReadingWishes wishes;
        wishes.findsTimes = true;
        return openRecording(path, wishes)->getRate().value_or(0.0);
    };
    EXPECT_EQ(rateWith("Update Rate: 100.0Hz"), 100.0);
    EXPECT_EQ(rateWith("Update Rate: 100,5 Hz"), 100.5);
    EXPECT_EQ(rateWith("Sampling frequency, 50"), 50.0);
    EXPECT_EQ(rateWith("ActiGraph at 30 Hz  Filter Normal"), 30.0);
    EXPECT_EQ(rateWith("100 samples/s"), 100.0);
    EXPECT_EQ(rateWith("Data: 25 samples per second"), 25.0);
    EXPECT_EQ(rateWith("Fs=100"), 100.0);
    EXPECT_EQ(rateWith("fs: 128 Hz"), 128.0);
    EXPECT_EQ(rateWith("Sample rate: 0.1 kHz"), 100.0);
    EXPECT_EQ(rateWith("FS=16"), 0.0) << "a full scale";
    EXPECT_EQ(rateWith("offs=16"), 0.0) << "part of a word";
    for (const char* const line : {"Low pass filter: 40 Hz", "Bandwidth: 40 Hz", "Cutoff frequency 40 Hz",
                                   "Notch 50 Hz", "Mains: 50 Hz", "walked to a metronome at 2 Hz",
                                   "Vibration motor at 30 Hz, sampled at 100 Hz", "Heart rate: 60"})
        EXPECT_EQ(rateWith(line), 0.0) << line;
}

TEST_F(DialectTest, WithoutAnyRowNothingIsAmbiguous) {
    ReadingWishes wishes;
    wishes.comment = "//";
    EXPECT_EQ(read("// a\n# by han\"d\"x\n, ha\n", wishes).rows, std::vector<Numbers>());
    wishes = {};
    wishes.headerRows = 1;
    EXPECT_EQ(read("a,b\n", wishes).columns, (Strings{"a", "b"}));
    EXPECT_EQ(read("a,b\nc\n", wishes).columns, (Strings{"a", "b"}));
}

TEST_F(DialectTest, MinutesAndHoursAreTakenAsSuch) {
    for (const char* const name : {"time (min)", "time [min]", "time_min", "t_min", "time (minutes)"})
        EXPECT_EQ(read(std::string(name) + ",x\n0,1\n0.5,2\n1,3\n").times, (Numbers{0.0, 30.0, 60.0}))
            << name;
    EXPECT_EQ(read("time (h),x\n0,1\n0.5,2\n1,3\n").times, (Numbers{0.0, 1800.0, 3600.0}));
    EXPECT_EQ(read("time,x\nmin,g\n0,1\n0.5,2\n1,3\n").times, (Numbers{0.0, 30.0, 60.0})) << "a row of units";
}

TEST_F(DialectTest, CommasThatMayStandBetweenThousandsAreAskedAbout) {
    const auto table = [](const char* x, const char* y) {
        const std::string row = std::string(",\"") + x + "\",\"" + y + "\"\n";
        return "time (s),x,y\n0" + row + "1" + row + "2" + row;
    };
    const Reading unclear = read(table("1,000", "2,000"));
    EXPECT_NE(unclear.complaint.find("'decimal: comma'"), std::string::npos) << unclear.complaint;
    const Reading plain = read(table("0,500", "2,000"));
    ASSERT_EQ(plain.rows.size(), 3u) << plain.complaint;
    EXPECT_EQ(plain.rows.front(), (Numbers{0.0, 0.5, 2.0}));
}

struct ProfileRow {
    std::string name;
    std::string text;
    Strings columns;
    Strings units;
    Numbers times;
    Strings notes = {};
};

const std::vector<ProfileRow> kProfiles = {
    {"x-io",
     "Time (s),Gyroscope X (deg/s),Accelerometer X (g)\n0,1,2\n0.01,1,2\n0.01,1,2\n",
     {"Time (s)", "Gyroscope X (deg/s)", "Accelerometer X (g)"},
     {"s", "deg/s", "g"},
     {0, 0.01, 0.01}},
    {"x-io with a slow magnetometer",
     "Time (s),Gyroscope X (deg/s),Accelerometer X (g),Magnetometer X (uT)\n"
     "0,1,2,9\n0.01,2,2,9\n0.02,3,2,8\n",
     {"Time (s)", "Gyroscope X (deg/s)", "Accelerometer X (g)", "Magnetometer X (uT)"},
     {"s", "deg/s", "g", "uT"},
     {0, 0.01, 0.02}},
    {"Movella DOT",
     "sep=,\nPacketCounter,SampleTimeFine,Acc_X,\n7,4294960000,1,\n8,9371,1,\n",
     {"PacketCounter", "SampleTimeFine", "Acc_X"},
     {"", "", ""},
     {4294.96, 4294.976667},
     {"1 turn of the 32-bit counter mended in its times"}},
    {"Movella DOT below a tag",
     "DeviceTag: LeftLeg\nFirmwareVersion: 2.0.0\n\n"
     "PacketCounter,SampleTimeFine,Acc_X,\n7,10000,1,\n8,26667,1,\n",
     {"PacketCounter", "SampleTimeFine", "Acc_X"},
     {"", "", ""},
     {0.01, 0.026667}},
    {"Movella DOT with a packet counter and a trailing comma",
     "sep=,\nPacketCounter,Acc_X,\n1,0.5,\n2,0.5,\n",
     {"PacketCounter", "Acc_X"},
     {"", ""},
     {}},
    {"Movella DOT with a packet counter alone",
     "PacketCounter,Acc_X\n1,0.5\n2,0.5\n",
     {"PacketCounter", "Acc_X"},
     {"", ""},
     {}},
    {"Xsens MT",
     "// Start Time: Unknown\n// Update Rate: 100.0Hz\n// Filter Profile: human\n"
     "PacketCounter\tUTC_Second\tAcc_X\n1\t\t0.5\n2\t\t0.5\n",
     {"PacketCounter", "UTC_Second", "Acc_X"},
     {"", "", ""},
     {0, 0.01}},
    {"Xsens MT with commas below ten lines",
     "// Start Time: Unknown\n// Sample rate: 50.0Hz\n// Filter Profile: human\n// Option Flags: none\n"
     "// Firmware Version: 1.2.3\n// Product Code: MTI-3\n// Device ID: 01234567\n// Hardware: 2, 0\n"
     "// Coordinate system: ENU\n// SDI, not used\n"
     "PacketCounter,UTC_Nano,UTC_Second,Acc_X\n1,,,0.5\n2,,,0.5\n",
     {"PacketCounter", "UTC_Nano", "UTC_Second", "Acc_X"},
     {"", "", "", ""},
     {0, 0.02}},
    {"Xsens MT without a rate",
     "// Start Time: Unknown\nPacketCounter;SampleTimeFine;Acc_X\n1;0;0.5\n2;100;0.5\n",
     {"PacketCounter", "SampleTimeFine", "Acc_X"},
     {"", "", ""},
     {}},
    {"Shimmer",
     "\"sep=\t\"\nA_Timestamp_Unix_CAL\tA_Accel_LN_X_CAL\tA_Accel_WR_X_CAL\t\n"
     "ms\tm/(s^2)\tm/(s^2)\t\n1565087150000.5\t1\t2\t\n1565087150010.5\t1\t2\t\n",
     {"A_Timestamp_Unix_CAL", "A_Accel_LN_X_CAL", "A_Accel_WR_X_CAL"},
     {"ms", "m/(s^2)", "m/(s^2)"},
     {0, 0.01},
     {"times count from 2019-08-06 10:25:50.0005"}},
    {"Shimmer with commas",
     "\"sep=,\"\nA_Timestamp_Unix_CAL,A_Accel_LN_X_CAL,A_Accel_WR_X_CAL,\n"
     "ms,m/(s^2),m/(s^2),\n1565087150000.5,1,2,\n1565087150010.5,1,2,\n",
     {"A_Timestamp_Unix_CAL", "A_Accel_LN_X_CAL", "A_Accel_WR_X_CAL"},
     {"ms", "m/(s^2)", "m/(s^2)"},
     {0, 0.01},
     {"times count from 2019-08-06 10:25:50.0005"}},
    {"ActiGraph with ten lines, the day first and decimal commas",
     "------------ Data File Created By ActiGraph GT3X+ ActiLife v6.13.3 Firmware v2.5.0 date format "
     "dd.MM.yyyy at 50 Hz  Filter Normal -----------\n"
     "Serial Number: NEO1F1\nStart Time 10:00:00\nStart Date 03.04.2021\n"
     "Epoch Period (hh:mm:ss) 00:00:00\nDownload Time 11:00:00\nDownload Date 05.04.2021\n"
     "Current Memory Address: 0\nCurrent Battery Voltage: 4,21     Mode = 12\n"
     "--------------------------------------------------\n"
     "Timestamp;Accelerometer X;Accelerometer Y\n"
     "03.04.2021 10:00:00,000;0,012;-0,5\n03.04.2021 10:00:00,020;0,013;-0,5\n",
     {"Timestamp", "Accelerometer X", "Accelerometer Y"},
     {"", "", ""},
     {0, 0.02},
     {"numbers taken with a decimal comma", "times count from 2021-04-03 10:00:00"}},
    {"ActiGraph without times",
     "------------ Data File Created By ActiGraph GT3X+ date format d/M/yyyy at 30 Hz  Filter Normal "
     "-----------\n"
     "Serial Number: 1\nStart Time 10:00:00\nEpoch Period (hh:mm:ss) 00:00:00\n"
     "--------------------------------------------------\n"
     "Accelerometer X;Accelerometer Y;Accelerometer Z\n0,5;1,5;0,25\n0,5;1,5;0,25\n0,5;1,5;0,25\n",
     {"Accelerometer X", "Accelerometer Y", "Accelerometer Z"},
     {"", "", ""},
     {0, 1.0 / 30, 2.0 / 30},
     {"numbers taken with a decimal comma"}},
    {"ActiGraph with times",
     "------------ Data File Created By ActiGraph GT3X+ date format d/M/yyyy at 50 Hz  Filter Normal "
     "-----------\n"
     "Timestamp,Accelerometer X\n03/04/2021 10:00:00.000,0.5\n03/04/2021 10:00:00.020,0.5\n",
     {"Timestamp", "Accelerometer X"},
     {"", ""},
     {0, 0.02},
     {"times count from 2021-04-03 10:00:00"}},
    {"GENEActiv",
     "Device Type,GENEActiv\nMeasurement Frequency,50.0 Hz\n\nUnits,g\nResolution,0.0039\n"
     "2019-08-06 10:25:50:000,1,2,3,0,0,31.6\n2019-08-06 10:25:50:020,1,2,3,0,0,31.6\n",
     {"time", "x", "y", "z", "light", "button", "temperature"},
     {"", "g", "g", "g", "lux", "", "degC"},
     {0, 0.02},
     {"times count from 2019-08-06 10:25:50"}},
    {"Axivity",
     "2019-08-06 10:25:50.000,1,2,3\n2019-08-06 10:25:50.010,1,2,3\n",
     {"time", "x", "y", "z"},
     {"", "g", "g", "g"},
     {0, 0.01},
     {"times count from 2019-08-06 10:25:50"}},
    {"MbientLab",
     "epoc (ms),timestamp (-0400),elapsed (s),x-axis (g)\n"
     "1565087150000,2019-08-06T06:25:50.000,0,1\n1565087150010,2019-08-06T06:25:50.010,0.01,1\n",
     {"epoc (ms)", "timestamp (-0400)", "elapsed (s)", "x-axis (g)"},
     {"ms", "", "s", "g"},
     {0, 0.01}},
    {"Sensor Logger",
     "time,seconds_elapsed,z,y,x\n1565087150000000000,0.25,3,2,1\n1565087150010000000,0.26,3,2,1\n",
     {"time", "seconds_elapsed", "z", "y", "x"},
     {"", "", "", "", ""},
     {0.25, 0.26}},
    {"phyphox",
     "\"Time (s)\";\"Acceleration x (m/s^2)\"\n0,00E0;1,5E-1\n1,00E-2;2,5E-1\n",
     {"Time (s)", "Acceleration x (m/s^2)"},
     {"s", "m/s^2"},
     {0, 0.01},
     {"numbers taken with a decimal comma"}},
    {"phyphox with commas",
     "\"Time (s)\",\"Acceleration x (m/s^2)\"\n0.00E0,1.5E-1\n1.00E-2,2.5E-1\n",
     {"Time (s)", "Acceleration x (m/s^2)"},
     {"s", "m/s^2"},
     {0, 0.01}},
    {"phyphox with tabs",
     "\"Time (s)\"\t\"Acceleration x (m/s^2)\"\n0,00E0\t1,5E-1\n1,00E-2\t2,5E-1\n",
     {"Time (s)", "Acceleration x (m/s^2)"},
     {"s", "m/s^2"},
     {0, 0.01},
     {"numbers taken with a decimal comma"}},
};

/// What is read of a damaged file is what the whole one has there, or a complaint. Of a row that was cut
/// nobody can know that; and without the line that a device is known by, a column may be taken for times.
void expectOnlyTrueRows(const Reading& whole, const Reading& damaged, std::size_t soundRows,
                        const std::string& which) {
    if (!damaged.complaint.empty() || damaged.columns != whole.columns) return;
    ASSERT_LE(damaged.rows.size(), whole.rows.size()) << which;
    if (!damaged.rows.empty() && damaged.rows[0].size() != whole.rows[0].size()) return;
    const bool hasTimes = damaged.times.size() == damaged.rows.size();
    for (std::size_t i = 0; i < std::min(soundRows, damaged.rows.size()); ++i) {
        EXPECT_EQ(damaged.rows[i], whole.rows[i]) << "row " << i << " of " << which;
        if (hasTimes && i < whole.times.size()) {
            EXPECT_EQ(damaged.times[i], whole.times[i]) << "row " << i << " of " << which;
        }
    }
}

TEST_F(DialectTest, BadFilesAreComplainedOfOrReadAndNothingElse) {
    Strings texts{
        "sep=;\r\n\"Time (s)\";\"a\"\r\n0,25;1,5\r\n0,50;2,5\r\n0,75;3,5\r\n",
        "// Rate: 100.0Hz\n// b\nPacketCounter\tAcc_X\n1\t0.5\n2\t0.25\n3\t0.75\n",
        "left,left,right,right\nacc_x,acc_y,acc_x,acc_y\n1,2,3,4\n5,6,7,8\n",
    };
    for (const ProfileRow& row : kProfiles)
        texts.push_back(row.text);
    for (const std::string& text : texts) {
        const Reading whole = read(text);
        ASSERT_EQ(whole.complaint, "") << text;
        for (std::size_t i = 0; i < text.size(); i += 2) {
            const Reading cut = read(text.substr(0, i));
            expectOnlyTrueRows(whole, cut, std::max<std::size_t>(cut.rows.size(), 1) - 1,
                               std::to_string(i) + " bytes of " + text);
            std::string damaged = text;
            damaged[i] = i % 4 == 0 ? '\0' : '\xFF';
            expectOnlyTrueRows(whole, read(damaged), whole.rows.size(),
                               text + " with an odd byte at " + std::to_string(i));
        }
    }
    EXPECT_EQ(read("").complaint, ": found no header row; expected a row of column names");
    EXPECT_EQ(read("a;b\n\0;1\n0.5;1\n"s).complaint, ":2: column 'a': found \"\\x00\"; expected a number");
    EXPECT_EQ(read("a;b\n\xFF;1\n0.5;1\n0.5;1\n").complaint,
              ":2: column 'a': found \"\\xff\"; expected a number");
}

TEST_F(DialectTest, AWideTableOfAnotherDialectNeedsItsHeaderInTheFirstBytes) {
    std::string header = "t";
    std::string row = "0.5";
    for (int i = 0; i < 100'000; ++i) {
        header += ";c" + std::to_string(i);
        row += ";1";
    }
    const Reading reading = read(header + "\n" + row + "\n" + row + "\n");
    EXPECT_EQ(reading.columns.size(), 1u) << "which a source complains of, as 'looks separated by'";
}

TEST_F(DialectTest, DevicesAreKnownByTheirFiles) {
    for (const ProfileRow& row : kProfiles) {
        const Reading reading = read(row.text);
        EXPECT_EQ(reading.complaint, "") << row.name;
        EXPECT_EQ(reading.columns, row.columns) << row.name;
        EXPECT_EQ(reading.units, row.units) << row.name;
        EXPECT_EQ(reading.times, row.times) << row.name;
        EXPECT_EQ(reading.notes, row.notes) << row.name;
    }
}

} // namespace
