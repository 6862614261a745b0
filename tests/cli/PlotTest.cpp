// SPDX-License-Identifier: MIT
#include "tests/cli/GainFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using Support::Ended;
using Strings = std::vector<std::string>;

class PlotCommand : public Support::GainFixture {
protected:
    PlotCommand() {
        std::string walk = "time (s),acc_x [g],acc_y [g],acc_z [g],on\n";
        for (int row = 0; row < 200; ++row)
            walk += std::to_string(row * 0.01) + "," + std::to_string(row % 20) + ",1,2," +
                    (row < 100 ? "0" : "1") + "\n";
        folder.write("walk.csv", walk);
    }
    /// A row of twenty values for each second from `first` to 4.
    void writeSpectra(const std::string& time, int first) const {
        std::string spectra = time;
        for (int i = 0; i < 20; ++i)
            spectra += ",s[" + std::to_string(i) + "]";
        for (int row = first; row < 5; ++row) {
            spectra += "\n" + std::to_string(row);
            for (int i = 0; i < 20; ++i)
                spectra += "," + std::to_string(i * row);
        }
        folder.write("spectra.csv", spectra + "\n");
    }
    Ended plot(Strings arguments) const {
        arguments.insert(arguments.begin(), "plot");
        return call(arguments);
    }
    Ended inShell(const std::string& command) const {
        return Support::runProgram({"/bin/sh", "-c", command}, folder.path(""));
    }
    bool getIsThere(const std::string& name) const { return std::filesystem::exists(folder.path(name)); }
};

