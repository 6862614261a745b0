// SPDX-License-Identifier: MIT
// Units from a recording's header, over the source's settings and through blocks, to a result's header.
#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/GraphFixture.h"
#include "tests/support/Allocations.h"

#include "host/recording/RecordingSource.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

class RecordingUnitsTest : public Support::GraphFixture {
protected:
    RecordingUnitsTest() {
        folder.write("in.csv", "t,ax [g],ay [g],az [mg],gx (deg/s),m (uT),raw,what [counts]\n"
                               "0,1,0.5,1000,180,50,7,8\n0.1,-1,,2000,nan,-0.25,7,8\n0.2,0,0,0,0,0,7,8\n");
    }

    /// A source with these properties beside file and time, its pin `p` and a sink with these.
    static std::string graph(const std::string& properties, const std::string& ofSink = "") {
        return "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.csv, time: "
               "t, " +
               properties + "}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv" + ofSink +
               "}}\nconnections:\n  - {from: in.p, to: out.p}\n";
    }
    /// The table that comes out, or why none does.
    std::string result(const std::string& properties, const std::string& ofSink = "") {
        const std::string failure = run(graph(properties, ofSink));
        return failure.empty() ? folder.read("out.csv") : failure;
    }
    std::string headerOf(const std::string& properties, const std::string& ofSink = "") {
        const std::string table = result(properties, ofSink);
        return table.substr(0, table.find('\n'));
    }
    std::vector<std::string> notes() const { return outcome.recordings.at(0).account.notes; }
    std::string complaints(const std::string& properties) { return complaintsOf(graph(properties)); }
};

TEST_F(RecordingUnitsTest, APinGetsTheUnitThatItAsksFor) {
    EXPECT_EQ(result("pins: {p: {columns: [ax], unit: m/s^2}}"),
              "t,p[0] [m/s^2]\n0,9.80665\n0.1,-9.80665\n0.2,0\n");
    EXPECT_EQ(notes(), std::vector<std::string>{"p: m/s^2 from g"});
    EXPECT_EQ(result("pins: {p: {columns: gx, unit: rad/s}}"),
              "t,p[0] [rad/s]\n0,3.141592653589793\n0.1,nan\n0.2,0\n");
    EXPECT_EQ(result("pins: {p: {columns: [m], unit: gauss}}"),
              "t,p[0] [gauss]\n0,0.5\n0.1,-0.0025\n0.2,0\n");
}

TEST_F(RecordingUnitsTest, ColumnsOfOnePinAreConvertedEach) {
    EXPECT_EQ(result("onBadRow: nan, pins: {p: {columns: [ax, ay, az], unit: g}}"),
              "t,p[0] [g],p[1] [g],p[2] [g]\n0,1,0.5,1\n0.1,-1,nan,2\n0.2,0,0,0\n");
    EXPECT_EQ(notes(), std::vector<std::string>{"p: g from mg (az [mg])"});
}

TEST_F(RecordingUnitsTest, WithoutAUnitNothingIsConverted) {
    EXPECT_EQ(result("pins: {p: [ax, az]}"), "t,p[0],p[1]\n0,1,1000\n0.1,-1,2000\n0.2,0,0\n");
    EXPECT_EQ(result("pins: {p: {columns: [ax, gx]}}"), "t,p[0],p[1]\n0,1,180\n0.1,-1,nan\n0.2,0,0\n");
    EXPECT_TRUE(notes().empty());
}

TEST_F(RecordingUnitsTest, AnotherSpellingOfTheSameUnitChangesNoBit) {
    folder.write("in.csv", "t,a [m/s²]\n0,0.1\n1,5e-324\n");
    EXPECT_EQ(result("pins: {p: {columns: a, unit: m/s2}}"), "t,p[0] [m/s2]\n0,0.1\n1,5e-324\n");
    EXPECT_TRUE(notes().empty());
}

