// SPDX-License-Identifier: MIT
#include "host/text/Printable.h"

#include "host/text/Complaint.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using Quillmere::Host::Complaint;
using Quillmere::Host::printable;
using Quillmere::Host::Warning;

struct Row {
    std::string name;
    std::string text;
    std::string shown;
};

const Row kRows[] = {
    {.name = "plain", .text = "ax (m/s^2)", .shown = "ax (m/s^2)"},
    {.name = "empty", .text = "", .shown = ""},
    {.name = "a NUL and what is behind it", .text = "1\0abc"s, .shown = "1\\x00abc"},
    {.name = "line ends and tabs", .text = "a\r\nb\tc", .shown = "a\\r\\nb\\tc"},
    {.name = "a colour", .text = "\x1b[31mred", .shown = "\\x1b[31mred"},
    {.name = "delete", .text = "\x7f", .shown = "\\x7f"},
    {.name = "a backslash stays", .text = "C:\\new", .shown = "C:\\new"},
    {.name = "letters of two, three and four bytes", .text = "ä€𝄞", .shown = "ä€𝄞"},
    {.name = "a control character of two bytes", .text = "\xC2\x9B", .shown = "\\xc2\\x9b"},
    {.name = "the direction turned", .text = "a\u202Eb", .shown = "a\\xe2\\x80\\xaeb"},
    {.name = "no UTF-8", .text = "\xFF\xE4z", .shown = "\\xff\\xe4z"},
    {.name = "a letter that is cut", .text = "\xE2\x82", .shown = "\\xe2\\x82"},
    {.name = "a longer form than needed",
     .text = "\xC0\x80\xE0\x80\xAF",
     .shown = "\\xc0\\x80\\xe0\\x80\\xaf"},
    {.name = "a longer form of the last of two bytes", .text = "\xE0\x9F\xBF", .shown = "\\xe0\\x9f\\xbf"},
    {.name = "a longer form of the last of three",
     .text = "\xF0\x8F\xBF\xBF",
     .shown = "\\xf0\\x8f\\xbf\\xbf"},
    {.name = "half of a pair", .text = "\xED\xA0\x80", .shown = "\\xed\\xa0\\x80"},
    {.name = "beyond the last", .text = "\xF4\x90\x80\x80", .shown = "\\xf4\\x90\\x80\\x80"},
};

TEST(Printable, ShowsWhatAMessageMayHold) {
    for (const Row& row : kRows)
        EXPECT_EQ(printable(row.text, 100), row.shown) << row.name;
}

TEST(Printable, IsNoLongerThanAskedFor) {
    EXPECT_EQ(printable("12345", 5), "12345");
    EXPECT_EQ(printable("123456", 5), "12345...");
    EXPECT_EQ(printable("1234€", 5), "1234...") << "never half a letter";
    EXPECT_EQ(printable("123\x1b", 5), "123...") << "never half of what stands for a byte";
    EXPECT_EQ(printable(std::string(1 << 20, 'x'), 40), std::string(40, 'x') + "...");
}

TEST(Printable, EveryMessageIsOneLineOfReasonableLength) {
    const std::string flood(100'000, 'x');
    const Complaint complaint{
        {"--set a.b=\x1b[2J" + flood, 0, 0}, "'\0\n"s + flood, "c\nd" + flood, "e\x7f" + flood};
    const std::string text = complaint.getText();
    EXPECT_LT(text.size(), 10'000u);
    EXPECT_TRUE(text.starts_with("--set a.b=\\x1b[2Jxxx"));
    EXPECT_NE(text.find("...: found '\\x00\\nxxx"), std::string::npos);
    EXPECT_NE(text.find("...; expected c\\ndxxx"), std::string::npos);
    EXPECT_NE(text.find("...; did you mean e\\x7fxxx"), std::string::npos);
    EXPECT_TRUE(text.ends_with("...?"));
    EXPECT_EQ((Warning{{}, "a\rb"}.getText()), "warning: a\\rb");
    EXPECT_LT((Warning{{flood, 1, 2}, flood}.getText().size()), 10'000u);
}

} // namespace
