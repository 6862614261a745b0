// SPDX-License-Identifier: MIT
#include "host/recording/TimeRepair.h"

#include "host/text/ShortestText.h"
#include "tests/support/Allocations.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

/// A row for pins of one element each. What isn't there is `kNone`.
struct Given {
    double time;
    std::vector<double> values;
};

const double kNone = -1e300;

std::string textOf(const TimedRow& row) {
    std::string text = shortestText(row.time) + ":";
    for (std::size_t pin = 0; pin < row.hasSample.size(); ++pin) {
        text += " ";
        text += row.hasSample[pin] == 0 ? "-" : shortestText(row.values[pin]);
        text += row.hasSample[pin] != 0 && row.isMissing[pin] != 0 ? "*" : "";
    }
    return text;
}

/// Rows in, rows out. A row has the number of its place, and stands in the line behind.
class Repaired {
public:
    Repaired(TimeRepairPlan plan, const std::vector<Given>& rows) : repair(withPins(plan, rows)) {
        TimedRow row;
        for (const Given& given : rows) {
            if (repair.getIsOver()) break;
            ++taken;
            fill(row, given);
            if (const auto fault = repair.take(row)) {
                text += "row " + std::to_string(taken) + ": " + fault->getText();
                return;
            }
            drain();
            text += "|";
        }
        if (!repair.getIsOver()) repair.finish();
        drain();
    }

    SourceAccount account() const {
        SourceAccount told;
        repair.tell(told);
        return told;
    }

    /// The rows that come out, `time: values` each, a bar behind those that one row led to.
    std::string text;
    std::vector<TimedRow> out;
    std::size_t taken = 0;

private:
    static TimeRepairPlan withPins(TimeRepairPlan plan, const std::vector<Given>& rows) {
        const std::size_t pins = rows.empty() ? 1 : rows.front().values.size();
        for (std::size_t pin = plan.pins.size(); pin < pins; ++pin)
            plan.pins.push_back({std::string("p").append(std::to_string(pin)), 1, false});
        return plan;
    }
    void fill(TimedRow& row, const Given& given) const {
        row.resize(given.values.size(), given.values.size());
        row.time = given.time;
        row.values = given.values;
        row.row = taken;
        row.line = taken + 1;
        for (std::size_t pin = 0; pin < given.values.size(); ++pin)
            row.hasSample[pin] = static_cast<char>(given.values[pin] != kNone);
    }
    void drain() {
        while (const TimedRow* const row = repair.next()) {
            text += (text.empty() || text.back() == '|' ? "" : ", ") + textOf(*row);
            out.push_back(*row);
        }
    }
    TimeRepair repair;
};

/// Rows of one pin, whose value is ten times the row's number, at these times.
std::vector<Given> rowsAt(const std::vector<double>& times) {
    std::vector<Given> rows;
    for (const double time : times)
        rows.push_back({time, {10.0 * static_cast<double>(rows.size() + 1)}});
    return rows;
}

TimeRepairPlan resampled(double rate, double gapLimit = TimeRepairPlan::kForever, OnGap onGap = OnGap::Nan) {
    TimeRepairPlan plan;
    plan.resampleRate = rate;
    plan.gapLimit = gapLimit;
    plan.onGap = onGap;
    return plan;
}

TimeRepairPlan filled(OnGap onGap, double gapLimit) {
    TimeRepairPlan plan;
    plan.onGap = onGap;
    plan.gapLimit = gapLimit;
    return plan;
}

std::string spotText(const SourceAccount::Finding& finding) {
    if (finding.count == 0) return "none";
    return std::to_string(finding.count) + ", line " + std::to_string(finding.first.line) + " from " +
           shortestText(finding.first.before) + " to " + shortestText(finding.first.time);
}

TEST(TimeRepair, WithoutAWishEveryRowGoesThroughAsItIs) {
    const Repaired repaired({}, rowsAt({1, 0, 0, 5, 5, 4}));
    EXPECT_EQ(repaired.text, "1: 10|0: 20|0: 30|5: 40|5: 50|4: 60|");
    EXPECT_FALSE(TimeRepairPlan().getIsAny());
}

