// SPDX-License-Identifier: MIT
#include "host/description/ValueReader.h"

#include "host/description/TableGuess.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

namespace {

using namespace Quillmere::Host;

/// What reading `text` complains of; it has complained whenever there is no value.
std::string complaintsOf(const std::string& text, bool hasLines = true) {
    Complaints complaints;
    const auto value = readValueText(text, "g.yaml", hasLines, complaints);
    EXPECT_TRUE(value.has_value() || !complaints.isEmpty()) << text.substr(0, 100);
    std::string lines;
    for (const Complaint& complaint : complaints.getSorted())
        lines += complaint.getText() + "\n";
    return lines;
}

std::string repeated(const std::string& piece, int times) {
    std::string text;
    for (int i = 0; i < times; ++i)
        text += piece;
    return text;
}

struct RefusalRow {
    std::string name;
    std::string text;
    std::string complaint; ///< Behind the file's name.
};

const RefusalRow kRefusals[] = {
    {.name = "a list in itself",
     .text = "blocks: &x [*x]",
     .complaint =
         ":1:13: found a value that contains itself; expected a reference to a value that has ended\n"},
    {.name = "a map in itself, further down",
     .text = "a: &x\n  b: [1, {c: *x}]",
     .complaint =
         ":2:14: found a value that contains itself; expected a reference to a value that has ended\n"},
    {.name = "nested too deep",
     .text = repeated("[", 101) + repeated("]", 101),
     .complaint = ":1:101: found lists or maps more than 100 levels deep; expected fewer\n"},
    {.name = "nested too deep, in block style",
     .text = repeated("- ", 101),
     .complaint = ":1:201: found lists or maps more than 100 levels deep; expected fewer\n"},
    {.name = "nested far too deep",
     .text = repeated("[", 1'500'000),
     .complaint = ":1:51: found lists or maps more than 100 levels deep; expected fewer\n"},
    {.name = "nested too deep by references",
     .text = "[&a " + repeated("[", 60) + repeated("]", 60) + ", " + repeated("[", 60) + "*a" +
             repeated("]", 60) + "]",
     .complaint = ":1:44: found references that unfold to more than 100 levels; expected fewer\n"},
    {.name = "goes on behind a list",
     .text = "[1],2",
     .complaint =
         ":1:4: found more text behind the end of the first value; expected one document in a file\n"},
    {.name = "a bracket too many",
     .text = "[],3]",
     .complaint =
         ":1:3: found more text behind the end of the first value; expected one document in a file\n"},
    {.name = "a matrix without its outer brackets",
     .text = "[[1, 2]], [3]",
     .complaint =
         ":1:9: found more text behind the end of the first value; expected one document in a file\n"},
    {.name = "nothing but brackets",
     .text = repeated("[,", 1'500'000),
     .complaint = ": found more than two million brackets, braces and commas; expected a smaller graph\n"},
    {.name = "too many values",
     .text = repeated("- 1\n", 1'000'001),
     .complaint = ":1000000:3: found more than a million values; expected a smaller graph\n"},
};

TEST(ValueReader, WhatWouldNotEndOrNotFitIsRefused) {
    for (const RefusalRow& row : kRefusals)
        EXPECT_EQ(complaintsOf(row.text), "g.yaml" + row.complaint) << row.name;
    EXPECT_EQ(complaintsOf("[1],2", false), "g.yaml: found more text behind the end of the first value; "
                                            "expected one value; a list stands in brackets\n");
}

TEST(ValueReader, ReferencesThatUnfoldWithoutEndAreRefused) {
    std::string text = "a0: &a0 [x, x, x, x, x, x, x, x, x, x]\n";
    for (int i = 1; i < 12; ++i) {
        const std::string own = std::to_string(i);
        const std::string before = std::to_string(i - 1);
        text.append("a").append(own).append(": &a").append(own).append(" [*a").append(before);
        for (int k = 1; k < 10; ++k)
            text.append(", *a").append(before);
        text.append("]\n");
    }
    EXPECT_EQ(complaintsOf(text),
              "g.yaml:1:37: found more than a million values; expected a smaller graph\n");
}

TEST(ValueReader, AReferenceIsACopyAndMayBeAKey) {
    Complaints complaints;
    const auto value = readValueText("a: &x [1, &y b]\nc: *x\n*y : 2\n", "g.yaml", true, complaints);
    ASSERT_TRUE(value.has_value());
    ASSERT_EQ(value->entries.size(), 3u);
    EXPECT_EQ(value->find("c")->value.items.at(1).text, "b");
    EXPECT_EQ(value->find("b")->value.text, "2");
    EXPECT_EQ(value->count(), 8u);
    EXPECT_TRUE(complaints.isEmpty());
}

TEST(ValueReader, AnOptionHasNoLinesToName) {
    EXPECT_EQ(complaintsOf("{a: 1, a: 2}", false),
              "g.yaml: found the key 'a' a second time; expected each key once\n");
}

/// Looked up one by one, these keys would take a minute; so they take a fraction of a second of the
/// processor's time, whatever else it does.
TEST(ValueReader, ManyKeysAreReadAtOnce) {
    constexpr int kKeys = 300'000;
    std::string text = "view:\n";
    for (int i = 0; i < kKeys; ++i)
        text += "  k" + std::to_string(i) + ": 1\n";
    const std::clock_t begin = std::clock();
    EXPECT_EQ(complaintsOf(text + "  k7: 2\n"), "g.yaml:300002:3: found the key 'k7' a second time; expected "
                                                "each key once (the first is in line 9)\n");
    EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, 20.0);
}

