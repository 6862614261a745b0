// SPDX-License-Identifier: MIT
#include "host/recording/ResultFile.h"

#include "host/ends/RecordingException.h"
#include "host/recording/ResultMark.h"
#include "host/text/Complaint.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

namespace Quillmere::Host {

namespace {

constexpr int kMostTries = 100; ///< To open a file that others complete or remove at that moment.
constexpr mode_t kMode = 0666;  ///< For whom the user's mask allows it.
constexpr mode_t kPermissions = 0777;
constexpr std::uint64_t kSyncedAtOnce = std::uint64_t{1} << 23; ///< Bytes.

/// Whether a failure to sync tells only that there is nothing that could be synced.
bool getIsWithoutSync(int error) {
    return error == EINVAL || error == EROFS || error == ENOSYS || error == ENOTSUP;
}

bool getIsWithoutLocks(int error) {
    return error == ENOSYS || error == ENOTSUP || error == ENOLCK || error == EINVAL;
}

[[noreturn]] void refuse(const ResultRefusal& refusal) {
    throw RecordingException({{}, refusal.found, refusal.expected});
}

[[noreturn]] void refuse(const std::string& path, const std::string& sentence, const std::string& expected) {
    throw RecordingException(Complaint::sentence({path}, sentence, expected));
}

constexpr const char* kWasMoved = "was moved, removed or replaced while it was written";
constexpr const char* kLeftAlone = "a file that is the run's alone until it ends";

} // namespace

ResultFile::ResultFile(const std::string& path, ResultOptions resultOptions, const std::stop_token& stop)
    : name(path), options(std::move(resultOptions)), current(name.getPartialPath()) {
    waiting.setStop(stop);
    if (const auto refusal = name.findRefusal(options)) refuse(*refusal);
    if (getIsDirect()) {
        openDirect();
        return;
    }
    openOwn();
    takeModeOf(getPath());
    // Of a run that was killed while it copied.
    if (::access(name.getWidenedPath().c_str(), F_OK) == 0) beginCopy()->discard();
}

ResultFile::ResultFile(CopyOf, const ResultFile& original)
    : name(original.name), options(original.options), current(name.getWidenedPath()) {
    openOwn();
    takeModeOf(original.current);
}

ResultFile::~ResultFile() {
    close();
}

void ResultFile::openDirect() {
    struct stat facts {};
    if (name.getKind() == ResultPath::Kind::Descriptor)
        file = ::fcntl(name.getDescriptor(), F_DUPFD_CLOEXEC, 0);
    else if (::stat(getPath().c_str(), &facts) == 0 && S_ISFIFO(facts.st_mode))
        file = openPipe();
    else
        file = ::open(getPath().c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0) fail("cannot be written");
}

/// Waits for somebody who reads the pipe, awake, so that a wish to stop is seen.
int ResultFile::openPipe() const {
    int pipe = -1;
    while ((pipe = ::open(getPath().c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)) < 0 &&
           (errno == ENXIO || errno == EINTR))
        waiting.pause();
    if (pipe >= 0) ::fcntl(pipe, F_SETFL, ::fcntl(pipe, F_GETFL) & ~O_NONBLOCK);
    return pipe;
}

void ResultFile::openOwn() {
    for (int tries = 0; tries < kMostTries; ++tries)
        if (tryToOpen()) return;
    refuse(current, "cannot be written: other runs make and remove it all the time", kLeftAlone);
}

/// The lock is taken before anything is thrown away: the file may be another run's, which may complete it
/// between our opening and our lock. Then it is a whole result with a name of its own, and we begin anew.
bool ResultFile::tryToOpen() {
    close();
    file = ::open(current.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
    const bool isNew = file >= 0;
    if (!isNew && errno == EEXIST) {
        file = ::open(current.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (file < 0 && errno == ENOENT) return false; // another run has just removed it
    }
    if (file < 0) fail("cannot be written");
    lock();
    if (!getIsAtName()) return false;
    if (!isNew) {
        if (const auto refusal = ResultPath::findRefusalOfPartial(current, file, options)) refuse(*refusal);
        if (::ftruncate(file, 0) != 0) fail("cannot be emptied");
    }
    ResultMark::open(file);
    return true;
}

void ResultFile::lock() {
    while (::flock(file, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (getIsWithoutLocks(errno)) return;
        if (errno != EWOULDBLOCK) fail("cannot be locked");
        close();
        refuse(current, "another run is writing this result", "one that no other run writes");
    }
}

/// Whether the file that is open is still the one that has its name.
bool ResultFile::getIsAtName() const {
    struct stat own {};
    struct stat there {};
    return ::fstat(file, &own) == 0 && ::lstat(current.c_str(), &there) == 0 && own.st_dev == there.st_dev &&
           own.st_ino == there.st_ino;
}

/// Who may read a file may read what takes its place, and nobody else.
void ResultFile::takeModeOf(const std::string& path) const {
    struct stat facts {};
    if (::lstat(path.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode)) return;
    mode_t mode = facts.st_mode & kPermissions;
    if (::fchown(file, static_cast<uid_t>(-1), facts.st_gid) != 0) {
        // Another group has no rights, and the old one is among the others now.
        const mode_t others = mode & (mode >> 3) & S_IRWXO;
        mode = (mode & S_IRWXU) | others;
    }
    // Where it can't be set the file stays as the user's mask makes it.
    [[maybe_unused]] const int result = ::fchmod(file, mode);
}

void ResultFile::write(const char* bytes, std::size_t count) {
    while (count > 0) {
        if (getIsDirect()) waitForReader();
        // A pipe that has room takes so much without waiting.
        const ssize_t taken =
            ::write(file, bytes, getIsDirect() ? std::min<std::size_t>(count, PIPE_BUF) : count);
        // A descriptor that never waits says so although another writer may have taken the room there was.
        if (taken < 0 && (errno == EINTR || (getIsDirect() && errno == EAGAIN))) continue;
        if (taken < 0) fail("cannot be written");
        bytes += taken;
        count -= static_cast<std::size_t>(taken);
        written += static_cast<std::uint64_t>(taken);
    }
    if (!getIsDirect() && written >= syncBegun + kSyncedAtOnce) beginSync();
}

/// So that little is left to wait for at the end. What goes wrong is told by the sync there.
void ResultFile::beginSync() {
    ::sync_file_range(file, static_cast<off_t>(syncBegun), static_cast<off_t>(written - syncBegun),
                      SYNC_FILE_RANGE_WRITE);
    syncBegun = written;
}

void ResultFile::waitForReader() const {
    while (!waiting.wait(file, POLLOUT))
        if (isGivenUp) refuse(getPartialPath(), "cannot be written: nobody reads it", "a reader");
}

void ResultFile::cutTo(std::uint64_t bytes) {
    if (getIsDirect() || file < 0) return;
    const auto end = static_cast<off_t>(bytes);
    if (::ftruncate(file, end) != 0 || ::lseek(file, end, SEEK_SET) != end) fail("cannot be shortened");
    written = bytes;
    syncBegun = std::min(syncBegun, written);
}

/// Errors that a write has left for later come with the sync or the closing. The lock must outlast the
/// closing: up to its rename the file is ours alone.
void ResultFile::finish() {
    if (isFinished || file < 0) return;
    isFinished = true;
    while (::fsync(file) != 0) {
        if (errno == EINTR) continue;
        if (!getIsWithoutSync(errno)) fail("cannot be brought to the disk");
        break;
    }
    if (!getIsDirect()) ResultMark::close(file);
    const int keeper = getIsDirect() ? -1 : ::fcntl(file, F_DUPFD_CLOEXEC, 0);
    if (keeper < 0 && !getIsDirect()) fail("cannot be closed");
    if (::close(std::exchange(file, keeper)) != 0 && errno != EINTR) fail("cannot be closed");
}

void ResultFile::complete() {
    finish();
    if (!getIsDirect()) {
        requireFinalName();
        takeModeOf(getPath());
        rename();
        syncFolder();
    }
    close();
}

/// Much may have happened since the run began.
void ResultFile::requireFinalName() const {
    if (!getIsAtName()) refuse(current, kWasMoved, kLeftAlone);
    if (const auto refusal = name.findRefusalOfFinal(options)) refuse(*refusal);
}

void ResultFile::rename() {
    if (std::rename(current.c_str(), getPath().c_str()) != 0) fail("cannot get its final name");
    current = getPath();
}

/// The name, too, is to outlast a loss of power. Some file systems can't promise that.
void ResultFile::syncFolder() const {
    const std::string folder = std::filesystem::path(getPath()).parent_path().string();
    const int opened = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0) return; // a folder that one may write to but not list
    const int error = ::fsync(opened) == 0 ? 0 : errno;
    ::close(opened);
    if (error != EIO) return;
    refuse(getPath(), std::string("its name cannot be brought to the disk: ") + std::strerror(error),
           "a folder that can be written");
}

void ResultFile::discard() {
    if (!getIsDirect() && file >= 0 && getIsAtName()) ::unlink(current.c_str());
    close();
}

std::unique_ptr<ResultFile> ResultFile::beginCopy() const {
    return std::unique_ptr<ResultFile>(new ResultFile(CopyOf{}, *this));
}

/// The copy has a lock of its own, so the partial file is locked all the time.
void ResultFile::adopt(ResultFile& copy) {
    if (!getIsAtName() || !copy.getIsAtName()) refuse(current, kWasMoved, kLeftAlone);
    if (std::rename(copy.current.c_str(), current.c_str()) != 0) fail("cannot be replaced");
    std::swap(file, copy.file);
    written = copy.written;
    copy.close();
}

void ResultFile::fail(const std::string& what) const {
    refuse(current, what + ": " + std::strerror(errno), "a file that can be written");
}

void ResultFile::close() {
    if (file >= 0) ::close(file);
    file = -1;
}

} // namespace Quillmere::Host
