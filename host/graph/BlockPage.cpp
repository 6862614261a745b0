// SPDX-License-Identifier: MIT
#include "host/graph/BlockPage.h"

#include "host/description/Value.h"
#include "host/description/ValueReader.h"
#include "host/ends/HostBlock.h"

#include <algorithm>
#include <functional>

namespace Quillmere::Host {

namespace {

/// Takes what people read of a page to pieces.
class PageReader {
public:
    PageReader(BlockPage& target, Complaints& list) : page(target), complaints(list) {}

    void take(const Value& file) {
        takeMap(file, {{"category", text(page.category)},
                       {"purpose", text(page.purpose)},
                       {"text", text(page.text)},
                       {"formula", text(page.formula)},
                       {"inputs", [this](const Value& pins) { takePins(pins, page.inputs); }},
                       {"outputs", [this](const Value& pins) { takePins(pins, page.outputs); }},
                       {"settings", [this](const Value& settings) { takeSettings(settings); }},
                       {"odd", texts(page.odd)},
                       {"mistakes", texts(page.mistakes)},
                       {"example", [this](const Value& example) { takeExample(example); }},
                       {"related", texts(page.related)},
                       {"rate", [](const Value&) {}}, // these two are what graphs need
                       {"units", [](const Value&) {}}});
    }

private:
    using Taker = std::function<void(const Value&)>;
    struct Key {
        const char* name;
        Taker take;
    };

    Taker text(std::string& target) {
        return [this, &target](const Value& value) {
            if (value.isScalar())
                target = value.text;
            else
                complaints.add(value.where, value.describe(), "a text");
        };
    }

    Taker texts(std::vector<std::string>& target) {
        return [this, &target](const Value& value) {
            if (value.kind != Value::Kind::List)
                return complaints.add(value.where, value.describe(), "a list of texts");
            for (const Value& item : value.items)
                text(target.emplace_back())(item);
        };
    }

    bool getIsMap(const Value& value) {
        if (value.kind == Value::Kind::Map) return true;
        complaints.add(value.where, value.describe(), "a map");
        return false;
    }

    void takeMap(const Value& value, const std::vector<Key>& keys) {
        if (!getIsMap(value)) return;
        for (const Value::Entry& entry : value.entries) {
            const auto known =
                std::find_if(keys.begin(), keys.end(), [&](const Key& key) { return entry.key == key.name; });
            if (known != keys.end())
                known->take(entry.value);
            else
                complaints.add(
                    Complaint::unknown(entry.where, "the key '" + entry.key + "'", entry.key, namesOf(keys)));
        }
    }

    static std::vector<std::string> namesOf(const std::vector<Key>& keys) {
        std::vector<std::string> names;
        for (const Key& key : keys)
            names.emplace_back(key.name);
        return names;
    }

    void takePins(const Value& value, std::vector<BlockPage::Pin>& pins) {
        if (!getIsMap(value)) return;
        for (const Value::Entry& entry : value.entries) {
            BlockPage::Pin pin{.name = entry.key};
            takeMap(entry.value,
                    {{"meaning", text(pin.meaning)}, {"shape", text(pin.shape)}, {"unit", text(pin.unit)}});
            pins.push_back(std::move(pin));
        }
    }

    void takeSettings(const Value& value) {
        if (!getIsMap(value)) return;
        for (const Value::Entry& entry : value.entries) {
            BlockPage::Setting setting{.name = entry.key};
            takeMap(entry.value, {{"meaning", text(setting.meaning)},
                                  {"unit", text(setting.unit)},
                                  {"default", text(setting.why)}});
            page.settings.push_back(std::move(setting));
        }
    }

    Taker files(std::vector<BlockPage::File>& target) {
        return [this, &target](const Value& value) {
            if (!getIsMap(value)) return;
            for (const Value::Entry& entry : value.entries) {
                BlockPage::File file{.name = entry.key};
                text(file.text)(entry.value);
                target.push_back(std::move(file));
            }
        };
    }

    void takeExample(const Value& value) {
        BlockPage::Example& example = page.example;
        takeMap(value, {{"text", text(example.text)},
                        {"files", files(example.files)},
                        {"graph", text(example.graph)},
                        {"arguments", texts(example.arguments)},
                        {"results", files(example.results)}});
    }

    BlockPage& page;
    Complaints& complaints;
};

std::optional<BlockPage> pageOfHost(const std::string& type, const BlockCatalogue& catalogue) {
    const BlockPtr block = catalogue.create(type, type);
    const auto* const hostBlock = dynamic_cast<const HostBlock*>(block.get());
    if (hostBlock == nullptr || hostBlock->getPurpose().empty()) return std::nullopt;
    BlockPage page;
    page.purpose = hostBlock->getPurpose();
    return page;
}

template <class Part>
const Part* findIn(const std::vector<Part>& parts, const std::string& name) {
    const auto found =
        std::find_if(parts.begin(), parts.end(), [&](const Part& part) { return part.name == name; });
    return found == parts.end() ? nullptr : &*found;
}
} // namespace

const BlockPage::Pin* BlockPage::findInput(const std::string& name) const {
    return findIn(inputs, name);
}

const BlockPage::Pin* BlockPage::findOutput(const std::string& name) const {
    return findIn(outputs, name);
}

const BlockPage::Setting* BlockPage::findSetting(const std::string& name) const {
    return findIn(settings, name);
}

BlockPage BlockPage::fromFile(const std::string& path, Complaints& complaints) {
    BlockPage page;
    if (const auto file = readValueFile(path, complaints)) {
        PageReader(page, complaints).take(*file);
        page.relations = BlockManual::fromValue(*file, complaints);
    }
    return page;
}

std::optional<BlockPage> BlockPage::read(const std::string& type, const BlockCatalogue& catalogue,
                                         Complaints& complaints) {
    if (catalogue.getIsHostType(type)) return pageOfHost(type, catalogue);
    const std::string path = BlockManual::fileOf(type, catalogue);
    return path.empty() ? std::nullopt : std::optional(fromFile(path, complaints));
}

std::map<std::string, BlockPage> BlockPage::readAll(const BlockCatalogue& catalogue, Complaints& complaints) {
    std::map<std::string, BlockPage> pages;
    for (const auto& types : {catalogue.getTypeNames(), catalogue.getHostTypeNames()})
        for (const std::string& type : types)
            if (auto page = read(type, catalogue, complaints)) pages.emplace(type, std::move(*page));
    return pages;
}

} // namespace Quillmere::Host
