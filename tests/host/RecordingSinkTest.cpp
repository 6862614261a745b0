// SPDX-License-Identifier: MIT
#include "host/recording/RecordingSink.h"

#include "tests/host/GraphFixture.h"

#include <gtest/gtest.h>

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
    EXPECT_EQ(run(graph("file: out.csv, columns: {first: [ax]}")),
              "block 'out' (RecordingSink) at 0 s: out.csv: group 'first': found a sample of 2 elements; "
              "expected 1, as many "
              "as it has column names");
}

struct RefusalRow {
    std::string properties;
    std::string complaints;
};

TEST_F(RecordingSinkTest, WrongSettingsAreComplainedOf) {
    const RefusalRow rows[] = {
        {"", "g.yaml:4:10: found the RecordingSink 'out' without a file; expected 'file:' and the name of a "
             "file\n"},
        {"file: out.csv, name: x",
         "g.yaml:4:64: found the property 'name' of RecordingSink; expected one of file, time and columns\n"},
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

} // namespace
