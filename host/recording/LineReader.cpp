// SPDX-License-Identifier: MIT
#include "host/recording/LineReader.h"

#include "host/ends/RecordingException.h"
#include "host/text/Complaint.h"

#include <cstring>
#include <string>

namespace Quillmere::Host {

namespace {
constexpr std::size_t kPieceSize = std::size_t{1} << 18;  // fits the second-level cache
constexpr std::size_t kLongestRow = std::size_t{1} << 26; // beyond it, the file is no table of numbers
} // namespace

LineReader::LineReader(std::unique_ptr<RecordingFile> openFile)
    : file(std::move(openFile)), piece(kPieceSize) {
    cursor = filled = begin = end = piece.data();
}

bool LineReader::next() {
    const char* from = cursor;
    const char* stop = nullptr;
    while ((stop = static_cast<const char*>(
                std::memchr(from, '\n', static_cast<std::size_t>(filled - from)))) == nullptr) {
        const std::ptrdiff_t searched = filled - cursor;
        if (!readAhead()) break;
        from = cursor + searched;
    }
    isCut = stop == nullptr;
    if (isCut) {
        if (cursor == filled) return false;
        stop = filled; // the last line, without a line end
    }
    begin = cursor;
    end = stop;
    cursor = stop == filled ? stop : stop + 1;
    if (end != begin && end[-1] == '\r') {
        --end;
        isCut = false; // half of a line end tells as much as a whole one
    }
    ++number;
    return true;
}

std::optional<std::string_view> LineReader::look(std::size_t& offset, bool mayWait) {
    std::size_t found = std::string_view::npos;
    while ((found = getAhead().find('\n', offset)) == std::string_view::npos)
        if ((!mayWait && !getCanReadAhead()) || !readAhead()) break;
    const bool isCutLine = found == std::string_view::npos;
    if (isCutLine && (!atEnd || offset >= getAhead().size())) return std::nullopt;
    std::string_view text = getAhead().substr(offset, isCutLine ? found : found - offset);
    offset += text.size() + (isCutLine ? 0 : 1);
    if (text.ends_with('\r')) text.remove_suffix(1);
    return text;
}

/// Moves what is left to the front of the piece and reads more behind it.
bool LineReader::readAhead() {
    if (atEnd) return false;
    const auto left = static_cast<std::size_t>(filled - cursor);
    bytesBefore += static_cast<std::uint64_t>(cursor - piece.data());
    std::memmove(piece.data(), cursor, left);
    if (left == piece.size()) {
        if (left >= kLongestRow)
            throw RecordingException({{file->getName() + ":" + std::to_string(number + 1)},
                                      "a row of more than 64 MiB",
                                      "a table of numbers"});
        piece.resize(piece.size() * 2);
    }
    cursor = piece.data();
    filled = piece.data() + left;
    const std::size_t count = file->read(piece.data() + left, piece.size() - left);
    atEnd = count == 0;
    filled += count;
    return !atEnd;
}

} // namespace Quillmere::Host
