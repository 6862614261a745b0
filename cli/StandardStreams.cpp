// SPDX-License-Identifier: MIT
#include "cli/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>

namespace Cli {

void guardStandardStreams() {
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) >= 0 || errno != EBADF) continue;
        // The lowest free number is taken, which is this one; opened the wrong way round, so that use fails.
        const int taken = ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        if (taken >= 0 && taken != stream) ::close(taken);
    }
}

ExitCode finishStandardOutput(ExitCode code) {
    errno = 0;
    std::cout.flush();
    bool isWritten = std::fflush(stdout) == 0 && std::cout.good() && std::ferror(stdout) == 0;
    // On network file systems a full disk may show here only.
    if (isWritten) isWritten = ::close(STDOUT_FILENO) == 0;
    if (isWritten) return code;
    const char* const reason = errno == 0 ? "a part of it is missing" : std::strerror(errno);
    std::cerr << "quillmere: standard output: cannot be written: " << reason << "\n";
    return code == kDone ? kFailedMidway : code;
}

} // namespace Cli
