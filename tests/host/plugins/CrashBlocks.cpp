// SPDX-License-Identifier: MIT
// A plug-in for the tests with a block that ends the process it runs in, or takes its time: what a recording
// holds decides.
#include "framework/Quillmere.h"
#include "plugin/EntryPoints.h"
#include "plugin/FilterFactory.h"

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <thread>

namespace {

using namespace Quillmere::Core;

constexpr double kAborting = 666.0;
constexpr double kSlow = -1.0; ///< A millisecond each.

/// Passes on what it gets; aborts at 666.
class Crash final : public Filter {
public:
    static constexpr const char* kTypeName = "Crash";
    explicit Crash(const std::string& name) : Filter(name, true), in("in", this), out("out", this) {}
    void process() override {
        if (!in.hasData()) return;
        copySample(out.data.value, in.take());
        const double value = out.data.value(0);
        if (value == kAborting) {
            std::cerr << "nobody expects 666\n";
            std::abort();
        }
        if (value == kSlow) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        out.send(in.getTimeStamp());
    }
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
};

class CrashPlugin final : public DefaultPlugin {
public:
    CrashPlugin() : DefaultPlugin("Crash", "0.1") {
        addFactory(std::make_unique<FilterFactory<Crash>>(getName(), ComponentVersion(getVersion())));
    }
};

CrashPlugin* crash = nullptr;

} // namespace

void dllStartPlugin() {
    if (crash != nullptr) return;
    crash = new CrashPlugin();
    FlowManager::instance().getPluginManager().installPlugin(*crash);
}

void dllStopPlugin() {
    if (crash == nullptr) return;
    FlowManager::instance().getPluginManager().uninstallPlugin(*crash);
    delete crash;
    crash = nullptr;
}

const char* dllGetQuillmereVersion() {
    return kFrameworkVersion;
}
