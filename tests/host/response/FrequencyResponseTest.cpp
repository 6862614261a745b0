// SPDX-License-Identifier: MIT
#include "host/response/FrequencyResponse.h"

#include "framework/Quillmere.h"
#include "host/response/ResponseReport.h"
#include "tests/host/kit/RefusalText.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <optional>
#include <string>

using namespace Quillmere;
using Host::FrequencyResponse;
using Host::measureResponse;
using Host::ResponsePoint;
using Support::agree;
using Support::matrix;
using Support::same;
using Support::withinRel;

namespace {
using Complex = std::complex<double>;
using Core::MatrixXd;

/// y(n) = b0 u(n) + b1 u(n-1) + a y(n-1), with whatever a test wants to go wrong.
struct Recursion : Core::Filter {
    explicit Recursion(double newest, double former, double feedback)
        : Filter("recursion", true), in("in", this), aside("aside", this), out("out", this), b0(newest),
          b1(former), a(feedback) {}
    const char* getTypeName() const override { return "Recursion"; }
    void process() override {
        if (!in.hasData()) return;
        const MatrixXd sample = in.take();
        y = b0 * sample(0) + b1 * u + a * y;
        u = sample(0);
        if (design) {
            gain->data.value = matrix({{designGain}});
            coeffs->data.value = *design;
            gain->send();
            coeffs->send();
            design.reset();
        }
        out.data.value = MatrixXd::Constant(answerSize, 1, y);
        if (!isMute) out.send(in.getTimeStamp());
    }
    /// Gives the block a design to publish with its next sample.
    void publish(const MatrixXd& rows, double byGain) {
        gain.emplace("gain", this);
        coeffs.emplace("coeffs", this);
        design = rows;
        designGain = byGain;
    }

    Core::InputPin<MatrixXd> in;
    Core::InputPin<MatrixXd> aside;
    Core::OutputPin<MatrixXd> out;
    std::optional<Core::OutputPin<MatrixXd>> gain, coeffs;
    double b0, b1, a;
    double u = 0.0, y = 0.0;
    std::optional<MatrixXd> design;
    double designGain = 1.0;
    Eigen::Index answerSize = 1;
    bool isMute = false;
};

FrequencyResponse measured(double newest, double former, double feedback, std::size_t intervals = 20) {
    return measureResponse([=] { return std::make_shared<Recursion>(newest, former, feedback); },
                           {.intervals = intervals, .input = "", .output = ""});
}

Complex exact(double newest, double former, double feedback, double frequency) {
    const Complex delay = std::polar(1.0, -std::numbers::pi * frequency);
    return (newest + former * delay) / (1.0 - feedback * delay);
}

std::string refusalOf(const Host::BlockMaker& make, const Host::ResponseSettings& settings) {
    try {
        measureResponse(make, settings);
    } catch (const Host::ResponseException& exception) {
        return Support::refusalText(exception);
    }
    return "no exception";
}
} // namespace

TEST(FrequencyResponseTest, MeasuresWhatTheRecursionDoes) {
    struct Row {
        const char* name;
        double newest, former, feedback;
    };
    const Row rows[] = {
        {.name = "a gain", .newest = 2.5, .former = 0.0, .feedback = 0.0},
        {.name = "inverted", .newest = -1.0, .former = 0.0, .feedback = 0.0},
        {.name = "a delay", .newest = 0.0, .former = 1.0, .feedback = 0.0},
        {.name = "a mean, nothing left at the end", .newest = 0.5, .former = 0.5, .feedback = 0.0},
        {.name = "a slow low-pass", .newest = 0.01, .former = 0.0, .feedback = 0.99},
        {.name = "a high-pass", .newest = 0.9, .former = -0.9, .feedback = 0.8},
        {.name = "ringing at the end", .newest = 1.0, .former = 0.0, .feedback = -0.95},
    };
    for (const Row& row : rows) {
        const FrequencyResponse response = measured(row.newest, row.former, row.feedback);
        ASSERT_EQ(response.points.size(), 21u) << row.name;
        EXPECT_FALSE(response.hasDesign);
        EXPECT_EQ(response.countUnsettled(), 0u) << row.name;
        for (const ResponsePoint& point : response.points) {
            const Complex wanted = exact(row.newest, row.former, row.feedback, point.frequency);
            // The measurement stops when two windows agree to nine digits; the decay behind is ten times
            // slower at most.
            for (const Complex got : {point.sine, point.impulse}) {
                EXPECT_TRUE(agree(got.real(), wanted.real(), withinRel(1e-8)))
                    << row.name << " at " << point.frequency;
                EXPECT_TRUE(agree(got.imag(), wanted.imag(), withinRel(1e-8)))
                    << row.name << " at " << point.frequency;
            }
        }
    }
}

TEST(FrequencyResponseTest, FrequenciesRunFromNothingToNyquist) {
    const FrequencyResponse response = measured(1.0, 0.0, 0.0, 4);
    ASSERT_EQ(response.points.size(), 5u);
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_TRUE(agree(response.points[i].frequency, static_cast<double>(i) / 4.0, same));
}

