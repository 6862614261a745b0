// SPDX-License-Identifier: MIT
#include "host/text/Complaint.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Quillmere::Host::Complaint;
using Quillmere::Host::Complaints;
using Quillmere::Host::GraphException;

TEST(Complaint, IsOneSentence) {
    EXPECT_EQ((Complaint{{"a.yaml", 3, 14}, "a buffer of 0", "1 sample at least"}).getText(),
              "a.yaml:3:14: found a buffer of 0; expected 1 sample at least");
    EXPECT_EQ((Complaint{{"--set"}, "'x'", "NAME=VALUE"}).getText(), "--set: found 'x'; expected NAME=VALUE");
    EXPECT_EQ((Complaint{{}, "nothing", "something", "anything"}).getText(),
              "found nothing; expected something; did you mean anything?");
    Complaint ofPart{{"in.csv", 3}, "\"a\"", "a number"};
    ofPart.part = "column 'x'";
    EXPECT_EQ(ofPart.getText(), "in.csv:3: column 'x': found \"a\"; expected a number");
}

TEST(Complaint, OfAnUnknownNameListsThoseThatThereAre) {
    EXPECT_EQ(Complaint::unknown({}, "the block 'smoth'", "smoth", {"wrist", "smooth"}).getText(),
              "found the block 'smoth'; expected one of wrist and smooth; did you mean smooth?");
    EXPECT_EQ(Complaint::unknown({"a.yaml", 1, 2}, "the key 'z'", "z", {"graph"}, "a key: ").getText(),
              "a.yaml:1:2: found the key 'z'; expected a key: graph");
}

TEST(Complaint, OfAnUnknownNameWhereThereIsNoneSaysSo) {
    EXPECT_EQ(Complaint::unknown({}, "the layout 'a'", "a", {}).getText(),
              "found the layout 'a'; expected one of nothing");
    EXPECT_EQ(Complaint::unknown({}, "the layout 'a'", "a", {}, "one of ", "no layout").getText(),
              "found the layout 'a'; expected no layout");
    EXPECT_EQ(Complaint::unknown({}, "the layout 'a'", "a", {"main"}, "one of ", "no layout").expected,
              "one of main");
}

std::string raised(const Complaints& complaints, bool isStrict) {
    try {
        complaints.raise(isStrict);
    } catch (const GraphException& exception) {
        return std::to_string(exception.getComplaints().size()) + " " + exception.what();
    }
    return "";
}

TEST(Complaints, AreRaisedInTheOrderOfTheFileAndWarningsOnlyWhereTheyCount) {
    Complaints complaints;
    complaints.warn({"a.yaml", 1, 1}, "odd");
    EXPECT_EQ(raised(complaints, false), "");
    EXPECT_EQ(raised(complaints, true), "1 a.yaml:1:1: warning: odd");
    complaints.add({"a.yaml", 9, 1}, "b", "c");
    complaints.add({{"a.yaml", 2, 1}, "d", "e", "f"});
    EXPECT_EQ(raised(complaints, false), "2 a.yaml:2:1: found d; expected e; did you mean f?\n"
                                         "a.yaml:9:1: found b; expected c");
    EXPECT_EQ(raised(complaints, true), "3 a.yaml:2:1: found d; expected e; did you mean f?\n"
                                        "a.yaml:9:1: found b; expected c\n"
                                        "a.yaml:1:1: warning: odd");
}

TEST(Complaints, BeyondThoseThatAreKeptAreCounted) {
    Complaints complaints;
    for (int i = 0; i < 53; ++i)
        complaints.add({"a.yaml", i + 1, 1}, "x", "y");
    EXPECT_TRUE(complaints.getIsFull());
    const std::string text = raised(complaints, false);
    EXPECT_TRUE(text.starts_with("50 a.yaml:1:1: found x")) << text;
    EXPECT_TRUE(text.ends_with("a.yaml:50:1: found x; expected y\nand 3 more")) << text;
    Complaints twice;
    twice.add(complaints);
    twice.add(complaints);
    EXPECT_TRUE(raised(twice, false).ends_with("\nand 56 more"));
}

} // namespace
