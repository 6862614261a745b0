// SPDX-License-Identifier: MIT
// What manuals say of units, held against living blocks: an output that keeps the unit of an input gives
// four times as much when that input, and what is set in its unit, is four times as much.
#include "host/ends/MainInput.h"
#include "host/graph/BlockManual.h"
#include "tests/host/kit/GraphFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

constexpr int kRows = 96;
constexpr double kScale = 4.0; // a power of two, which changes no other digit

/// How a block is driven that can't be driven by a pin of three columns alone.
struct Drive {
    std::string settings = {}; ///< In it UNIT stands for a number of the signal's unit, WHOLE for one.
    std::string columns = "[x, y, z]";              ///< Of the input.
    int frame = 0;                                  ///< Rows a sample; 0: one.
    std::map<std::string, std::string> others = {}; ///< Inputs that keep their numbers, and their columns.
};

const std::map<std::string, Drive>& drives() {
    static const std::map<std::string, Drive> all = [] {
        std::map<std::string, Drive> table;
        for (const char* const window :
             {"FilterBlackmanWindow", "FilterHammingWindow", "FilterHanningWindow"}) {
            table[window].columns = "[x]";
            table[window].frame = 8;
        }
        for (const char* const frames : {"FilterAbsoluteErode", "FilterRelativeErode", "FilterRemoveStill"})
            table[frames].frame = 8;
        table["FilterResample"].frame = 8;
        table["FilterResample"].settings = "Matrix size: 3";
        table["FilterRemoveStill"].settings = "distancex: UNIT, distancey: UNIT, distancez: UNIT";
        table["FilterDeadband"].settings = "Threshold: UNIT";
        table["FilterFlagStatic"].settings = "StdDevIni: WHOLE, Windows Size: 4";
        table["FilterFlagStatic"].others["3bias"] = "[one, one, one]";
        // Amplitudes are learned in proportion; a frequency that is learned too isn't.
        table["FilterWFLC"].settings = "Order: 2, Mu0: 0";
        table["FilterWFLC"].columns = "[x]";
        Drive sphere;
        sphere.others = {{"3g", "[one, x, y]"}, {"Fc (optional)", "[part, part]"}};
        table["FilterSphericalFiltering"] = sphere;
        return table;
    }();
    return all;
}

class BlockUnitsTest : public Support::GraphFixture {
protected:
    BlockUnitsTest() {
        std::string text = "t,x,y,z,one,part\n";
        for (int row = 0; row < kRows; ++row) {
            std::ostringstream line;
            // Below 1.1 in every axis, also four times: beyond that one block clips.
            line << row * 0.01 << ',' << 0.25 * std::sin(row * 0.3) << ',' << 0.2 * std::cos(row * 0.7) << ','
                 << 0.001 * row << ",1,0.1\n";
            text += line.str();
        }
        folder.write("in.csv", text);
    }

    static std::string replaced(std::string text, const std::string& from, const std::string& to) {
        for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
            text.replace(at, from.size(), to);
        return text;
    }

    /// The table that an output gives, its input scaled by a gain.
    std::vector<double> outputOf(const std::string& type, const std::string& input, const std::string& output,
                                 double scale) {
        const auto known = drives().find(type);
        const Drive drive = known == drives().end() ? Drive{} : known->second;
        std::string pins = "p: " + drive.columns;
        std::string links;
        int number = 0;
        for (const auto& [name, columns] : drive.others) {
            if (name == input) continue;
            const std::string pin = "q" + std::to_string(++number);
            pins += ", " + pin + ": " + columns;
            links += "  - {from: in." + pin + ", to: \"b." + name + "\"}\n";
        }
        const std::string whole = scale == 1.0 ? "1" : "4";
        const std::string unit = scale == 1.0 ? "0.0625" : "0.25";
        const std::string failure =
            run("format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t" +
                std::string(drive.frame > 0 ? ", frame: " + std::to_string(drive.frame) : "") + ", pins: {" +
                pins + "}}}\n  - {id: g, type: FilterGain, properties: {Gain: " + whole +
                "}}\n  - {id: b, type: " + type + ", properties: {" +
                replaced(replaced(drive.settings, "UNIT", unit), "WHOLE", whole) +
                "}}\n  - {id: out, type: RecordingSink, properties: {file: out.csv}}\nconnections:\n" +
                "  - {from: in.p, to: g}\n  - {from: g, to: \"b." + input + "\"}\n" + links +
                "  - {from: \"b." + output + "\", to: out.o}\n");
        EXPECT_EQ(failure, "") << type;
        return numbersOf(folder.read("out.csv"));
    }

    /// All cells but the times; empty ones don't count.
    static std::vector<double> numbersOf(const std::string& table) {
        std::vector<double> numbers;
        std::istringstream lines(table);
        std::string line;
        std::getline(lines, line);
        while (std::getline(lines, line)) {
            std::istringstream cells(line);
            std::string cell;
            std::getline(cells, cell, ',');
            while (std::getline(cells, cell, ','))
                if (!cell.empty()) numbers.push_back(std::strtod(cell.c_str(), nullptr));
        }
        return numbers;
    }

    void expectKept(const std::string& type, const std::string& input, const std::string& output) {
        const std::string what = type + "." + output + " by " + input;
        const std::vector<double> once = outputOf(type, input, output, 1.0);
        const std::vector<double> fourfold = outputOf(type, input, output, kScale);
        ASSERT_EQ(once.size(), fourfold.size()) << what;
        double largest = 0.0;
        for (std::size_t i = 0; i < once.size(); ++i) {
            EXPECT_EQ(kScale * once[i], fourfold[i]) << what << ", number " << i;
            largest = std::max(largest, std::abs(once[i]));
        }
        EXPECT_GT(largest, 0.0) << what << ": nothing but zeros says nothing";
    }
};

TEST_F(BlockUnitsTest, OutputsThatKeepAUnitGrowWithTheirInput) {
    std::size_t kept = 0;
    for (const std::string& type : catalogue.getTypeNames()) {
        if (!catalogue.getPluginName(type).starts_with("Velmarind")) continue;
        Complaints complaints;
        const BlockManual manual = BlockManual::read(type, catalogue, complaints);
        const BlockPtr block = catalogue.create(type, "b");
        for (const auto& [output, unit] : manual.outputUnits) {
            const std::string input = unit.input.empty() ? mainInputOf(*block)->getName() : unit.input;
            expectKept(type, input, output);
            ++kept;
        }
    }
    EXPECT_GE(kept, 26U);
}

TEST_F(BlockUnitsTest, WhatMakesAnotherUnitIsNotSaidToKeepIt) {
    for (const char* const type :
         {"FilterGain", "FilterInvGain", "FilterIIR", "FilterFFT", "FilterFastFourierTransform", "FilterEdge",
          "FilterThreshold", "FilterHysteresis", "FilterPeriodCounter", "FilterFrequency",
          "FilterSaturationDetector", "FilterThresholdLeveler"}) {
        Complaints complaints;
        EXPECT_TRUE(BlockManual::read(type, catalogue, complaints).outputUnits.empty()) << type;
    }
}

} // namespace
