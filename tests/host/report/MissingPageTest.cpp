// SPDX-License-Identifier: MIT
// ReportPage.cpp is compiled into this program as where the page can't be made.
#include "host/report/ReportPage.h"

#include "host/report/Report.h"
#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace Quillmere::Host;

class MissingPage : public Support::GraphFixture {};

TEST_F(MissingPage, ARunWithAReportIsRefusedAndTouchesNothing) {
    ASSERT_FALSE(ReportPage::getIsThere());
    folder.write("in.csv", "t,x\n0,1\n");
    JobOptions options;
    options.observer = std::make_shared<Report>(ReportOptions{.path = folder.path("r.html")});
    Job job = Job::fromFile(
        folder.write(
            "g.yaml",
            "format: 1\nblocks:\n"
            "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
            "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
            "connections: [{from: in, to: out.x}]\n"),
        catalogue, options);
    ASSERT_EQ(job.check().getSorted().size(), 1u);
    EXPECT_EQ(
        job.check().getSorted()[0].getText(),
        "report: found a build without reports, whose page is made by node and npm; expected one that was "
        "configured where both are (scripts/install installs them)");
    EXPECT_THROW(job.run(), GraphException);
    EXPECT_EQ(folder.count(), 2);
}

} // namespace
