// SPDX-License-Identifier: MIT
#include "tests/cli/GainFixture.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Support::Ended;
using Strings = std::vector<std::string>;

constexpr const char* kPage = R"yaml(category: oddities
purpose: Is odd in every way.
text: |
  Long enough to be wrapped, which it is at the hundredth letter, and so this sentence goes on until it has passed
  that.

  A second paragraph.
formula: |
  a = main
    + aux
inputs:
  aux: {meaning: Comes or not., shape: 1 by 1, unit: none}
  main in.put: {meaning: The signal.}
outputs:
  a: {meaning: The sum.}
settings:
  ranged whole: {meaning: How many., default: None is enough.}
  Reset: {meaning: Forgets.}
odd:
  - Everything, and this is told at such length that the sentence can't be on one line of a hundred letters.
mistakes:
  - Using it.
example:
  text: A row.
  files: {in.csv: "t,x\n0,1\n"}
  graph: |
    format: 1
  arguments: [--steps, 3]
  results: {out.csv: "t,x\n...\n"}
related: [FilterGain, Unheard]
rate:
  settings: {ranged whole: samples}
  inputs: {aux: nyquist}
  outputs: {a: same, b: {step: ranged whole}}
)yaml";

class Blocks : public Support::GainFixture {
protected:
    /// A plug-in of somebody else's with such a page of one of its blocks.
    std::string pluginWith(const std::string& page) const {
        const std::string plugin = folder.path("libTheirs.so");
        std::filesystem::copy_file(ODD_PLUGIN, plugin, std::filesystem::copy_options::overwrite_existing);
        std::filesystem::create_directory(folder.path("libTheirs.manual"));
        folder.write("libTheirs.manual/OddSettings.yaml", page);
        return plugin;
    }
};

void expectNarrow(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        EXPECT_LE(line.size(), 100u) << line;
}

TEST_F(Blocks, AreListedByCategoryWithWhatTheyAreFor) {
    const Ended ended = call({"blocks"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.err, "");
    EXPECT_TRUE(ended.out.starts_with("arithmetic\n"
                                      "  FilterDerivate  Subtracts from each sample the one before.\n"))
        << ended.out;
    EXPECT_LT(ended.out.find("\n\nfilters\n"), ended.out.find("\n\nmotion sensors\n")) << ended.out;
    EXPECT_TRUE(ended.out.ends_with(
        "\nblocks of the host\n"
        "  RecordingSource  Sends the rows of a recording, at their times: a table or what a device wrote.\n"
        "  RecordingSink    Writes what comes to its pins to a CSV table, a row for each time.\n"))
        << ended.out;
    expectNarrow(ended.out);
}

TEST_F(Blocks, WithoutACategoryAreListedByTheirPlugIns) {
    const std::string plain = call({"blocks", "--plugin", ODD_PLUGIN}).out;
    EXPECT_NE(plain.find("\n\nblocks of Odd 0.1\n  OddSettings\n"), std::string::npos) << plain;
    const std::string told = call({"blocks", "--plugin", pluginWith(kPage)}).out;
    EXPECT_NE(told.find("\n\noddities\n  OddSettings  Is odd in every way.\n"), std::string::npos) << told;
    EXPECT_EQ(told.find("\n  OddSettings\n"), std::string::npos) << told;
}

TEST_F(Blocks, NamesAloneAreForScripts) {
    const Ended ended = call({"blocks", "--names"});
    EXPECT_TRUE(ended.out.starts_with("FilterAbsoluteErode\nFilterBandPass\n")) << ended.out;
    EXPECT_TRUE(ended.out.ends_with("\nRecordingSource\nRecordingSink\n")) << ended.out;
    EXPECT_EQ(call({"blocks", "--names", "--json"}).exitCode, 2);
}

TEST_F(Blocks, OneWithAPageIsShownByIt) {
    const std::string page = kPage;
    const Ended ended = call({"blocks", "OddSettings", "--plugin", pluginWith(page)});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.err, "");
    for (const char* const part :
         {"OddSettings (Odd 0.1, oddities)\n\nIs odd in every way.\n\nLong enough",
          "so this sentence goes on until\nit has passed that.\n\nA second paragraph.\n",
          "\n\nformula\n  a = main\n    + aux\n",
          "\n\ninputs\n  aux  not blocking\n      Comes or not.\n      Shape: 1 by 1.\n      Unit: none.\n"
          "      Relative to the rate of samples: a graph may give it in hertz, as in 5 Hz.\n"
          "  main in.put  blocking\n      The signal.\n",
          "\n\noutputs\n  a\n      The sum.\n      Sends as often as samples come.\n"
          "  b\n      Sends by itself; 'ranged whole' is the time from one sample to the next.\n",
          "\n  ranged whole  a whole number from -3 to 10, step 1; default: 0\n      How many.\n"
          "      Unit: samples.\n"
          "      Relative to the rate of samples: a graph may give it as a time, as in 200 ms.\n"
          "      On the default: None is enough.\n",
          "\n  locked  a number; default: 0, read-only\n", "\n  Reset  command\n      Forgets.\n",
          "\n\nodd, and so on purpose\n  - Everything, and", "\n    letters.\n\nmistakes\n  - Using it.\n",
          "\n\nexample\n  A row.\n\n  in.csv\n    t,x\n    0,1\n\n  graph.yaml\n    format: 1\n\n"
          "  quillmere run graph.yaml --steps 3\n\n  out.csv, which it writes\n    t,x\n    ...\n",
          "\n\nrelated\n  FilterGain  Multiplies each value by a number.\n  Unheard\n"})
        EXPECT_NE(ended.out.find(part), std::string::npos) << part << "\n is not in\n" << ended.out;
    expectNarrow(ended.out);
}