TEST_F(PlotCommand, DrawsBesideTheCaller) {
    const Ended ended = plot({"walk.csv"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_EQ(ended.out, "walk.svg: 2 panels of 200 rows\n");
    EXPECT_EQ(ended.err, "");
    const std::string svg = folder.read("walk.svg");
    EXPECT_TRUE(svg.starts_with("<svg "));
    for (const char* const text :
         {">acc_x</text>", ">acc_z</text>", ">g</text>", ">on</text>", ">walk.csv</text>"})
        EXPECT_NE(svg.find(text), std::string::npos) << text;
    EXPECT_EQ(plot({"walk.csv"}).exitCode, 0) << "a picture of its own may go";
    EXPECT_EQ(folder.read("walk.svg"), svg);
}

TEST_F(PlotCommand, ReplacesNothingThatIsNotAPictureOfItsOwn) {
    folder.write("mine.svg", "<svg>mine</svg>");
    const Ended refused = plot({"walk.csv", "--output", "mine.svg"});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_EQ(refused.err,
              "quillmere: --output: found the file 'mine.svg', which no run has written; expected "
              "another name, or --overwrite to replace it\n");
    EXPECT_EQ(folder.read("mine.svg"), "<svg>mine</svg>");
    EXPECT_EQ(plot({"walk.csv", "--output", "mine.svg", "--overwrite"}).exitCode, 0);
    EXPECT_TRUE(folder.read("mine.svg").starts_with("<svg xmlns"));
    // What is read never goes.
    const std::string walk = folder.read("walk.csv");
    std::filesystem::create_hard_link(folder.path("walk.csv"), folder.path("other.svg"));
    EXPECT_EQ(plot({"walk.csv", "--output", "other.svg", "--overwrite"}).exitCode, 2);
    EXPECT_EQ(folder.read("walk.csv"), walk);
}

TEST_F(PlotCommand, NamesThatNobodyHasAreRefusedBeforeAnythingIsDrawn) {
    for (const Strings& arguments : {Strings{"--columns", "acc_xx"}, Strings{"--panel", "on,acc_xx"},
                                     Strings{"--x", "acc_xx"}, Strings{"--scale", "acc_xx=2"}}) {
        Strings all{"walk.csv"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const Ended ended = plot(all);
        EXPECT_EQ(ended.exitCode, 2) << arguments[0];
        EXPECT_NE(ended.err.find("found the column 'acc_xx'; expected one of acc_x, acc_y"),
                  std::string::npos)
            << ended.err;
        EXPECT_NE(ended.err.find("did you mean acc_x"), std::string::npos) << ended.err;
    }
    EXPECT_FALSE(getIsThere("walk.svg"));
}

TEST_F(PlotCommand, WhatCantBeMeantIsRefused) {
    for (const Strings& arguments :
         {Strings{"--output", "walk.jpg"}, Strings{"--start", "soon"}, Strings{"--start", "2", "--end", "1"},
          Strings{"--scale", "on=much"}, Strings{"--at", "x"}, Strings{"--apart", "-1 Hz"},
          Strings{"--band", "15,1"}, Strings{"--output", "-", "--text"}, Strings{"--set", "onBadRow=nan"}}) {
        Strings all{"walk.csv"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const Ended ended = plot(all);
        EXPECT_EQ(ended.exitCode, 2) << arguments[0] << " " << arguments[1];
        EXPECT_NE(ended.err.find("found "), std::string::npos) << ended.err;
    }
    EXPECT_EQ(plot({}).exitCode, 2);
    EXPECT_FALSE(getIsThere("walk.svg"));
}

TEST_F(PlotCommand, AnInputThatIsNoneIsAsWrongAsForInspect) {
    folder.write("empty.csv", "");
    std::filesystem::create_directory(folder.path("folder"));
    for (const char* const file : {"nothing.csv", "folder", "empty.csv"}) {
        const Ended ended = plot({file});
        EXPECT_EQ(ended.exitCode, 2) << file;
        EXPECT_EQ(ended.exitCode, call({"inspect", file}).exitCode) << file;
        EXPECT_TRUE(ended.err.starts_with("quillmere: " + std::string(file))) << ended.err;
    }
}

TEST_F(PlotCommand, ABandIsToldWhatIsWrongWithIt) {
    EXPECT_EQ(plot({"walk.csv", "--band", "15,1"}).err,
              "quillmere: --band: found '15,1'; expected the lower number first, as in 1,15\n");
    writeSpectra("t", 0);
    const Ended ended = plot({"spectra.csv", "--set", "time=t", "--band", "100,200", "--apart", "0.25 Hz"});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(ended.err,
              "quillmere: --band: found no column of the spectra between 100 and 200 Hz; expected a "
              "part of 0 to 4.75 Hz\n");
}

TEST_F(PlotCommand, TooManyPanelsAreCountedAndNothingElse) {
    std::string names = "t";
    std::string row;
    for (char first = 'a'; first < 'f'; ++first)
        for (char second = 'a'; second < 'm'; ++second) {
            names += std::string(",") + first + second + first;
            row += ",3";
        }
    folder.write("many.csv", names + "\n0" + row + "\n0.5" + row + "\n1" + row + "\n");
    EXPECT_EQ(plot({"many.csv", "--set", "time=t"}).err,
              "quillmere: the picture leaves out 20 panels too many; --columns says which to draw\n");
}

TEST_F(PlotCommand, ACutWithoutRowsIsToldAndDrawsNothing) {
    const Ended ended = plot({"walk.csv", "--start", "100"});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(ended.err, "quillmere: found no numbers to draw in 0 rows; expected some, between --start and "
                         "--end where these are given\n");
    EXPECT_FALSE(getIsThere("walk.svg"));
}

TEST_F(PlotCommand, ReadsAndWritesStandardStreams) {
    const Ended piped = inShell(QUILLMERE " plot - --output - < walk.csv");
    EXPECT_EQ(piped.exitCode, 0) << piped.err;
    EXPECT_TRUE(piped.out.starts_with("<svg "));
    EXPECT_TRUE(piped.out.ends_with("</svg>\n"));
    EXPECT_EQ(piped.err, "-: 2 panels of 200 rows\n");
    EXPECT_EQ(inShell(QUILLMERE " plot - < walk.csv").out, "plot.svg: 2 panels of 200 rows\n");
    EXPECT_EQ(plot({"-", "-"}).exitCode, 2);
}

TEST_F(PlotCommand, AFullDiskIsAFailure) {
    for (const char* const command :
         {QUILLMERE " plot walk.csv --output /dev/full", QUILLMERE " plot walk.csv --output - > /dev/full",
          QUILLMERE " plot walk.csv --text > /dev/full"}) {
        const Ended ended = inShell(command);
        EXPECT_EQ(ended.exitCode, 1) << command;
        EXPECT_NE(ended.err.find("cannot be written"), std::string::npos) << ended.err;
    }
}

TEST_F(PlotCommand, PrintsTextAsWideAsItIsToBe) {
    const Ended ended = inShell("env -u COLUMNS LC_ALL=C.UTF-8 " QUILLMERE " plot walk.csv --text");
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_NE(ended.out.find("\nacc [g]\n"), std::string::npos) << ended.out;
    EXPECT_NE(ended.out.find("on " + std::string(31, ' ')), std::string::npos) << ended.out;
    EXPECT_NE(ended.out.find("####"), std::string::npos) << "no braille where it isn't a terminal";
    EXPECT_FALSE(getIsThere("walk.svg"));
    std::size_t widest = 0;
    const auto widthOf = [&](const std::string& text) {
        std::size_t width = 0;
        for (std::size_t begin = 0; begin < text.size(); begin = text.find('\n', begin) + 1)
            width = std::max(width, text.find('\n', begin) - begin);
        return width;
    };
    widest = widthOf(ended.out);
    EXPECT_EQ(widest, 80u);
    EXPECT_EQ(widthOf(inShell("COLUMNS=60 " QUILLMERE " plot walk.csv --text").out), 60u);
}

TEST_F(PlotCommand, SeveralFilesShareAPage) {
    folder.write("calm.csv", "time (s),acc_x [g]\n0.5,1\n0.51,2\n0.52,3\n0.53,3\n");
    const Ended ended = plot(
        {"walk.csv", "calm.csv", "--panel", "acc_x", "--title", "before and after", "--output", "both.svg"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    const std::string svg = folder.read("both.svg");
    for (const char* const text :
         {">acc_x (walk)</text>", ">acc_x (calm)</text>", ">before and after</text>"})
        EXPECT_NE(svg.find(text), std::string::npos) << text;
}

TEST_F(PlotCommand, SecondsOfAResultAreSecondsWhateverTheyLookLike) {
    // In a recording these steps would be taken for milliseconds.
    folder.write("in.csv", "t,x\n0,1\n15,2\n30,3\n45,2\n60,3\n75,1\n90,3\n105,3\n120,4\n135,1\n150,2\n");
    ASSERT_EQ(call({"run", "--quiet", "g.yaml"}).exitCode, 0);
    const Ended ended = plot({"out.csv"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_NE(folder.read("out.svg").find("from 0 to 150 s"), std::string::npos);
    EXPECT_EQ(ended.err, "");
    // A copy has lost its mark on the way; what is guessed then is told.
    folder.write("copy.csv", folder.read("out.csv"));
    EXPECT_NE(plot({"copy.csv"}).err.find("taken for milliseconds"), std::string::npos);
    EXPECT_EQ(plot({"copy.csv", "--set", "time=t"}).err, "");
    EXPECT_NE(folder.read("copy.svg").find("from 0 to 150 s"), std::string::npos);
}

TEST_F(PlotCommand, TheFirstColumnOfAResultIsItsTime) {
    std::string graph = Support::kGainGraph;
    graph.replace(graph.find("file: out.csv"), 13, "file: out.csv, time: known, columns: {x: [seconds]}");
    folder.write("named.yaml", graph);
    ASSERT_EQ(call({"run", "--quiet", "named.yaml"}).exitCode, 0);
    ASSERT_TRUE(folder.read("out.csv").starts_with("known,seconds\n")) << folder.read("out.csv");
    EXPECT_EQ(plot({"out.csv"}).err, "");
    EXPECT_NE(folder.read("out.svg").find("from 0 to 1 s"), std::string::npos);
    EXPECT_NE(folder.read("out.svg").find(">seconds</title>"), std::string::npos);
    // A copy has lost its mark.
    folder.write("copy.csv", folder.read("out.csv"));
    EXPECT_EQ(plot({"copy.csv"}).err, "quillmere: copy.csv: the column 'seconds': taken for the time; '--set "
                                      "time=NAME' says another\n");
    EXPECT_EQ(plot({"copy.csv", "--set", "time=seconds"}).err, "");
}

TEST_F(PlotCommand, TellsOfRowsWhoseTimesGoBack) {
    folder.write("back.csv", "time (s),a\n0,1\n2,3\n1,2\n3,4\nnoon,5\n");
    const Ended ended = plot({"back.csv"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.err,
              "quillmere: back.csv: 1 row left out: without a time, or with too few or too many cells\n"
              "quillmere: back.csv: 1 row whose time goes back, drawn where its time is\n");
}

TEST_F(PlotCommand, ASpectrumOfATimeThatIsNotThereIsTold) {
    writeSpectra("time (s)", 1);
    EXPECT_EQ(plot({"spectra.csv", "--at", "0.5,2,300"}).err,
              "quillmere: --at 0.5: in front of the first spectrum, which is drawn: that of 1 s\n"
              "quillmere: --at 300: behind the last spectrum, which is drawn: that of 4 s\n");
    EXPECT_EQ(plot({"walk.csv", "--at", "1"}).err,
              "quillmere: --at: no spectra to draw: no sixteen columns of one pin\n");
}

TEST_F(PlotCommand, AWayIsDrawnAsItWasGone) {
    folder.write("way.csv", "time (s),x,y\n0,0,0\n1,2,0\n2,2,2\n3,0,2\n4,0,0\n");
    EXPECT_EQ(plot({"way.csv", "--x", "x", "--columns", "y"}).exitCode, 0);
    const std::string svg = folder.read("way.svg");
    // From the lower left to the right, up, to the left and down: a line of five points.
    const std::size_t curve = svg.find("<g class=\"curve\">");
    const std::size_t begin = svg.find(" d=\"M", curve) + 5;
    const std::string line = svg.substr(begin, svg.find('"', begin) - begin);
    EXPECT_EQ(std::count(line.begin(), line.end(), ' '), 8) << line;
}

TEST_F(PlotCommand, APictureIsNoRecordingThoughItStandsWhereItsOwnWould) {
    folder.write("k.svg", "<svg xmlns='http://www.w3.org/2000/svg'></svg>\n");
    EXPECT_NE(plot({"k.svg"}).err.find("found a picture; expected a recording"), std::string::npos);
    EXPECT_NE(plot({"k.svg", "--overwrite"}).err.find("found a picture"), std::string::npos);
    folder.write("rows.svg", folder.read("walk.csv"));
    EXPECT_EQ(plot({"rows.svg", "--overwrite"}).err,
              "quillmere: --output: found the recording 'rows.svg'; expected a file that isn't read\n");
    EXPECT_EQ(folder.read("rows.svg"), folder.read("walk.csv"));
}

TEST_F(PlotCommand, StartsAtATimeAsTheAxisTellsIt) {
    std::string rows = "time (s),a\n";
    for (int i = 0; i <= 300; ++i)
        rows += std::to_string(i) + "," + std::to_string(i % 7) + "\n";
    folder.write("long.csv", rows);
    EXPECT_EQ(plot({"long.csv", "--start", "1:00", "--end", "2:30"}).out, "long.svg: 1 panel of 90 rows\n");
    EXPECT_EQ(plot({"long.csv", "--start", "1 min", "--end", "150"}).out, "long.svg: 1 panel of 90 rows\n");
}

TEST_F(PlotCommand, StartsAtATimeAsTheAxisTellsItWhereTimesAreDates) {
    std::string rows = "time,a\n";
    for (int i = 0; i <= 300; ++i) {
        char row[64];
        std::snprintf(row, sizeof row, "2019-08-06 10:%02d:%02d,%d\n", 25 + i / 60, i % 60, i % 7);
        rows += row;
    }
    folder.write("long.csv", rows);
    EXPECT_EQ(plot({"long.csv", "--start", "1:00", "--end", "2:30"}).out, "long.svg: 1 panel of 90 rows\n");
    EXPECT_EQ(plot({"long.csv", "--start", "10:26:00", "--end", "10:27:30"}).out,
              "long.svg: 1 panel of 90 rows\n");
}

/// As an editor leaves it that writes a new file: without a mark, and with the begin that it had.
TEST_F(PlotCommand, KeepsWhatSomebodyHasWorkedOn) {
    EXPECT_EQ(plot({"walk.csv"}).exitCode, 0);
    const std::string svg = folder.read("walk.svg");
    std::filesystem::remove(folder.path("walk.svg"));
    folder.write("walk.svg", svg);
    EXPECT_EQ(plot({"walk.csv"}).exitCode, 0) << "a copy is as good as it";
    std::string mine = svg;
    mine.replace(mine.rfind("acc_x"), 5, "thigh");
    std::filesystem::remove(folder.path("walk.svg"));
    folder.write("walk.svg", mine);
    const Ended refused = plot({"walk.csv"});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_EQ(refused.err,
              "quillmere: --output: found the file 'walk.svg', which was changed after a run had written it; "
              "expected another name, or --overwrite to replace it\n");
    EXPECT_EQ(folder.read("walk.svg"), mine);
    EXPECT_EQ(plot({"walk.csv", "--overwrite"}).exitCode, 0);
    EXPECT_EQ(folder.read("walk.svg"), svg);
}

} // namespace