TEST(TimeRepair, OfRowsWithOneStampTheFirstStays) {
    TimeRepairPlan plan;
    plan.onDuplicate = OnDuplicate::Drop;
    const Repaired repaired(plan, rowsAt({0, 1, 1, 1, 2, 2, 3}));
    EXPECT_EQ(repaired.text, "0: 10|1: 20|||2: 50||3: 70|");
    const SourceAccount account = repaired.account();
    EXPECT_EQ(spotText(account.repairs.duplicates), "3, line 4 from 1 to 1");
    EXPECT_EQ(account.rows, 4u);
    EXPECT_EQ(account.equal.count, 0u) << "what is left has none";
    EXPECT_EQ(account.medianStep, 1.0);
    plan.onDuplicate = OnDuplicate::Error;
    EXPECT_EQ(
        Repaired(plan, rowsAt({0, 1, 1})).text,
        "0: 10|1: 20|row 3: found the time stamp of the row before, 1 s; expected another for each row, "
        "or 'duplicates: drop' to leave out such rows");
}

TEST(TimeRepair, RowsOfOneStampThatShareNoPinAreNoDuplicates) {
    TimeRepairPlan plan;
    plan.onDuplicate = OnDuplicate::Drop;
    const std::vector<Given> rows{{0, {1, kNone}}, {0, {kNone, 2}}, {0, {3, kNone}},
                                  {0, {4, 5}},     {1, {6, 7}},     {1, {kNone, 8}}};
    EXPECT_EQ(Repaired(plan, rows).text, "0: 1 -|0: - 2|||1: 6 7||");
    plan.onDuplicate = OnDuplicate::Error;
    EXPECT_EQ(Repaired(plan, {rows[0], rows[1]}).text, "0: 1 -|0: - 2|");
    EXPECT_EQ(Repaired(plan, {rows[0], {0, {1, 9}}}).text.substr(0, 14), "0: 1 -|row 2: ");
}

TEST(TimeRepair, RowsThatGoBackAreLeftOutUntilTimeIsPastThemAgain) {
    TimeRepairPlan plan;
    plan.onBackward = OnBackward::Drop;
    const Repaired repaired(plan, rowsAt({0, 5, 2, 3, 5, 5.5, 1, 6}));
    EXPECT_EQ(repaired.text, "0: 10|5: 20|||5: 50|5.5: 60||6: 80|") << "5 again is a duplicate, and kept";
    EXPECT_EQ(spotText(repaired.account().repairs.backward), "3, line 4 from 5 to 2");
    EXPECT_EQ(repaired.account().backward.count, 0u);
    plan.onDuplicate = OnDuplicate::Drop;
    EXPECT_EQ(Repaired(plan, rowsAt({0, 5, 2, 5, 6})).text, "0: 10|5: 20|||6: 50|");
    plan.onBackward = OnBackward::Keep;
    EXPECT_EQ(Repaired(plan, rowsAt({0, 5, 2, 2, 6})).text, "0: 10|5: 20|2: 30||6: 50|");
    plan.onBackward = OnBackward::Error;
    EXPECT_EQ(
        Repaired(plan, rowsAt({0, 5, 2})).text,
        "0: 10|5: 20|row 3: found a time stamp of 2 s, behind one of 5 s; expected times that go on, or "
        "'backwards: drop' to leave out such rows");
}

TEST(TimeRepair, RowsAreCutFromTheStartOnAndReadingStopsAtTheEnd) {
    TimeRepairPlan plan;
    plan.start = 2;
    plan.end = 4;
    const Repaired repaired(plan, rowsAt({0, 1, 2, 3, 3.5, 4, 5, 6}));
    EXPECT_EQ(repaired.text, "||2: 30|3: 40|3.5: 50|||") << "the start counts, the end doesn't";
    EXPECT_EQ(repaired.taken, 7u) << "and nothing is read behind the second that is behind it";
    EXPECT_EQ(repaired.account().rows, 3u);
    EXPECT_EQ(repaired.account().repairs.earlyRows, 2u);
    EXPECT_EQ(repaired.account().firstTime, 2.0);
    EXPECT_EQ(repaired.account().lastTime, 3.5);
    plan.end = TimeRepairPlan::kForever;
    plan.onBackward = OnBackward::Error;
    EXPECT_EQ(Repaired(plan, rowsAt({1, 0, 0, 2, 3})).text, "|||2: 40|3: 50|") << "cut rows break no rule";
}

