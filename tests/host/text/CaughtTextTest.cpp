// SPDX-License-Identifier: MIT
#include "host/text/CaughtText.h"

#include <Poco/Exception.h>
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

namespace {

using Quillmere::Host::caughtText;
using Quillmere::Host::kLongestReason;
using Quillmere::Host::messageOf;
using Quillmere::Host::wordsOf;

template <class Thing>
std::string caught(const Thing& thing) {
    try {
        throw thing;
    } catch (...) {
        return caughtText();
    }
}

class Wordless final : public std::exception {
public:
    const char* what() const noexcept override { return nullptr; }
};

TEST(CaughtText, TellsWhateverWasRaised) {
    EXPECT_EQ(caught(std::runtime_error("no luck")), "no luck");
    EXPECT_EQ(caught(Poco::RangeException("Value out of range.")), "Out of range: Value out of range.");
    EXPECT_EQ(caught(Poco::RangeException()), "Out of range");
    EXPECT_EQ(caught(std::runtime_error("")), "an exception without a text");
    EXPECT_EQ(caught(Wordless()), "an exception without a text");
    EXPECT_EQ(caught(42), "something that is no std::exception");
}

TEST(CaughtText, IsPrintableAndBounded) {
    EXPECT_EQ(caught(std::runtime_error("a\nb")), "a\\nb");
    EXPECT_EQ(caught(Poco::DataException("a\nb")), "Data error: a\\nb");
    EXPECT_EQ(caught(std::runtime_error(std::string(1 << 16, 'x'))),
              std::string(kLongestReason, 'x') + "...");
}

TEST(CaughtText, IsNotForWantOfMemory) {
    EXPECT_THROW(caught(std::bad_alloc()), std::bad_alloc);
}

TEST(WordsOf, AnExceptionAtHandAreThoseOfACaughtOne) {
    EXPECT_EQ(wordsOf(std::runtime_error("no\tluck")), "no\\tluck");
    EXPECT_EQ(wordsOf(Poco::NotFoundException("x")), "Not found: x");
    EXPECT_EQ(wordsOf(Wordless()), "an exception without a text");
    EXPECT_EQ(wordsOf(std::bad_alloc()), "out of memory");
}

TEST(MessageOf, ASettingIsWhatItSays) {
    EXPECT_EQ(messageOf(Poco::RangeException("too much")), "too much");
    EXPECT_EQ(messageOf(Poco::RangeException()), "Out of range");
}

} // namespace
