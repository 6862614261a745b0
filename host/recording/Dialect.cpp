// SPDX-License-Identifier: MIT
#include "host/recording/Dialect.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace Quillmere::Host {

namespace {

using namespace std::string_view_literals;

struct Signature {
    std::string_view bytes; ///< At the file's begin.
    const char* found;
    const char* expected;
};

constexpr const char* kUnpacked = "the table in it, unpacked";
constexpr const char* kExported = "a CSV table, exported by the program that wrote it";
constexpr const char* kUtf8 = "the same text in UTF-8";

// As their specifications give them.
constexpr std::array kSignatures{
    Signature{"\x1F\x8B"sv, "a file compressed by gzip", kUnpacked},
    Signature{"BZh91AY&SY"sv, "a file compressed by bzip2", kUnpacked},
    Signature{"\xFD"
              "7zXZ\0"sv,
              "a file compressed by xz", kUnpacked},
    Signature{"\x28\xB5\x2F\xFD"sv, "a file compressed by zstd", kUnpacked},
    Signature{"PK\x03\x04"sv, "a ZIP archive, as spreadsheets are too", kExported},
    Signature{"\x89HDF\r\n\x1A\n"sv, "an HDF5 file", kExported},
    Signature{"MATLAB 5.0 MAT-file"sv, "a MAT file", kExported},
    Signature{"%PDF-"sv, "a PDF document", kExported},
    Signature{"\xFF\xFE"sv, "text in UTF-16", kUtf8},
    Signature{"\xFE\xFF"sv, "text in UTF-16", kUtf8},
};

/// The cells of a row that is separated by `separator`, without blanks and quotes around them.
std::vector<std::string> split(const std::string& row, char separator) {
    std::vector<std::string> cells;
    std::size_t begin = 0;
    for (std::size_t end = 0; end != std::string::npos; begin = end + 1) {
        end = row.find(separator, begin);
        const std::string cell = row.substr(begin, end - begin);
        const std::size_t first = cell.find_first_not_of(" \t\"");
        const std::size_t last = cell.find_last_not_of(" \t\"");
        cells.push_back(first == std::string::npos ? "" : cell.substr(first, last - first + 1));
        if (end == std::string::npos) break;
    }
    return cells;
}

} // namespace

Dialect dialectOf(std::string_view head) {
    for (const Signature& signature : kSignatures)
        if (head.starts_with(signature.bytes)) return {signature.found, signature.expected};
    const std::string_view line = head.substr(0, head.find('\n'));
    const std::size_t nul = line.find('\0');
    // Names in plain letters have a NUL beside each in UTF-16.
    if (nul == 1 || (nul == 0 && line.size() > 1 && line[1] != '\0')) return {"text in UTF-16", kUtf8};
    if (nul != std::string_view::npos) return {"a file that is no text", kExported};
    const std::size_t lineEnd = line.find('\r');
    if (lineEnd != std::string_view::npos && line.find_first_not_of('\r', lineEnd) != std::string_view::npos)
        return {"lines that end with CR alone", "LF or CRLF at the end of each"};
    return {};
}

std::string separatorOf(const std::vector<std::string>& columns, const std::string& wanted) {
    std::string row;
    for (const std::string& column : columns)
        row += (row.empty() ? "" : ",") + column;
    constexpr std::array<std::pair<char, const char*>, 4> kSeparators{
        {{';', "';'"}, {'\t', "tabs"}, {'|', "'|'"}, {' ', "blanks"}}};
    for (const auto& [separator, text] : kSeparators) {
        const std::vector<std::string> cells = split(row, separator);
        if (cells.size() > columns.size() && std::find(cells.begin(), cells.end(), wanted) != cells.end())
            return text;
    }
    return {};
}

} // namespace Quillmere::Host
