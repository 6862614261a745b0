// SPDX-License-Identifier: MIT
#include "python/extension/Catalogue.h"

#include "host/ends/HostBlock.h"
#include "host/ends/MainInput.h"
#include "host/plugins/PluginPlaces.h"
#include "host/recording/HostCatalogue.h"
#include "host/text/Complaint.h"

#include <algorithm>
#include <map>
#include <memory>

namespace Python {

using namespace Quillmere::Host;

namespace {
BlockCatalogue& catalogue() {
    // Never ended: blocks that live when the interpreter exits came from it.
    static BlockCatalogue& own = *[] {
        auto loaded = std::make_unique<HostCatalogue>();
        for (const std::string file : kOwnPluginFiles)
            if (const std::string path = findPluginFile(file.substr(3, file.size() - 6), *loaded);
                !path.empty())
                loaded->load(path);
        return loaded.release();
    }();
    return own;
}

TypeInfo readType(const std::string& type) {
    const BlockPtr block = catalogue().getIsHostType(type) ? nullptr : catalogue().create(type, type);
    if (block == nullptr || dynamic_cast<const HostBlock*>(block.get()) != nullptr)
        throw HostException(
            Complaint::unknown({}, "the block type '" + type + "'", type, catalogue().getTypeNames()));
    TypeInfo info;
    info.described = describe(*block);
    Complaints ofPage; // the test of the manual's pages tells them
    info.page = BlockPage::read(type, catalogue(), ofPage);
    if (const auto* const input = mainInputOf(*block)) info.mainInput = input->getName();
    const auto& outputs = info.described.outputs;
    const bool hasOut =
        std::any_of(outputs.begin(), outputs.end(), [](const auto& pin) { return pin.name == "out"; });
    if (!outputs.empty()) info.mainOutput = hasOut ? "out" : outputs.front().name;
    return info;
}
} // namespace

const BlockCatalogue& getCatalogue() {
    return catalogue();
}

void loadPlugin(const std::string& path) {
    catalogue().load(path);
}

const TypeInfo& getTypeInfo(const std::string& type) {
    static auto& known = *new std::map<std::string, TypeInfo>;
    const auto found = known.find(type);
    return found != known.end() ? found->second : known.emplace(type, readType(type)).first->second;
}

std::mutex& getSetupMutex() {
    static auto& mutex = *new std::mutex;
    return mutex;
}

} // namespace Python
