// SPDX-License-Identifier: MIT
#include "tests/host/kit/Fifo.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <thread>

namespace Support {

namespace {
void writeAll(int file, std::string_view text) {
    if (::write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        throw std::runtime_error("cannot write to a pipe");
}
} // namespace

bool waitUntil(const std::function<bool()>& isDone) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!isDone()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

Fifo::Fifo(std::string name) : path(std::move(name)) {
    if (::mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error("cannot make " + path);
    file = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (file < 0) throw std::runtime_error("cannot open " + path);
}

Fifo::~Fifo() {
    close();
    ::unlink(path.c_str());
}

void Fifo::write(std::string_view text) const {
    writeAll(file, text);
}

std::string Fifo::readLine() const {
    std::string line;
    pollfd look{file, POLLIN, 0};
    const int patience = static_cast<int>(std::chrono::milliseconds(kPatience).count());
    for (char c = 0; !line.ends_with('\n') && ::poll(&look, 1, patience) == 1 && ::read(file, &c, 1) == 1;)
        line += c;
    EXPECT_TRUE(line.ends_with('\n')) << "only " << line;
    return line;
}

void Fifo::close() {
    if (file >= 0) ::close(file);
    file = -1;
}

StandardPipe::StandardPipe(int descriptor) : standard(descriptor), former(::dup(descriptor)) {
    int ends[2];
    if (former < 0 || ::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
    const int theirs = standard == STDIN_FILENO ? ends[0] : ends[1];
    end = standard == STDIN_FILENO ? ends[1] : ends[0];
    ::dup2(theirs, standard);
    ::close(theirs);
}

StandardPipe::~StandardPipe() {
    restore();
    close();
}

void StandardPipe::write(std::string_view text) const {
    writeAll(end, text);
}

void StandardPipe::close() {
    if (end >= 0) ::close(end);
    end = -1;
}

std::string StandardPipe::readAll() {
    restore();
    std::string text;
    char piece[4096];
    for (ssize_t count = ::read(end, piece, sizeof piece); count > 0;
         count = ::read(end, piece, sizeof piece))
        text.append(piece, static_cast<std::size_t>(count));
    return text;
}

void StandardPipe::restore() {
    if (former < 0) return;
    ::dup2(former, standard);
    ::close(former);
    former = -1;
}

} // namespace Support
