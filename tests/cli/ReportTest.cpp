// SPDX-License-Identifier: MIT
// Which runs write a page for a browser, and which refuse to. What is in it: tests/host/report.
#include "tests/cli/GainFixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using Support::Ended;

class ReportOption : public Support::GainFixture {};

TEST_F(ReportOption, WritesAPageBesideTheResult) {
    const Ended ended =
        call({"run", "g.yaml", "--report", "r.html", "--watch", "gain.output", "--watch", "in"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1\n0.5,2\n1,3\n");
    const std::string page = folder.read("r.html");
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n")) << page.substr(0, 100);
    EXPECT_TRUE(page.ends_with("</html>\n"));
    EXPECT_NE(page.find("\"name\": \"gain.output\""), std::string::npos);
    EXPECT_NE(page.find("\"version\": \"" QUILLMERE_VERSION "\""), std::string::npos);
    EXPECT_EQ(call({"run", "g.yaml", "--report", "r.html"}).exitCode, 0) << "a run's own is replaced";
    EXPECT_NE(folder.read("r.html"), page);
}

TEST_F(ReportOption, IsWrittenOfALiveRunToo) {
    const Ended ended = call({"run", "g.yaml", "--live", "--speed", "max", "--report", "r.html", "--picture",
                              "p.svg", "--watch", "gain"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1\n0.5,2\n1,3\n");
    EXPECT_EQ(ended.err.find("warning"), std::string::npos) << ended.err;
    const std::string page = folder.read("r.html");
    EXPECT_NE(page.find("\"name\": \"out.x\""), std::string::npos);
    EXPECT_NE(page.find("\"name\": \"gain.output\""), std::string::npos);
    EXPECT_NE(page.find("\"samples\": 3"), std::string::npos);
    EXPECT_TRUE(folder.has("p.svg")) << "both look at the rows";
}

TEST_F(ReportOption, GoesToStandardOutputAndPeopleAreToldElsewhere) {
    const Ended ended = call({"run", "g.yaml", "--report", "-"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_TRUE(ended.out.starts_with("<!DOCTYPE html>\n"));
    EXPECT_TRUE(ended.out.ends_with("</html>\n"));
    EXPECT_TRUE(ended.err.starts_with("the test: 3 rows")) << ended.err;
}

TEST_F(ReportOption, IsRefusedWhereThereIsNoneBeforeAnythingRuns) {
    EXPECT_EQ(call({"run", "g.yaml", "--report", "r.html", "--watch", "gian"}).err,
              "--watch gian: found the block 'gian'; expected one of in, gain and out; did you mean gain?\n");
    EXPECT_EQ(call({"run", "g.yaml", "--report", "r.html", "--summary-json", "r.html"}).err,
              "quillmere: --report: found the file of --summary-json; expected another one\n");
    std::filesystem::create_hard_link(folder.path("in.csv"), folder.path("in.html"));
    EXPECT_EQ(
        call({"run", "g.yaml", "--report", "in.html", "--overwrite"}).err,
        "--report in.html: found the file 'in.html', which 'in' reads; expected a file that the run has for "
        "nothing else\n");
    EXPECT_EQ(call({"run", "g.yaml", "--watch", "gain"}).exitCode, 2) << "nobody would see it";
    EXPECT_FALSE(folder.has("out.csv"));
    EXPECT_FALSE(folder.has("r.html"));
}

TEST_F(ReportOption, HasTheNameOfAPage) {
    for (const std::string name : {"day.pdf", "day.png", "day", "html", "day.html.gz"}) {
        const Ended ended = call({"run", "g.yaml", "--report", name});
        EXPECT_EQ(ended.exitCode, 2);
        EXPECT_EQ(ended.err, "quillmere: --report: found the report '" + name +
                                 "'; expected a name that ends in .html or .htm\n");
        EXPECT_FALSE(folder.has(name));
    }
    EXPECT_FALSE(folder.has("out.csv")) << "nothing has run";
    for (const std::string name : {"day.htm", "DAY.HTML"}) {
        EXPECT_EQ(call({"run", "g.yaml", "--report", name}).exitCode, 0);
        EXPECT_TRUE(folder.has(name));
    }
}

TEST_F(ReportOption, OnAFullDiskTheRunFailsAndItsResultIsWhole) {
    const Ended ended = call({"run", "g.yaml", "--report", "/dev/full"});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(ended.err, "quillmere: /dev/full: cannot be written: No space left on device\n"
                         "  complete: 3 rows in out.csv\n");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1\n0.5,2\n1,3\n");
}

TEST_F(ReportOption, OfPlotIsThePageWithoutARun) {
    folder.write("walk.csv", "time (s),acc_x [g],acc_y [g],acc_z [g],on,slow\n"
                             "0,1,2,3,0,5\n1,2,3,4,1,\n2,3,4,5,1,7\n1.5,0,0,0,0,\n");
    const Ended ended = call({"plot", "walk.csv", "--html", "walk.html"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_EQ(ended.out, "walk.html: 3 panels of 4 rows\n");
    EXPECT_FALSE(folder.has("walk.svg")) << "a picture is drawn where one is asked for";
    const std::string page = folder.read("walk.html");
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n")) << page.substr(0, 100);
    for (const char* const told :
         {"\"name\": \"walk.csv\"", "\"outcome\": null", "\"graph\": null", "\"name\": \"acc\"",
          "\"unit\": \"g\"", "\"rows\": 4", "1 row whose time goes back, drawn where its time is"})
        EXPECT_NE(page.find(told), std::string::npos) << told;
    EXPECT_EQ(call({"plot", "walk.csv", "--html", "walk.html", "--output", "walk.svg"}).exitCode, 0)
        << "its own is replaced";
    EXPECT_EQ(folder.read("walk.html"), page);
    EXPECT_TRUE(folder.has("walk.svg"));
    EXPECT_EQ(call({"plot", "walk.csv", "--html", "-"}).out, page);
}

TEST_F(ReportOption, OfPlotFollowsTheRowsOfAColumnThatGoesToAndFro) {
    folder.write("way.csv", "time (s),x,y,z\n0,0,0,\n1,2,0,1\n2,2,2,2\n3,0,2,3\n4,0,0,4\n");
    EXPECT_EQ(call({"plot", "way.csv", "--x", "x", "--html", "way.html"}).exitCode, 0);
    const std::string page = folder.read("way.html");
    EXPECT_NE(page.find("\"clock\": \"x\""), std::string::npos);
    for (const char* const told : {"\"kind\": \"way\"", "\"levels\": []", "\"count\": 5", "\"count\": 4"})
        EXPECT_NE(page.find(told), std::string::npos) << told;
    // What goes on along the axis all the time is a curve as any other.
    EXPECT_EQ(call({"plot", "way.csv", "--x", "z", "--html", "way.html"}).exitCode, 0);
    EXPECT_EQ(folder.read("way.html").find("\"kind\": \"way\""), std::string::npos);
}

TEST_F(ReportOption, OfPlotTellsWhatThereIsNoRoomFor) {
    std::string names = "time (s)";
    std::string row = "\n";
    for (std::size_t i = 1; i <= 52; ++i) {
        names += ",c" + std::string(i, 'a');
        row += ",5";
    }
    folder.write("wide.csv", names + "\n0" + row.substr(1) + "\n1" + row.substr(1) + "\n");
    const Ended ended = call({"plot", "wide.csv", "--html", "wide.html"});
    EXPECT_EQ(ended.err, "quillmere: the page leaves out 12 panels too many; --columns says which to draw\n");
    EXPECT_NE(folder.read("wide.html").find("\"leftOut\": \"12 panels\""), std::string::npos);
}

TEST_F(ReportOption, OfPlotIsRefusedWhereItCantBe) {
    folder.write("mine.html", "<p>mine</p>");
    const std::string recording = folder.read("in.csv");
    std::filesystem::create_hard_link(folder.path("in.csv"), folder.path("in.html"));
    const struct {
        std::vector<std::string> more;
        const char* told;
    } cases[] = {
        {{"--html", "p.svg"}, "--html: found the report 'p.svg'; expected a name that ends in .html or .htm"},
        {{"--html", "mine.html"},
         "--html: found the file 'mine.html', which no run has written; expected another name, or "
         "--overwrite "
         "to replace it"},
        {{"--html", "in.html", "--overwrite"},
         "--html: found the recording 'in.csv'; expected a file that isn't read"},
        {{"--html", "-", "--text"}, "--html: found standard output, where --text prints; expected a file"},
        {{"--html", "-", "--output", "-"},
         "--html: found the name '-', which the picture has too; expected a name of its own for each output"},
        {{"--html", "p.html", "--at", "1"},
         "--at: found spectra of single times, which a page doesn't draw; expected --output, too"}};
    for (const auto& [more, told] : cases) {
        std::vector<std::string> arguments{"plot", "in.csv", "--set", "time=t"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Ended ended = call(arguments);
        EXPECT_EQ(ended.exitCode, 2) << told;
        EXPECT_EQ(ended.err, "quillmere: " + std::string(told) + "\n");
    }
    EXPECT_EQ(folder.read("mine.html"), "<p>mine</p>");
    EXPECT_EQ(folder.read("in.csv"), recording);
}

} // namespace