TEST_F(RecordingUnitsTest, AColumnMayComeInTwoUnits) {
    const std::string failure =
        run(graph("pins: {p: [ax], q: {columns: [ax], unit: mg}}") + "  - {from: in.q, to: out.q}\n");
    EXPECT_EQ(failure, "");
    EXPECT_EQ(folder.read("out.csv"), "t,p[0] [g],q[0] [mg]\n0,1,1000\n0.1,-1,-1000\n0.2,0,0\n");
}

TEST_F(RecordingUnitsTest, FramesAreConvertedOnceEach) {
    EXPECT_EQ(result("frame: 2, hop: 1, pins: {p: {columns: [ax, az], unit: mg}}"),
              "t,p[0] [mg],p[1] [mg],p[2] [mg],p[3] [mg]\n"
              "0.1,1000,1000,-1000,2000\n0.2,-1000,2000,0,0\n");
}

TEST_F(RecordingUnitsTest, PatternsAndMissingValuesStayWhatTheyAre) {
    folder.write("in.csv", "t,acc_y (mg),acc_x (mg)\n0,1000,NA\n1,2000,500\n");
    EXPECT_EQ(result("missing: [NA], pins: {p: {columns: acc*, unit: g}}"),
              "t,p[0] [g],p[1] [g]\n0,nan,1\n1,0.5,2\n");
    EXPECT_EQ(outcome.recordings.at(0).nonFiniteValues, 0U) << "declared to be missing";
}

TEST_F(RecordingUnitsTest, ARowOfUnitsAndTwoRowsOfNamesHaveUnits) {
    folder.write("in.csv", "left,,right,\nx,y,x,y\nms,mg,mg,mg\n0,1000,0,0\n10,2000,0,0\n20,0,0,0\n");
    EXPECT_EQ(
        run("format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.csv, rate: 100, "
            "pins: {p: {columns: [left.y], unit: g}}}}\n"
            "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
            "connections:\n  - {from: in.p, to: out.p}\n"),
        "");
    EXPECT_EQ(folder.read("out.csv"), "t,p[0] [g]\n0,1\n0.01,2\n0.02,0\n");
}

TEST_F(RecordingUnitsTest, UnitsOfARowMayStandInBrackets) {
    folder.write("in.csv", "t;a;b\n[s];[mg];(g)\n0;1000;1\n0.1;2000;2\n0.2;0;0\n");
    EXPECT_EQ(run("format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.csv, "
                  "pins: {p: {columns: [a, b], unit: g}}}}\n"
                  "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
                  "connections:\n  - {from: in.p, to: out.p}\n"),
              "");
    EXPECT_EQ(folder.read("out.csv"), "t,p[0] [g],p[1] [g]\n0,1,1\n0.1,2,2\n0.2,0,0\n");
}

TEST_F(RecordingUnitsTest, ANameWithAUnitThatTheValuesDoNotHaveIsWarnedOf) {
    const auto warnings = [&](const std::string& name) {
        Complaints list =
            jobOf(graph("pins: {p: {columns: [ax], unit: m/s^2}}", ", columns: {p: [\"" + name + "\"]}"))
                .check();
        return list.getSortedWarnings().empty() ? std::string()
                                                : withoutFolder(list.getSortedWarnings()[0].getText());
    };
    EXPECT_NE(warnings("ax (g)").find("warning: found the column name 'ax (g)' for values in m/s^2; expected "
                                      "a name with that unit, or without one"),
              std::string::npos)
        << warnings("ax (g)");
    EXPECT_EQ(warnings("ax (m/s2)"), "") << "another spelling";
    EXPECT_EQ(warnings("ax (raw)"), "") << "no unit that is known";
    EXPECT_EQ(warnings("ax"), "");
}

