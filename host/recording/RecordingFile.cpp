// SPDX-License-Identifier: MIT
#include "host/recording/RecordingFile.h"

#include "host/text/Counted.h"
#include "host/text/Printable.h"
#include "host/ends/RecordingException.h"
#include "host/ends/StandardStream.h"
#include "host/text/Complaint.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>

namespace Quillmere::Host {

namespace {
constexpr const char* kStandardInput = "standard input";
constexpr std::size_t kPackedPiece = std::size_t{1} << 16;
constexpr std::size_t kUnpackedPiece = std::size_t{1} << 14;

/// A descriptor of its own, also of standard input, so that closing it closes nobody else's. A pipe that
/// nobody writes is opened at once: what waits for its writer is the first read, which a stop ends.
int openForReading(const std::string& path) {
    if (getIsStandardStream(path)) return ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
    struct stat facts {};
    const bool isPipe = ::stat(path.c_str(), &facts) == 0 && S_ISFIFO(facts.st_mode);
    return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | (isPipe ? O_NONBLOCK : 0));
}
} // namespace

bool getIsPipe(const std::string& path) {
    struct stat facts {};
    const int result =
        getIsStandardStream(path) ? ::fstat(STDIN_FILENO, &facts) : ::stat(path.c_str(), &facts);
    return result == 0 && !S_ISREG(facts.st_mode) && !S_ISDIR(facts.st_mode);
}

RecordingFile::RecordingFile(const std::string& filePath, const std::stop_token& stop)
    : path(filePath), name(getIsStandardStream(path) ? kStandardInput : printable(path, PATH_MAX)),
      file(openForReading(path)) {
    if (file < 0) fail("cannot be opened");
    setStop(stop);
    struct stat facts {};
    if (::fstat(file, &facts) != 0) return;
    if (S_ISDIR(facts.st_mode)) {
        ::close(file);
        throw RecordingException({{name}, "a folder", "a file"});
    }
    if (!S_ISREG(facts.st_mode)) return;
    isPiped = false;
    // Standard input may be a file that somebody has read the begin of; what is left of it is the recording.
    begin = std::max<off_t>(0, ::lseek(file, 0, SEEK_CUR));
    size = static_cast<std::uint64_t>(std::max<off_t>(0, facts.st_size - begin));
    written = facts.st_mtim;
}

RecordingFile::~RecordingFile() {
    ::close(file);
}

std::string_view RecordingFile::lookAhead(std::size_t count) {
    std::size_t held = ahead.size();
    if (held < count) ahead.resize(count);
    while (held < count) {
        const std::size_t got = next(ahead.data() + held, count - held);
        held += got;
        if (got == 0 || isPiped) break;
    }
    ahead.resize(held);
    return std::string_view(ahead).substr(0, count);
}

std::size_t RecordingFile::read(char* to, std::size_t count) {
    if (ahead.empty()) return next(to, count);
    const std::size_t given = std::min(count, ahead.size());
    std::memcpy(to, ahead.data(), given);
    ahead.erase(0, given);
    return given;
}

void RecordingFile::unpackWith(std::unique_ptr<Unpacker> with) {
    packed.swap(ahead); // what was looked at was packed
    ahead.clear();
    toUnpack = packed;
    unpacker = std::move(with);
}

std::uint64_t RecordingFile::getBytesTaken() const {
    return unpacker == nullptr ? bytesRead - ahead.size() : unpacker->getBytesTaken();
}

std::size_t RecordingFile::next(char* to, std::size_t count) {
    return unpacker == nullptr ? readOn(to, count) : unpackOn(to, count);
}

std::size_t RecordingFile::unpackOn(char* to, std::size_t count) {
    for (;;) {
        if (const std::size_t got = unpacker->unpack(toUnpack, to, count)) return got;
        if (!takePacked()) return 0;
    }
}

/// Reads a piece for the unpacker; false at the end. Requires: it has no more.
bool RecordingFile::takePacked() {
    packed.resize(kPackedPiece);
    packed.resize(readOn(packed.data(), packed.size()));
    toUnpack = packed;
    if (packed.empty()) unpacker->finish();
    return !packed.empty();
}

std::size_t RecordingFile::readOn(char* to, std::size_t count) {
    for (;;) {
        if (isPiped && !waiting.wait(file, POLLIN)) continue;
        // Of a file by place: standard input's own place is shared with whoever looks ahead.
        const ssize_t got = isPiped ? ::read(file, to, count)
                                    : ::pread(file, to, count, begin + static_cast<off_t>(bytesRead));
        if (got > 0) {
            bytesRead += static_cast<std::uint64_t>(got);
            return static_cast<std::size_t>(got);
        }
        if (got == 0) {
            checkEnd();
            return 0;
        }
        // A descriptor that never waits says so although another reader may have taken what there was.
        if (errno != EINTR && errno != EAGAIN) fail("cannot be read");
    }
}

std::size_t RecordingFile::readAt(std::uint64_t place, char* to, std::size_t count) const {
    std::size_t held = 0;
    while (held < count) {
        const ssize_t got = ::pread(file, to + held, count - held, begin + static_cast<off_t>(place + held));
        if (got == 0) break;
        if (got < 0 && errno != EINTR) fail("cannot be read");
        if (got > 0) held += static_cast<std::size_t>(got);
    }
    return held;
}

bool RecordingFile::getIsReadable() {
    // What has come may be too little to unpack a byte of it.
    while (ahead.empty() && unpacker != nullptr) {
        std::array<char, kUnpackedPiece> piece;
        ahead.assign(piece.data(), unpacker->unpack(toUnpack, piece.data(), piece.size()));
        if (!ahead.empty()) break;
        if (!getHasCome()) return false;
        if (!takePacked()) return true;
    }
    return !ahead.empty() || getHasCome();
}

bool RecordingFile::getHasCome() const {
    pollfd look{file, POLLIN, 0};
    return ::poll(&look, 1, 0) > 0; // a signal came between: as good as nothing yet
}

void RecordingFile::checkEnd() {
    if (isPiped) return;
    if (bytesRead < size)
        throw RecordingException({{name},
                                  "its end behind " + std::to_string(bytesRead) + " of " +
                                      counted(size, "byte") + ": it got shorter while it was read",
                                  "a recording that stays as it is"});
    isChanged = bytesRead != size || getHasChanged();
}

bool RecordingFile::getHasChanged() const {
    struct stat facts {};
    if (isPiped || ::fstat(file, &facts) != 0) return false;
    return static_cast<std::uint64_t>(std::max<off_t>(0, facts.st_size - begin)) != size ||
           facts.st_mtim.tv_sec != written.tv_sec || facts.st_mtim.tv_nsec != written.tv_nsec;
}

void RecordingFile::fail(const char* what) const {
    throw RecordingException(Complaint::sentence({name}, std::string(what) + ": " + std::strerror(errno),
                                                 "a recording that can be read"));
}

} // namespace Quillmere::Host
