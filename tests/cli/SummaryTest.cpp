// SPDX-License-Identifier: MIT
// What programs are told: `check --json` and `run --summary-json`.
#include "tests/cli/GainFixture.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace {

using nlohmann::json;
using Support::Ended;
using Strings = std::vector<std::string>;

class Summary : public Support::GainFixture {
protected:
    /// Runs the graph so; what the summary says.
    json summaryOf(const Strings& more, int exitCode) {
        Strings arguments{"run", "g.yaml", "--quiet", "--summary-json", "s.json"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Ended ended = call(arguments);
        EXPECT_EQ(ended.exitCode, exitCode) << ended.err;
        EXPECT_EQ(ended.out, "");
        message = ended.err;
        return json::parse(folder.read("s.json"));
    }

    std::string message; ///< What people were told.
};

TEST_F(Summary, TellsOfUnitsThatWereConverted) {
    folder.write("in.csv", "t,x (mg)\n0,1000\n0.5,2000\n");
    const Strings asked{"--set", "in.pins={x: {columns: [x], unit: g}}"};
    for (const Strings& way : {Strings{}, Strings{"--live", "--speed", "max"}}) {
        Strings arguments = asked;
        arguments.insert(arguments.end(), way.begin(), way.end());
        EXPECT_EQ(summaryOf(arguments, 0)["sources"][0]["notes"], json::array({"x: g from mg"}));
        EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1\n0.5,2\n") << "a gain may have a unit";
    }
    const Ended people = call({"run", "g.yaml", "--set", asked[1]});
    EXPECT_NE(people.out.find("\n       x: g from mg\n"), std::string::npos) << people.out;
    const Ended slip = call({"check", "g.yaml", "--set", "in.units={x: gee}"});
    EXPECT_EQ(slip.exitCode, 2);
    EXPECT_EQ(slip.err,
              "--set in.units={x: gee}: found the unit 'gee'; expected a unit such as g, m/s^2, deg/s, "
              "rad/s, deg, uT, mV or ms\n");
}

/// A filter behind a hundred rows a second, whose cut-off a parameter sets.
class SummaryOfHertz : public Support::GainFixture {
protected:
    SummaryOfHertz()
        : GainFixture(
              "format: 1\nname: hertz\nparameters: {cut: 10 Hz}\nblocks:\n"
              "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
              "  - {id: low, type: FilterButterworth, properties: {RelativeCutOffFreq: '${cut}'}}\n"
              "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
              "connections: [{from: in, to: low.in}, {from: low, to: out.x}]\n") {
        std::string rows = "t,x\n";
        for (int i = 0; i < 50; ++i)
            rows += std::to_string(i * 0.01) + ",1\n";
        folder.write("in.csv", rows);
    }
    /// The lines that tell of a conversion, without blanks in front.
    Strings conversionsOf(Strings arguments) {
        arguments.insert(arguments.begin(), {"run", "g.yaml", "--overwrite"});
        const Ended ended = call(arguments);
        EXPECT_EQ(ended.exitCode, 0) << ended.err;
        Strings lines;
        for (std::size_t at = 0; (at = ended.out.find(" Hz is ", at)) != std::string::npos; ++at) {
            const std::size_t begin = ended.out.rfind('\n', at) + 1;
            const std::string line = ended.out.substr(begin, ended.out.find('\n', at) - begin);
            lines.push_back(line.substr(line.find_first_not_of(' ')));
        }
        return lines;
    }
};

TEST_F(SummaryOfHertz, IsPrintedForTheGraphsOwnValue) {
    EXPECT_EQ(
        conversionsOf({}),
        (Strings{
            "low.RelativeCutOffFreq  10 Hz is 0.2 of half the rate (100 samples/s, as measured in in.csv)"}));
}

TEST_F(SummaryOfHertz, IsPrintedForASetting) {
    EXPECT_EQ(
        conversionsOf({"--set", "low.RelativeCutOffFreq=5 Hz"}),
        (Strings{
            "low.RelativeCutOffFreq  5 Hz is 0.1 of half the rate (100 samples/s, as measured in in.csv)"}));
}

TEST_F(SummaryOfHertz, IsPrintedForAParameter) {
    EXPECT_EQ(
        conversionsOf({"--param", "cut=20 Hz"}),
        (Strings{
            "low.RelativeCutOffFreq  20 Hz is 0.4 of half the rate (100 samples/s, as measured in in.csv)"}));
}

TEST_F(Summary, TellsWhatWasDoneAboutTimes) {
    folder.write("in.csv", "t,x\n0,1\n0.5,2\n0.5,3\n2,5\n");
    const Strings asked{"--set",      "in.duplicates=drop", "--set", "in.gaps=hold",
                        "--set",      "in.gapLimit=0.6 s",  "--set", "in.resample=2 Hz",
                        "--overwrite"};
    for (const Strings& way : {Strings{}, Strings{"--live", "--speed", "max"}}) {
        Strings arguments = asked;
        arguments.insert(arguments.end(), way.begin(), way.end());
        const json source = summaryOf(arguments, 0)["sources"][0];
        EXPECT_EQ(source["rows"], 5);
        EXPECT_EQ(source["medianRate"], 2.0);
        EXPECT_EQ(source["notes"], json::array({"2 rows a second, resampled from 3 rows"}));
        EXPECT_EQ(source["timeRepairs"]["repeated"]["firstLine"], 4);
        EXPECT_EQ(source["timeRepairs"]["gaps"]["count"], 1);
        EXPECT_EQ(source["timeRepairs"]["rowsFilled"], 2);
        EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,1\n0.5,2\n1,2\n1.5,2\n2,5\n");
        EXPECT_EQ(message,
                  "in.csv: warning: 1 time stamp repeats the one before, in line 4 (from 0.5 s to 0.5 "
                  "s); its row is left out\n"
                  "in.csv: warning: 1 time stamp jumps by more than 0.6 s, in line 5 (from 0.5 s to 2 "
                  "s); 2 rows fill it with the values before\n");
    }
    EXPECT_EQ(call({"run", "g.yaml", "--strict", "--overwrite", "--set", "in.duplicates=drop"}).exitCode, 1);
    const Ended slip = call({"check", "g.yaml", "--set", "in.gaps=hold"});
    EXPECT_EQ(slip.exitCode, 2);
    EXPECT_EQ(slip.err,
              "--set in.gaps=hold: found 'gaps: hold' without a limit; expected 'gapLimit:' too, and "
              "the seconds behind which a step is a gap\n");
}

TEST_F(Summary, TellsWhatARunHasDone) {
    for (const Strings& way : {Strings{}, Strings{"--live", "--speed", "max"}}) {
        const json summary = summaryOf(way, 0);
        EXPECT_EQ(summary["document"], "run summary");
        EXPECT_EQ(summary["format"], 1);
        EXPECT_EQ(summary["graph"], "the test");
        EXPECT_EQ(summary["graphFile"], "g.yaml");
        EXPECT_EQ(summary["state"], "whole");
        EXPECT_EQ(summary["failure"], nullptr);
        EXPECT_EQ(summary["rounds"], 3);
        EXPECT_EQ(summary["rows"], 3);
        EXPECT_EQ(summary["streamTime"], 1.0);
        EXPECT_GT(summary["seconds"], 0.0);
        EXPECT_EQ(summary["sources"][0]["rows"], 3);
        EXPECT_EQ(summary["sources"][0]["medianRate"], 2.0);
        EXPECT_EQ(summary["sinks"][0]["where"], "out.csv");
        EXPECT_EQ(summary["sinks"][0]["complete"], true);
        EXPECT_EQ(summary["links"][1]["from"], "gain.output");
        EXPECT_EQ(summary["links"][1]["lost"], 0);
        EXPECT_EQ(summary["links"][1]["line"], 9);
        EXPECT_EQ(summary["complaints"], json::array());
    }
}

TEST_F(Summary, TellsWhichBlockFailedAndWhatItFound) {
    folder.write("in.csv", "t,x\n0,1\n0.5,2\n1,thr\xE9"
                           "e\n");
    for (const Strings& way : {Strings{}, Strings{"--live", "--speed", "max"}}) {
        const json summary = summaryOf(way, 1);
        EXPECT_EQ(summary["state"], "failed");
        EXPECT_EQ(summary["failedBlock"]["block"], "in");
        EXPECT_EQ(summary["failedBlock"]["type"], "RecordingSource");
        ASSERT_EQ(summary["complaints"].size(), 1u);
        EXPECT_EQ(summary["complaints"][0]["file"], "in.csv");
        EXPECT_EQ(summary["complaints"][0]["line"], 4);
        EXPECT_EQ(summary["complaints"][0]["part"], "column 'x'");
        EXPECT_EQ(summary["complaints"][0]["expected"], "a number");
        EXPECT_EQ(summary["sinks"][0]["where"], "out.csv.partial");
        EXPECT_NE(message.find(summary["complaints"][0]["sentence"].get<std::string>()), std::string::npos)
            << message;
    }
}

TEST_F(Summary, TellsOfAGraphThatIsRefusedAndOfWarnings) {
    const json refused = summaryOf({"--set", "gain.Gian=2"}, 2);
    EXPECT_EQ(refused["state"], "refused");
    EXPECT_EQ(refused["complaints"][0]["file"], "--set gain.Gian=2");
    EXPECT_EQ(refused["complaints"][0]["nearest"], "Gain");
    EXPECT_EQ(refused["sinks"], json::array());
    EXPECT_FALSE(folder.has("out.csv"));

    folder.write("in.csv", "t,x\n0,1\n0.5,nan\n1,3\n");
    const json warned = summaryOf({}, 0);
    EXPECT_EQ(warned["warnings"][0]["severity"], "warning");
    EXPECT_EQ(warned["sources"][0]["nonFiniteValues"], 1);
    EXPECT_EQ(warned["sinks"][0]["nonFinite"]["firstRow"], 2);
    const json strict = summaryOf({"--strict"}, 1);
    EXPECT_EQ(strict["state"], "failed");
    EXPECT_EQ(strict["complaints"][0]["found"], warned["warnings"][0]["found"]);
}

TEST_F(Summary, GoesToStandardOutputWhereNoResultDoes) {
    const Ended ended = call({"run", "g.yaml", "--summary-json", "-"});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_EQ(json::parse(ended.out)["state"], "whole");
    EXPECT_TRUE(ended.err.starts_with("the test: 3 rows")) << "people are told elsewhere: " << ended.err;
    const Ended both = call({"run", "g.yaml", "--summary-json", "-", "--output", "out=-"});
    EXPECT_EQ(both.exitCode, 2);
    EXPECT_EQ(both.err, "--summary-json -: found the file 'standard output', which 'out' writes; expected a "
                        "file that the run has for nothing else\n");
    EXPECT_EQ(both.out, "");
}

TEST_F(Summary, ThatCantBeWrittenIsAFailure) {
    const Ended full = call({"run", "g.yaml", "--quiet", "--summary-json", "/dev/full"});
    EXPECT_EQ(full.exitCode, 1);
    EXPECT_EQ(full.err, "quillmere: /dev/full: cannot be written: No space left on device\n"
                        "  complete: 3 rows in out.csv\n");
    folder.write("mine.json", "{}");
    const Ended mine = call({"run", "g.yaml", "--summary-json", "mine.json"});
    EXPECT_EQ(mine.exitCode, 2);
    EXPECT_EQ(mine.err, "--summary-json mine.json: found the file 'mine.json', which no run has written; "
                        "expected another name, or --overwrite to replace it\n");
    EXPECT_EQ(folder.read("mine.json"), "{}");
    EXPECT_EQ(call({"run", "g.yaml", "--quiet", "--overwrite", "--summary-json", "mine.json"}).exitCode, 0);
    EXPECT_EQ(call({"run", "g.yaml", "--summary-json="}).exitCode, 2);
}

TEST_F(Summary, OfACheckIsPrinted) {
    const Ended good = call({"check", "g.yaml", "--json"});
    EXPECT_EQ(good.exitCode, 0);
    EXPECT_EQ(json::parse(good.out)["ready"], true);
    const Ended bad = call({"check", "g.yaml", "--json", "--set", "gain.Gian=2", "--set", "gain.Gain=x"});
    EXPECT_EQ(bad.exitCode, 2);
    EXPECT_EQ(bad.err, "") << "all of it is in the JSON";
    const json told = json::parse(bad.out);
    EXPECT_EQ(told["ready"], false);
    EXPECT_EQ(told["complaints"].size(), 2u);
    folder.write("odd.yaml", "format: 1\nblocks:\n  - {id: in, type: RecordingSource, "
                             "properties: {file: in.csv, time: t, pins: {x: x}}}\n");
    const json doubtful = json::parse(call({"check", "odd.yaml", "--json"}).out);
    EXPECT_EQ(doubtful["ready"], true);
    EXPECT_EQ(doubtful["warnings"][0]["severity"], "warning");
    const Ended strict = call({"check", "odd.yaml", "--json", "--strict"});
    EXPECT_EQ(strict.exitCode, 2);
    EXPECT_EQ(json::parse(strict.out)["ready"], false);
}

/// A source and a sink of a plug-in, neither of which has a file.
class EndsWithoutAFile : public Summary {
protected:
    EndsWithoutAFile() {
        folder.write(
            "g.yaml",
            "format: 1\nname: ends\nblocks:\n  - {id: in, type: CountingSource, properties: {to: 4}}\n"
            "  - {id: out, type: SummingSink, properties: {into: sum.txt}}\n"
            "connections: [{from: in, to: out}]\n");
    }
};

TEST_F(EndsWithoutAFile, AreToldByTheirNames) {
    const Ended ended = call({"run", "g.yaml", "--plugin", END_PLUGIN});
    EXPECT_EQ(ended.exitCode, 0) << ended.err;
    EXPECT_EQ(ended.out.substr(ended.out.find('\n')), "\n  in   4 rows\n  out  4 rows\n");
    EXPECT_EQ(folder.read("sum.txt"), "10\n");
    const json summary = summaryOf({"--plugin", END_PLUGIN}, 0);
    EXPECT_EQ(summary["sources"][0]["file"], nullptr);
    EXPECT_EQ(summary["sources"][0]["rows"], 4);
    EXPECT_EQ(summary["sources"][0]["lastTime"], nullptr) << "which such a source doesn't tell";
    EXPECT_EQ(summary["sinks"][0]["where"], nullptr);
    EXPECT_EQ(summary["sinks"][0]["complete"], true);
    const Ended checked = call({"check", "g.yaml", "--plugin", END_PLUGIN});
    EXPECT_EQ(checked.out, "ends: 2 blocks, 1 connection, ready to run\n") << checked.err;
}

TEST_F(EndsWithoutAFile, OfAFailedRunAreToldByTheirNamesToo) {
    for (const Strings& way : {Strings{}, Strings{"--live", "--speed", "max"}}) {
        Strings options{"--plugin", END_PLUGIN, "--set", "in.from=999999", "--set", "in.to=1000005"};
        options.insert(options.end(), way.begin(), way.end());
        const json summary = summaryOf(options, 1);
        EXPECT_TRUE(message.starts_with("quillmere: block 'out' (SummingSink of ")) << message;
        EXPECT_TRUE(message.ends_with("\n  incomplete: 2 rows in 'out'\n")) << message;
        EXPECT_EQ(summary["failedBlock"]["block"], "out");
        EXPECT_EQ(summary["sinks"][0]["where"], nullptr);
    }
}

TEST_F(EndsWithoutAFile, HaveNoFileToChange) {
    const Ended input = call({"run", "g.yaml", "--plugin", END_PLUGIN, "--input", "in=x.csv"});
    EXPECT_EQ(input.exitCode, 2);
    EXPECT_NE(input.err.find("the property 'file' of CountingSource"), std::string::npos) << input.err;
    const Ended output = call({"run", "g.yaml", "--plugin", END_PLUGIN, "--output", "out=x.csv"});
    EXPECT_EQ(output.exitCode, 2);
    EXPECT_NE(output.err.find("the property 'file' of SummingSink"), std::string::npos) << output.err;
    EXPECT_FALSE(folder.has("x.csv"));
}

} // namespace
