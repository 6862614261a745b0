// SPDX-License-Identifier: MIT
#include "tests/plugin/DynamicSymbols.h"

#include <elf.h>
#include <link.h>

#include <cstring>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace {
template <class T>
T at(const std::vector<char>& bytes, std::size_t offset) {
    T value;
    if (offset + sizeof value > bytes.size()) throw std::runtime_error("the file ends early");
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}
} // namespace

std::set<std::string> exportedNames(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
    const auto header = at<ElfW(Ehdr)>(bytes, 0);
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0)
        throw std::runtime_error(path + " is no shared object");
    const auto section = [&](std::size_t index) {
        return at<ElfW(Shdr)>(bytes, header.e_shoff + index * header.e_shentsize);
    };
    std::set<std::string> names;
    for (std::size_t i = 0; i < header.e_shnum; ++i) {
        const auto table = section(i);
        if (table.sh_type != SHT_DYNSYM) continue;
        const auto texts = section(table.sh_link);
        for (std::size_t offset = 0; offset < table.sh_size; offset += table.sh_entsize) {
            const auto symbol = at<ElfW(Sym)>(bytes, table.sh_offset + offset);
            const bool isDefined = symbol.st_shndx != SHN_UNDEF;
            if (isDefined && symbol.st_name != 0)
                names.insert(bytes.data() + texts.sh_offset + symbol.st_name);
        }
    }
    return names;
}
