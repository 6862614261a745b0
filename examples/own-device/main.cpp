// SPDX-License-Identifier: MIT
#include "Device.h"

#include "framework/Quillmere.h"
#include "host/plugins/BlockCatalogue.h"

#include <exception>
#include <iostream>
#include <vector>

/// own-device PLUGIN: smooths what a device gives for half a second, with a block of the plug-in, and has the
/// results in memory.
int main(int argc, char** argv) {
    using namespace Quillmere;
    using Core::MatrixXd;
    if (argc != 2) {
        std::cerr << "usage: own-device PLUGIN\n";
        return 2;
    }
    try {
        Host::BlockCatalogue catalogue;
        catalogue.load(argv[1]);
        const Host::BlockPtr smooth = catalogue.create("FilterButterworth", "smooth");
        if (smooth == nullptr) throw std::runtime_error("the plug-in has no FilterButterworth");
        smooth->getProperty("Order").setValueFromString("2");
        smooth->getProperty("RelativeCutOffFreq").setValueFromString("0.05");

        // The program's two ends; pins without a block.
        Core::OutputPin<MatrixXd> sender("device", nullptr);
        Core::InputPin<MatrixXd> receiver("results", nullptr);
        sender.attach(smooth->getInputPin("in"), false);
        smooth->getOutputPin("out").attach(receiver, false);

        std::vector<MatrixXd> results;
        Device device;
        for (double time = 0.0; time < 0.5;) {
            const auto reading = device.take(std::chrono::seconds(1));
            if (!reading) throw std::runtime_error("the device is silent");
            time = reading->time;
            sender.data.value = Eigen::Map<const MatrixXd>(reading->acceleration.data(), 1, 3);
            sender.send(time);
            smooth->process(); // several blocks: each once, senders before receivers
            if (receiver.hasData()) results.push_back(receiver.take());
        }
        std::cout << results.size() << " samples, the last " << results.back() << "\n";
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << "\n";
        return 1;
    }
    return 0;
}
