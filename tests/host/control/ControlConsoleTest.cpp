// SPDX-License-Identifier: MIT
#include "host/control/ControlConsole.h"

#include "tests/host/kit/LiveFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Support::Fifo;
using Support::sinkLine;
using Support::sourceLine;

class ControlConsoleTest : public Support::LiveFixture {
protected:
    ControlConsoleTest() : pipe(folder.path("pipe")) {
        pipe.write("t,x\n");
        prepare("format: 1\nblocks:\n" + sourceLine("in", "pipe", "x: x") +
                "  - {id: odd, type: OddSettings}\n  - {id: three, type: OddThrice}\n" +
                sinkLine("out", "out.csv") +
                "connections: [{from: in, to: odd.main in.put}, {from: odd.a, to: out.x}, {from: in, to: "
                "three}]\n");
        console = std::make_unique<ControlConsole>(*liveRun,
                                                   [this](const std::string& line) { told.push_back(line); });
    }

    struct Exchange {
        const char* request;
        const char* answer;
    };
    void expectAnswers(const std::vector<Exchange>& exchanges) {
        for (const Exchange& exchange : exchanges)
            EXPECT_EQ(console->answer(exchange.request), exchange.answer) << exchange.request;
    }

    Fifo pipe;
    std::vector<std::string> told;
    std::unique_ptr<ControlConsole> console; ///< Goes before the run.
};

TEST_F(ControlConsoleTest, SettingsAreSetAndReadAndCommandsFired) {
    expectAnswers({{"get odd.number", " 0\nok\n"},
                   {"set odd.number 2.5", "ok\n"},
                   {"get odd.number", " 2.5\nok\n"},
                   {"set odd.matrix [[1, 2], [3, 4]]", "ok\n"},
                   {"get odd.matrix", " [[1, 2], [3, 4]]\nok\n"},
                   {"set odd.choice \"0\"", "ok\n"},
                   {"get odd.choice", " 0\nok\n"},
                   {"fire odd.Reset", "ok\n"},
                   {"get odd.Reset", " \nok\n"}});
}

TEST_F(ControlConsoleTest, NamesWithBlanksStandInQuotes) {
    expectAnswers(
        {{"set \"odd.ranged whole\" 7", "ok\n"},
         {"get \"odd.ranged whole\"", " 7\nok\n"},
         {"get \"odd.number\"", " 0\nok\n"},
         {"list \"odd.ranged whole\"", " odd.ranged whole = 7  (a whole number from -3 to 10)\nok\n"},
         {"get \"odd.ranged whole", " 7\nok\n"},
         {"get odd.ranged whole", "error: found 'whole' behind it; expected 'get BLOCK.SETTING'\n"}});
}

TEST_F(ControlConsoleTest, BlanksBetweenWordsDoNotCount) {
    expectAnswers({{"  set \t odd.number   4  \r", "ok\n"}, {"\tget odd.number\r", " 4\nok\n"}});
}

TEST_F(ControlConsoleTest, AListShowsValuesAndWhatMayBeWritten) {
    expectAnswers(
        {{"list odd.[lR]*", " odd.locked = 0  (a number, not writable)\n odd.Reset  (command)\nok\n"},
         {"list odd.fl*", " odd.flag = false  (true or false)\nok\n"},
         {"list nothing", "ok\n"},
         {"list odd.* x", "error: found 'x' behind it; expected 'list [PATTERN] [--json]'\n"}});
    const std::string all = console->answer("list");
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 13) << all;
    EXPECT_EQ(console->answer("list *"), all);
}

TEST_F(ControlConsoleTest, AListForProgramsIsItsJson) {
    const std::string wanted = R"( {
   "settings": [
     {
       "name": "odd.ranged whole",
       "kind": "whole number",
       "value": 7,
       "text": "7",
       "expected": "a whole number from -3 to 10",
       "writable": true
     }
   ]
 }
ok
)";
    expectAnswers(
        {{"set \"odd.ranged whole\" 7", "ok\n"},
         {"list odd.ra*e --json", wanted.c_str()},
         {"list --json \"odd.ranged whole\"", wanted.c_str()},
         {"list \"--json\"", "ok\n"},
         {"list odd.* --json x", "error: found 'x' behind it; expected 'list [PATTERN] [--json]'\n"}});
    EXPECT_EQ(console->answer("list --json"), console->answer("list * --json"));
}