TEST_F(Blocks, APageTellsWhichSettingsTakeAUnit) {
    const std::string peaks = call({"blocks", "Peaks"}).out;
    EXPECT_NE(peaks.find("A graph may give it with a unit, as in 200 ms or 5 Hz, by Axis."),
              std::string::npos)
        << peaks;
    EXPECT_NE(peaks.find("A graph may give it with a unit, as in 5 Hz."), std::string::npos) << peaks;
}

TEST_F(Blocks, WhatIsWrongInAPageIsToldAndTheRestIsShown) {
    const std::string plugin = pluginWith("purpos: Is odd.\ncategory: oddities\n");
    for (const Strings& words : {Strings{"blocks", "OddSettings"}, {"blocks"}}) {
        Strings all = words;
        all.insert(all.end(), {"--plugin", plugin});
        const Ended ended = call(all);
        EXPECT_EQ(ended.exitCode, 0);
        EXPECT_NE(ended.out.find("oddities"), std::string::npos) << ended.out;
        EXPECT_NE(ended.err.find("OddSettings.yaml:1:1: found the key 'purpos'; expected one of "),
                  std::string::npos)
            << ended.err;
        EXPECT_EQ(std::count(ended.err.begin(), ended.err.end(), '\n'), 1) << ended.err;
    }
}

TEST_F(Blocks, OneWithoutAPageIsShownAsItLives) {
    const std::string odd = call({"blocks", "OddSettings", "--plugin", ODD_PLUGIN}).out;
    EXPECT_NE(odd.find("  aux          not blocking\n  main in.put  blocking\n"), std::string::npos) << odd;
    EXPECT_NE(odd.find("  ranged whole   whole number  0             a whole number from -3 to 10, step 1\n"),
              std::string::npos)
        << odd;
    EXPECT_NE(odd.find("  locked         number        0             a number"), std::string::npos) << odd;
    EXPECT_NE(odd.find("read-only\n"), std::string::npos) << odd;
    EXPECT_NE(odd.find("  Reset          command\n"), std::string::npos) << odd;
}

TEST_F(Blocks, OfTheHostTellTheirSettings) {
    const std::string source = call({"blocks", "RecordingSource"}).out;
    EXPECT_TRUE(source.starts_with("RecordingSource (host)\n\nSends the rows of a recording, ")) << source;
    EXPECT_NE(source.find("\n  file  text, required\n      the recording; - is standard input\n"),
              std::string::npos)
        << source;
    EXPECT_NE(source.find("\n  data  text; default: the one\n"), std::string::npos) << source;
    expectNarrow(source);
    const std::string counting = call({"blocks", "CountingSource", "--plugin", END_PLUGIN}).out;
    EXPECT_NE(counting.find("\n\nCounts.\n"), std::string::npos) << counting;
}

