// SPDX-License-Identifier: MIT
#include "tests/host/kit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace Support {

namespace fs = std::filesystem;

std::string TemporaryFolder::write(std::string_view name, std::string_view text) const {
    std::ofstream file(path(name), std::ios::binary);
    file << text;
    if (!file.flush()) throw std::runtime_error("cannot write " + path(name));
    return path(name);
}

std::string TemporaryFolder::read(std::string_view name) const {
    std::ifstream file(path(name), std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path(name);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool TemporaryFolder::has(std::string_view name) const {
    return fs::exists(fs::symlink_status(path(name)));
}

int TemporaryFolder::count() const {
    int entries = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(folder.getPath()))
        ++entries;
    return entries;
}

} // namespace Support
