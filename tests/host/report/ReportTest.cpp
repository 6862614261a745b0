// SPDX-License-Identifier: MIT
#include "host/report/Report.h"

#include "host/live/LiveRun.h"
#include "host/recording/ResultFile.h"
#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Quillmere::Host;
using nlohmann::json;
using Numbers = std::vector<double>;

const std::string kSource =
    "format: 1\nblocks:\n"
    "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n";
const std::string kSink = "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n";
const std::string kGraph = kSource + "  - {id: twice, type: FilterGain, properties: {Gain: 2}}\n" + kSink +
                           "connections: [{from: in, to: twice}, {from: twice, to: out.x}]\n";

class ReportTest : public Support::GraphFixture {
protected:
    ReportTest() { folder.write("in.csv", "t,x\n0,1\n0.5,-2\n1,3\n"); }

    Job jobWith(ReportOptions wishes, const std::string& text = kGraph) {
        wishes.program = "1.2";
        JobOptions options;
        options.observer = std::make_shared<Report>(wishes);
        return Job::fromFile(folder.write("g.yaml", text), catalogue, options);
    }
    Job jobWith(const std::string& name, const std::string& text = kGraph) {
        return jobWith(ReportOptions{.path = name == "-" ? name : folder.path(name)}, text);
    }
    std::string refusalOf(ReportOptions wishes, RunMode mode = RunMode::Offline) {
        wishes.path = folder.path(wishes.path);
        Job job = jobWith(wishes);
        std::string lines;
        for (const Complaint& complaint : job.check(mode).getSorted())
            lines += withoutFolder(complaint.getText()) + "\n";
        return lines;
    }
    /// What stands in the first element of the page with that id.
    std::string elementOf(const std::string& id) const {
        const std::string page = folder.read("r.html");
        const std::size_t begin = page.find('>', page.find("id=\"" + id + "\"")) + 1;
        return page.substr(begin, page.find("</script>", begin) - begin);
    }
    json reportOf(const ReportOptions& more = {}, const std::string& text = kGraph) {
        ReportOptions wishes = more;
        wishes.path = folder.path("r.html");
        outcome = jobWith(wishes, text).run();
        return json::parse(elementOf("report"));
    }
    /// The doubles of a blob.
    Numbers numbersOf(const json& id) const {
        const std::string text = elementOf(id.get<std::string>());
        EXPECT_TRUE(text.starts_with("f8"));
        const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string bytes;
        unsigned held = 0;
        int bits = 0;
        for (const char letter : text.substr(2)) {
            if (letter == '=') break;
            held = held << 6u | static_cast<unsigned>(digits.find(letter));
            bits += 6;
            if (bits < 8) continue;
            bits -= 8;
            bytes += static_cast<char>(held >> static_cast<unsigned>(bits) & 255u);
        }
        Numbers numbers(bytes.size() / sizeof(double));
        std::memcpy(numbers.data(), bytes.data(), numbers.size() * sizeof(double));
        return numbers;
    }
};

TEST_F(ReportTest, HasTheGraphItsSignalsAndWhatTheRunTells) {
    const json report = reportOf({.watched = {"in.x"}});
    EXPECT_TRUE(outcome.getIsWhole()) << outcome.failure;
    EXPECT_FALSE(folder.has("r.html.partial"));
    EXPECT_EQ(report["outcome"]["rows"], 3);
    EXPECT_EQ(report["outcome"]["sinks"][0]["complete"], true) << "it comes behind the results";
    EXPECT_EQ(report["graph"]["blocks"][1]["id"], "twice");
    EXPECT_EQ(report["graph"]["blocks"][1]["settings"][0],
              json({{"name", "Gain"}, {"value", "2"}, {"given", true}}));
    EXPECT_EQ(report["graph"]["connections"][1]["from"]["block"], "twice");
    EXPECT_EQ(report["graph"]["connections"].size(), 2u) << "without the report's own links";
    EXPECT_EQ(report["versions"][0], json({{"name", "quillmere"}, {"version", "1.2"}}));
    EXPECT_EQ(report["versions"].size(), 2u) << "and of the plug-in";
    ASSERT_EQ(report["signals"].size(), 2u);
    const json& sent = report["signals"][0];
    EXPECT_EQ(sent["name"], "out.x");
    EXPECT_EQ(sent["watched"], false);
    EXPECT_EQ(sent["columns"][0]["minimum"], -4.0);
    EXPECT_EQ(numbersOf(sent["levels"][0]["times"]), (Numbers{0, 0.5, 1}));
    EXPECT_EQ(numbersOf(sent["levels"][0]["low"]), (Numbers{2, -4, 6}));
    EXPECT_EQ(report["signals"][1]["name"], "in.x");
    EXPECT_EQ(report["signals"][1]["watched"], true);
    EXPECT_EQ(numbersOf(report["signals"][1]["levels"][0]["low"]), (Numbers{1, -2, 3}));
}