TEST(TimeRepair, OneStampBehindTheEndIsWrongWhereTheNextIsNot) {
    TimeRepairPlan plan;
    plan.end = 100;
    const Repaired repaired(plan, rowsAt({0, 1, 1000000, 2, 100, 3, 4, 200, 100, 5}));
    EXPECT_EQ(repaired.text, "0: 10|1: 20||2: 40||3: 60|4: 70|||");
    EXPECT_EQ(spotText(repaired.account().repairs.behindEnd), "2, line 4 from 1 to 1e+06");
    EXPECT_EQ(spotText(Repaired(plan, rowsAt({0, 1, 100})).account().repairs.behindEnd), "none");
    plan.resampleRate = 1;
    plan.onBackward = OnBackward::Error;
    EXPECT_EQ(Repaired(plan, rowsAt({0, 1000000, 2, 3})).text, "0: 10||1: 20, 2: 30|3: 40|");
    plan.end = 3;
    EXPECT_EQ(Repaired(plan, rowsAt({0, 1, 4})).text, "0: 10|1: 20||2: 23.333333333333332");
    EXPECT_EQ(Repaired(plan, rowsAt({0, 1, 4, 5})).text, "0: 10|1: 20||2: 23.333333333333332|");
}

TEST(TimeRepair, AStampFarAheadIsToldByWhatItLeavesOut) {
    TimeRepairPlan plan;
    plan.onBackward = OnBackward::Drop;
    const auto wildest = [&](const std::vector<double>& times) {
        return spotText(Repaired(plan, rowsAt(times)).account().repairs.wildest);
    };
    EXPECT_EQ(wildest({0, 1, 50, 2, 3, 4}), "3, line 4 from 1 to 50");
    EXPECT_EQ(wildest({0, 9, 1, 2, 10, 99, 11, 12, 13}), "3, line 7 from 10 to 99");
    EXPECT_EQ(wildest({0, 1, 2, 3, 1, 2, 3, 4}), "none") << "rows that come again";
    EXPECT_EQ(wildest({0, 1, 3, 2, 4}), "1, line 4 from 1 to 3");
}

TEST(TimeRepair, RowsThatShareAStampButNoPinAreNoneToTellOf) {
    const std::vector<Given> rows{{0, {1, kNone}}, {0, {kNone, 2}}, {1, {3, kNone}}, {1, {kNone, 4}}};
    TimeRepairPlan plan;
    EXPECT_EQ(Repaired(plan, rows).account().equal.count, 2u);
    plan.onDuplicate = OnDuplicate::Drop;
    EXPECT_EQ(Repaired(plan, rows).account().equal.count, 0u);
    EXPECT_EQ(Repaired(resampled(1), rows).account().equal.count, 0u);
    EXPECT_EQ(Repaired(resampled(1), rowsAt({0, 1, 1, 2})).account().equal.count, 1u) << "one is lost";
}

TEST(TimeRepair, GapsAreFilledEvenlyByTheUsualStep) {
    const std::vector<double> times{0, 1, 2, 6, 7};
    const Repaired nan(filled(OnGap::Nan, 1.5), rowsAt(times));
    EXPECT_EQ(nan.text, "0: 10|1: 20|2: 30|3: nan*, 4: nan*, 5: nan*, 6: 40|7: 50|");
    EXPECT_EQ(Repaired(filled(OnGap::Hold, 1.5), rowsAt(times)).text,
              "0: 10|1: 20|2: 30|3: 30, 4: 30, 5: 30, 6: 40|7: 50|");
    EXPECT_EQ(Repaired(filled(OnGap::Hold, 4), rowsAt(times)).text, "0: 10|1: 20|2: 30|6: 40|7: 50|")
        << "a step of the limit is no gap";
    EXPECT_EQ(Repaired(filled(OnGap::Error, 3.5), rowsAt(times)).text,
              "0: 10|1: 20|2: 30|row 4: found a gap from 2 s to 6 s; expected steps of at most 3.5 s, or "
              "'gaps: nan', 'hold' or 'keep'");
    const SourceAccount account = nan.account();
    EXPECT_EQ(account.rows, 8u);
    EXPECT_EQ(account.repairs.rowsFilled, 3u);
    EXPECT_EQ(account.repairs.gapsLeft, 0u);
    EXPECT_EQ(spotText(account.repairs.gaps), "1, line 5 from 2 to 6");
    EXPECT_EQ(account.jumps.count, 0u);
}

TEST(TimeRepair, AGapThatIsNoMultipleOfTheStepIsDividedEvenly) {
    EXPECT_EQ(Repaired(filled(OnGap::Hold, 1.4), rowsAt({0, 1, 2, 4.25, 5})).text,
              "0: 10|1: 20|2: 30|3.125: 30, 4.25: 40|5: 50|");
    EXPECT_EQ(Repaired(filled(OnGap::Hold, 1.4), rowsAt({0, 1, 2, 3.45})).text, "0: 10|1: 20|2: 30|3.45: 40|")
        << "too short for another row";
    EXPECT_EQ(Repaired(filled(OnGap::Hold, 2), rowsAt({0, 0.5, 2, 6})).text,
              "0: 10|0.5: 20|2: 30|3: 30, 4: 30, 5: 30, 6: 40|")
        << "the usual step is the mean";
}

