// SPDX-License-Identifier: MIT
#include "host/live/LiveSettings.h"

#include "host/live/SettingJson.h"
#include "tests/host/kit/LiveFixture.h"
#include "tests/host/kit/RefusalText.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Support::Fifo;
using Support::sinkLine;
using Support::sourceLine;
using Support::waitUntil;

class LiveSettingsTest : public Support::LiveFixture {
protected:
    LiveSettingsTest() : pipe(folder.path("pipe")) {
        pipe.write("t,x\n");
        start("format: 1\nlayouts: [{id: one}, {id: two}]\nblocks:\n" + sourceLine("in", "pipe", "x: x") +
              "  - {id: odd, type: OddSettings}\n  - {id: g, type: FilterGain, layout: two}\n" +
              sinkLine("out", "out.csv", "two") +
              "connections: [{from: in, to: odd.main in.put}, {from: odd.a, to: g, buffer: 9}, {from: g, to: "
              "out.x}]\n");
    }

    std::string refusalOf(const std::function<void()>& action) {
        try {
            action();
        } catch (const ControlException& exception) {
            return Support::refusalText(exception);
        }
        return "no refusal";
    }
    std::string valueAfterWriting(const std::string& name, const std::string& value) {
        liveRun->getSettings().write(name, value);
        return liveRun->getSettings().read(name).value;
    }

    Fifo pipe;
};

TEST_F(LiveSettingsTest, AListHasEverythingInTheOrderOfTheFile) {
    std::vector<std::string> lines;
    for (const SettingState& setting : liveRun->getSettings().list())
        lines.push_back(setting.name + " = " + setting.value + " (" + setting.expected + ")" +
                        (setting.isCommand ? " command" : "") + (setting.isWritable ? "" : " locked"));
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "odd.flag = false (true or false)", "odd.whole = 0 (a whole number)",
                         "odd.count = 0 (a whole number from 0 to 4294967295)", "odd.number = 0 (a number)",
                         "odd.ranged whole = 0 (a whole number from -3 to 10)",
                         "odd.ranged.number = 0.5 (a number from 0.5 to 1.5)",
                         "odd.choice = LowPass (one of LowPass, HiPass and 0, or an index from 0 to 2)",
                         "odd.matrix = [[0.5, 0.5]] (a matrix)", "odd.locked = 0 (a number) locked",
                         "odd.unlock = false (true or false)", "odd.Reset =  () command locked",
                         "g.Gain = 1 (a number)"}));
}

TEST_F(LiveSettingsTest, AStateHasTheValueItselfBesideItsText) {
    using Held = PropertyDescription::Held;
    liveRun->getSettings().write("odd.matrix", "[[1, 2], [3, 4]]");
    const Quillmere::Core::MatrixXd matrix{{1, 2}, {3, 4}};
    const std::pair<const char*, Held> rows[] = {{"odd.flag", false},        {"odd.whole", std::int64_t{0}},
                                                 {"odd.ranged.number", 0.5}, {"odd.choice", std::int64_t{0}},
                                                 {"odd.matrix", matrix},     {"odd.Reset", std::monostate{}}};
    for (const auto& [name, held] : rows)
        EXPECT_TRUE(liveRun->getSettings().read(name).held == held) << name;
    std::vector<Held> seen;
    const auto watch = liveRun->getSettings().observe(
        "odd.number", [&](const SettingState& setting) { seen.push_back(setting.held); });
    liveRun->getSettings().write("odd.number", "2.5");
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(std::get<double>(seen.front()), 2.5);
}

