// SPDX-License-Identifier: MIT
#include "host/recording/RecordingSource.h"

#include "framework/Quillmere.h"
#include "tests/host/Fifo.h"
#include "tests/host/GraphFixture.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>
#include <memory>
#include <string>
#include <thread>

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
    EXPECT_EQ(result("file: in.csv, time: t, frame: 2, hop: 1, pins: {p: [x, y]}", "p"),
              "t,p[0],p[1],p[2],p[3]\n0.5,1,10,2,20\n1,2,20,3,30\n");
    EXPECT_EQ(result("file: in.csv, time: t, frame: 1, hop: 2, pins: {p: [x]}", "p"), "t,p[0]\n0,1\n1,3\n");
    EXPECT_EQ(result("file: in.csv, time: t, frame: 4, pins: {p: [x]}", "p"), "t\n");
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
        {"file: in.csv, pins: {p: x}", "g.yaml:3:10: found the RecordingSource 'in' without a clock; "
                                       "expected either 'time:' and a column or 'rate:' and "
                                       "rows a second\n"},
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
         "g.yaml:3:73: found the property 'pin' of RecordingSource; expected one of file, pins, time, rate, "
         "frame and hop; "
         "did you mean pins?\n"},
        {"file: in.csv, time: time, pins: {p: [x, z]}",
         "g.yaml:3:70: found the column 'time'; expected one of in.csv: t, x and y\n"
         "g.yaml:3:90: found the column 'z'; expected one of in.csv: t, x and y\n"},
        {"file: none.csv, time: t, pins: {p: x}",
         "g.yaml:3:56: found no recording that can be read (none.csv: cannot be opened: No such file or "
         "directory); expected "
         "a CSV file with a row of column names\n"},
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
        description = std::make_unique<Host::GraphDescription>(Host::GraphDescription::read(
            folder.write("g.yaml", graph("file: pipe, time: t, " + properties, "p")), {}, complaints));
        built = std::make_unique<Host::Graph>(*description, catalogue, complaints);
        built->openSources(complaints);
        complaints.raise();
        source = built->getSources().at(0);
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
    Host::Source* source = nullptr;
    Core::OutputPin<Core::MatrixXd>* output = nullptr;
};

TEST_F(PipedSourceTest, IsPreparedWhenARowHasCome) {
    build("pins: {p: [x, y]}");
    EXPECT_TRUE(source->getIsPiped());
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
        "a row of column names); expected a CSV file with a row of column names\n");
}

} // namespace