TEST(TimeRepair, OnlyTheLastHundredStepsAreUsual) {
    std::vector<double> times{0};
    for (int i = 0; i < 50; ++i)
        times.push_back(times.back() + 1.0);
    for (int i = 0; i < 100; ++i)
        times.push_back(times.back() + 0.25);
    times.push_back(times.back() + 3.0);
    EXPECT_EQ(Repaired(filled(OnGap::Nan, 2), rowsAt(times)).account().repairs.rowsFilled, 11u);
}

TEST(TimeRepair, RowsThatShareAStampTellNothingOfTheUsualStep) {
    const Repaired repaired(filled(OnGap::Hold, 1.5), rowsAt({0, 0, 1, 1, 2, 2, 5}));
    EXPECT_EQ(repaired.text, "0: 10|0: 20|1: 30|1: 40|2: 50|2: 60|3: 60, 4: 60, 5: 70|");
    EXPECT_EQ(repaired.account().repairs.rowsFilled, 2u);
    EXPECT_EQ(Repaired(filled(OnGap::Hold, 1.5), rowsAt({2, 2, 5})).account().repairs.gapsLeft, 1u);
}

TEST(TimeRepair, AStepThatIsTheLimitButForRoundingIsNoGap) {
    for (const double origin : {0.0, 1.5e9}) {
        std::vector<double> times;
        for (int i = 0; i < 1000; ++i)
            times.push_back(origin + i / 100.0);
        EXPECT_EQ(Repaired(filled(OnGap::Nan, 0.01), rowsAt(times)).account().repairs.gaps.count, 0u);
        EXPECT_EQ(Repaired(resampled(100, 0.01), rowsAt(times)).account().repairs.gaps.count, 0u);
        times.back() += 1e-5;
        EXPECT_EQ(Repaired(filled(OnGap::Nan, 0.01), rowsAt(times)).account().repairs.gaps.count, 1u);
    }
}

TEST(TimeRepair, AGapBehindTheFirstRowStays) {
    const Repaired repaired(filled(OnGap::Nan, 2), rowsAt({0, 10, 11, 13.25}));
    EXPECT_EQ(repaired.text, "0: 10|10: 20|11: 30|12.125: nan*, 13.25: 40|");
    EXPECT_EQ(repaired.account().repairs.gapsLeft, 1u);
    EXPECT_EQ(repaired.account().repairs.gaps.count, 2u);
}

TEST(TimeRepair, APinThatLacksRowsGetsNothingInAGap) {
    const std::vector<Given> rows{{0, {1, 2}}, {1, {3, kNone}}, {2, {5, 6}}, {4, {7, 8}}};
    EXPECT_EQ(Repaired(filled(OnGap::Hold, 1.5), rows).text, "0: 1 2|1: 3 -|2: 5 6|3: 5 -, 4: 7 8|");
    const Repaired neither(filled(OnGap::Nan, 1.5), {{0, {1, kNone}}, {1, {kNone, 3}}, {9, {4, kNone}}});
    EXPECT_EQ(neither.text, "0: 1 -|1: - 3|9: 4 -|");
    EXPECT_EQ(neither.account().repairs.gapsLeft, 1u);
}

TEST(TimeRepair, AGapThatNobodyCanHaveMeantToFillEndsTheRun) {
    EXPECT_EQ(Repaired(filled(OnGap::Nan, 1), rowsAt({0, 0.001, 31536000})).text,
              "0: 10|0.001: 20|row 3: found a gap from 0.001 s to 31536000 s, which 31535999998 rows would "
              "fill; expected at most 10000000, or 'gaps: keep'");
    EXPECT_EQ(
        Repaired(resampled(1000), rowsAt({0, 0.001, 31536000})).text,
        "0: 10|0.001: 20|row 3: found no row from 0.001 s to 31536000 s, where 'resample' would make "
        "31535999999; expected at most 10000000, or 'gapLimit' and 'gaps: keep' to leave gaps as they are");
    EXPECT_EQ(Repaired(resampled(1000, 1, OnGap::Keep), rowsAt({0, 0.001, 31536000})).text,
              "0: 10|0.001: 20|31536000: 30|");
}