TEST_F(LiveSettingsTest, TheJsonOfAStateHasTypedValuesBesideTheirTexts) {
    liveRun->getSettings().write("odd.matrix", "[[1, 2], [3, 4]]");
    liveRun->getSettings().write("odd.number", "-.inf");
    const struct {
        const char* name;
        const char* json;
    } rows[] = {
        {"odd.flag", R"("kind": "flag","value": false,"text": "false","expected": "true or false")"},
        {"odd.number", R"("kind": "number","value": null,"text": "-inf","expected": "a number")"},
        {"odd.choice", R"("kind": "choice","value": 0,"text": "LowPass")"},
        {"odd.matrix", R"("kind": "matrix","value": [[1.0,2.0],[3.0,4.0]],"text": "[[1, 2], [3, 4]]")"},
        {"odd.locked", R"("writable": false)"},
        {"odd.Reset", R"("kind": "command","value": null,"text": null,"expected": null,"writable": false)"},
    };
    for (const auto& row : rows) {
        std::string json = Json::settingState(liveRun->getSettings().read(row.name));
        for (std::size_t at = 0; (at = json.find('\n', at)) != std::string::npos;)
            json.erase(at, json.find_first_not_of(" \n", at) - at);
        EXPECT_NE(json.find(row.json), std::string::npos) << json;
        EXPECT_NE(json.find("\"name\": \"" + std::string(row.name) + "\""), std::string::npos) << json;
    }
    EXPECT_EQ(Json::settingStates({}), "{\n  \"settings\": []\n}");
}

TEST_F(LiveSettingsTest, PatternsChoose) {
    const struct {
        const char* pattern;
        std::vector<std::string> names;
    } rows[] = {{"*.Gain", {"g.Gain"}},
                {"odd.ranged*", {"odd.ranged whole", "odd.ranged.number"}},
                {"odd.????", {"odd.flag"}},
                {"g.Gain", {"g.Gain"}},
                {"Gain", {}},
                {"*",
                 {"odd.flag", "odd.whole", "odd.count", "odd.number", "odd.ranged whole", "odd.ranged.number",
                  "odd.choice", "odd.matrix", "odd.locked", "odd.unlock", "odd.Reset", "g.Gain"}}};
    for (const auto& row : rows) {
        std::vector<std::string> names;
        for (const SettingState& setting : liveRun->getSettings().list(row.pattern))
            names.push_back(setting.name);
        EXPECT_EQ(names, row.names) << row.pattern;
    }
}

TEST_F(LiveSettingsTest, AFullNameIsFoundWhateverItHolds) {
    liveRun->stop();
    EXPECT_EQ(end(), "");
    pipe.write("t,x\n");
    prepare(
        "format: 1\nblocks:\n" + sourceLine("in", "pipe", "x: x") + sinkLine("out", "out.csv") +
        "  - {id: three, type: OddThrice}\nconnections: [{from: in, to: three}, {from: three, to: out.x}]\n");
    const std::string name = "three.rise [units]"; // brackets are a set of letters in a pattern
    const std::vector<SettingState> found = liveRun->getSettings().list(name);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found.front().name, name);
    std::string heard;
    const auto watch =
        liveRun->getSettings().observe(name, [&](const SettingState& state) { heard = state.value; });
    EXPECT_EQ(valueAfterWriting(name, "2"), "2");
    EXPECT_EQ(heard, "2");
}

TEST_F(LiveSettingsTest, ValuesAreWrittenAsInAGraphFile) {
    EXPECT_EQ(valueAfterWriting("odd.flag", "true"), "true");
    EXPECT_EQ(valueAfterWriting("odd.whole", "-7"), "-7");
    EXPECT_EQ(valueAfterWriting("odd.count", "4000000000"), "4000000000");
    EXPECT_EQ(valueAfterWriting("odd.number", "0.1234567890123"), "0.1234567890123") << "every digit";
    EXPECT_EQ(valueAfterWriting("odd.number", ".inf"), "inf");
    EXPECT_EQ(valueAfterWriting("odd.number", "-inf"), "-inf");
    EXPECT_EQ(valueAfterWriting("odd.ranged whole", "10"), "10");
    EXPECT_EQ(valueAfterWriting("odd.choice", "HiPass"), "HiPass");
    EXPECT_EQ(valueAfterWriting("odd.choice", "0"), "0") << "a label before an index";
    EXPECT_EQ(valueAfterWriting("odd.choice", "1"), "HiPass") << "an index";
    EXPECT_EQ(valueAfterWriting("odd.matrix", "[[1, 2], [3, 4.5]]"), "[[1, 2], [3, 4.5]]");
    EXPECT_EQ(valueAfterWriting("odd.unlock", "true"), "true");
    EXPECT_TRUE(liveRun->getSettings().read("odd.locked").isWritable) << "the block has opened it";
    EXPECT_EQ(valueAfterWriting("odd.locked", "3"), "3");
    EXPECT_NO_THROW(liveRun->getSettings().fire("odd.Reset"));
}

