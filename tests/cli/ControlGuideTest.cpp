// SPDX-License-Identifier: MIT
#include "host/control/ControlConsole.h"
#include "tests/cli/Program.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace {

using Quillmere::Host::ControlConsole;
using Quillmere::Host::ControlRequest;
using Texts = std::vector<std::string>;

/// The first cells of the rows below the heading `| request |`, without their quotes.
Texts formsOfTheGuide() {
    std::ifstream guide(GUIDES "/live.md");
    Texts forms;
    bool isWithin = false;
    for (std::string line; std::getline(guide, line);) {
        if (line.starts_with("| request |")) isWithin = true;
        if (isWithin && !line.starts_with("|")) break;
        if (isWithin && line.starts_with("| `")) forms.push_back(line.substr(3, line.find("` |") - 3));
    }
    return forms;
}

TEST(ControlGuide, TellsOfTheRequestsThatThereAre) {
    Texts forms;
    for (const ControlRequest& request : ControlConsole::getRequests())
        forms.emplace_back(request.form);
    EXPECT_EQ(formsOfTheGuide(), forms);
}

TEST(ControlGuide, TheCommandsHelpTellsOfThemToo) {
    const Support::TemporaryFolder folder;
    const std::string help = Support::runProgram({QUILLMERE, "ctl", "--help"}, folder.path("")).out;
    for (const std::string& line : ControlConsole::getHelp())
        EXPECT_NE(help.find("\n  " + line + "\n"), std::string::npos) << line << "\nin\n" << help;
}

} // namespace