TEST(Resampling, DrawsLinesBetweenTheRows) {
    EXPECT_EQ(Repaired(resampled(2), rowsAt({1, 2, 4})).text, "1: 10|1.5: 15, 2: 20|2.5: 22.5, 3: 25, 3.5: "
                                                              "27.5, 4: 30|");
    const Repaired repaired(resampled(0.5), rowsAt({0, 0.75, 1.5, 2.25, 3, 4}));
    EXPECT_EQ(repaired.text, "0: 10|||2: 36.666666666666664||4: 60|");
    const SourceAccount account = repaired.account();
    EXPECT_EQ(account.rows, 3u);
    EXPECT_EQ(account.medianStep, 2.0);
    EXPECT_EQ(account.lastTime, 4.0);
    EXPECT_EQ(account.repairs.resampledRate, 0.5);
    EXPECT_EQ(account.repairs.resampledRows, 6u);
}

TEST(Resampling, TimesAreCountedAndNotSummed) {
    std::vector<double> times;
    for (int i = 0; i <= 1000; ++i)
        times.push_back(0.25 * i);
    const Repaired repaired(resampled(10), rowsAt(times));
    ASSERT_EQ(repaired.out.size(), 2501u);
    for (std::size_t k = 0; k < repaired.out.size(); ++k)
        ASSERT_EQ(repaired.out[k].time, static_cast<double>(k) / 10.0);
}

/// Stamps as a file has them: decimals, rounded each by itself.
TEST(Resampling, AtTheRecordingsOwnRateGivesItsOwnBits) {
    struct Own {
        double rate;
        double begin;
        int digits;
    };
    for (const Own& own : {Own{100, 0, 2}, Own{100, 5.12, 2}, Own{102.4, 0, 9}, Own{128, 1e6, 7},
                           Own{100, 1500000000.13, 2}, Own{3, 0.5, 9}, Own{1000, -3.001, 3}}) {
        std::vector<Given> rows;
        for (int i = 0; i < 3000; ++i) {
            char text[64];
            std::snprintf(text, sizeof text, "%.*f", own.digits, own.begin + i / own.rate);
            rows.push_back({std::strtod(text, nullptr), {std::sin(i) / 3.0}});
        }
        const Repaired repaired(resampled(own.rate), rows);
        ASSERT_EQ(repaired.out.size(), rows.size()) << own.rate << " from " << own.begin;
        for (std::size_t i = 0; i < rows.size(); ++i)
            ASSERT_EQ(repaired.out[i].values[0], rows[i].values[0]) << i << " at " << own.rate;
    }
}

TEST(Resampling, DoneAgainChangesNothing) {
    std::vector<Given> rows;
    double time = 0.3;
    for (int i = 0; i < 2000; ++i) {
        time += 0.001 * (5 + (i * 7) % 11);
        rows.push_back({time, {std::sin(0.1 * i), std::cos(i)}});
    }
    const Repaired once(resampled(64), rows);
    std::vector<Given> even;
    for (const TimedRow& row : once.out)
        even.push_back({row.time, row.values});
    const Repaired twice(resampled(64), even);
    ASSERT_EQ(twice.out.size(), once.out.size());
    for (std::size_t i = 0; i < even.size(); ++i) {
        EXPECT_EQ(twice.out[i].time, even[i].time);
        EXPECT_EQ(twice.out[i].values, even[i].values);
    }
}

TEST(Resampling, ALineStaysALine) {
    std::vector<Given> rows;
    double time = 0.0;
    for (int i = 0; i < 500; ++i) {
        rows.push_back({time, {3.0 * time - 7.0}});
        time += 0.01 * (1 + i % 5);
    }
    // A sample is taken as it is within a millionth of a step of 1/37 s, on a line that rises by 3 a second.
    for (const TimedRow& row : Repaired(resampled(37), rows).out)
        EXPECT_TRUE(Support::agree(row.values[0], 3.0 * row.time - 7.0, Support::law(3.0 * 1e-6 / 37.0)));
}

