// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/graph/BlockManual.h"
#include "host/plugins/BlockCatalogue.h"
#include "host/text/Complaint.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What people read of a block type: its page in the plug-in's manual (`manual/README.md` tells the keys).
/// Whatever the page doesn't say is empty. What the living block says itself, as kinds, defaults and limits,
/// isn't here.
struct QUILLMERE_API BlockPage {
    struct Pin {
        std::string name;
        std::string meaning = {};
        std::string shape = {};
        std::string unit = {};
    };
    struct Setting {
        std::string name; ///< Of a command, too.
        std::string meaning = {};
        std::string unit = {};
        std::string why = {}; ///< Why the default is what it is.
    };
    struct File {
        std::string name;
        std::string text = {};
    };
    struct Example {
        std::string text = {};
        std::vector<File> files = {}; ///< Recordings that the graph reads.
        std::string graph = {};
        std::vector<std::string> arguments = {}; ///< Of `quillmere run`, behind the graph.
        std::vector<File> results = {}; ///< What it writes; a line `...` stands for lines that aren't shown.
    };

    std::string category = {};
    std::string purpose = {};
    std::string text = {};
    std::string formula = {};
    std::vector<Pin> inputs = {}; ///< In the page's order, as are the others.
    std::vector<Pin> outputs = {};
    std::vector<Setting> settings = {};
    std::vector<std::string> odd = {};
    std::vector<std::string> mistakes = {};
    Example example = {};
    std::vector<std::string> related = {}; ///< Other types.
    BlockManual relations = {};            ///< What graphs need of it.

    /// Null when the page says nothing of it.
    const Pin* findInput(const std::string& name) const;
    const Pin* findOutput(const std::string& name) const;
    const Setting* findSetting(const std::string& name) const;

    /// The page of a type; nothing when its plug-in has none. What is wrong with it is complained of, and
    /// what can be understood is there. Of a type of the host's own it has what that says of itself. [setup]
    static std::optional<BlockPage> read(const std::string& type, const BlockCatalogue& catalogue,
                                         Complaints& complaints);
    /// Those of all types in the catalogue that have one, by type. [setup]
    static std::map<std::string, BlockPage> readAll(const BlockCatalogue& catalogue, Complaints& complaints);
    /// The page in a file. [setup]
    static BlockPage fromFile(const std::string& path, Complaints& complaints);
};

} // namespace Quillmere::Host