TEST_F(RecordingUnitsTest, WhatStandsBesideAFileHasUnits) {
    folder.write("walk_channels.tsv", "name\ttype\tunits\nacc_x\tACCEL\tg\ntemp\tMISC\tn/a\n");
    folder.write("walk_motion.json", "{\"SamplingFrequency\": 2}\n");
    folder.write("walk_motion.tsv", "0.5\t20\n-1\t21\n");
    const auto fromBids = [&](const std::string& pin) {
        return run(
            "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: walk_motion.tsv, "
            "pins: {p: " +
            pin +
            "}}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
            "connections:\n  - {from: in.p, to: out.p}\n");
    };
    EXPECT_EQ(fromBids("{columns: [acc_x], unit: mg}"), "");
    EXPECT_EQ(folder.read("out.csv"), "t,p[0] [mg]\n0,500\n0.5,-1000\n");
    EXPECT_EQ(fromBids("[temp]"), "");
    EXPECT_EQ(folder.read("out.csv"), "t,p[0]\n0,20\n0.5,21\n") << "n/a is no unit";
}

TEST_F(RecordingUnitsTest, UnitsOfAPipeAreKnownWhenItsHeaderHasCome) {
    const auto fromPipe = [&](const std::string& unit) {
        Support::StandardPipe input(STDIN_FILENO);
        input.write("t,a [g]\n0,1\n1,2\n");
        input.close();
        return run(
            "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: \"-\", time: t, "
            "pins: {p: {columns: a, unit: " +
            unit +
            "}}}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
            "connections:\n  - {from: in.p, to: out.p}\n");
    };
    EXPECT_EQ(fromPipe("mg"), "");
    EXPECT_EQ(folder.read("out.csv"), "t,p[0] [mg]\n0,1000\n1,2000\n");
    EXPECT_THROW(fromPipe("s"), GraphException);
}

TEST_F(RecordingUnitsTest, RowsThatAreRepairedAreConvertedAsOthers) {
    folder.write("in.csv", "t,a [g],b [mg]\n0,1,1000\n1,2,2000\n1,2,2000\n3,4,4000\n");
    EXPECT_EQ(result("duplicates: drop, resample: 1, pins: {p: {columns: [a, b], unit: mg}}"),
              "t,p[0] [mg],p[1] [mg]\n0,1000,1000\n1,2000,2000\n2,3000,3000\n3,4000,4000\n");
}

TEST_F(RecordingUnitsTest, TheGraphSaysWhatTheFileDoesNot) {
    EXPECT_EQ(result("units: {raw: mg}, pins: {p: {columns: [raw], unit: g}}"),
              "t,p[0] [g]\n0,0.007\n0.1,0.007\n0.2,0.007\n");
    EXPECT_EQ(notes(), std::vector<std::string>{"p: g from mg"});
    EXPECT_EQ(headerOf("units: {raw: mg}, pins: {p: [raw]}"), "t,p[0] [mg]") << "stated, so carried on";
    EXPECT_TRUE(notes().empty());
}

TEST_F(RecordingUnitsTest, TheGraphCountsMoreThanTheFile) {
    EXPECT_EQ(result("units: {ax: m/s^2}, pins: {p: {columns: [ax], unit: m/s^2}}"),
              "t,p[0] [m/s^2]\n0,1\n0.1,-1\n0.2,0\n");
    EXPECT_EQ(notes(), std::vector<std::string>{"p: m/s^2 as the graph says, not g"});
    EXPECT_EQ(headerOf("units: {\"a*\": mg, ax: m/s^2}, pins: {p: {columns: [ax, az], unit: mg}}"),
              "t,p[0] [mg],p[1] [mg]");
    EXPECT_EQ(notes(), std::vector<std::string>{"p: mg from m/s^2 as the graph says, not g (ax [g])"})
        << "a name counts more than a pattern";
    EXPECT_EQ(headerOf("units: {ax: m/s^2, \"a*\": mg}, pins: {p: [ax]}"), "t,p[0] [m/s^2]")
        << "in any order";
}