TEST(Resampling, NotANumberStaysOneAndIsMissingWhereItWasDeclared) {
    const std::vector<Given> rows{{0, {1}}, {1, {Support::kNaN}}, {2, {3}}, {3, {4}}};
    EXPECT_EQ(Repaired(resampled(2), rows).text, "0: 1|0.5: nan, 1: nan|1.5: nan, 2: 3|2.5: 3.5, 3: 4|");
    TimeRepairPlan plan = resampled(2);
    plan.pins.push_back({"p", 1, false});
    TimeRepair repair(plan);
    TimedRow row;
    row.resize(1, 1);
    row.hasSample[0] = 1;
    std::string missing;
    for (const double time : {0.0, 1.0, 2.0}) {
        row.time = time;
        row.values[0] = time == 1.0 ? Support::kNaN : time;
        row.isMissing[0] = time == 1.0;
        ASSERT_FALSE(repair.take(row));
        while (const TimedRow* const out = repair.next())
            missing += out->isMissing[0] != 0 ? "y" : "n";
    }
    EXPECT_EQ(missing, "nyyyn");
}

TEST(Resampling, HoldsWhereItIsToldTo) {
    TimeRepairPlan plan = resampled(2);
    plan.pins = {{"line", 1, false}, {"flag", 1, true}};
    EXPECT_EQ(Repaired(plan, {{0, {0, 0}}, {1, {1, 1}}, {2, {2, 0}}}).text,
              "0: 0 0|0.5: 0.5 0, 1: 1 1|1.5: 1.5 1, 2: 2 0|");
}

TEST(Resampling, ASlowPinBesideAFastOneIsAtTheSameRateAndKeepsItsRowsWaiting) {
    const std::vector<Given> rows{{0, {0, 100}},      {0.25, {1, kNone}}, {0.5, {2, kNone}},
                                  {0.75, {3, kNone}}, {1, {4, 104}},      {1.25, {5, kNone}},
                                  {1.5, {6, kNone}},  {2, {8, 108}},      {2.25, {9, kNone}}};
    EXPECT_EQ(Repaired(resampled(2), rows).text, "0: 0 100||||0.5: 2 102, 1: 4 104|||1.5: 6 106, 2: 8 108||")
        << "behind its last it has none";
    TimeRepairPlan plan = resampled(2);
    plan.pins = {{"fast", 1, false}, {"slow", 1, true}};
    EXPECT_EQ(Repaired(plan, rows).text, "0: 0 100|||0.5: 2 100|1: 4 104|||1.5: 6 104, 2: 8 108||");
}

TEST(Resampling, BehindItsLastSampleAndInFrontOfItsFirstAPinHasNone) {
    EXPECT_EQ(
        Repaired(resampled(1),
                 {{0, {0, kNone}}, {1, {1, kNone}}, {1.5, {kNone, 5}}, {2.5, {2.5, 6}}, {3.5, {3.5, kNone}}})
            .text,
        "|0: 0 -|1: 1 -|2: 2 5.5||3: 3 -");
    EXPECT_EQ(Repaired(resampled(1), {{0, {1, kNone}}, {0, {kNone, 2}}, {1, {3, 4}}}).text, "|0: 1 2|1: 3 4|")
        << "a sample of the same stamp may come in a row of its own";
}

TEST(Resampling, NothingIsDrawnAcrossAGap) {
    const std::vector<double> times{0, 1, 4, 5};
    EXPECT_EQ(Repaired(resampled(1, 2, OnGap::Nan), rowsAt(times)).text,
              "0: 10|1: 20|2: nan*, 3: nan*, 4: 30|5: 40|");
    EXPECT_EQ(Repaired(resampled(1, 2, OnGap::Hold), rowsAt(times)).text,
              "0: 10|1: 20|2: 20, 3: 20, 4: 30|5: 40|");
    EXPECT_EQ(Repaired(resampled(1, 2, OnGap::Keep), rowsAt(times)).text, "0: 10|1: 20|4: 30|5: 40|");
    EXPECT_EQ(Repaired(resampled(1, 3, OnGap::Nan), rowsAt(times)).account().repairs.gaps.count, 0u);
    const SourceAccount account = Repaired(resampled(1, 2, OnGap::Nan), rowsAt(times)).account();
    EXPECT_EQ(spotText(account.repairs.gaps), "1, line 4 from 1 to 4");
    EXPECT_EQ(account.repairs.rowsFilled, 2u);
    EXPECT_EQ(account.jumps.count, 0u);
    EXPECT_EQ(
        Repaired(resampled(1, 2, OnGap::Error), rowsAt(times)).text,
        "0: 10|1: 20|row 3: found a gap from 1 s to 4 s; expected steps of at most 2 s, or 'gaps: nan', "
        "'hold' or 'keep'");
}

