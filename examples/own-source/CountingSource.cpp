// SPDX-License-Identifier: MIT
#include "framework/Quillmere.h"
#include "host/ends/Source.h"
#include "plugin/PluginEntry.h"

/// Counts to a hundred, ten numbers a second.
class CountingSource final : public Quillmere::Host::Source {
public:
    static constexpr const char* kTypeName = "CountingSource";
    explicit CountingSource(const std::string& name) : Source(name, true), out("count", this) {}
    const char* getTypeName() const override { return kTypeName; }

    void open(Quillmere::Host::Complaints&) override {}
    bool prepare() override { return next <= 100.0; }                // false at the end
    double getNextTimeStamp() const override { return next / 10.0; } // seconds
    void release() override { isReleased = true; }
    void process() override {
        if (!isReleased) return;
        isReleased = false;
        const double time = getNextTimeStamp();
        Quillmere::Core::resizeSample(out.data.value, 1, 1);
        out.data.value(0) = next++;
        out.send(time);
    }

private:
    Quillmere::Core::OutputPin<Quillmere::Core::MatrixXd> out;
    double next = 1.0;
    bool isReleased = false;
};

QUILLMERE_PLUGIN("OwnSource", "1.0.0", CountingSource)
