// SPDX-License-Identifier: MIT
#include "host/recording/ResultFile.h"

#include "host/recording/RecordingException.h"
#include "host/recording/StandardStream.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace Quillmere::Host {

std::string ResultFile::resolve(const std::string& path) {
    std::error_code error;
    std::filesystem::path resolved = std::filesystem::weakly_canonical(path, error);
    if (error) return path;
    // A link to a file that doesn't exist yet is no canonical path; follow it by hand, but not for ever.
    for (int links = 0; links < 40 && std::filesystem::is_symlink(resolved, error); ++links) {
        const std::filesystem::path target = std::filesystem::read_symlink(resolved, error);
        if (error) break;
        resolved = std::filesystem::weakly_canonical(resolved.parent_path() / target, error);
    }
    return resolved.string();
}

ResultFile::ResultFile(const std::string& name, const std::atomic<bool>* stop)
    : path(resolve(name)), partialPath(path + ".partial") {
    if (stop != nullptr) waiting.setStop(*stop);
    if (getIsStandardStream(name)) {
        path = partialPath = "standard output";
        isDirect = true;
        file = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
        if (file < 0) fail("cannot be written");
        return;
    }
    struct stat facts {};
    const bool exists = ::stat(path.c_str(), &facts) == 0;
    if (exists && S_ISDIR(facts.st_mode))
        throw RecordingException(name + ": found a directory; expected the name of a file to write");
    isDirect = exists && !S_ISREG(facts.st_mode);
    if (isDirect) partialPath = path;
    // The lock is taken before anything is thrown away: the file may be another run's.
    file = exists && S_ISFIFO(facts.st_mode)
               ? openPipe()
               : ::open(partialPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0) fail("cannot be written");
    if (isDirect) return;
    if (::flock(file, LOCK_EX | LOCK_NB) != 0) {
        close();
        throw RecordingException(partialPath + ": another run is writing this result");
    }
    if (::ftruncate(file, 0) != 0) fail("cannot be emptied");
}

ResultFile::~ResultFile() {
    close();
}

void ResultFile::write(const char* bytes, std::size_t count) {
    while (count > 0) {
        if (isDirect) waitForReader();
        // A pipe that has room takes so much without waiting.
        const ssize_t written =
            ::write(file, bytes, isDirect ? std::min<std::size_t>(count, PIPE_BUF) : count);
        // A descriptor that never waits says so although another writer may have taken the room there was.
        if (written < 0 && (errno == EINTR || (isDirect && errno == EAGAIN))) continue;
        if (written < 0) fail("cannot be written");
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

/// Waits for somebody who reads the pipe, awake, so that a wish to stop is seen.
int ResultFile::openPipe() const {
    int pipe = -1;
    while ((pipe = ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)) < 0 &&
           (errno == ENXIO || errno == EINTR))
        waiting.pause();
    if (pipe >= 0) ::fcntl(pipe, F_SETFL, ::fcntl(pipe, F_GETFL) & ~O_NONBLOCK);
    return pipe;
}

void ResultFile::waitForReader() const {
    while (!waiting.wait(file, POLLOUT))
        if (isGivenUp) throw RecordingException(partialPath + ": cannot be written: nobody reads it");
}

void ResultFile::complete() {
    if (!isDirect && std::rename(partialPath.c_str(), path.c_str()) != 0) fail("cannot get its final name");
    close();
}

void ResultFile::discard() {
    if (!isDirect) ::unlink(partialPath.c_str());
    close();
}

void ResultFile::replacePartial(const std::string& replacement) {
    if (std::rename(replacement.c_str(), partialPath.c_str()) != 0) fail("cannot be replaced");
}

void ResultFile::fail(const std::string& what) const {
    throw RecordingException(partialPath + ": " + what + ": " + std::strerror(errno));
}

void ResultFile::close() {
    if (file >= 0) ::close(file);
    file = -1;
}

} // namespace Quillmere::Host
