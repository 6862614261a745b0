// SPDX-License-Identifier: MIT
// Graph files: read, written down and read back, built of living blocks, and run for some rounds.
#include "fuzz/Kit.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::runGraph(std::string(Fuzz::textOf(data, size)));
    return 0;
}
