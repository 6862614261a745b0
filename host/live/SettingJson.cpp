// SPDX-License-Identifier: MIT
#include "host/live/SettingJson.h"

#include "host/graph/BlockJson.h"

namespace Quillmere::Host::Json {

Text settingState(const SettingState& state) {
    const auto textOfValue = [&](const std::string& words) { return state.isCommand ? null() : text(words); };
    return object({{"name", text(state.name)},
                   {"kind", text(nameOf(state.kind))},
                   {"value", heldValue(state.held)},
                   {"text", textOfValue(state.value)},
                   {"expected", textOfValue(state.expected)},
                   {"writable", flag(state.isWritable)}});
}

Text settingStates(const std::vector<SettingState>& states) {
    std::vector<Text> values;
    for (const SettingState& state : states)
        values.push_back(settingState(state));
    return object({{"settings", list(values)}});
}

} // namespace Quillmere::Host::Json
