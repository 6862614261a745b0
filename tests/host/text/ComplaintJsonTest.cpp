// SPDX-License-Identifier: MIT
#include "host/text/ComplaintJson.h"

#include <gtest/gtest.h>

namespace {

using namespace Quillmere::Host;

TEST(ComplaintJson, TellsAComplaintPartByPart) {
    EXPECT_EQ(Json::complaint({{"a.yaml", 3, 14}, "the type 'Gian'", "one of Gain", "Gain"}), R"({
  "severity": "error",
  "file": "a.yaml",
  "line": 3,
  "column": 14,
  "part": null,
  "found": "the type 'Gian'",
  "expected": "one of Gain",
  "nearest": "Gain",
  "sentence": "a.yaml:3:14: found the type 'Gian'; expected one of Gain; did you mean Gain?"
})");
}

TEST(ComplaintJson, WhatThereIsNothingToSayOfIsNull) {
    EXPECT_EQ(Json::warning({{}, "odd"}), R"({
  "severity": "warning",
  "file": null,
  "line": null,
  "column": null,
  "part": null,
  "found": "odd",
  "expected": null,
  "nearest": null,
  "sentence": "warning: odd"
})");
    EXPECT_EQ(Json::complaints({}), "[]");
    EXPECT_EQ(Json::warnings({}), "[]");
}

TEST(Json, IsUtf8WhateverItIsMadeOf) {
    EXPECT_EQ(Json::text("gr\xC3\xBC\xC3\x9F"), "\"gr\xC3\xBC\xC3\x9F\"");
    EXPECT_EQ(Json::text("gr\xFC\xDF"
                         "e"),
              "\"gr\\ufffd\\ufffde\"")
        << "Latin-1";
    EXPECT_EQ(Json::text("cut \xE2\x82"), "\"cut \\ufffd\\ufffd\"");
    EXPECT_EQ(Json::text("\xED\xA0\x80"), "\"\\ufffd\\ufffd\\ufffd\"") << "half of a pair";
    EXPECT_EQ(Json::text("a\"\\\n\x7F"), "\"a\\\"\\\\\\u000a\x7F\"");
}

} // namespace
