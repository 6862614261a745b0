// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/RecordingFile.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// The lines of a recording, one by one, ended by LF or CRLF.
///
/// Memory holds one piece of the file and no more; only a line longer than that, or who looks further ahead,
/// makes it larger. A line allocates nothing.
class QUILLMERE_API LineReader {
public:
    explicit LineReader(std::unique_ptr<RecordingFile> openFile);

    RecordingFile& getFile() { return *file; }
    const RecordingFile& getFile() const { return *file; }

    /// Finds the next line; false at the end of the file. Waits for it. [run]
    bool next();
    /// The line that `next` found, without its end; valid until the next call that isn't const.
    const char* getBegin() const { return begin; }
    const char* getEnd() const { return end; }
    std::string_view getText() const { return {begin, static_cast<std::size_t>(end - begin)}; }
    /// Passes over the first bytes of that line.
    void dropFront(std::size_t bytes) { begin += bytes; }
    /// Whether it ended with the file and not with a line end.
    bool getIsCut() const { return isCut; }
    /// 1 is the file's first.
    std::uint64_t getNumber() const { return number; }

    /// What has been read of the file and is still to come, line ends included.
    std::string_view getAhead() const { return {cursor, static_cast<std::size_t>(filled - cursor)}; }
    /// The same from the last line on that `next` found.
    std::string_view getHere() const { return {begin, static_cast<std::size_t>(filled - begin)}; }
    /// The line `offset` bytes behind what is next, without its end, and moves `offset` behind it; nothing at
    /// the end of the file. Waits only if it may: else it gives nothing too, unless `getIsAllAhead`.
    std::optional<std::string_view> look(std::size_t& offset, bool mayWait);
    /// Reads more behind that; false when there is nothing more. Waits.
    bool readAhead();
    /// Whether `readAhead` wouldn't wait.
    bool getCanReadAhead() const { return atEnd || file->getIsReadable(); }
    /// Whether the file has no more than what is ahead, as far as has been looked.
    bool getIsAllAhead() const { return atEnd; }

    std::uint64_t getBytesRead() const {
        return bytesBefore + static_cast<std::uint64_t>(cursor - piece.data());
    }

private:
    std::unique_ptr<RecordingFile> file;
    std::uint64_t bytesBefore = 0; ///< Bytes of the file in front of `piece`.
    std::vector<char> piece;       ///< What is in memory of the file.
    const char* cursor = nullptr;  ///< Where the next line begins.
    const char* filled = nullptr;  ///< The end of what has been read.
    bool atEnd = false;            ///< The file has no more bytes than those in `piece`.
    const char* begin = nullptr;
    const char* end = nullptr;
    bool isCut = false;
    std::uint64_t number = 0;
};

} // namespace Quillmere::Host