TEST_F(LiveSettingsTest, AWriteActsOnTheNextSample) {
    pipe.write("0,2\n");
    ASSERT_TRUE(waitUntil([&] { return linkStatistics("out.x").taken == 1; }));
    liveRun->getSettings().write("g.Gain", "-3");
    pipe.write("1,2\n");
    pipe.close();
    EXPECT_EQ(end(), "");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,2\n1,-6\n");
}

TEST_F(LiveSettingsTest, ARefusedWriteAnswersWithTheSettingsOwnWordsAndChangesNothing) {
    const struct {
        const char* name;
        const char* value;
        const char* refusal;
    } rows[] = {
        {"odd.locked", "2", "Property 'locked' is not writable"},
        {"odd.ranged whole", "11", "11 does not fit in [-3;10], (step : 1)"},
        {"odd.ranged.number", "0.25", "0.25 does not fit in [0.5;1.5], (step : 0)"},
        {"odd.ranged.number", ".nan", "nan does not fit in [0.5;1.5], (step : 0)"},
        {"odd.choice", "9", "Out of range"},
        {"odd.matrix", "[[]]", "a row at least"},
        // Before it comes to the setting:
        {"odd.choice", "LowPas",
         "found 'LowPas' for 'choice'; expected one of LowPass, HiPass and 0, or an index from 0 to 2; did "
         "you mean LowPass?"},
        {"odd.matrix", "[[1], [2, 3]]", "found a row of 2; expected rows of 1, as the first has"},
        {"odd.whole", "1.5", "found '1.5'; expected a whole number"},
        {"odd.whole", "3000000000",
         "found '3000000000' for 'whole'; expected a whole number that fits in 32 bits"},
        {"odd.count", "-1", "found '-1' for 'count'; expected a whole number from 0 to 4294967295"},
        {"odd.flag", "yes", "found 'yes'; expected true or false; did you mean true?"},
        {"odd.number", "high", "found 'high'; expected a number"},
        {"odd.number", "", "found nothing; expected a number"},
        {"odd.number", "[1",
         "found text that is neither YAML nor JSON (end of sequence flow not found); expected a value in "
         "YAML or JSON"},
        {"odd.Reset", "1", "found '1' for 'Reset'; expected a setting: a command has no value"},
        {"odd.none", "1",
         "found the setting 'none' of 'odd'; expected one of flag, whole, count, number, ranged whole, "
         "ranged.number, choice, matrix, locked, unlock and Reset"},
        {"g.Gian", "1", "found the setting 'Gian' of 'g'; expected one of Gain; did you mean Gain?"},
        {"in.file", "x", "found the setting 'file' of 'in'; expected something that is there"},
        {"h.Gain", "1", "found the block 'h'; expected one of in, odd, g and out"},
        {"Gain", "1", "found 'Gain'; expected BLOCK.SETTING"},
        {"", "1", "found ''; expected BLOCK.SETTING"},
    };
    std::vector<std::string> before;
    for (const SettingState& setting : liveRun->getSettings().list())
        before.push_back(setting.value);
    for (const auto& row : rows)
        EXPECT_EQ(refusalOf([&] { liveRun->getSettings().write(row.name, row.value); }), row.refusal)
            << row.name << " = " << row.value;
    std::vector<std::string> after;
    for (const SettingState& setting : liveRun->getSettings().list())
        after.push_back(setting.value);
    EXPECT_EQ(after, before);
}

