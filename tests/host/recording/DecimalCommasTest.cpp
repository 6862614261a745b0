// SPDX-License-Identifier: MIT
#include "host/ends/RecordingException.h"
#include "host/recording/RecordingForms.h"

#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

const std::string kActiGraph =
    "------------ Data File Created By ActiGraph GT3X+ ActiLife v6.13.3 Firmware v2.5.0 date format d/M/yyyy "
    "at 30 Hz  Filter Normal -----------\n"
    "Serial Number: NEO1F1\nStart Time 10:00:00\nStart Date 03/04/2021\n"
    "Epoch Period (hh:mm:ss) 00:00:00\nDownload Time 11:00:00\nDownload Date 03/04/2021\n"
    "Current Memory Address: 0\nCurrent Battery Voltage: 4,21     Mode = 12\n"
    "--------------------------------------------------\n";

const std::string kGeneActiv = "Device Type,GENEActiv\nMeasurement Frequency,50.0 Hz\nUnits,g\n";

std::string repeated(const std::string& line, int times) {
    std::string text;
    for (int i = 0; i < times; ++i)
        text += line + "\n";
    return text;
}

/// Whole numbers in so many columns, without any rule in them.
std::string wholeNumbers(int columns, int rows, int below, int from) {
    std::string text;
    unsigned state = 1;
    for (int row = 0; row < rows; ++row)
        for (int i = 0; i < columns; ++i) {
            state = state * 1103515245u + 12345u;
            const int number = from + static_cast<int>((state >> 16) % static_cast<unsigned>(below - from));
            text += std::to_string(number) + (i + 1 < columns ? "," : "\n");
        }
    return text;
}

/// Two numbers of three digits and two of two, which hardly change.
std::string atRest() {
    std::string text;
    for (int i = 0; i < 100; ++i)
        text += std::to_string(512 + i % 5) + "," + std::to_string(48 + i % 3) + "," +
                std::to_string(601 + i % 4) + "," + std::to_string(52 + i % 7) + "\n";
    return text;
}

/// The complaint without the path; or `N columns`.
std::string readingOf(const std::string& text, const ReadingWishes& wishes = {}) {
    const Support::TemporaryFolder folder;
    const std::string path = folder.write("in.csv", text);
    try {
        return std::to_string(openRecording(path, wishes)->getColumns().size()) + " columns";
    } catch (const RecordingException& exception) {
        return std::string(exception.what()).substr(path.size());
    }
}

constexpr const char* kRemedy =
    ", so commas may be decimal commas; expected another separator than the comma "
    "between numbers with a decimal comma, or 'separator: comma' and "
    "'headerRows: 0' for cells without names";
constexpr const char* kRemedyWithoutNames =
    " without names, whose commas may be decimal commas; expected another separator than the comma between "
    "numbers with a decimal comma, or 'separator: comma' and 'headerRows: 0' for cells without names";