TEST(ValueReader, AFileThatIsTooLargeIsNotReadToItsEnd) {
    Support::TemporaryFolder folder;
    Complaints complaints;
    EXPECT_FALSE(readValueFile("/dev/zero", complaints).has_value());
    EXPECT_FALSE(
        readValueFile(folder.write("g.yaml", "a: 1\n#" + std::string(kLargestValueFile, 'x')), complaints)
            .has_value());
    ASSERT_EQ(complaints.getSorted().size(), 2u);
    EXPECT_EQ(complaints.getSorted().at(0).getText(),
              "/dev/zero: found more than 16 MiB; expected a graph file");
    EXPECT_EQ(complaints.getSorted().at(1).found, "more than 16 MiB");
}

TEST(ValueReader, AFileThatCannotBeReadIsNamed) {
    Complaints complaints;
    EXPECT_FALSE(readValueFile("/proc/self/mem", complaints).has_value());
    ASSERT_EQ(complaints.getSorted().size(), 1u);
    EXPECT_EQ(
        complaints.getSorted().front().getText(),
        "/proc/self/mem: found a file that can't be read to its end (Input/output error); expected a graph "
        "file");
}

TEST(ValueReader, ARecordingIsToldFromAGraph) {
    Support::TemporaryFolder folder;
    Complaints complaints;
    std::string recording = "# wrist\nt,ax,ay\n";
    while (recording.size() <= kLargestValueFile)
        recording += "0.01,-9.81,0.5\n";
    EXPECT_FALSE(readValueFile(folder.write("wrist.csv", recording), complaints).has_value());
    ASSERT_EQ(complaints.getSorted().size(), 1u);
    EXPECT_EQ(complaints.getSorted().front().found, "a table, as recordings are, that begins 't,ax,ay'");
    EXPECT_EQ(complaints.getSorted().front().expected, "a graph file, which names its recordings by 'file:'");
}

TEST(TableGuess, TablesAreHeadersAndNumbers) {
    EXPECT_EQ(tableHeader("t,x\n0,1\n"), "t,x");
    EXPECT_EQ(tableHeader("\xEF\xBB\xBF# by hand\n\n\"time (s)\";x;y\r\n0,5;1,25;\r\n"), "\"time (s)\";x;y");
    EXPECT_EQ(tableHeader("date\tx\ty\n2024-01-01\t1\t2"), "date\tx\ty");
    EXPECT_EQ(tableHeader("t,x\n"), "");
    EXPECT_EQ(tableHeader("t,x\n0,1,2\n"), "");
    EXPECT_EQ(tableHeader("t,x\nzero,one\n"), "");
    EXPECT_EQ(tableHeader("name: a, b\nformat: 1, 2\n"), "");
    EXPECT_EQ(tableHeader("{\"format\": 1, \"name\":\n2, 3\n"), "");
    EXPECT_EQ(tableHeader("format: 1\nblocks:\n"), "");
    EXPECT_EQ(tableHeader(""), "");
}

} // namespace