TEST(Resampling, ASlowPinIsDrawnAcrossNoGapThatLiesBetweenItsSamples) {
    const std::vector<Given> rows{{0, {0, 0}}, {1, {1, kNone}}, {4, {4, kNone}}, {5, {5, 5}}};
    EXPECT_EQ(Repaired(resampled(1, 2, OnGap::Nan), rows).text,
              "0: 0 0||1: 1 nan*, 2: nan* nan*, 3: nan* nan*|4: 4 nan*, 5: 5 5|");
    TimeRepairPlan plan = resampled(1, 2, OnGap::Nan);
    plan.pins = {{"fast", 1, false}, {"flag", 1, true}};
    EXPECT_EQ(Repaired(plan, rows).text, "0: 0 0||1: 1 0, 2: nan* nan*, 3: nan* nan*|4: 4 nan*, 5: 5 5|");
}

TEST(Resampling, AGapInFrontOfTheStartIsToldAsFarAsItReachesBehindIt) {
    TimeRepairPlan plan = resampled(1, 1);
    plan.start = 3;
    EXPECT_EQ(spotText(Repaired(plan, rowsAt({0, 3, 4})).account().repairs.gaps), "none");
    plan.start = 2;
    EXPECT_EQ(Repaired(plan, rowsAt({0, 3, 4})).text, "|2: nan*, 3: 20|4: 30|");
    EXPECT_EQ(spotText(Repaired(plan, rowsAt({0, 3, 4})).account().repairs.gaps), "1, line 3 from 0 to 3");
}

TEST(Resampling, APinThatDropsOutHasAGapOfItsOwn) {
    const std::vector<Given> rows{{0, {0, 0}},     {1, {1, 10}}, {2, {2, kNone}}, {3, {3, kNone}},
                                  {4, {4, kNone}}, {5, {5, 50}}, {6, {6, kNone}}, {7, {7, 70}}};
    const Repaired repaired(resampled(1, 2, OnGap::Nan), rows);
    EXPECT_EQ(repaired.text, "0: 0 0|1: 1 10|||2: 2 nan*, 3: 3 nan*|4: 4 nan*, 5: 5 50||6: 6 60, 7: 7 70|");
    const SourceAccount account = repaired.account();
    EXPECT_EQ(spotText(account.repairs.gaps), "1, line 7 from 1 to 5");
    EXPECT_EQ(account.repairs.rowsFilled, 3u);
    EXPECT_EQ(account.notes.back(), "1 gap of single pins while the rows went on, the first of 'p1'");
    EXPECT_EQ(Repaired(resampled(1, 2, OnGap::Keep), rows).text,
              "0: 0 0|1: 1 10|||2: 2 -, 3: 3 -|4: 4 -, 5: 5 50||6: 6 60, 7: 7 70|");
    EXPECT_EQ(Repaired(resampled(1, 4, OnGap::Nan), rows).account().repairs.gaps.count, 0u);
    const std::string failed = Repaired(resampled(1, 2, OnGap::Error), rows).text;
    EXPECT_NE(
        failed.find("row 6: found a gap of the pin 'p1' from 1 s to 5 s; expected steps of at most 2 s"),
        std::string::npos)
        << failed;
    const std::vector<Given> ending(rows.begin(), rows.begin() + 5);
    EXPECT_EQ(spotText(Repaired(resampled(1, 2), ending).account().repairs.gaps), "1, line 6 from 1 to 4")
        << "it needn't come again";
    TimeRepairPlan held = resampled(1, 2);
    held.pins = {{"fast", 1, false}, {"flag", 1, true}};
    EXPECT_EQ(Repaired(held, rows).account().repairs.gaps.count, 0u) << "what is held may change seldom";
}

TEST(Resampling, WithoutALimitAJumpIsToldAsEver) {
    std::vector<double> times;
    for (int i = 0; i < 20; ++i)
        times.push_back(i + (i < 10 ? 0 : 50));
    EXPECT_EQ(spotText(Repaired(resampled(1), rowsAt(times)).account().jumps), "1, line 12 from 9 to 60");
}

TEST(Resampling, TheStartIsTheOriginOfItsTimes) {
    TimeRepairPlan plan = resampled(2);
    plan.start = 1.25;
    plan.end = 2.75;
    const std::vector<Given> rows{{0, {0}}, {0.5, {5}}, {1.5, {15}}, {2.5, {25}}, {3.5, {35}}, {4, {40}}};
    const Repaired repaired(plan, rows);
    EXPECT_EQ(repaired.text, "||1.25: 12.5|1.75: 17.5, 2.25: 22.5|||") << "the rows around them lead there";
    EXPECT_EQ(repaired.taken, 6u);
    EXPECT_EQ(repaired.account().repairs.resampledRows, 2u);
    plan.start = -2;
    EXPECT_EQ(Repaired(plan, {{0.25, {0}}, {1.25, {10}}}).text, "|0.5: 2.5, 1: 7.5|")
        << "two recordings agree";
}

