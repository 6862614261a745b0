// SPDX-License-Identifier: MIT
#include "DeviceSource.h"

#include "host/ends/RecordingException.h"

using namespace Quillmere;

DeviceSource::DeviceSource(const std::string& instanceName) : Source(instanceName, true), out("out", this) {}

const std::vector<Host::HostBlock::SettingDescription>& DeviceSource::getSettingDescriptions() const {
    static const std::vector<SettingDescription> kSettings{
        {"seconds", "a number", "no end", "how long the device is read"}};
    return kSettings;
}

void DeviceSource::configure(const Host::GraphDescription::Block& description, const std::string&,
                             Host::Complaints& complaints) {
    for (const Host::GraphDescription::Setting& setting : description.settings) {
        if (setting.name == "seconds")
            seconds = Host::toNumber(setting.value, complaints);
        else
            refuseSetting(setting, complaints);
    }
}

void DeviceSource::open(Host::Complaints&) {
    device.emplace(); // one that isn't there: complaints.add({}, "no device", "one at the first port")
}

bool DeviceSource::prepare() {
    while (!getIsPrepared()) {
        if (stop.stop_requested()) throw Host::InterruptedException();
        reading = device->take(std::chrono::milliseconds(10)); // so long may Control-C have to wait
    }
    return !seconds || reading->time <= *seconds;
}

bool DeviceSource::getIsPrepared() {
    if (!reading) reading = device->take(std::chrono::milliseconds(0));
    return reading.has_value();
}

void DeviceSource::process() {
    if (!isReleased) return;
    isReleased = false;
    Core::resizeSample(out.data.value, 1, 3);
    for (int i = 0; i < 3; ++i)
        out.data.value(i) = reading->acceleration[static_cast<std::size_t>(i)];
    const double time = reading->time;
    reading.reset();
    out.send(time);
}
