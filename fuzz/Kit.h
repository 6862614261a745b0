// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/Graph.h"
#include "tests/support/OwnFolder.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// What the fuzzers share. Nothing that an input asks for is read or written but what stands here: inputs
/// name files at will, and a fuzzer has a user's rights.
namespace Fuzz {

std::string_view textOf(const std::uint8_t* data, std::size_t size);

/// A file that no folder holds.
class MemoryFile {
public:
    MemoryFile();
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    /// Replaces what is in it.
    void write(std::string_view text) const;
    const std::string& getPath() const { return path; }

private:
    int file;
    std::string path;
};

/// A folder in memory for results; it goes with the program.
class ResultFolder {
public:
    std::string path(const std::string& name) const { return folder.getPath().string() + "/" + name; }
    /// Removes what is in it.
    void empty() const;

private:
    Support::OwnFolder folder{"velmarind-fuzz", "/dev/shm"};
};

/// This project's plug-ins, loaded once.
const Quillmere::Host::BlockCatalogue& catalogue();

/// A new block of the catalogue's type number `index`, whatever the number.
Quillmere::Host::BlockPtr blockOf(std::uint64_t index);

/// Reads and builds the graph in `text`, with every source reading a small recording and every sink writing
/// to a folder of the fuzzer's own, and runs it for some rounds when nothing is wrong with it. A block that
/// raises ends the run, as it may.
void runGraph(const std::string& text);

} // namespace Fuzz
