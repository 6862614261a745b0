// SPDX-License-Identifier: MIT
#pragma once

#include "host/recording/DataChoice.h"
#include "host/recording/MatBytes.h"
#include "host/recording/RecordingFile.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// How a number lies in the file.
struct MatNumber {
    std::uint32_t type = 0; ///< As the form counts its types: 1 is a signed byte, 9 a 64-bit float.
    bool isSwapped = false; ///< The file's byte order isn't the machine's.

    /// In bytes; 0 for a type that is none of numbers.
    std::size_t getSize() const;
    double toDouble(const char* from) const;
};

/// The variables of a MAT file of version 5, as their makers' description of the form has it. Requires: the
/// file is no pipe.
class MatFile {
public:
    /// Where the numbers of an entry lie.
    struct Location {
        std::uint64_t begin = 0; ///< The stretch of the file, for `MatBytes`,
        std::uint64_t end = 0;
        bool isCompressed = false;
        std::uint64_t place = 0; ///< and where in it they begin.
        MatNumber number;
        std::vector<std::string> texts; ///< Of a cell array of texts.
    };

    /// Reads what there is; of the numbers nothing. Raises `RecordingException`.
    explicit MatFile(const RecordingFile& openFile);

    const std::vector<DataEntry>& getEntries() const { return entries; }
    const Location& getLocation(const DataEntry& entry) const;
    /// The one list of `count` texts beside an entry; empty where there is none, or several.
    std::vector<std::string> findNames(const DataEntry& data) const;

private:
    struct Tag;
    struct Matrix;

    std::uint32_t toWord(const char* bytes) const;
    Tag readTag(MatBytes& bytes) const;
    std::string readData(MatBytes& bytes, const Tag& tag, std::uint32_t type) const;
    std::string readText(MatBytes& bytes) const;
    Matrix readMatrix(MatBytes& bytes) const;
    void walk(MatBytes& bytes, const Location& where, const std::string& path, int depth);
    void walkStruct(MatBytes& bytes, const Location& where, const std::string& path, int depth);
    std::vector<std::string> readTexts(MatBytes& bytes, const Matrix& matrix) const;
    std::string locateNumbers(MatBytes& bytes, const Matrix& matrix, Location& where) const;

    const RecordingFile& file;
    bool isSwapped = false;
    std::vector<DataEntry> entries;
    std::vector<Location> locations;
};

} // namespace Quillmere::Host
