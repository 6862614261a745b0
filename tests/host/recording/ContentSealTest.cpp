// SPDX-License-Identifier: MIT
#include "host/recording/ContentSeal.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Quillmere::Host;

bool getIsBroken(const std::string& content) {
    return ContentSeal::getIsBroken([&](std::size_t place, std::size_t count) {
        return place < content.size() ? content.substr(place, count) : std::string();
    });
}

std::string sealed(const std::string& front, const std::string& behind) {
    std::string content = front + ContentSeal::getBlank() + behind;
    ContentSeal::close(content);
    return content;
}

TEST(ContentSeal, BreaksWithEveryByteBehindItAndWithEachThatIsAddedOrTaken) {
    const std::string content = sealed("<!-- ", " -->\n<p>content</p>\n");
    EXPECT_FALSE(getIsBroken(content));
    const std::size_t behind = content.find(" -->") + 4;
    for (std::size_t i = behind; i < content.size(); ++i) {
        std::string changed = content;
        changed[i] = static_cast<char>(changed[i] ^ 1);
        EXPECT_TRUE(getIsBroken(changed)) << i;
    }
    EXPECT_TRUE(getIsBroken(content + "\n"));
    EXPECT_TRUE(getIsBroken(content.substr(0, content.size() - 1)));
    std::string blank = content;
    blank.replace(blank.find("seal:") + 5, 16, 16, '0');
    EXPECT_TRUE(getIsBroken(blank));
}

TEST(ContentSeal, IsOfAllOfALongContent) {
    const std::string content = sealed("", " -->" + std::string(1000000, 'x'));
    EXPECT_FALSE(getIsBroken(content));
    std::string changed = content;
    changed[900000] = 'y';
    EXPECT_TRUE(getIsBroken(changed));
}

/// FNV-1a of `a`, as its authors publish it.
TEST(ContentSeal, IsThePublishedHash) {
    EXPECT_EQ(sealed("", " -->a"), "quillmere-seal:af63dc4c8601ec8c -->a");
}

TEST(ContentSeal, WhatHasNoneHasNoBrokenOne) {
    EXPECT_FALSE(getIsBroken(""));
    EXPECT_FALSE(getIsBroken("<svg/>"));
    std::string plain = "plain";
    ContentSeal::close(plain);
    EXPECT_EQ(plain, "plain");
}

} // namespace
