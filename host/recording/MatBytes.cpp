// SPDX-License-Identifier: MIT
#include "host/recording/MatBytes.h"

#include "host/ends/RecordingException.h"
#include "host/text/Complaint.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace Quillmere::Host {

namespace {
constexpr std::size_t kPiece = 4096; // there is one for each column
constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;
} // namespace

struct MatBytes::Stream {
    Stream() {
        if (inflateInit(&state) != Z_OK) throw std::bad_alloc();
    }
    Stream(const Stream& other) : packed(other.packed), isAtEnd(other.isAtEnd) {
        // zlib asks for a source that it may write to, and doesn't.
        if (inflateCopy(&state, const_cast<z_stream*>(&other.state)) != Z_OK) throw std::bad_alloc();
        state.next_in = packed.data() + (other.state.next_in - other.packed.data());
    }
    Stream& operator=(const Stream&) = delete;
    ~Stream() { inflateEnd(&state); }

    z_stream state{};
    std::array<Bytef, kPiece> packed{};
    bool isAtEnd = false;
};

MatBytes::MatBytes(const RecordingFile& openFile, std::uint64_t begin, std::uint64_t stop, bool isCompressed)
    : file(&openFile), at(begin), end(stop), stream(isCompressed ? std::make_unique<Stream>() : nullptr) {
    if (stream != nullptr) stream->state.next_in = stream->packed.data();
}

MatBytes::MatBytes(const MatBytes& other)
    : file(other.file), at(other.at), end(other.end), place(other.place),
      stream(other.stream == nullptr ? nullptr : std::make_unique<Stream>(*other.stream)) {}

MatBytes::MatBytes(MatBytes&& other) noexcept = default;

MatBytes::~MatBytes() = default;

void MatBytes::read(char* to, std::size_t count) {
    while (count > 0) {
        const std::size_t got = take(to, std::min(count, kMostAtOnce));
        if (got == 0) refuse("data that end too early");
        to += got;
        count -= got;
        place += got;
    }
}

void MatBytes::skip(std::uint64_t count) {
    if (stream == nullptr) {
        if (count > end - at) refuse("data that end too early");
        at += count;
        place += count;
        return;
    }
    std::array<char, std::size_t{1} << 14> piece;
    while (count > 0) {
        const auto some = static_cast<std::size_t>(std::min<std::uint64_t>(count, piece.size()));
        read(piece.data(), some);
        count -= some;
    }
}

void MatBytes::finish() {
    std::array<char, std::size_t{1} << 14> piece;
    while (stream != nullptr && take(piece.data(), piece.size()) > 0) {
    }
    if (stream != nullptr && !stream->isAtEnd) refuse("compressed data that end too early");
}

/// Some bytes; 0 at the end.
std::size_t MatBytes::take(char* to, std::size_t count) {
    if (stream == nullptr) {
        const std::size_t got =
            file->readAt(at, to, static_cast<std::size_t>(std::min<std::uint64_t>(count, end - at)));
        at += got;
        return got;
    }
    z_stream& state = stream->state;
    state.next_out = reinterpret_cast<Bytef*>(to);
    state.avail_out = static_cast<uInt>(count);
    while (!stream->isAtEnd && state.avail_out == count) {
        if (state.avail_in == 0) {
            const std::size_t most = static_cast<std::size_t>(std::min<std::uint64_t>(kPiece, end - at));
            const std::size_t got = file->readAt(at, reinterpret_cast<char*>(stream->packed.data()), most);
            if (got == 0) break;
            at += got;
            state.next_in = stream->packed.data();
            state.avail_in = static_cast<uInt>(got);
        }
        const int result = inflate(&state, Z_NO_FLUSH);
        stream->isAtEnd = result == Z_STREAM_END;
        if (result == Z_MEM_ERROR) throw std::bad_alloc();
        if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)
            refuse(std::string("compressed data that are damaged") +
                   (state.msg == nullptr ? "" : std::string(" (") + state.msg + ")"));
    }
    return count - state.avail_out;
}

void MatBytes::refuse(const std::string& what) const {
    throw RecordingException(
        {{file->getName()}, what + ", at byte " + std::to_string(at), "a MAT file that is whole"});
}

} // namespace Quillmere::Host