TEST_F(ReportTest, ChangesNothingOfTheRun) {
    EXPECT_EQ(run(kGraph), "");
    const std::string without = folder.read("out.csv");
    const RunOutcome plain = outcome;
    reportOf({.watched = {"in", "twice"}});
    EXPECT_EQ(folder.read("out.csv"), without);
    ASSERT_EQ(outcome.links.size(), plain.links.size());
    EXPECT_EQ(outcome.links[0].received, plain.links[0].received);
    EXPECT_TRUE(outcome.warnings.empty());
}

/// Three samples a step, of which a buffer of four keeps the newest, and hands out one a round.
TEST_F(ReportTest, HasWhatTheSinkGotWhenItGotIt) {
    const json report = reportOf(
        {}, kSource + "  - {id: three, type: OddThrice}\n" + kSink +
                "connections: [{from: in, to: three}, {from: three, to: out.x, buffer: 4, order: newest}]\n");
    const Numbers times = numbersOf(report["signals"][0]["levels"][0]["times"]);
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1.75\n0.5,-1.25\n1,3.75\n1,3.5\n1,3.25\n1,-1.5\n");
    EXPECT_EQ(report["signals"][0]["samples"], 6);
    EXPECT_EQ(times, (Numbers{0, 0.5, 1}));
    EXPECT_EQ(numbersOf(report["signals"][0]["levels"][0]["low"]), (Numbers{1.75, -1.25, -1.5}));
    EXPECT_EQ(numbersOf(report["signals"][0]["levels"][0]["high"]), (Numbers{1.75, -1.25, 3.75}));
}

/// Frames of two rows, taken apart again: all of them in one round, each at its own time.
TEST_F(ReportTest, HasTheTimesOfBlocksThatMakeTimes) {
    folder.write("in.csv", "t,x\n0,1\n0.25,2\n0.5,3\n0.75,4\n");
    const json report = reportOf(
        {.watched = {"rows"}}, "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: "
                               "in.csv, time: t, frame: 2, "
                               "pins: {x: [x]}}}\n  - {id: rows, type: Unframe, properties: {Rate: 4}}\n" +
                                   kSink + "connections: [{from: in, to: rows}, {from: rows, to: out.x}]\n");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1\n0.25,2\n0.5,3\n0.75,4\n");
    for (const json& signal : report["signals"]) {
        EXPECT_EQ(numbersOf(signal["levels"][0]["times"]), (Numbers{0, 0.25, 0.5, 0.75})) << signal["name"];
        EXPECT_EQ(numbersOf(signal["levels"][0]["low"]), (Numbers{1, 2, 3, 4})) << signal["name"];
    }
    EXPECT_EQ(report["signals"].size(), 2u);
}