TEST_F(LiveSettingsTest, AValueThatWouldNotEndIsRefusedAndTheRunGoesOn) {
    const auto refusal = [&](const std::string& value) {
        return refusalOf([&] { liveRun->getSettings().write("odd.matrix", value); });
    };
    EXPECT_EQ(refusal("&x [*x]"),
              "found a value that contains itself; expected a reference to a value that has ended");
    EXPECT_EQ(refusal("[[1, 2]], [3]"),
              "found more text behind the end of the first value; expected one value; "
              "a list stands in brackets");
    EXPECT_EQ(refusal(std::string(100000, '[')),
              "found lists or maps more than 100 levels deep; expected fewer");
    EXPECT_EQ(refusal(std::string(100000, 'x')),
              "found '" + std::string(80, 'x') +
                  "...'; expected a matrix as a list of rows, each a list of numbers; did you mean double "
                  "brackets, as in [[1, 2, 3]]?");
    EXPECT_EQ(valueAfterWriting("odd.matrix", "[[1, 2], [3, 4]]"), "[[1, 2], [3, 4]]");
}

TEST_F(LiveSettingsTest, OtherRefusals) {
    EXPECT_EQ(refusalOf([&] { liveRun->getSettings().fire("odd.whole"); }),
              "found the setting 'odd.whole'; expected a command, which is fired, not set");
    EXPECT_EQ(refusalOf([&] { liveRun->getSettings().fire("g.Reset"); }),
              "found the setting 'Reset' of 'g'; expected one of Gain");
    EXPECT_EQ(refusalOf([&] { static_cast<void>(liveRun->getSettings().read("g.gain")); }),
              "found the setting 'gain' of 'g'; expected one of Gain; did you mean Gain?");
    EXPECT_EQ(refusalOf([&] {
                  static_cast<void>(liveRun->getSettings().observe("h.*", [](const SettingState&) {}));
              }),
              "found no setting that 'h.*' matches; expected one at least");
}

TEST_F(LiveSettingsTest, AnObserverHearsOfRealChanges) {
    std::vector<std::string> heard;
    const auto watch = liveRun->getSettings().observe("odd.*", [&](const SettingState& setting) {
        heard.push_back(setting.name + " = " + setting.value + (setting.isWritable ? "" : " locked"));
    });
    liveRun->getSettings().write("odd.whole", "4");
    liveRun->getSettings().write("odd.whole", "4");
    liveRun->getSettings().write("g.Gain", "4");
    EXPECT_THROW(liveRun->getSettings().write("odd.ranged whole", "11"), ControlException);
    liveRun->getSettings().write("odd.unlock", "true");
    EXPECT_EQ(heard, (std::vector<std::string>{"odd.whole = 4", "odd.locked = 0", "odd.unlock = true"}))
        << "the block's handler goes first, and opens another setting";
}

TEST_F(LiveSettingsTest, AnObserverHearsOfEveryWriteOfEveryThreadAndOfNoneWhenItIsGone) {
    constexpr int kWriters = 4;
    constexpr int kWrites = 250;
    std::atomic<int> heard{0};
    std::atomic<bool> isGone{false};
    std::atomic<int> heardTooLate{0};
    const auto handler = [&](const SettingState&) {
        ++heard;
        if (isGone) ++heardTooLate;
    };
    auto watch = liveRun->getSettings().observe("*", handler);
    const auto writeFrom = [&](int writer) {
        const std::string name = writer % 2 == 0 ? "g.Gain" : "odd.number";
        for (int i = 0; i < kWrites; ++i)
            liveRun->getSettings().write(name, std::to_string(2 + writer * kWrites + i)); // no value twice
    };
    std::vector<std::thread> writers;
    for (int i = 0; i < kWriters; ++i)
        writers.emplace_back(writeFrom, i);
    for (std::thread& writer : writers)
        writer.join();
    EXPECT_EQ(heard, kWriters * kWrites);

    writers.clear();
    for (int i = 0; i < kWriters; ++i)
        writers.emplace_back(writeFrom, kWriters + i);
    EXPECT_TRUE(waitUntil([&] { return heard > kWriters * kWrites; }));
    watch.reset();
    isGone = true;
    for (std::thread& writer : writers)
        writer.join();
    EXPECT_EQ(heardTooLate, 0);
}

