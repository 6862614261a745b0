// SPDX-License-Identifier: MIT
#include "host/live/LiveStatistics.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Quillmere::Host::LiveStatistics;
using Lines = std::vector<std::string>;

TEST(LiveStatistics, TextIsTwoTablesWithNamesOnTheLeftAndNumbersOnTheRight) {
    LiveStatistics statistics;
    statistics.blocks = {{.id = "in",
                          .type = "RecordingSource",
                          .layout = "fast",
                          .steps = 12000,
                          .samplesIn = 0,
                          .samplesOut = 24000,
                          .lost = 0,
                          .seconds = 0.0123456},
                         {.id = "a long name",
                          .type = "FilterGain",
                          .layout = "analysis",
                          .steps = 7,
                          .samplesIn = 6,
                          .samplesOut = 5,
                          .lost = 11994,
                          .seconds = 2.0}};
    statistics.links = {{.from = "in.x",
                         .to = "a long name.input",
                         .received = 12000,
                         .taken = 6,
                         .lost = 11994,
                         .waiting = 0},
                        {.from = "", .to = "b.x", .received = 1, .taken = 2, .lost = 3, .waiting = 4}};
    EXPECT_EQ(statistics.getText(),
              (Lines{"block        type             layout    steps  in    out   lost        ms",
                     "in           RecordingSource  fast      12000   0  24000      0    12.346",
                     "a long name  FilterGain       analysis      7   6      5  11994  2000.000", "",
                     "link                          received  taken  waiting   lost",
                     "in.x    -> a long name.input     12000      6        0  11994",
                     "(none)  -> b.x                       1      2        4      3"}));
}

TEST(LiveStatistics, WithoutLinksThereIsOneTable) {
    LiveStatistics statistics;
    statistics.blocks = {{.id = "g", .type = "T", .layout = "l"}};
    EXPECT_EQ(statistics.getText(), (Lines{"block  type  layout  steps  in  out  lost     ms",
                                           "g      T     l           0   0    0     0  0.000"}));
    EXPECT_EQ(LiveStatistics().getText(), (Lines{"block  type  layout  steps  in  out  lost  ms"}));
}

TEST(LiveStatistics, ForProgramsTheyAreJson) {
    LiveStatistics statistics;
    statistics.blocks = {{.id = "in",
                          .type = "RecordingSource",
                          .layout = "a \"b\"",
                          .steps = 12000,
                          .samplesIn = 1,
                          .samplesOut = 24000,
                          .lost = 2,
                          .seconds = 0.25}};
    statistics.links = {{.from = "in.x", .to = "b.x", .received = 5, .taken = 4, .lost = 1, .waiting = 3},
                        {.from = "", .to = "b.y", .received = 1, .taken = 1}};
    EXPECT_EQ(statistics.getJson(), R"({
  "blocks": [
    {
      "id": "in",
      "type": "RecordingSource",
      "layout": "a \"b\"",
      "steps": 12000,
      "samplesIn": 1,
      "samplesOut": 24000,
      "lost": 2,
      "seconds": 0.25
    }
  ],
  "links": [
    {
      "from": "in.x",
      "to": "b.x",
      "received": 5,
      "taken": 4,
      "waiting": 3,
      "lost": 1
    },
    {
      "from": null,
      "to": "b.y",
      "received": 1,
      "taken": 1,
      "waiting": 0,
      "lost": 0
    }
  ]
})");
    EXPECT_EQ(LiveStatistics().getJson(), "{\n  \"blocks\": [],\n  \"links\": []\n}");
}

} // namespace