TEST_F(RecordingUnitsTest, WhatCanNotBeConvertedIsAnErrorWithItsPlace) {
    EXPECT_EQ(
        complaints("pins: {p: {columns: [ax, az], unit: deg/s}}"),
        "g.yaml:3:109: found the column ax [g] of in.csv in g (acceleration), while the pin 'p' is to "
        "have deg/s (turn rate); expected one of m/s^2, cm/s^2, mm/s^2, g and mg, or 'units: {ax: UNIT}' "
        "with what it is in\n"
        "g.yaml:3:109: found the column az [mg] of in.csv in mg (acceleration), while the pin 'p' is to "
        "have deg/s (turn rate); expected one of m/s^2, cm/s^2, mm/s^2, g and mg, or 'units: {az: UNIT}' "
        "with what it is in\n");
    EXPECT_EQ(complaints("pins: {p: {columns: [raw], unit: g}}"),
              "g.yaml:3:106: found no unit of the column raw in in.csv, while the pin 'p' is to have g "
              "(acceleration); expected 'units: {raw: UNIT}' with what it is in\n");
    EXPECT_EQ(
        complaints("pins: {p: {columns: [what], unit: g}}"),
        "g.yaml:3:107: found the unit 'counts' of the column what [counts] in in.csv, while the pin 'p' "
        "is to have g (acceleration); expected a unit such as g, m/s^2, deg/s, rad/s, deg, uT, mV or ms, "
        "or 'units: {what: UNIT}' with what it is in\n");
}

TEST_F(RecordingUnitsTest, UnitsThatThereAreNotAreErrors) {
    EXPECT_EQ(
        complaints("pins: {p: {columns: [gx], unit: degs}}"),
        "g.yaml:3:105: found the unit 'degs'; expected a unit such as g, m/s^2, deg/s, rad/s, deg, uT, mV "
        "or ms; did you mean deg/s?\n");
    EXPECT_EQ(complaints("units: {ax: gg}, pins: {p: [ax]}"),
              "g.yaml:3:85: found the unit 'gg'; expected a unit such as g, m/s^2, deg/s, rad/s, deg, uT, mV "
              "or ms; did you mean g?\n");
    EXPECT_EQ(complaints("units: g, pins: {p: [ax]}"),
              "g.yaml:3:80: found 'g'; expected the unit of each column, as in {ax: mg, \"gyr*\": deg/s}\n");
    EXPECT_EQ(complaints("pins: {p: {columns: [gx], unit: [g]}}"),
              "g.yaml:3:105: found a list; expected a text\n");
}

TEST_F(RecordingUnitsTest, StatementsThatFitNothingAreErrors) {
    EXPECT_EQ(complaints("units: {bx: g}, pins: {p: [ax]}"),
              "g.yaml:3:81: found no column 'bx'; expected one of in.csv: t, ax [g], ay [g], az [mg], gx "
              "(deg/s), m (uT), raw and what [counts]\n");
    EXPECT_EQ(
        complaints("units: {\"b*\": g}, pins: {p: [ax]}"),
        "g.yaml:3:81: found no column that fits 'b*'; expected one of in.csv: t, ax [g], ay [g], az [mg], "
        "gx (deg/s), m (uT), raw and what [counts]\n");
    EXPECT_EQ(complaints("units: {\"*x*\": g, \"ax [g]\": mg}, pins: {p: [ax]}"), "");
    EXPECT_EQ(
        complaints("units: {\"ax*\": g, \"a*\": mg}, pins: {p: [ax]}"),
        "g.yaml:3:97: found mg for the column 'ax [g]', for which 'ax*' has g; expected one unit for each "
        "column\n");
    EXPECT_EQ(complaints("units: {t: ms}, pins: {p: [ax]}"),
              "g.yaml:3:81: found a unit for the column of times 't'; expected 'timeUnit' for that\n");
    EXPECT_EQ(complaints("units: {t: s}, pins: {p: {columns: t, unit: ms}}"), "") << "it is a signal too";
}

TEST_F(RecordingUnitsTest, APinIsAListOrAMap) {
    EXPECT_EQ(
        complaints("pins: {p: {unit: g}}"),
        "g.yaml:3:83: found no columns for the pin 'p'; expected 'columns:' and a list, as in {columns: "
        "[ax, ay, az], unit: g}\n");
    EXPECT_EQ(
        complaints("pins: {p: {column: ax}}"),
        "g.yaml:3:83: found no columns for the pin 'p'; expected 'columns:' and a list, as in {columns: "
        "[ax, ay, az], unit: g}\n"
        "g.yaml:3:84: found the key 'column'; expected one of columns and unit; did you mean columns?\n");
}

