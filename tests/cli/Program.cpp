// SPDX-License-Identifier: MIT
#include "tests/cli/Program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

namespace Support {

namespace {

/// A file without a name.
int scratchFile() {
    char name[] = "/tmp/quillmere-test-XXXXXX";
    const int file = ::mkstemp(name);
    if (file < 0) throw std::runtime_error("no scratch file can be made");
    ::unlink(name);
    return file;
}

std::string textOf(int file) {
    std::string text;
    char piece[4096];
    ::lseek(file, 0, SEEK_SET);
    for (ssize_t count = ::read(file, piece, sizeof piece); count > 0;
         count = ::read(file, piece, sizeof piece))
        text.append(piece, static_cast<std::size_t>(count));
    ::close(file);
    return text;
}

/// Opens a file as one of the standard streams, if it has a name.
bool stream(const std::string& name, int way, int standard) {
    if (name.empty()) return true;
    const int file = ::open(name.c_str(), way);
    return file >= 0 && ::dup2(file, standard) >= 0 && ::close(file) == 0;
}

/// The signals that a process has a handler for, a bit each.
std::uint64_t caughtBy(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/status");
    for (std::string word; file >> word;)
        if (word == "SigCgt:" && file >> word) return std::stoull(word, nullptr, 16);
    return 0;
}

/// No program of these tests takes so long.
constexpr std::chrono::seconds kPatience{120};
constexpr std::chrono::milliseconds kLook{2};

} // namespace

Program::Program(const std::vector<std::string>& arguments, const std::string& folder, const Streams& streams)
    : out(scratchFile()), err(scratchFile()) {
    std::vector<char*> list;
    for (const std::string& argument : arguments)
        list.push_back(const_cast<char*>(argument.c_str()));
    list.push_back(nullptr);
    process = ::fork();
    if (process < 0) throw std::runtime_error("no process can be made");
    if (process > 0) return;
    // In the child nothing but system calls. It gets the standard streams, and nothing else that the test was
    // called with: a limit of open files means the same wherever the test runs.
    ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
    if (::chdir(folder.c_str()) == 0 && stream(streams.in, O_RDONLY, STDIN_FILENO) &&
        ::dup2(out, STDOUT_FILENO) >= 0 && stream(streams.out, O_WRONLY, STDOUT_FILENO) &&
        ::dup2(err, STDERR_FILENO) >= 0)
        ::execv(list[0], list.data());
    ::_exit(127);
}

Program::~Program() {
    if (process <= 0) return;
    ::kill(process, SIGKILL);
    wait();
}

void Program::signal(int number) const {
    ::kill(process, number);
}

void Program::waitUntilItCatches(int number) const {
    for (auto left = std::chrono::milliseconds(kPatience); left.count() > 0; left -= kLook) {
        if ((caughtBy(process) >> (number - 1) & 1U) != 0) return;
        std::this_thread::sleep_for(kLook);
    }
    throw std::runtime_error("the process catches no signal " + std::to_string(number));
}

Ended Program::wait() {
    int status = 0;
    pid_t gone = 0;
    for (auto left = std::chrono::milliseconds(kPatience); gone == 0 && left.count() > 0; left -= kLook) {
        gone = ::waitpid(process, &status, WNOHANG);
        if (gone == 0) std::this_thread::sleep_for(kLook);
    }
    if (gone == 0) {
        ::kill(process, SIGKILL);
        gone = ::waitpid(process, &status, 0);
    }
    if (gone < 0) throw std::runtime_error("the process is gone");
    process = -1;
    Ended ended;
    ended.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    ended.out = textOf(out);
    ended.err = textOf(err);
    return ended;
}

Ended runProgram(const std::vector<std::string>& arguments, const std::string& folder,
                 const Streams& streams) {
    return Program(arguments, folder, streams).wait();
}

} // namespace Support
