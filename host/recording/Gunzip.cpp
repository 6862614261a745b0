// SPDX-License-Identifier: MIT
#include "host/recording/Gunzip.h"

#include "host/ends/RecordingException.h"
#include "host/text/Complaint.h"
#include "host/text/Counted.h"

#include <zlib.h>

#include <algorithm>
#include <new>
#include <cstddef>
#include <utility>

namespace Quillmere::Host {

namespace {
constexpr int kGzipOnly = 16 + MAX_WBITS; // zlib's way to say so: of its own form and bare data nothing
constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;
} // namespace

struct Gunzip::Stream {
    Stream() {
        if (inflateInit2(&state, kGzipOnly) != Z_OK) throw std::bad_alloc();
    }
    ~Stream() { inflateEnd(&state); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    z_stream state{};
};

Gunzip::Gunzip(std::string fileName) : name(std::move(fileName)), stream(std::make_unique<Stream>()) {}

Gunzip::~Gunzip() = default;

std::size_t Gunzip::unpack(std::string_view& packed, char* to, std::size_t count) {
    const std::size_t room = std::min(count, kMostAtOnce);
    for (;;) {
        if (within != Within::File) beginNext(packed);
        if (within != Within::File) return 0;
        inflateOn(packed, to, room);
        const std::size_t unpacked = room - stream->state.avail_out;
        if (unpacked > 0 || packed.empty()) return unpacked;
    }
}

void Gunzip::inflateOn(std::string_view& packed, char* to, std::size_t room) {
    z_stream& state = stream->state;
    const std::size_t given = std::min(packed.size(), kMostAtOnce);
    // zlib only reads there, but its interface is older than the promise.
    state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    state.avail_in = static_cast<uInt>(given);
    state.next_out = reinterpret_cast<Bytef*>(to);
    state.avail_out = static_cast<uInt>(room);
    const int result = inflate(&state, Z_NO_FLUSH);
    packed.remove_prefix(given - state.avail_in);
    taken += given - state.avail_in;
    if (result == Z_STREAM_END) {
        within = Within::Nothing;
        inflateReset(&state);
    } else if (result == Z_MEM_ERROR) {
        throw std::bad_alloc();
    } else if (result != Z_OK && result != Z_BUF_ERROR) { // the latter: nothing to do
        refuse("gzip data that is damaged at byte " + std::to_string(taken) +
               (state.msg == nullptr ? "" : std::string(" (") + state.msg + ")"));
    }
}

/// Finds what comes behind a file's end, or at the begin.
void Gunzip::beginNext(std::string_view& packed) {
    if (packed.empty()) return;
    const bool isFirst = taken == 0;
    const std::size_t padding = isFirst ? 0 : std::min(packed.find_first_not_of('\0'), packed.size());
    if (padding > 0) within = Within::Padding;
    packed.remove_prefix(padding);
    taken += padding;
    if (packed.empty()) return;
    if (within == Within::Padding || packed.front() != '\x1F')
        refuse("something else at byte " + std::to_string(taken) + ", behind the end of the gzip data");
    within = Within::File;
}

void Gunzip::finish() const {
    if (within == Within::File)
        refuse("its end behind " + counted(taken, "byte") + ", in the midst of the gzip data");
}

void Gunzip::refuse(const std::string& what) const {
    throw RecordingException({{name}, what, "the whole file, as gzip wrote it"});
}

} // namespace Quillmere::Host