TEST_F(RecordingUnitsTest, SettingsOfTheCallerCountToo) {
    EXPECT_EQ(
        run(graph("pins: {p: {columns: [raw], unit: g}}"),
            {.settings = {{.block = "in", .property = "units", .value = "{raw: mg}", .option = "--set"}}}),
        "");
    EXPECT_EQ(folder.read("out.csv"), "t,p[0] [g]\n0,0.007\n0.1,0.007\n0.2,0.007\n");
}

TEST_F(RecordingUnitsTest, ConversionAllocatesNothing) {
    RecordingSource source("in");
    Complaints complaints;
    GraphDescription::Block block;
    block.set("file", valueOf(folder.path("in.csv")));
    block.set("time", valueOf("t"));
    Value pin;
    pin.kind = Value::Kind::Map;
    Value::Entry& columns = pin.entries.emplace_back();
    columns.key = "columns";
    columns.value = valueOf("ax");
    Value::Entry& unit = pin.entries.emplace_back();
    unit.key = "unit";
    unit.value = valueOf("mg");
    Value pins;
    pins.kind = Value::Kind::Map;
    Value::Entry& entry = pins.entries.emplace_back();
    entry.key = "p";
    entry.value = pin;
    block.set("pins", pins);
    source.configure(block, "", complaints);
    source.open(complaints);
    ASSERT_TRUE(complaints.isEmpty());
    const auto send = [&] {
        ASSERT_TRUE(source.prepare());
        source.release();
        source.process();
    };
    send();
    const Support::AllocationCounter allocations;
    send();
    EXPECT_EQ(allocations.count(), 0U);
}

TEST_F(RecordingUnitsTest, ResultsCarryUnitsOn) {
    EXPECT_EQ(headerOf("pins: {p: [ax, ay]}, onBadRow: nan"), "t,p[0] [g],p[1] [g]");
    EXPECT_EQ(headerOf("pins: {p: [what]}"), "t,p[0] [counts]") << "as it is stated";
    EXPECT_EQ(headerOf("pins: {p: [raw]}"), "t,p[0]");
    EXPECT_EQ(headerOf("pins: {p: [ax, gx]}"), "t,p[0],p[1]") << "they differ";
    EXPECT_EQ(headerOf("pins: {p: [ax]}", ", units: false"), "t,p[0]");
    EXPECT_EQ(headerOf("pins: {p: [ax]}", ", columns: {p: [side]}"), "t,side") << "as the user calls it";
    EXPECT_EQ(headerOf("pins: {p: [ax]}", ", columns: {p: [side]}, units: true"), "t,side [g]");
}

TEST_F(RecordingUnitsTest, AColumnsNameWithItsUnitMayBeTaken) {
    EXPECT_EQ(
        complaintsOf(graph("pins: {p: [ax], q: [ax]}", ", units: true, columns: {p: [a], q: [\"a [g]\"]}") +
                     "  - {from: in.q, to: out.q}\n"),
        "g.yaml:4:87: found the column name 'a [g]' a second time; expected each name once\n");
    EXPECT_EQ(
        complaintsOf(graph("pins: {p: [ax], q: [ax]}", ", columns: {q: [\"p[0] [g]\"]}") +
                     "  - {from: in.q, to: out.q}\n"),
        "g.yaml:4:74: found the column name 'p[0] [g]', which a column of 'p' has too; expected each name "
        "once\n");
}

TEST_F(RecordingUnitsTest, UnitsGoThroughBlocksThatKeepThem) {
    const auto through = [&](const std::string& type, const std::string& input, const std::string& output) {
        return run(
            "format: 1\nblocks:\n"
            "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {p: [ax]}}}\n"
            "  - {id: b, type: " +
            type +
            "}\n  - {id: c, type: FilterDeadband}\n"
            "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\nconnections:\n"
            "  - {from: in.p, to: b." +
            input + "}\n  - {from: b." + output +
            ", to: c}\n"
            "  - {from: c, to: out.p}\n");
    };
    EXPECT_EQ(through("FilterButterworth", "in", "out"), "");
    EXPECT_TRUE(folder.read("out.csv").starts_with("t,p[0] [g]\n"));
    EXPECT_EQ(through("FilterGain", "input", "output"), "");
    EXPECT_TRUE(folder.read("out.csv").starts_with("t,p[0]\n")) << "a gain may have a unit of its own";
}