TEST_F(ReportTest, NoNameEndsUpAsMarkup) {
    const std::string evil = "</script><script>alert(1)</script><!--&\"'\\\u2028";
    const std::string text =
        "format: 1\nname: " + json(evil).dump() + "\nparameters: {p: " + json(evil).dump() +
        "}\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}, "
        "missing: ['${p}']}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv, columns: {" +
        json(evil).dump() + ": [" + json(evil + "x").dump() +
        "]}}}\nconnections: [{from: in, to: " + json("out." + evil).dump() + "}]\n";
    const json report = reportOf({}, text);
    EXPECT_EQ(outcome.failure, "");
    EXPECT_EQ(report["graph"]["name"], evil);
    EXPECT_EQ(report["signals"][0]["name"], "out." + evil);
    EXPECT_EQ(report["signals"][0]["columns"][0]["name"], evil + "x");
    const std::string page = folder.read("r.html");
    EXPECT_EQ(page.find("alert(1)</script>"), std::string::npos);
    EXPECT_EQ(page.find("<!--&"), std::string::npos);
    EXPECT_NE(page.find("<title>&lt;/script>"), std::string::npos);
}

TEST_F(ReportTest, WatchesWhatThereIs) {
    EXPECT_EQ(refusalOf({.path = "r.html", .watched = {"in", "twice.output", "twice.output"}}), "");
    EXPECT_EQ(refusalOf({.path = "r.html", .watched = {"twise.output"}}),
              "watch twise.output: found the block 'twise'; expected one of in, twice and out; did you mean "
              "twice?\n");
    EXPECT_EQ(
        refusalOf({.path = "r.html", .watched = {"twice.outptu"}}),
        "watch twice.outptu: found the output 'outptu'; expected of 'twice' (FilterGain) one of output; "
        "did you mean output?\n");
    EXPECT_EQ(refusalOf({.path = "r.html", .watched = {"out"}}),
              "watch out: found no output's name; expected a block that has some\n");
    EXPECT_EQ(reportOf({.watched = {"twice", "twice.output"}})["signals"].size(), 2u) << "each once";
}

TEST_F(ReportTest, ReplacesOnlyWhatARunHasWritten) {
    folder.write("mine.html", "<!DOCTYPE html>\n");
    EXPECT_EQ(refusalOf({.path = "mine.html"}),
              "report: found the file 'mine.html', which no run has written; expected another name, or "
              "--overwrite to replace it\n");
    EXPECT_EQ(refusalOf({.path = "mine.html", .overwrites = true}), "");
    for (const char* const taken : {"in.csv", "g.yaml", "out.csv", "out.csv.partial"})
        EXPECT_NE(
            refusalOf({.path = taken, .overwrites = true}).find("a file that the run has for nothing else"),
            std::string::npos)
            << taken;
    reportOf();
    EXPECT_EQ(refusalOf({.path = "r.html"}), "");
    folder.write("copy.html", folder.read("r.html"));
    EXPECT_EQ(refusalOf({.path = "copy.html"}), "") << "by its begin";
    folder.write("edited.html", folder.read("r.html") + "<!-- mine -->\n");
    EXPECT_EQ(refusalOf({.path = "edited.html"}),
              "report: found the file 'edited.html', which was changed after a run had written it; expected "
              "another name, or --overwrite to replace it\n");
}

TEST_F(ReportTest, OfALiveRunHasTheRowsOfItsResults) {
    JobOptions options;
    options.observer = std::make_shared<Report>(ReportOptions{.path = folder.path("r.html")});
    LiveRun live(Job::fromFile(folder.write("g.yaml", kGraph), catalogue, options),
                 {.speed = std::numeric_limits<double>::infinity()});
    live.start();
    live.wait();
    const json report = json::parse(elementOf("report"));
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,2\n0.5,-4\n1,6\n");
    EXPECT_EQ(report["outcome"]["sinks"][0]["complete"], true);
    EXPECT_EQ(report["graph"]["blocks"].size(), 3u);
    ASSERT_EQ(report["signals"].size(), 1u);
    EXPECT_EQ(report["signals"][0]["name"], "out.x");
    EXPECT_EQ(numbersOf(report["signals"][0]["levels"][0]["times"]), (Numbers{0, 0.5, 1}));
    EXPECT_EQ(numbersOf(report["signals"][0]["levels"][0]["low"]), (Numbers{2, -4, 6}));
}

