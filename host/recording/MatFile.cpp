// SPDX-License-Identifier: MIT
#include "host/recording/MatFile.h"

#include "host/ends/RecordingException.h"
#include "host/text/Complaint.h"
#include "host/text/Counted.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <set>

namespace Quillmere::Host {

namespace {

constexpr std::uint64_t kHeader = 128;
constexpr std::uint64_t kTag = 8;
constexpr int kDeepest = 100;
constexpr std::size_t kMostEntries = 100'000;
constexpr std::uint64_t kLongestText = std::uint64_t{1} << 20;
constexpr std::uint64_t kMostNames = 10'000; // of columns, in a cell array of texts

// Types of data.
constexpr std::uint32_t kUint16 = 4;
constexpr std::uint32_t kInt32 = 5;
constexpr std::uint32_t kUint32 = 6;
constexpr std::uint32_t kMatrix = 14;
constexpr std::uint32_t kCompressed = 15;

// Classes of arrays; from the last on numbers.
constexpr std::uint32_t kCell = 1;
constexpr std::uint32_t kStruct = 2;
constexpr std::uint32_t kObject = 3;
constexpr std::uint32_t kChar = 4;
constexpr std::uint32_t kSparse = 5;
constexpr std::uint32_t kFirstNumbers = 6;
constexpr std::uint32_t kLastNumbers = 15;

constexpr std::uint32_t kComplexFlag = 0x800;

template <class Number>
double numberAt(const char* from, bool isSwapped) {
    std::array<char, sizeof(Number)> bytes;
    std::memcpy(bytes.data(), from, bytes.size());
    if (isSwapped) std::reverse(bytes.begin(), bytes.end());
    return static_cast<double>(std::bit_cast<Number>(bytes));
}

std::uint64_t paddingOf(std::uint64_t size) {
    return (8 - size % 8) % 8;
}

} // namespace

struct MatFile::Tag {
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    bool isSmall = false; ///< The data are in the tag.
    std::array<char, 4> data{};
};

struct MatFile::Matrix {
    std::uint32_t kind = 0; ///< Its class; 0 where there is nothing in it.
    bool isComplex = false;
    std::vector<std::uint64_t> shape;
    std::uint64_t elements = 0;
    std::string name;
    std::uint64_t end = 0; ///< Behind it.
};

std::size_t MatNumber::getSize() const {
    constexpr std::array<std::size_t, 14> kSizes{0, 1, 1, 2, 2, 4, 4, 4, 0, 8, 0, 0, 8, 8};
    return type < kSizes.size() ? kSizes[type] : 0;
}

double MatNumber::toDouble(const char* from) const {
    switch (type) {
    case 1:
        return numberAt<std::int8_t>(from, isSwapped);
    case 2:
        return numberAt<std::uint8_t>(from, isSwapped);
    case 3:
        return numberAt<std::int16_t>(from, isSwapped);
    case 4:
        return numberAt<std::uint16_t>(from, isSwapped);
    case 5:
        return numberAt<std::int32_t>(from, isSwapped);
    case 6:
        return numberAt<std::uint32_t>(from, isSwapped);
    case 7:
        return numberAt<float>(from, isSwapped);
    case 12:
        return numberAt<std::int64_t>(from, isSwapped);
    case 13:
        return numberAt<std::uint64_t>(from, isSwapped);
    default:
        return numberAt<double>(from, isSwapped);
    }
}

MatFile::MatFile(const RecordingFile& openFile) : file(openFile) {
    std::array<char, kHeader> header;
    const auto refuseEnd = [&](std::uint64_t behind) {
        throw RecordingException({{file.getName()},
                                  "its end behind " + counted(file.getSize(), "byte") +
                                      ", in what begins at byte " + std::to_string(behind),
                                  "a MAT file that is whole"});
    };
    if (file.readAt(0, header.data(), header.size()) < header.size()) refuseEnd(0);
    const bool isBig = header[126] == 'M';
    isSwapped = isBig != (std::endian::native == std::endian::big);
    std::uint64_t at = kHeader;
    while (at < file.getSize()) {
        std::array<char, kTag> tag;
        if (file.readAt(at, tag.data(), tag.size()) < tag.size()) refuseEnd(at);
        const std::uint32_t type = toWord(tag.data());
        const std::uint64_t end = at + kTag + toWord(tag.data() + 4);
        if (end > file.getSize()) refuseEnd(at);
        if (type == kMatrix || type == kCompressed) {
            Location where;
            where.isCompressed = type == kCompressed;
            where.begin = where.isCompressed ? at + kTag : at;
            where.end = end;
            MatBytes bytes(file, where.begin, where.end, where.isCompressed);
            walk(bytes, where, "", 0);
        } else {
            MatBytes(file, at, end, false).refuse("no variable, but data of type " + std::to_string(type));
        }
        at = end;
    }
}

std::uint32_t MatFile::toWord(const char* bytes) const {
    return static_cast<std::uint32_t>(numberAt<std::uint32_t>(bytes, isSwapped));
}

MatFile::Tag MatFile::readTag(MatBytes& bytes) const {
    std::array<char, kTag> read;
    bytes.read(read.data(), read.size());
    const std::uint32_t word = toWord(read.data());
    Tag tag;
    tag.isSmall = word >> 16 != 0;
    tag.type = tag.isSmall ? word & 0xFFFF : word;
    tag.size = tag.isSmall ? word >> 16 : toWord(read.data() + 4);
    std::copy_n(read.begin() + 4, tag.data.size(), tag.data.begin());
    if (tag.isSmall && tag.size > tag.data.size()) bytes.refuse("a part that doesn't fit in its place");
    return tag;
}

/// The bytes of a part that must be of `type`, with what fills up behind it skipped.
std::string MatFile::readData(MatBytes& bytes, const Tag& tag, std::uint32_t type) const {
    if (tag.type != type || tag.size > kLongestText)
        bytes.refuse("data of type " + std::to_string(tag.type) + " where those of type " +
                     std::to_string(type) + " belong");
    if (tag.isSmall) return {tag.data.data(), tag.size};
    std::string data(tag.size, '\0');
    bytes.read(data.data(), data.size());
    bytes.skip(paddingOf(tag.size));
    return data;
}

/// A part whose bytes are letters; writers don't agree on its type.
std::string MatFile::readText(MatBytes& bytes) const {
    const Tag tag = readTag(bytes);
    return readData(bytes, tag, tag.type);
}

/// Reads what stands in front of an array's elements.
MatFile::Matrix MatFile::readMatrix(MatBytes& bytes) const {
    const Tag tag = readTag(bytes);
    if (tag.type != kMatrix || tag.isSmall) bytes.refuse("no array where one belongs");
    Matrix matrix;
    matrix.end = bytes.getPlace() + tag.size;
    if (tag.size == 0) return matrix;
    const std::string flags = readData(bytes, readTag(bytes), kUint32);
    if (flags.size() != 8) bytes.refuse("an array without its class");
    matrix.kind = toWord(flags.data()) & 0xFF;
    matrix.isComplex = (toWord(flags.data()) & kComplexFlag) != 0;
    if (matrix.kind == 0 || matrix.kind > kLastNumbers) return matrix; // functions and the like
    const std::string shape = readData(bytes, readTag(bytes), kInt32);
    if (shape.size() < 8 || shape.size() % 4 != 0) bytes.refuse("an array without its size");
    matrix.elements = 1;
    for (std::size_t i = 0; i < shape.size(); i += 4) {
        matrix.shape.push_back(toWord(shape.data() + i));
        matrix.elements *= matrix.shape.back();
        // An array has four bytes for its length.
        if (matrix.elements > 0xFFFFFFFF) bytes.refuse("an array with more elements than it can have");
    }
    matrix.name = readText(bytes);
    return matrix;
}

void MatFile::walk(MatBytes& bytes, const Location& around, const std::string& path, int depth) {
    const Matrix matrix = readMatrix(bytes);
    const std::string own = path.empty() ? matrix.name : path;
    if (depth > kDeepest || entries.size() > kMostEntries) bytes.refuse("more structs than anybody can mean");
    DataEntry entry;
    entry.path = own;
    Location where = around;
    switch (matrix.kind) {
    case 0:
        entry.unfit = "nothing in it";
        break;
    case kCell:
        entry.unfit = "a cell array";
        where.texts = readTexts(bytes, matrix);
        break;
    case kStruct:
        entry.unfit = matrix.elements == 1 ? "a struct, which holds others" : "an array of structs";
        if (matrix.elements == 1) walkStruct(bytes, around, own, depth);
        break;
    case kObject:
        entry.unfit = "an object";
        break;
    case kChar:
        entry.unfit = "text";
        break;
    case kSparse:
        entry.unfit = "a sparse matrix";
        break;
    default:
        entry.unfit = locateNumbers(bytes, matrix, where);
        if (!entry.unfit.empty()) break;
        entry.rows = matrix.shape[0] == 1 ? matrix.shape[1] : matrix.shape[0];
        entry.width = static_cast<std::size_t>(matrix.shape[0] == 1 ? 1 : matrix.shape[1]);
    }
    if (!own.empty()) {
        entries.push_back(entry);
        locations.push_back(where);
    }
    if (bytes.getPlace() > matrix.end) bytes.refuse("an array that is longer than it says");
    // Of a variable as a whole nothing comes behind it, and unpacking it takes time.
    if (depth > 0) bytes.skip(matrix.end - bytes.getPlace());
}

void MatFile::walkStruct(MatBytes& bytes, const Location& where, const std::string& path, int depth) {
    const std::string length = readData(bytes, readTag(bytes), kInt32);
    const std::size_t each = length.size() == 4 ? toWord(length.data()) : 0;
    const std::string names = readText(bytes);
    if (each == 0 || names.size() % each != 0) bytes.refuse("a struct without the names of its fields");
    for (std::size_t begin = 0; begin < names.size(); begin += each) {
        const std::string field = names.substr(begin, each);
        walk(bytes, where, path + "/" + field.c_str(), depth + 1); // up to a NUL, which fills what is left
    }
}

/// The elements of a cell array where all of them are texts of a row each; else nothing.
std::vector<std::string> MatFile::readTexts(MatBytes& bytes, const Matrix& matrix) const {
    std::vector<std::string> texts;
    if (matrix.elements > kMostNames) return texts;
    for (std::uint64_t i = 0; i < matrix.elements; ++i) {
        const Matrix text = readMatrix(bytes);
        if (text.kind != kChar || text.shape.size() != 2 || text.shape[0] != 1) return {};
        const Tag tag = readTag(bytes);
        const std::string data = readData(bytes, tag, tag.type);
        std::string& plain = texts.emplace_back();
        const bool isWide = tag.type == kUint16;
        for (std::size_t c = 0; c + (isWide ? 2 : 1) <= data.size(); c += isWide ? 2 : 1) {
            const double code = MatNumber{isWide ? kUint16 : 2, isSwapped}.toDouble(data.data() + c);
            if (isWide && code > 127) return {}; // no plain text
            plain += static_cast<char>(static_cast<unsigned char>(code));
        }
        if (bytes.getPlace() > text.end) bytes.refuse("a text that is longer than it says");
        bytes.skip(text.end - bytes.getPlace());
    }
    return texts;
}

/// Finds where the numbers of an array lie; gives why they are none that make rows, or nothing.
std::string MatFile::locateNumbers(MatBytes& bytes, const Matrix& matrix, Location& where) const {
    if (matrix.kind < kFirstNumbers || matrix.kind > kLastNumbers) return "no numbers";
    if (matrix.isComplex) return "complex numbers";
    if (matrix.shape.size() > 2) return std::to_string(matrix.shape.size()) + " dimensions";
    if (matrix.elements == 0) return "nothing in it";
    const Tag tag = readTag(bytes);
    where.number = {tag.type, isSwapped};
    where.place = tag.isSmall ? bytes.getPlace() - tag.data.size() : bytes.getPlace();
    if (where.number.getSize() == 0) bytes.refuse("numbers of type " + std::to_string(tag.type));
    if (tag.size != matrix.elements * where.number.getSize())
        bytes.refuse(counted(tag.size, "byte") + " of numbers for " + counted(matrix.elements, "element"));
    if (where.place + tag.size > matrix.end) bytes.refuse("numbers behind the end of their array");
    return {};
}

const MatFile::Location& MatFile::getLocation(const DataEntry& entry) const {
    return locations.at(static_cast<std::size_t>(&entry - entries.data()));
}

std::vector<std::string> MatFile::findNames(const DataEntry& data) const {
    std::vector<std::string> found;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::vector<std::string>& texts = locations[i].texts;
        if (texts.size() != data.width || folderOf(entries[i].path) != folderOf(data.path)) continue;
        const std::set<std::string> distinct(texts.begin(), texts.end());
        if (distinct.size() != texts.size() || distinct.count("") != 0) continue;
        if (!found.empty()) return {};
        found = texts;
    }
    return found;
}

} // namespace Quillmere::Host
