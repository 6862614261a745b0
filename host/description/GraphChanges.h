// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace Quillmere::Host {

/// What a caller changes in a graph for one run. `option` is what complaints name, such as `--param
/// cutoff=2`.
struct GraphChanges {
    struct Parameter {
        std::string name;
        std::string value; ///< YAML, as in the file.
        std::string option;
    };
    struct Setting {
        std::string block;
        std::string property;
        std::string value; ///< YAML, as in the file.
        std::string option;
    };
    struct File {
        std::string block;
        std::string path; ///< Relative to where the program runs.
        std::string option;
    };
    std::vector<Parameter> parameters = {};
    std::vector<Setting> settings = {};
    std::vector<File> inputs = {};
    std::vector<File> outputs = {};
};

} // namespace Quillmere::Host
