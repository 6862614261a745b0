// SPDX-License-Identifier: MIT
#include "Device.h"

#include "blocks/Block.h"
#include "plugin/PluginEntry.h"

namespace {

/// Makes samples of a device: 1-by-3 accelerations, with the device's own time stamps, one a step. Where the
/// device has none, the step waits, but no longer than somebody who turns a setting may wait for the step.
class OwnDevice final : public Filter {
public:
    static constexpr const char* kTypeName = "OwnDevice";

    explicit OwnDevice(const std::string& instanceName) : Filter(instanceName, true), out("out", this) {
        resizeSample(out.data.value, 1, 3);
    }

    void process() override {
        const auto reading = device.take(std::chrono::milliseconds(10));
        if (!reading) return;
        for (Eigen::Index i = 0; i < 3; ++i)
            out.data.value(i) = reading->acceleration[static_cast<std::size_t>(i)];
        out.send(reading->time);
    }
    const char* getTypeName() const override { return kTypeName; }

private:
    OutputPin<MatrixXd> out;
    Device device;
};

} // namespace

QUILLMERE_PLUGIN("OwnDevice", "1.0.0", OwnDevice)
