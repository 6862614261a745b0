// SPDX-License-Identifier: MIT
#include "tests/host/kit/FedPipe.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

namespace Support {

namespace {
constexpr int kLook = 20; ///< Milliseconds.
} // namespace

FedPipe::FedPipe(const std::string& path) {
    // Open for both ends, so that it neither waits for a reader nor is broken by one that goes.
    if (::mkfifo(path.c_str(), 0600) == 0) file = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) throw std::runtime_error("no pipe can be made at " + path);
}

FedPipe::~FedPipe() {
    close();
}

void FedPipe::close() {
    if (file >= 0) ::close(file);
    file = -1;
}

bool FedPipe::write(const std::string& text, const std::function<bool()>& isWanted) const {
    for (std::size_t at = 0; at < text.size();) {
        if (!isWanted()) return false;
        pollfd look{file, POLLOUT, 0};
        if (::poll(&look, 1, kLook) <= 0) continue;
        const ssize_t written = ::write(file, text.data() + at, text.size() - at);
        if (written > 0) at += static_cast<std::size_t>(written);
    }
    return true;
}

} // namespace Support
