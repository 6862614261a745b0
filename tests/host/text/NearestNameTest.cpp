// SPDX-License-Identifier: MIT
#include "host/text/NearestName.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Quillmere::Host::listOfNames;
using Quillmere::Host::nearestName;

struct Row {
    std::string name;
    std::vector<std::string> known;
    std::string nearest;
};

const Row kRows[] = {
    {.name = "FilterButterwort",
     .known = {"FilterButterworth_v2", "FilterButterworth"},
     .nearest = "FilterButterworth"},
    {.name = "lowpass", .known = {"HiPass", "LowPass"}, .nearest = "LowPass"},
    {.name = "relative_cut_off_freq",
     .known = {"Order", "RelativeCutOffFreq"},
     .nearest = "RelativeCutOffFreq"},
    {.name = "smoohted", .known = {"smoothed"}, .nearest = "smoothed"},
    {.name = "ni", .known = {"in", "out"}, .nearest = "in"},
    {.name = "x", .known = {"in", "a"}, .nearest = ""},
    {.name = "Gain", .known = {"FilterThresholdLeveler"}, .nearest = ""},
    {.name = "main", .known = {"aux", "main in.put"}, .nearest = "main in.put"},
    {.name = "low", .known = {"LowThreshold", "LowRelativeCutOffFreq"}, .nearest = ""},
    {.name = "fft", .known = {"FilterIFFT2", "FilterFFT", "Norm"}, .nearest = "FilterFFT"},
    {.name = "Detector", .known = {"SaturationDetector", "MagnetismDetector"}, .nearest = ""},
    {.name = "or", .known = {"FilterOr"}, .nearest = ""},
    {.name = "gian", .known = {"gain", "gin"}, .nearest = "gain"},
    {.name = "anything", .known = {}, .nearest = ""},
    {.name = "", .known = {"a"}, .nearest = ""},
};

TEST(NearestName, FindsWhatSomebodyMayHaveMeant) {
    for (const Row& row : kRows)
        EXPECT_EQ(nearestName(row.name, row.known), row.nearest) << row.name;
}

TEST(NearestName, ListsReadLikeSentences) {
    EXPECT_EQ(listOfNames({}), "nothing");
    EXPECT_EQ(listOfNames({"a"}), "a");
    EXPECT_EQ(listOfNames({"a", "b"}), "a and b");
    EXPECT_EQ(listOfNames({"a", "b", "c"}), "a, b and c");
    EXPECT_EQ(listOfNames(std::vector<std::string>(14, "x")),
              "x, x, x, x, x, x, x, x, x, x, x, x and 2 more");
    EXPECT_EQ(listOfNames({"a", "b", "c"}, 2), "a, b and 1 more");
}

} // namespace
