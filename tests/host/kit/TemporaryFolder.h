// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/OwnFolder.h"

#include <string>
#include <string_view>

namespace Support {

/// A folder of its own for one test, removed with everything in it at the end.
class TemporaryFolder {
public:
    TemporaryFolder() : folder("quillmere-test") {} // said, so that there may be constant ones

    /// The path of a file in the folder.
    std::string path(std::string_view name) const { return (folder.getPath() / name).string(); }

    /// Writes a file and returns its path.
    std::string write(std::string_view name, std::string_view text) const;

    /// The text of a file. A file that isn't there fails the test.
    std::string read(std::string_view name) const;

    bool has(std::string_view name) const;

    /// How many files and folders are in it.
    int count() const;

private:
    OwnFolder folder;
};

} // namespace Support