TEST_F(ControlConsoleTest, RefusalsAnswerInOneLine) {
    expectAnswers({
        {"set odd.locked 1", "error: Property 'locked' is not writable\n"},
        {"set \"odd.ranged whole\" 11", "error: 11 does not fit in [-3;10], (step : 1)\n"},
        {"set odd.number", "error: found no value for 'odd.number'; expected 'set BLOCK.SETTING VALUE'\n"},
        {"set", "error: found nothing behind it; expected 'set BLOCK.SETTING VALUE'\n"},
        {"get", "error: found nothing behind it; expected 'get BLOCK.SETTING'\n"},
        {"fire", "error: found nothing behind it; expected 'fire BLOCK.COMMAND'\n"},
        {"fire odd.Reset now", "error: found 'now' behind it; expected 'fire BLOCK.COMMAND'\n"},
        {"fire odd.flag",
         "error: found the setting 'odd.flag'; expected a command, which is fired, not set\n"},
        {"get odd.numbr",
         "error: found the setting 'numbr' of 'odd'; expected one of flag, whole, count, number, ranged "
         "whole, ranged.number, choice, matrix, locked, unlock and Reset; did you mean number?\n"},
        {"get even.number", "error: found the block 'even'; expected one of in, odd, three and out\n"},
        {"watch", "error: found nothing behind it; expected 'watch PATTERN'\n"},
        {"watch even.*", "error: found no setting that 'even.*' matches; expected one at least\n"},
        {"watch odd.* x", "error: found 'x' behind it; expected 'watch PATTERN'\n"},
        {"stats now", "error: found 'now' behind it; expected 'stats [--json]'\n"},
        {"state x", "error: found 'x' behind it; expected 'state'\n"},
        {"stop please", "error: found 'please' behind it; expected 'stop'\n"},
        {"stpo", "error: found 'stpo'; expected one of set, get, fire, list, watch, stats, state, stop and "
                 "help; did you mean stop?\n"},
        {"", "error: found ''; expected one of set, get, fire, list, watch, stats, state, stop and help\n"},
    });
    EXPECT_EQ(liveRun->getState(), LiveRun::State::Ready) << "nothing has stopped it";
}

TEST_F(ControlConsoleTest, WordsOfMoreThanALineAreAnsweredInOne) {
    expectAnswers({{"set \"three.rise [units]\" -1e301", "error: found a fall; expected a rise\n"},
                   {"get \"three.ri\nse\"",
                    "error: found the setting 'ri\\nse' of 'three'; expected one of rise [units]\n"}});
}

TEST_F(ControlConsoleTest, AWatchTellsValuesNowAndEachChange) {
    expectAnswers({{"watch odd.[cw]*", " odd.whole = 0\n odd.count = 0\n odd.choice = LowPass\nok\n"},
                   {"set odd.whole 3", "ok\n"},
                   {"set odd.whole 3", "ok\n"},
                   {"set odd.number 3", "ok\n"},
                   {"watch odd.number", " odd.number = 3\nok\n"},
                   {"set odd.number 4", "ok\n"}});
    EXPECT_EQ(told, (std::vector<std::string>{"odd.whole = 3", "odd.number = 4"}));
    console = nullptr;
    liveRun->getSettings().write("odd.whole", "5");
    EXPECT_EQ(told.size(), 2u) << "nobody watches any more";
}

TEST_F(ControlConsoleTest, TheStateTellsHowFarTheRunIs) {
    EXPECT_EQ(console->answer("state"), " ready, 0 rows, 0 rounds\nok\n");
    liveRun->start();
    EXPECT_EQ(console->answer("state"), " running, 0 rows, 0 rounds\nok\n");
    pipe.write("0,1\n1,2\n");
    EXPECT_TRUE(Support::waitUntil([&] { return liveRun->getProgress().rounds == 2; }));
    EXPECT_EQ(console->answer("state"), " running, 2 rows, 2 rounds\nok\n");
    EXPECT_EQ(console->answer("stop"), "ok\n");
    EXPECT_EQ(end(), "");
    EXPECT_EQ(console->answer("state"), " ended, 2 rows, 2 rounds\nok\n");
}

TEST_F(ControlConsoleTest, ARunThatFailedSaysSo) {
    liveRun->start();
    liveRun->interrupt("enough");
    EXPECT_EQ(end(), "enough");
    EXPECT_EQ(console->answer("state"), " failed, 0 rows, 0 rounds\nok\n");
}

TEST_F(ControlConsoleTest, StatisticsAreTheirText) {
    std::string wanted;
    for (const std::string& line : liveRun->getStatistics().getText())
        wanted += " " + line + "\n";
    EXPECT_EQ(console->answer("stats"), wanted + "ok\n");
}

TEST_F(ControlConsoleTest, StatisticsForProgramsAreTheirJson) {
    std::istringstream json(liveRun->getStatistics().getJson());
    std::string wanted;
    for (std::string line; std::getline(json, line);)
        wanted += " " + line + "\n";
    EXPECT_EQ(console->answer("stats --json"), wanted + "ok\n");
    expectAnswers({{"stats --jso", "error: found '--jso' behind it; expected 'stats [--json]'\n"},
                   {"stats --json x", "error: found '--json x' behind it; expected 'stats [--json]'\n"}});
}

TEST_F(ControlConsoleTest, TheHelpIsTheTableOfRequests) {
    EXPECT_EQ(console->answer("help"),
              " set BLOCK.SETTING VALUE  write a setting; values are written as in a graph file\n"
              " get BLOCK.SETTING        its value\n"
              " fire BLOCK.COMMAND       fire a command\n"
              " list [PATTERN] [--json]  settings and commands, as in: list smooth.*\n"
              " watch PATTERN            values now, and again whenever one changes\n"
              " stats [--json]           what blocks and links have done so far\n"
              " state                    whether the run runs, and how far it is\n"
              " stop                     end the run; its results are whole\n"
              " help                     these\n"
              "ok\n");
}

TEST_F(ControlConsoleTest, EveryRequestOfTheTableIsAnswered) {
    for (const ControlRequest& request : ControlConsole::getRequests()) {
        const std::string word = request.word;
        EXPECT_TRUE((std::string(request.form) + " ").starts_with(word + " "));
        EXPECT_EQ(console->answer(word + " a b c").find("expected one of set"), std::string::npos) << word;
        EXPECT_EQ(request.goesOn, word == "watch");
    }
}

} // namespace
