// SPDX-License-Identifier: MIT
#pragma once

#include "Device.h"

#include "framework/Quillmere.h"
#include "host/ends/Source.h"
#include "host/ends/WakingSource.h"

#include <optional>
#include <stop_token>
#include <string>
#include <vector>

/// A device as a source of a graph: 1-by-3 accelerations with the device's own time stamps, for so many
/// `seconds`, or until somebody ends the run.
class DeviceSource final : public Quillmere::Host::Source, public Quillmere::Host::WakingSource {
public:
    static constexpr const char* kTypeName = "OwnDevice";

    explicit DeviceSource(const std::string& instanceName);
    const char* getTypeName() const override { return kTypeName; }
    std::string getPurpose() const override { return "Reads accelerations from the device."; }
    const std::vector<SettingDescription>& getSettingDescriptions() const override;
    void configure(const Quillmere::Host::GraphDescription::Block& description, const std::string& folder,
                   Quillmere::Host::Complaints& complaints) override;

    void open(Quillmere::Host::Complaints& complaints) override;
    bool prepare() override;
    bool getIsPrepared() override;
    double getNextTimeStamp() const override { return reading->time; }
    void release() override { isReleased = true; }
    void process() override;

    bool getComesByItself() const override { return true; }
    int getDescriptor() const override { return device->getDescriptor(); }
    void setStop(const std::stop_token& token) override { stop = token; }

private:
    Quillmere::Core::OutputPin<Quillmere::Core::MatrixXd> out;
    std::optional<Device> device;   ///< From `open` on.
    std::optional<Reading> reading; ///< What waits to be sent.
    std::optional<double> seconds;
    std::stop_token stop;
    bool isReleased = false;
};