/// In another layout, behind a block that sends many samples in a step, and behind one that nobody else
/// hears.
TEST_F(ReportTest, OfALiveRunHasWhatIsWatched) {
    folder.write("in.csv", "t,x\n0,1\n0.25,2\n0.5,3\n0.75,4\n");
    const std::string text =
        "format: 1\nlayouts: [{id: one}, {id: other}]\nblocks:\n"
        "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, frame: 2, pins: {x: [x]}}}\n"
        "  - {id: rows, type: Unframe, layout: other, properties: {Rate: 4}}\n"
        "  - {id: twice, type: FilterGain, layout: other, properties: {Gain: 2}}\n"
        "  - {id: half, type: FilterGain, properties: {Gain: 0.5}}\n"
        "  - {id: out, type: RecordingSink, layout: other, properties: {file: out.csv}}\n"
        "connections: [{from: in, to: rows}, {from: rows, to: twice}, {from: twice, to: out.x}, {from: in, "
        "to: "
        "half}]\n";
    JobOptions options;
    options.observer = std::make_shared<Report>(
        ReportOptions{.path = folder.path("r.html"), .watched = {"rows", "half", "in.x"}});
    LiveRun live(Job::fromFile(folder.write("g.yaml", text), catalogue, options),
                 {.speed = std::numeric_limits<double>::infinity()});
    live.start();
    live.wait();
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,2\n0.25,4\n0.5,6\n0.75,8\n");
    const json report = json::parse(elementOf("report"));
    ASSERT_EQ(report["signals"].size(), 4u);
    const json& rows = report["signals"][1];
    EXPECT_EQ(rows["name"], "rows.out");
    EXPECT_EQ(rows["watched"], true);
    EXPECT_EQ(numbersOf(rows["levels"][0]["times"]), (Numbers{0, 0.25, 0.5, 0.75}));
    EXPECT_EQ(numbersOf(rows["levels"][0]["low"]), (Numbers{1, 2, 3, 4}));
    const json& half = report["signals"][2];
    EXPECT_EQ(half["name"], "half.output");
    EXPECT_EQ(numbersOf(half["levels"][0]["times"]), (Numbers{0.25, 0.75}))
        << "a frame is due at its last row";
    EXPECT_EQ(numbersOf(half["levels"][0]["low"]), (Numbers{0.5, 1.5, 1, 2}));
    EXPECT_EQ(report["signals"][3]["samples"], 2);
    // Nobody else hears of it.
    EXPECT_EQ(report["outcome"]["links"].size(), 4u);
    EXPECT_EQ(report["outcome"]["warnings"], json::array());
    EXPECT_EQ(live.getStatistics().blocks.size(), 5u);
    live.getStructure().move("twice", "one"); // nor is anything of it left behind
}

TEST_F(ReportTest, OfALiveRunTellsWhatWasTurnedWhileItRan) {
    const std::string text =
        "format: 1\nblocks:\n"
        "  - {id: wave, type: FilterFunctionGenerator, properties: {SampleRate: 1}}\n"
        "  - {id: bouts, type: Durations}\n"
        "  - {id: counter, type: FilterPeriodCounter}\n" +
        kSink +
        "connections: [{from: wave, to: out.x}, {from: wave, to: bouts}, {from: wave, to: counter}]\n";
    JobOptions options;
    options.observer = std::make_shared<Report>(ReportOptions{.path = folder.path("r.html")});
    LiveRun live(Job::fromFile(folder.write("g.yaml", text), catalogue, options), {.speed = 1000.0});
    live.getSettings().write("bouts.Least", "2");
    EXPECT_THROW(live.getSettings().write("bouts.Gap", "much"), std::exception);
    live.start();
    while (live.getProgress().rounds < 3)
        std::this_thread::yield();
    live.getSettings().write("bouts.Gap", "400 ms");
    live.getSettings().fire("counter.Reset");
    live.stop();
    live.wait();
    const json report = json::parse(elementOf("report"));
    const json& changes = report["outcome"]["changes"];
    ASSERT_EQ(changes.size(), 3u) << "without what was refused";
    EXPECT_EQ(changes[0], json({{"time", nullptr},
                                {"target", "bouts.Least"},
                                {"value", "2"},
                                {"sentence", "sets bouts.Least to 2"}}));
    EXPECT_EQ(changes[1]["sentence"], "sets bouts.Gap to 0.4 (400 ms)");
    const Numbers times = numbersOf(report["signals"][0]["levels"].back()["times"]);
    EXPECT_NE(std::find(times.begin(), times.end(), changes[1]["time"].get<double>()), times.end())
        << "that of a row";
    EXPECT_EQ(changes[2]["sentence"], "fires counter.Reset");
    EXPECT_EQ(changes[2]["value"], nullptr);
    EXPECT_EQ(report["outcome"]["changesLeftOut"], 0);
}

