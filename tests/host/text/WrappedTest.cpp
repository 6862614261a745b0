// SPDX-License-Identifier: MIT
#include "host/text/Wrapped.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Quillmere::Host::lettersOf;
using Quillmere::Host::wrapped;
using Lines = std::vector<std::string>;

TEST(Wrapped, BreaksAtBlanks) {
    EXPECT_EQ(wrapped("one two three", 13), (Lines{"one two three"}));
    EXPECT_EQ(wrapped("one two three", 12), (Lines{"one two", "three"}));
    EXPECT_EQ(wrapped("one two\nthree\n", 13), (Lines{"one two three"})) << "a line break is a blank";
    EXPECT_EQ(wrapped("a incomprehensible b", 5), (Lines{"a", "incomprehensible", "b"}));
    EXPECT_EQ(wrapped("", 5), Lines{});
    EXPECT_EQ(wrapped("\n \n\n", 5), (Lines{"", " "})) << "nothing is left of empty lines at the end";
}

TEST(Wrapped, KeepsParagraphsAndWhatIsSetIn) {
    EXPECT_EQ(wrapped("one\ntwo\n\nthree\n  x   y\nfour\nfive\n", 10),
              (Lines{"one two", "", "three", "  x   y", "four five"}));
}

TEST(Wrapped, CountsLettersNotBytes) {
    EXPECT_EQ(lettersOf("µm/s²"), 5u);
    EXPECT_EQ(wrapped("µµ µµ", 5), (Lines{"µµ µµ"}));
    EXPECT_EQ(wrapped("µµ µµ", 4), (Lines{"µµ", "µµ"}));
}

} // namespace
