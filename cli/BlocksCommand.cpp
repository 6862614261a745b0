// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/BlockText.h"
#include "cli/GraphArguments.h"
#include "host/ends/HostBlock.h"
#include "host/graph/BlockJson.h"
#include "host/graph/BlockPage.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace Cli {

using namespace Quillmere::Host;

namespace {

/// What is wrong with pages is told, and the rest of them is shown: who asks can seldom mend them.
void printComplaints(const Complaints& complaints) {
    for (const Complaint& complaint : complaints.getSorted())
        std::cerr << complaint.getText() << "\n";
}

void printNames(const BlockCatalogue& catalogue) {
    for (const auto& types : {catalogue.getTypeNames(), catalogue.getHostTypeNames()})
        for (const std::string& type : types)
            std::cout << type << "\n";
}

/// Of those types that there are.
BlockPages readPages(const std::vector<std::string>& types, const BlockCatalogue& catalogue) {
    BlockPages pages;
    Complaints theirs; // told when they are asked for
    for (const std::string& type : types)
        if (auto page = BlockPage::read(type, catalogue, theirs)) pages.emplace(type, std::move(*page));
    return pages;
}

} // namespace

BlocksCommand::BlocksCommand(CLI::App& command) {
    CLI::Option* const shown =
        command.add_option("TYPE", type, "Show this block: what it does, its pins and settings, an example.");
    shown->type_name("NAME");
    CLI::Option* const json = command.add_flag("--json", asJson, "Print JSON.");
    command.add_flag("--names", asNames, "Print the names of all types, one a line.")
        ->excludes(shown)
        ->excludes(json);
    plugins.enter(command);
}

ExitCode BlocksCommand::run() {
    const BlockCatalogue catalogue = loadCatalogue(plugins);
    if (!type.empty()) {
        showType(catalogue);
    } else if (asNames) {
        printNames(catalogue);
    } else {
        Complaints complaints;
        const BlockPages pages = BlockPage::readAll(catalogue, complaints);
        std::cout << (asJson ? Json::blockManuals(catalogue, pages) + "\n" : listText(catalogue, pages));
        printComplaints(complaints);
    }
    return kDone;
}

void BlocksCommand::showType(const BlockCatalogue& catalogue) const {
    const BlockPtr block = createBlock(catalogue, type);
    Complaints complaints;
    const auto page = BlockPage::read(type, catalogue, complaints);
    const BlockPage* const told = page ? &*page : nullptr;
    const auto* const hostBlock = dynamic_cast<const HostBlock*>(block.get());
    const std::string plugin = catalogue.getPluginName(type);
    if (asJson) {
        std::cout << Json::blockOf(*block, catalogue, told) << "\n";
    } else {
        const std::string origin =
            catalogue.getIsHostType(type) ? "host" : plugin + " " + catalogue.getPluginVersion(type);
        const BlockPages related = told == nullptr ? BlockPages{} : readPages(told->related, catalogue);
        if (hostBlock != nullptr)
            std::cout << endText(*hostBlock, origin, page.value_or(BlockPage{}), related);
        else if (told != nullptr)
            std::cout << pageText(describe(*block), origin, *told, related);
        else
            std::cout << plainText(describe(*block), origin);
    }
    printComplaints(complaints);
}

} // namespace Cli