TEST_F(ReportTest, OfALiveRunIsCheckedAsAnother) {
    EXPECT_EQ(refusalOf({.path = "r.html"}, RunMode::Live), "");
    EXPECT_NE(refusalOf({.path = "g.yaml"}, RunMode::Live), "") << "its file is looked at all the same";
    EXPECT_NE(refusalOf({.path = "r.html", .watched = {"twise"}}, RunMode::Live), "");
    Job job = jobWith(ReportOptions{.path = folder.path("r.html"), .watched = {"twice"}});
    EXPECT_TRUE(job.check(RunMode::Live).getSortedWarnings().empty());
}

/// More elements than a page has room for are told.
TEST_F(ReportTest, TellsOfElementsThatItLeavesOut) {
    std::string rows = "t,x\n";
    for (int i = 0; i < 3000; ++i)
        rows += std::to_string(i) + "," + std::to_string(i % 7) + "\n";
    folder.write("in.csv", rows);
    const json report =
        reportOf({}, "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.csv, "
                     "time: t, frame: 1500, pins: {x: [x]}}}\n" +
                         kSink + "connections: [{from: in, to: out.x}]\n");
    EXPECT_EQ(report["signals"][0]["columns"].size(), 1024u);
    EXPECT_EQ(report["signals"][0]["leftOut"], 476);
    EXPECT_EQ(reportOf({}, kGraph)["signals"][0]["leftOut"], 0);
}

TEST_F(ReportTest, ThatCantBeBegunKeepsTheRunFromBeginning) {
    const ResultFile others(folder.path("r.html"));
    const RunOutcome refused = jobWith("r.html").run();
    EXPECT_FALSE(refused.hasBegun);
    EXPECT_EQ(withoutFolder(refused.failure), "r.html.partial: another run is writing this result");
    EXPECT_FALSE(folder.has("out.csv"));
    EXPECT_FALSE(folder.has("out.csv.partial"));
}

TEST_F(ReportTest, LeavesNothingOfARunThatIsntBegun) {
    const ResultFile others(folder.path("out.csv"));
    EXPECT_FALSE(jobWith("r.html").run().hasBegun);
    EXPECT_FALSE(folder.has("r.html"));
    EXPECT_FALSE(folder.has("r.html.partial"));
}

TEST_F(ReportTest, OnAFullDiskTheResultsAreWholeAllTheSame) {
    const RunOutcome unwritten = jobWith(ReportOptions{.path = "/dev/full"}).run();
    EXPECT_EQ(unwritten.failure, "/dev/full: cannot be written: No space left on device");
    EXPECT_TRUE(unwritten.results.at(0).isComplete);
    EXPECT_TRUE(folder.has("out.csv"));
    folder.write("in.csv", "t,x\n0,1\n1,two\n");
    const RunOutcome failed = jobWith(ReportOptions{.path = "/dev/full"}).run();
    EXPECT_NE(failed.failure.find("two"), std::string::npos) << "what failed first is told";
    ASSERT_EQ(failed.warnings.size(), 1u);
    EXPECT_EQ(failed.warnings[0].getText(),
              "report: warning: /dev/full: cannot be written: No space left on device");
}

