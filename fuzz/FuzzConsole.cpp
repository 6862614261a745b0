// SPDX-License-Identifier: MIT
// Requests at the console of a live run, a line each. The run has not started, so an input does the same
// every time.
#include "fuzz/Kit.h"
#include "host/control/ControlConsole.h"

#include <cstdlib>

using namespace Quillmere::Host;

namespace {
constexpr const char* kGraph = R"yaml(format: 1
blocks:
  - {id: noise, type: FilterGaussianWhiteNoiseGenerator}
  - {id: smooth, type: FilterButterworth}
  - {id: iir, type: FilterIIR}
  - {id: count, type: FilterPeriodCounter}
connections:
  - {from: noise, to: smooth.in}
  - {from: smooth, to: iir.in}
  - {from: iir, to: count.in}
)yaml";

/// A run and the settings that it has at first.
class Target {
public:
    Target() : run(job()), settings(run.getSettings().list()) {}

    void answer(std::string_view requests) {
        ControlConsole console(run, [](const std::string&) {});
        while (!requests.empty()) {
            const std::string_view line = requests.substr(0, requests.find('\n'));
            requests.remove_prefix(std::min(line.size() + 1, requests.size()));
            check(console.answer(line));
        }
    }
    void putBack() {
        for (const SettingState& setting : settings)
            if (!setting.isCommand && setting.isWritable)
                run.getSettings().write(setting.name, setting.value);
    }

private:
    /// Lines that begin with a blank, and then one that says how it went.
    static void check(std::string_view answer) {
        const bool isWhole = answer.ends_with('\n');
        std::size_t begin = 0;
        for (std::size_t end = 0; isWhole && (end = answer.find('\n', begin)) + 1 < answer.size();
             begin = end + 1)
            if (answer[begin] != ' ') std::abort();
        const std::string_view last = answer.substr(begin);
        if (!isWhole || !(last == "ok\n" || last.starts_with("error: "))) std::abort();
    }

    static Job job() {
        static const Fuzz::MemoryFile file;
        file.write(kGraph);
        return Job::fromFile(file.getPath(), Fuzz::catalogue());
    }

    LiveRun run;
    const std::vector<SettingState> settings;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Target target;
    const std::string_view requests = Fuzz::textOf(data, size);
    target.answer(requests);
    if (requests.find("set") != std::string_view::npos) target.putBack();
    return 0;
}
