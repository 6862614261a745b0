// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

/// All headers and sources of the project, relative to its root, in the order of their names.
std::vector<std::string> sourceFiles();

/// All that CMake reads, likewise.
std::vector<std::string> buildFiles();

/// Whether there is such a file; `path` is relative to the root.
bool fileExists(const std::string& path);

/// What is in it.
std::string textOf(const std::string& path);