TEST(DecimalCommasTest, BetweenCommasAreAskedAboutBelowAnyPreamble) {
    const std::string preamble = "Device,A 1\nSerial,77\n";
    const std::string names = "Accelerometer X,Accelerometer Y,Accelerometer Z\n";
    const struct {
        std::string name;
        std::string text;
        std::string complaint;
    } rows[] = {
        {"one line in front", "Device,A 1\ntime (s),x\n0,00,1,5\n0,01,2,5\n",
         std::string(":3: found 4 cells below 2 names") + kRemedy},
        {"two lines in front", preamble + "time (s),x\n0,00,1,5\n0,01,2,5\n",
         std::string(":4: found 4 cells below 2 names") + kRemedy},
        {"whole milliseconds", preamble + "time (ms),x\n0,1,5\n10,2,5\n",
         std::string(":4: found 3 cells below 2 names") + kRemedy},
        {"a count and milliseconds", preamble + "n,time (ms),x,y\n1,0,1,5,7,25\n2,10,2,5,7,5\n",
         std::string(":4: found 6 cells below 4 names") + kRemedy},
        {"a row of units", preamble + "time,x\ns,g\n0,00,1,5\n0,01,2,5\n",
         std::string(":5: found 4 cells below 2 names") + kRemedy},
        {"names in a comment", preamble + "# time (s),x\n0,00,1,5\n0,01,2,5\n",
         std::string(":4: found 4 cells below 2 names") + kRemedy},
        {"ActiGraph with names", kActiGraph + names + "0,001,0,002,1,003\n0,001,0,012,1,003\n",
         std::string(":12: found 6 cells below 3 names") + kRemedy},
        {"ActiGraph", kActiGraph + "0,001,0,002,1,003\n0,001,0,012,1,003\n",
         std::string(":11: found 6 cells") + kRemedyWithoutNames},
        {"ActiGraph at rest", kActiGraph + repeated("0,123,-0,456,1,789", 100),
         std::string(":11: found 6 cells") + kRemedyWithoutNames},
        {"ActiGraph at rest, not below zero", kActiGraph + repeated("0,123,0,45,1,789", 100),
         std::string(":11: found 6 cells") + kRemedyWithoutNames},
        {"Axivity", "2019-08-06 10:25:50.000,0,01,0,5,1,25\n2019-08-06 10:25:50.010,0,02,0,5,1,25\n",
         std::string(":1: found 7 cells") + kRemedyWithoutNames},
        {"Axivity with commas in its times",
         "2019-08-06 10:25:50,000,0,1,0,5,1,2\n2019-08-06 10:25:50,010,0,2,0,5,1,2\n",
         std::string(":1: found 8 cells") + kRemedyWithoutNames},
        {"GENEActiv",
         kGeneActiv + "2019-08-06 10:25:50:000,0,0123,0,2512,0,9788,5,0,31,6\n"
                      "2019-08-06 10:25:50:020,0,0124,0,2513,0,9789,5,0,31,6\n",
         std::string(":4: found 11 cells") + kRemedyWithoutNames},
        {"no names", "12,5,3,25\n13,5,4,25\n12,7,3,50\n",
         std::string(":1: found 4 cells") + kRemedyWithoutNames},
        {"exponents", "1,5E-1,2,5E-1\n1,5E-1,2,05E-1\n",
         std::string(":1: found 4 cells") + kRemedyWithoutNames},
        {"one column with a digit behind the comma", "36,1\n36,2\n36,0\n36,4\n36,5\n36,6\n36,7\n37,8\n37,9\n",
         ":1: found 2 cells without names, whose commas may be decimal commas; expected 'separator: "
         "semicolon' and 'decimal: comma' for numbers such as 1,5, or 'separator: comma' and 'headerRows: 0' "
         "for cells without names"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(readingOf(row.text), row.complaint) << row.name;
}

TEST(DecimalCommasTest, WholeNumbersAreStillRead) {
    const struct {
        std::string name;
        std::string text;
        std::string reading;
    } rows[] = {
        {"counters", "1,2,3,4\n2,3,4,5\n3,4,5,6\n", "4 columns"},
        {"one row", "1,2,3,4\n", "4 columns"},
        {"a counter beyond nine", "8,9,10,11\n9,10,11,12\n10,11,12,13\n", "4 columns"},
        {"a converter's, three axes", wholeNumbers(3, 100, 1024, 0), "3 columns"},
        {"a converter's, four", wholeNumbers(4, 100, 1024, 0), "4 columns"},
        {"of one length", wholeNumbers(6, 30, 600, 400), "6 columns"},
        {"of one length, below zero", wholeNumbers(6, 100, 3000, -3000), "6 columns"},
        {"a converter's at rest", atRest(), "4 columns"},
        {"a converter's below a key and a value", "Device,A 1\nMode,raw\n" + wholeNumbers(4, 100, 1024, 0),
         "4 columns"},
        {"milliseconds and a value", "1000,512\n1010,513\n1020,511\n", "2 columns"},
        {"a value and a flag", "512,0\n513,1\n9,0\n", "2 columns"},
        {"days and months filled up", "2019,08,06,10,25,50\n2019,08,06,10,25,51\n", "6 columns"},
        {"points in some", "0.5,001,2,003\n1,002,3.5,004\n", "4 columns"},
        {"Axivity", "2019-08-06 10:25:50.000,0,1,0\n2019-08-06 10:25:50.010,0,1,0\n", "4 columns"},
        {"names as many as cells", "Device,A 1\nSerial,77\nt,a,b,c\n0,001,1,002\n1,001,1,003\n", "4 columns"},
        {"keys and values in front", "Device,A 1\nRange,low\n1,2,-3,4,5\n2,3,-4,5,6\n", "5 columns"},
        {"a remark in front", "# Made by somebody\n1,2\n2,3\n3,4\n", "2 columns"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(readingOf(row.text), row.reading) << row.name;
}

TEST(DecimalCommasTest, WhoSaysTheSeparatorIsNotAsked) {
    ReadingWishes wishes;
    wishes.separator = ',';
    wishes.headerRows = 0;
    EXPECT_EQ(readingOf("Device,A 1\ntime (s),x\n0,00,1,5\n0,01,2,5\n", wishes), "4 columns");
    EXPECT_EQ(readingOf(kActiGraph + "0,001,0,002,1,003\n0,001,0,012,1,003\n", wishes), "6 columns");
    ReadingWishes point;
    point.decimal = '.';
    EXPECT_EQ(readingOf("12,5,3,25\n13,5,4,25\n12,7,3,50\n", point), "4 columns");
    ReadingWishes comma; // which doesn't say what stands between the numbers
    comma.decimal = ',';
    EXPECT_EQ(readingOf("12,5,3,25\n13,5,4,25\n12,7,3,50\n", comma),
              std::string(":1: found 4 cells") + kRemedyWithoutNames);
}

} // namespace
