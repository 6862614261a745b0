// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace Support {

/// A folder that goes with its owner, and everything in it. For tests, benchmarks and fuzzers.
class OwnFolder {
public:
    /// `kind` begins its name.
    explicit OwnFolder(const std::string& kind,
                       const std::filesystem::path& beneath = std::filesystem::temp_directory_path()) {
        std::string name = (beneath / (kind + "-XXXXXX")).string();
        if (::mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no folder can be made in " + beneath.string());
        folder = name;
    }
    ~OwnFolder() {
        std::error_code isKept; // there is nobody who could be told
        std::filesystem::remove_all(folder, isKept);
    }
    OwnFolder(const OwnFolder&) = delete;
    OwnFolder& operator=(const OwnFolder&) = delete;

    const std::filesystem::path& getPath() const { return folder; }

private:
    std::filesystem::path folder;
};

} // namespace Support
