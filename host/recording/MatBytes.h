// SPDX-License-Identifier: MIT
#pragma once

#include "host/recording/RecordingFile.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace Quillmere::Host {

/// Bytes of a stretch of a file, one behind the other, unpacked where they are compressed. A copy goes on
/// from the same place by itself. Its end and what is damaged raise `RecordingException`.
class MatBytes {
public:
    /// The bytes of `file` from `begin` to before `end`. Requires: `file` is one, no pipe, and outlives this.
    MatBytes(const RecordingFile& file, std::uint64_t begin, std::uint64_t end, bool isCompressed);
    MatBytes(const MatBytes& other);
    MatBytes(MatBytes&& other) noexcept;
    MatBytes& operator=(const MatBytes&) = delete;
    ~MatBytes();

    void read(char* to, std::size_t count);
    void skip(std::uint64_t count);
    /// Goes on to the end, where what was compressed has a checksum.
    void finish();
    /// Bytes that were read or skipped.
    std::uint64_t getPlace() const { return place; }
    [[noreturn]] void refuse(const std::string& what) const;

private:
    struct Stream;

    std::size_t take(char* to, std::size_t count);

    const RecordingFile* file;
    std::uint64_t at; ///< In the file: what isn't taken yet.
    std::uint64_t end;
    std::uint64_t place = 0;
    std::unique_ptr<Stream> stream; ///< Null where nothing is compressed.
};

} // namespace Quillmere::Host
