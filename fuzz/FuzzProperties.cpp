// SPDX-License-Identifier: MIT
// Texts for the settings of all blocks: a letter for the block, one for its setting, and the text. It goes
// both roads, that of the settings' own text form and that of graph files.
#include "framework/Quillmere.h"
#include "fuzz/Kit.h"
#include "host/graph/PropertyWriter.h"
#include "host/description/ValueReader.h"
#include "host/graph/BlockDescription.h"

#include <Poco/Exception.h>

#include <cstdlib>
#include <new>
#include <sstream>

using namespace Quillmere;

namespace {
constexpr long long kLargestMatrix = 1 << 16; ///< Elements; a text of ten letters may ask for 2^29.

bool asksForMuch(const std::string& text) {
    std::istringstream in(text);
    int rows = 0;
    int columns = 0;
    in >> rows >> columns;
    return rows > 0 && columns > 0 && static_cast<long long>(rows) * columns > kLargestMatrix;
}

/// A text that is taken gives a value whose own text gives that value again.
void writeText(Core::AbstractProperty& property, const std::string& text) {
    if (asksForMuch(text)) return;
    std::string first;
    std::string second;
    try {
        property.setValueFromString(text);
        property.getValueAsString(first);
        property.setValueFromString(first);
        property.getValueAsString(second);
    } catch (const Poco::Exception&) {
        return;
    } catch (const std::bad_alloc&) {
        return;
    }
    if (first != second) std::abort();
}

void writeValue(Core::AbstractProperty& property, const std::string& text) {
    Host::Complaints complaints;
    const auto value = Host::readValueText(text, "--set", false, complaints);
    if (!value) return;
    Host::writeProperties({{&property, &*value}}, complaints);
    if (!complaints.isEmpty()) return;
    static_cast<void>(Host::expectedText(Host::describe(property)));
    // What a message or a console shows is taken again and gives the same.
    const std::string shown = Host::valueText(Host::describe(property));
    const auto again = Host::readValueText(shown, "again", false, complaints);
    if (again) Host::writeProperties({{&property, &*again}}, complaints);
    if (!complaints.isEmpty() || Host::valueText(Host::describe(property)) != shown) std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const Host::BlockPtr block = Fuzz::blockOf(static_cast<std::uint64_t>(data[0] - 'A'));
    const auto& properties = block->getPropertyBag();
    const auto count = static_cast<std::size_t>(std::distance(properties.begin(), properties.end()));
    if (count == 0) return 0;
    Core::AbstractProperty& property =
        **std::next(properties.begin(), (data[1] - 'A' + 256) % static_cast<int>(count));
    const std::string text(Fuzz::textOf(data + 2, size - 2));
    writeText(property, text);
    writeValue(property, text);
    return 0;
}
