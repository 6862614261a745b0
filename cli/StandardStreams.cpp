// SPDX-License-Identifier: MIT
#include "cli/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <new>
#include <streambuf>

namespace Cli {

namespace {
/// Passes what is printed on to the C library, and keeps why the first of it couldn't be written: by the
/// time somebody asks, `errno` is another's.
class NotingBuffer final : public std::streambuf {
public:
    int getReason() const { return reason; }

protected:
    int_type overflow(int_type letter) override {
        if (traits_type::eq_int_type(letter, traits_type::eof())) return traits_type::not_eof(letter);
        return note(std::fputc(letter, stdout) != EOF) ? letter : traits_type::eof();
    }
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        const auto size = static_cast<std::size_t>(count);
        const std::size_t written = std::fwrite(text, 1, size, stdout);
        note(written == size);
        return static_cast<std::streamsize>(written);
    }
    int sync() override { return note(std::fflush(stdout) == 0) ? 0 : -1; }

private:
    bool note(bool isWritten) {
        if (!isWritten && reason == 0) reason = errno;
        return isWritten;
    }

    int reason = 0; ///< 0 for none.
};

/// Never ends: the stream is flushed when everything else has.
NotingBuffer& output() {
    alignas(NotingBuffer) static std::byte place[sizeof(NotingBuffer)];
    static auto* const buffer = new (place) NotingBuffer;
    return *buffer;
}
} // namespace

void guardStandardStreams() {
    std::cout.rdbuf(&output());
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) >= 0 || errno != EBADF) continue;
        // The lowest free number is taken, which is this one; opened the wrong way round, so that use fails.
        const int taken = ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        if (taken >= 0 && taken != stream) ::close(taken);
    }
}

ExitCode finishStandardOutput(ExitCode code) {
    std::cout.flush();
    bool isWritten = std::cout.good() && std::ferror(stdout) == 0;
    int reason = output().getReason();
    // On network file systems a full disk may show here only.
    if (isWritten && ::close(STDOUT_FILENO) != 0) {
        isWritten = false;
        reason = errno;
    }
    if (isWritten) return code;
    // Who reads a part of it, as `head` does, wants no more.
    if (reason != EPIPE)
        std::cerr << "quillmere: standard output: cannot be written: "
                  << (reason == 0 ? "a part of it is missing" : std::strerror(reason)) << "\n";
    return code == kDone ? kFailedMidway : code;
}

} // namespace Cli