TEST_F(Blocks, JsonHoldsTheSame) {
    const auto list = nlohmann::json::parse(call({"blocks", "--json"}).out);
    EXPECT_EQ(list.at("hostBlocks"), nlohmann::json({"RecordingSource", "RecordingSink"}));
    EXPECT_EQ(list.at("hostPurposes").size(), 2u);
    EXPECT_EQ(list.at("blocks").at(0).at("plugin"), "Velmarind");
    EXPECT_EQ(list.at("blocks").at(0).at("category"), "rate and selection");
    EXPECT_FALSE(list.at("blocks").at(0).at("purpose").get<std::string>().empty());
    EXPECT_FALSE(list.at("blocks").at(0).at("version").get<std::string>().empty());
    const auto odd =
        nlohmann::json::parse(call({"blocks", "OddSettings", "--json", "--plugin", ODD_PLUGIN}).out);
    EXPECT_EQ(odd.at("type"), "OddSettings");
    EXPECT_EQ(odd.at("plugin"), "Odd");
    EXPECT_EQ(odd.at("inputs"), nlohmann::json::parse(R"([{"name": "aux", "blocking": false},
                                                         {"name": "main in.put", "blocking": true}])"));
    EXPECT_EQ(odd.at("outputs"), nlohmann::json::parse(R"([{"name": "a"}, {"name": "b"}])"));
    const auto& properties = odd.at("properties");
    ASSERT_EQ(properties.size(), 11u);
    EXPECT_EQ(properties.at(0), nlohmann::json::parse(R"({"name": "flag", "kind": "flag", "default": false,
                                                         "writable": true, "readable": true})"));
    EXPECT_EQ(properties.at(4),
              nlohmann::json::parse(R"({"name": "ranged whole", "kind": "whole number", "default": 0,
                                                         "minimum": -3.0, "maximum": 10.0, "step": 1.0,
                                                         "writable": true, "readable": true})"));
    EXPECT_EQ(properties.at(6), nlohmann::json::parse(R"({"name": "choice", "kind": "choice", "default": 0,
                                                         "defaultLabel": "LowPass", "labels": ["LowPass", "HiPass", "0"],
                                                         "writable": true, "readable": true})"));
    EXPECT_EQ(properties.at(7).at("default"), nlohmann::json::parse("[[0.5, 0.5]]"));
    EXPECT_FALSE(properties.at(10).contains("default"));
    const auto sink = nlohmann::json::parse(call({"blocks", "RecordingSink", "--json"}).out);
    EXPECT_EQ(sink.at("properties").at(0).at("name"), "file");
    EXPECT_TRUE(sink.at("plugin").is_null());
}

TEST_F(Blocks, JsonOfAllHoldsTheWholeOfEach) {
    const auto list = nlohmann::json::parse(call({"blocks", "--json"}).out);
    for (nlohmann::json block : list.at("blocks")) {
        block.erase("version");
        if (block.at("type") == "FilterGain" || block.at("type") == "Join") {
            EXPECT_EQ(block, nlohmann::json::parse(call({"blocks", block.at("type"), "--json"}).out));
        }
        EXPECT_TRUE(block.contains("properties")) << block.at("type");
    }
    const auto& ofHost = list.at("hostManuals");
    ASSERT_EQ(ofHost.size(), list.at("hostBlocks").size());
    EXPECT_EQ(ofHost.at(1), nlohmann::json::parse(call({"blocks", "RecordingSink", "--json"}).out));
}

TEST_F(Blocks, ATypeIsFoundByItsEnd) {
    const std::string swapped = call({"blocks", "Nrom"}).err;
    EXPECT_TRUE(
        swapped.starts_with("quillmere: found the block type 'Nrom'; expected one of FilterAbsoluteErode, "
                            "FilterBandPass, FilterBessel and "))
        << swapped;
    EXPECT_TRUE(swapped.ends_with(" more; did you mean Norm?\n")) << swapped;
    EXPECT_TRUE(call({"blocks", "fft"}).err.ends_with("did you mean FilterFFT?\n"));
    EXPECT_TRUE(call({"blocks", "Butterworth"}).err.ends_with("did you mean FilterButterworth?\n"));
}

TEST_F(Blocks, JsonHoldsThePageToo) {
    const auto odd =
        nlohmann::json::parse(call({"blocks", "OddSettings", "--json", "--plugin", pluginWith(kPage)}).out);
    EXPECT_EQ(odd.at("purpose"), "Is odd in every way.");
    EXPECT_EQ(odd.at("inputs").at(1).at("meaning"), "The signal.");
    EXPECT_EQ(odd.at("inputs").at(0).at("relativeTo"), "nyquist");
    EXPECT_EQ(odd.at("outputs").at(1).at("rate").at("step"), "ranged whole");
    EXPECT_EQ(odd.at("properties").at(4).at("why"), "None is enough.");
    EXPECT_EQ(odd.at("example").at("arguments"), nlohmann::json({"--steps", "3"}));
    EXPECT_EQ(odd.at("example").at("files").at(0).at("name"), "in.csv");
}

} // namespace
