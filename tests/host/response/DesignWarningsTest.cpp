// SPDX-License-Identifier: MIT
#include "host/response/DesignWarnings.h"

#include "tests/host/kit/GraphFixture.h"

namespace {

using namespace Quillmere::Host;

class DesignWarningsTest : public Support::GraphFixture {
protected:
    /// The warnings of a graph with one filter.
    std::string warningsOf(const std::string& type, const std::string& settings) {
        Complaints complaints;
        const std::string file = folder.write("g.yaml", "blocks:\n  - {id: f, type: " + type +
                                                            ", properties: {" + settings + "}}\n");
        const GraphDescription description = GraphDescription::fromFile(file, complaints);
        const Graph graph(description, catalogue, complaints);
        warnOfLostDigits(graph, catalogue, complaints);
        std::string lines;
        for (const Warning& warning : complaints.getSortedWarnings())
            lines += withoutFolder(warning.getText()) + "\n";
        return lines;
    }
};

std::string lost(const std::string& type, const std::string& digits) {
    return "g.yaml:2:10: warning: found the design of 'f' (" + type + ") with " + digits +
           " left of 16, since its coefficients all but cancel; expected 6 or more: take a lower order, "
           "edges farther "
           "from 0, from 1 and from each other, or a cascade of sections\n";
}

TEST_F(DesignWarningsTest, TellDesignsThatKeepFewerThanSixDigits) {
    struct Row {
        const char* settings;
        std::string warning;
    };
    const std::string butterworth = "FilterButterworthV2";
    const Row rows[] = {
        {"Order: 4, LowRelativeCutOffFreq: 0.01", ""},
        {"Order: 5, LowRelativeCutOffFreq: 0.01", ""},
        {"Order: 6, LowRelativeCutOffFreq: 0.01", lost(butterworth, "4 digits")},
        {"Order: 8, LowRelativeCutOffFreq: 0.01", lost(butterworth, "1 digit")},
        {"Order: 10, LowRelativeCutOffFreq: 0.01", lost(butterworth, "no digit")},
        {"Order: 10, LowRelativeCutOffFreq: 0.2", ""},
        {"Order: 10, LowRelativeCutOffFreq: 0.99, Mode: HighPass, MatchedZ-Transform: false",
         lost(butterworth, "no digit")},
        {"Order: 2, LowRelativeCutOffFreq: 0.4, HighRelativeCutOffFreq: 0.41, Mode: BandPass", ""},
        {"Order: 4, LowRelativeCutOffFreq: 0.4, HighRelativeCutOffFreq: 0.401, Mode: BandPass",
         lost(butterworth, "3 digits")},
        {"Order: 1, LowRelativeCutOffFreq: 0.4, HighRelativeCutOffFreq: 0.4001, Mode: BandStop", ""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(warningsOf(butterworth, row.settings), row.warning) << row.settings;
}

TEST_F(DesignWarningsTest, TellEveryFamily) {
    for (const char* const type : {"FilterBessel", "FilterChebyshev"}) {
        EXPECT_EQ(warningsOf(type, "Order: 10, LowRelativeCutOffFreq: 0.01"), lost(type, "no digit"));
        EXPECT_EQ(warningsOf(type, "Order: 4, LowRelativeCutOffFreq: 0.05"), "");
    }
    // Of odd order from 3 on it divides by rounding noise.
    EXPECT_EQ(warningsOf("FilterEllipticV1", "Order: 3, LowRelFreq: 0.1, Ripple BandStop: -40"),
              lost("FilterEllipticV1", "no digit"));
    EXPECT_EQ(warningsOf("FilterEllipticV1", "Order: 4, LowRelFreq: 0.1, Ripple BandStop: -40"), "");
}

TEST_F(DesignWarningsTest, AreSilentWhereThereIsNoDesign) {
    EXPECT_EQ(warningsOf("FilterButterworth", "Order: 10, RelativeCutOffFreq: 0.0001"), "");
}

TEST_F(DesignWarningsTest, TellWhereADesignIsNotANumber) {
    const auto noDesign = [](const std::string& type) {
        return "g.yaml:2:10: warning: found no design of 'f' (" + type +
               "), since its gain or coefficients aren't finite; expected edges above 0, below 1 and apart "
               "from each other, and an order that they bear\n";
    };
    for (const char* const type : {"FilterBessel", "FilterButterworthV2"})
        EXPECT_EQ(warningsOf(type, "LowRelativeCutOffFreq: 0"), noDesign(type));
    EXPECT_EQ(warningsOf("FilterChebyshev",
                         "Mode: BandStop, LowRelativeCutOffFreq: 0, HighRelativeCutOffFreq: 0.2"),
              noDesign("FilterChebyshev"));
}

} // namespace
