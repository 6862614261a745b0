// SPDX-License-Identifier: MIT
// A graph's timeline, in front of blocks that have settings of every kind, commands and open inputs.
#include "fuzz/Kit.h"

namespace {
constexpr const char* kGraph = R"yaml(format: 1
parameters: {p: 0.5, m: [[1, 2]]}
blocks:
  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x, y: y}}}
  - {id: gain, type: FilterGain}
  - {id: smooth, type: FilterButterworth}
  - {id: iir, type: FilterIIR}
  - {id: hold, type: FilterHysteresis}
  - {id: count, type: FilterPeriodCounter}
  - {id: still, type: FilterFlagStatic}
  - {id: out, type: RecordingSink, properties: {file: out.csv}}
connections:
  - {from: in.x, to: gain}
  - {from: gain, to: smooth.in}
  - {from: smooth, to: iir.in}
  - {from: iir, to: hold}
  - {from: hold, to: out.hold}
timeline:
)yaml";
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::runGraph(std::string(kGraph).append(Fuzz::textOf(data, size)));
    return 0;
}