TEST_F(ReportTest, TellsWhatSecondNullIs) {
    EXPECT_EQ(reportOf()["origin"], nullptr);
    folder.write("in.csv", "t,x\n2019-08-06 10:25:50,1\n2019-08-06 10:25:51,2\n");
    const json report = reportOf();
    EXPECT_EQ(report["origin"], "2019-08-06 10:25:50");
    EXPECT_EQ(report["outcome"]["sources"][0]["origin"], "2019-08-06 10:25:50");
    EXPECT_EQ(numbersOf(report["signals"][0]["levels"][0]["times"]), (Numbers{0, 1}));
}

TEST_F(ReportTest, TellsOfARunThatFailedMidway) {
    folder.write("in.csv", "t,x\n0,1\n0.5,2\n1,three\n");
    const json report = reportOf();
    EXPECT_EQ(report["outcome"]["state"], "failed");
    EXPECT_EQ(report["signals"][0]["samples"], 2);
    EXPECT_NE(report["outcome"]["failure"].get<std::string>().find("three"), std::string::npos);
}

TEST_F(ReportTest, ASinkToWhichNothingCameHasAnEmptySignal) {
    const json report =
        reportOf({}, kSource +
                         "  - {id: pulse, type: FilterThresholdLeveler, properties: {Thresholds: "
                         "[[7, 8]], Levels: [[1]]}}\n" +
                         kSink + "connections: [{from: in, to: pulse}, {from: pulse, to: out.x}]\n");
    EXPECT_EQ(report["signals"][0]["samples"], 0);
    EXPECT_EQ(report["signals"][0]["levels"], json::array());
}

/// Frames of 64 rows at 32 rows a second: a row of the spectrum is half a hertz.
TEST_F(ReportTest, SaysWhichFrequencyARowOfASpectrumIs) {
    std::string rows = "t,x\n";
    for (int i = 0; i < 256; ++i)
        rows += std::to_string(i / 32.0) + "," + std::to_string(i % 7) + "\n";
    folder.write("in.csv", rows);
    const std::string source =
        "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.csv, "
        "time: t, frame: 64, hop: 16, pins: {x: [x]}}}\n";
    const std::string blocks = "  - {id: window, type: FilterHanningWindow}\n"
                               "  - {id: spectrum, type: FilterFFT, properties: {Pause: false}}\n"
                               "  - {id: twice, type: FilterGain, properties: {Gain: 2}}\n";
    const json report =
        reportOf({.watched = {"window"}},
                 source + blocks + kSink +
                     "connections: [{from: in, to: window}, {from: window, to: spectrum}, {from: "
                     "spectrum, to: twice}, {from: twice, to: out.x}]\n");
    ASSERT_EQ(report["signals"].size(), 2u);
    const json& spectrum = report["signals"][0];
    EXPECT_EQ(spectrum["columns"].size(), 32u);
    EXPECT_EQ(spectrum["rows"], json({{"begin", 0.0}, {"apart", 0.5}, {"unit", "Hz"}}));
    EXPECT_EQ(spectrum["columns"][3]["name"], "1.5 Hz");
    EXPECT_EQ(spectrum["shades"]["decibels"], 60.0);
    EXPECT_EQ(report["signals"][1]["rows"], nullptr) << "a frame of times is no spectrum";
    // Behind a block that says nothing of rows nobody knows.
    const json unknown =
        reportOf({}, source +
                         "  - {id: spectrum, type: FilterFFT, properties: {Pause: false}}\n"
                         "  - {id: steps, type: FilterDerivate}\n" +
                         kSink +
                         "connections: [{from: in, to: spectrum}, {from: spectrum, to: steps}, "
                         "{from: steps, to: out.x}]\n");
    EXPECT_EQ(unknown["signals"][0]["rows"], nullptr);
}

} // namespace