TEST(FrequencyResponseTest, WhatGrowsIsNotMeasured) {
    const FrequencyResponse response = measured(1.0, 0.0, -1.5);
    EXPECT_EQ(response.countUnsettled(), 21u);
    EXPECT_TRUE(std::isnan(response.points[3].impulse.real()));
    EXPECT_EQ(Host::responseAsCsv(measured(1.0, 0.0, -1.5, 1)),
              "relative_frequency,sine_gain,sine_phase,impulse_gain,impulse_phase\n0,,,,\n1,,,,\n");
}

TEST(FrequencyResponseTest, ARunningSumHasNoAnswerToAConstantAlone) {
    const FrequencyResponse response = measured(1.0, 0.0, 1.0);
    EXPECT_EQ(response.countUnsettled(), 1u);
    EXPECT_TRUE(std::isnan(response.points[0].sine.real()));
    EXPECT_TRUE(std::isnan(response.points[5].impulse.real())) << "its impulse never dies away";
}

TEST(FrequencyResponseTest, ReadsADesignByRisingPowers) {
    // (1 + z) / (z - 0.5) / 4: row 1 ends in -1, and the gain divides.
    const auto make = [] {
        auto block = std::make_shared<Recursion>(1.0, 0.0, 0.0);
        block->publish(matrix({{1.0, 1.0}, {0.5, -1.0}}), 4.0);
        return block;
    };
    const FrequencyResponse response = measureResponse(make, {.intervals = 10, .input = "", .output = ""});
    ASSERT_TRUE(response.hasDesign);
    for (const ResponsePoint& point : response.points) {
        const Complex z = std::polar(1.0, std::numbers::pi * point.frequency);
        const Complex wanted = (1.0 + z) / (z - 0.5) / 4.0;
        EXPECT_TRUE(agree(point.design.real(), wanted.real(), withinRel(1e-14))) << point.frequency;
        EXPECT_TRUE(agree(point.design.imag(), wanted.imag(), withinRel(1e-14))) << point.frequency;
    }
}

TEST(FrequencyResponseTest, ReadsADesignByDelays) {
    // (3 + 1/z) / (1 - 0.5/z): row 1 begins with -1, and the gain is in the coefficients.
    const auto make = [] {
        auto block = std::make_shared<Recursion>(1.0, 0.0, 0.0);
        block->publish(matrix({{3.0, 1.0}, {-1.0, 0.5}}), 4.0);
        return block;
    };
    for (const ResponsePoint& point :
         measureResponse(make, {.intervals = 10, .input = "", .output = ""}).points) {
        const Complex delay = std::polar(1.0, -std::numbers::pi * point.frequency);
        const Complex wanted = (3.0 + delay) / (1.0 - 0.5 * delay);
        EXPECT_TRUE(agree(point.design.real(), wanted.real(), withinRel(1e-14))) << point.frequency;
        EXPECT_TRUE(agree(point.design.imag(), wanted.imag(), withinRel(1e-14))) << point.frequency;
    }
}

TEST(FrequencyResponseTest, SaysWhatCannotBeMeasured) {
    const auto plain = [] { return std::make_shared<Recursion>(1.0, 0.0, 0.0); };
    EXPECT_EQ(refusalOf(plain, {.intervals = 4, .input = "input", .output = ""}),
              "found no input 'input'; expected one of in and aside");
    EXPECT_EQ(refusalOf(plain, {.intervals = 4, .input = "", .output = "result"}),
              "found no output 'result'; expected one of out");
    const std::string expected = "; expected a block that sends one such sample for each that it gets, as "
                                 "filters do, or another --from or --to";
    const auto mute = [] {
        auto block = std::make_shared<Recursion>(1.0, 0.0, 0.0);
        block->isMute = true;
        return block;
    };
    EXPECT_EQ(refusalOf(mute, {.intervals = 4, .input = "", .output = ""}),
              "found that 'recursion' (Recursion) sent nothing for a sample of one element" + expected);
    const auto wide = [] {
        auto block = std::make_shared<Recursion>(1.0, 0.0, 0.0);
        block->answerSize = 3;
        return block;
    };
    EXPECT_EQ(refusalOf(wide, {.intervals = 4, .input = "", .output = ""}),
              "found that 'recursion' (Recursion) sent a sample of 3 elements for a sample of one element" +
                  expected);
}

TEST(FrequencyResponseTest, CsvHasGainsAndPhasesInDegrees) {
    FrequencyResponse response;
    response.points.push_back(
        {.frequency = 0.25, .sine = {0.0, 2.0}, .impulse = {-3.0, 0.0}, .design = {5.0, 0.0}});
    EXPECT_EQ(Host::responseAsCsv(response),
              "relative_frequency,sine_gain,sine_phase,impulse_gain,impulse_phase\n"
              "0.25,2,90,3,180\n");
    response.hasDesign = true;
    EXPECT_EQ(Host::responseAsCsv(response),
              "relative_frequency,sine_gain,sine_phase,impulse_gain,impulse_phase,design_gain,design_phase\n"
              "0.25,2,90,3,180,5,0\n");
}