TEST_F(RecordingUnitsTest, ALoopHasNoUnit) {
    EXPECT_EQ(
        run("format: 1\nblocks:\n"
            "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {p: [ax]}}}\n"
            "  - {id: a, type: FilterDeadband}\n  - {id: b, type: FilterDeadband}\n"
            "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
            "connections:\n  - {from: a, to: b}\n  - {from: b, to: a}\n"
            "  - {from: b, to: out.p}\n  - {from: in.p, to: out.q}\n"),
        "");
    EXPECT_TRUE(folder.read("out.csv").starts_with("t,q[0] [g]\n"));
}

TEST_F(RecordingUnitsTest, ABlockThatReckonsInAUnitIsWarnedOf) {
    const auto warnings = [&](const std::string& pin) {
        Complaints list =
            jobOf("format: 1\nblocks:\n"
                  "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: "
                  "{g: " +
                  pin +
                  "}}}\n"
                  "  - {id: fuse, type: FilterSphericalFiltering}\n"
                  "  - {id: out, type: RecordingSink, properties: {file: out.csv}}\n"
                  "connections:\n  - {from: in.g, to: fuse.3g}\n"
                  "  - {from: fuse.Rot_Gyro, to: out.r}\n")
                .check();
        std::string lines;
        for (const Warning& warning : list.getSortedWarnings())
            lines += withoutFolder(warning.getText()) + "\n";
        return lines;
    };
    EXPECT_EQ(warnings("[gx, gx, gx]"),
              "g.yaml:7:5: warning: '3g' of 'fuse' (FilterSphericalFiltering) takes rad/s, and gets deg/s; "
              "'unit: rad/s' on the source's pin converts it\n");
    EXPECT_EQ(warnings("{columns: [gx, gx, gx], unit: rad/s}"), "");
    EXPECT_EQ(warnings("[ax, ax, ax]"),
              "g.yaml:7:5: warning: '3g' of 'fuse' (FilterSphericalFiltering) takes rad/s, and gets g\n");
    EXPECT_EQ(warnings("[raw, raw, raw]"), "") << "nobody knows";
}

TEST_F(RecordingUnitsTest, AResultIsReadBackWithItsUnits) {
    EXPECT_EQ(result("pins: {p: {columns: [ax, az], unit: g}}"),
              "t,p[0] [g],p[1] [g]\n0,1,1\n0.1,-1,2\n0.2,0,0\n");
    folder.write("in.csv", folder.read("out.csv"));
    EXPECT_EQ(result("pins: {p: {columns: [\"p[1]\", \"p[0] [g]\"], unit: mg}}"),
              "t,p[0] [mg],p[1] [mg]\n0,1000,1000\n0.1,2000,-1000\n0.2,0,0\n");
    EXPECT_EQ(notes(), std::vector<std::string>{"p: mg from g"});
}

TEST_F(RecordingUnitsTest, AResultReplacesOneWithOtherUnits) {
    EXPECT_EQ(result("pins: {p: [ax]}").substr(0, 10), "t,p[0] [g]");
    // As a copy, which no run has marked as its own.
    for (const char* const units : {"mg", "m/s²"}) {
        const std::string before = folder.read("out.csv");
        std::filesystem::remove(folder.path("out.csv"));
        folder.write("out.csv", before);
        EXPECT_EQ(complaintsOf(graph(std::string("pins: {p: {columns: [ax], unit: ") + units + "}}")), "");
    }
    folder.write("out.csv", "t,p[1] [g]\n0,1\n");
    EXPECT_NE(complaintsOf(graph("pins: {p: [ax]}")), "") << "doesn't count from 0";
}

} // namespace
