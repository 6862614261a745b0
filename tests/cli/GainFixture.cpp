// SPDX-License-Identifier: MIT
#include "tests/cli/GainFixture.h"

namespace Support {

Ended GainFixture::call(std::vector<std::string> arguments, const std::string& output) const {
    arguments.insert(arguments.begin(), QUILLMERE);
    return runProgram(arguments, folder.path(""), {.in = {}, .out = output});
}

} // namespace Support