TEST(Resampling, LargeStampsLoseNoRowAtTheStartNorBehindAGapThatStays) {
    TimeRepairPlan plan = resampled(1000, 0.02, OnGap::Keep);
    plan.start = 1500000000.129;
    std::vector<double> times;
    for (int i = 0; i < 4000; ++i)
        if (i % 400 < 360) times.push_back(1500000000.0 + (129 + i) / 1000.0);
    const Repaired repaired(plan, rowsAt(times));
    ASSERT_EQ(repaired.out.size(), times.size());
    for (std::size_t i = 0; i < times.size(); ++i)
        EXPECT_EQ(repaired.out[i].values[0], 10.0 * static_cast<double>(i + 1)) << i;
}

TEST(Resampling, TimesThatCantBeToldApartAreRefused) {
    EXPECT_EQ(
        Repaired(resampled(100), rowsAt({1.5e18, 1.5e18})).text,
        "row 1: found a time stamp of 1.5e+18 s, so large that 'resample' can't tell times 0.01 s apart; "
        "expected times in seconds that count from less long ago, as 'timeUnit' and 'timeStart' make them");
    EXPECT_EQ(Repaired(resampled(100), rowsAt({1.5e9, 1500000000.01})).out.size(), 2u);
    TimeRepairPlan plan = resampled(1);
    plan.start = -1e300;
    EXPECT_TRUE(Repaired(plan, rowsAt({0, 1})).text.starts_with("row 1: found a time stamp of 0 s"));
    EXPECT_EQ(Repaired(resampled(1e-300), rowsAt({0, 1, 1e9})).out.size(), 1u);
}

/// A row of many values takes its room, so that fewer of them may wait.
TEST(Resampling, AWidePinMayBeSilentForFewerRows) {
    TimeRepairPlan plan = resampled(1);
    plan.pins = {{"wide", 1000000, false}, {"slow", 1, false}};
    TimeRepair repair(plan);
    TimedRow row;
    row.resize(2, 1000001);
    row.hasSample = {1, 1};
    int taken = 0;
    while (!repair.take(row) && taken < 100) {
        while (repair.next() != nullptr) {
        }
        ++taken;
        row.time += 1.0;
        row.hasSample[1] = 0;
    }
    EXPECT_EQ(taken, 17);
}

TEST(Resampling, APinThatIsSilentForEverEndsTheRun) {
    TimeRepairPlan plan = resampled(1000);
    std::vector<Given> rows{{0, {0, 0}}};
    for (int i = 1; i < 140000; ++i)
        rows.push_back({0.001 * i, {0, kNone}});
    const Repaired repaired(plan, rows);
    EXPECT_EQ(repaired.taken, 131074u);
    EXPECT_EQ(repaired.text.substr(repaired.text.find("row 1")),
              "row 131074: found more than 131072 rows without a sample of the pin 'p1', for whose next one "
              "'resample' "
              "waits; expected 'interpolate: {p1: hold}', or a source of its own for it");
}

TEST(TimeRepair, TakesNoMemoryInTheSteadyState) {
    TimeRepairPlan resampling = resampled(300, 0.5);
    TimeRepairPlan filling = filled(OnGap::Hold, 0.02);
    filling.onDuplicate = OnDuplicate::Drop;
    filling.onBackward = OnBackward::Drop;
    for (TimeRepairPlan plan : {resampling, filling}) {
        plan.pins = {{"fast", 3, false}, {"slow", 2, false}};
        TimeRepair repair(plan);
        TimedRow row;
        row.resize(2, 5);
        std::uint64_t out = 0;
        const auto feed = [&](int from, int to) {
            for (int i = from; i < to; ++i) {
                row.time = 0.01 * i + (i % 50 == 0 ? 0.0 : 0.001);
                row.hasSample[0] = 1;
                row.hasSample[1] = i % 10 == 0;
                ASSERT_FALSE(repair.take(row));
                while (repair.next() != nullptr)
                    ++out;
            }
        };
        feed(0, 100);
        const std::uint64_t before = out;
        const Support::AllocationCounter counter;
        feed(100, 2000);
        EXPECT_EQ(counter.count(), 0u);
        EXPECT_GT(out, before + 1000);
    }
}

} // namespace
