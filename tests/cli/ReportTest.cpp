// SPDX-License-Identifier: MIT
// Which runs write a page for a browser, and which refuse to. What is in it: tests/host/report.
#include "tests/cli/GainFixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

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
    EXPECT_NE(ended.err.find("--watch gain: warning: the report of a live run shows"), std::string::npos);
    const std::string page = folder.read("r.html");
    EXPECT_NE(page.find("\"name\": \"out.x\""), std::string::npos);
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

} // namespace