TEST_F(LiveSettingsTest, SettingsStayOpenBeforeTheStartAndBehindTheEnd) {
    liveRun->stop();
    EXPECT_EQ(end(), "");
    EXPECT_EQ(valueAfterWriting("g.Gain", "5"), "5");
    pipe.write("t,x\n");
    prepare("format: 1\nblocks:\n" + sourceLine("in", "pipe", "x: x") + sinkLine("out", "out.csv") +
            "  - {id: g, type: FilterGain}\nconnections: [{from: in, to: g}, {from: g, to: out.x}]\n");
    EXPECT_EQ(valueAfterWriting("g.Gain", "6"), "6");
    liveRun->start();
    pipe.write("0,1\n");
    pipe.close();
    EXPECT_EQ(end(), "");
    EXPECT_EQ(folder.read("out.csv"), "t,x[0]\n0,6\n");
}

/// Two pipes: of one the graph states the rate, of the other nobody knows it before its rows have come.
class LiveRateTest : public Support::LiveFixture {
protected:
    LiveRateTest() : stated(folder.path("stated")), timed(folder.path("timed")) {
        stated.write("x\n");
        timed.write("t,x\n");
        start(
            "format: 1\nblocks:\n"
            "  - {id: stated, type: RecordingSource, properties: {file: stated, rate: 100, pins: {x: x}}}\n" +
            sourceLine("timed", "timed", "x: x") +
            "  - {id: even, type: FilterButterworth, properties: {RelativeCutOffFreq: 4 Hz}}\n"
            "  - {id: other, type: FilterButterworth}\n"
            "  - {id: bouts, type: Durations, properties: {Gap: 1500 ms}}\n" +
            sinkLine("out", "out.csv", "main") +
            "connections: [{from: stated, to: even.in}, {from: timed, to: other.in}, {from: even, to: "
            "out.x}, {from: other, to: out.y}, {from: timed, to: bouts}]\n");
    }
    Fifo stated;
    Fifo timed;
};

TEST_F(LiveRateTest, AFrequencyIsConvertedByTheRateThatTheGraphStates) {
    EXPECT_EQ(liveRun->getSettings().read("even.RelativeCutOffFreq").value, "0.08");
    liveRun->getSettings().write("even.RelativeCutOffFreq", "5 Hz");
    EXPECT_EQ(liveRun->getSettings().read("even.RelativeCutOffFreq").value, "0.1");
    try {
        liveRun->getSettings().write("other.RelativeCutOffFreq", "5 Hz");
        FAIL() << "a rate that nobody knows";
    } catch (const ControlException& exception) {
        EXPECT_NE(std::string(exception.what()).find("can't be known before the run"), std::string::npos)
            << exception.what();
    }
    EXPECT_EQ(liveRun->getSettings().read("other.RelativeCutOffFreq").value, "0.05");
}

TEST_F(LiveRateTest, ASettingInSecondsTakesOtherUnitsOfTimeWithoutARate) {
    EXPECT_EQ(liveRun->getSettings().read("bouts.Gap").value, "1.5");
    liveRun->getSettings().write("bouts.Gap", "400 ms");
    EXPECT_EQ(liveRun->getSettings().read("bouts.Gap").value, "0.4");
    try {
        liveRun->getSettings().write("bouts.Gap", "1 Hz");
        FAIL() << "a frequency for a time";
    } catch (const ControlException& exception) {
        EXPECT_STREQ(exception.what(), "found '1 Hz' for 'Gap' of 'bouts' (Durations); expected a time, as "
                                       "0.2 s, or a number of seconds");
    }
    EXPECT_EQ(liveRun->getSettings().read("bouts.Gap").value, "0.4");
}

} // namespace
