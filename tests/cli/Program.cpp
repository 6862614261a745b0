// SPDX-License-Identifier: MIT
#include "tests/cli/Program.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

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

} // namespace

Program::Program(const std::vector<std::string>& arguments, const std::string& folder)
    : out(scratchFile()), err(scratchFile()) {
    std::vector<char*> list;
    for (const std::string& argument : arguments)
        list.push_back(const_cast<char*>(argument.c_str()));
    list.push_back(nullptr);
    process = ::fork();
    if (process < 0) throw std::runtime_error("no process can be made");
    if (process > 0) return;
    // In the child nothing but system calls.
    if (::chdir(folder.c_str()) == 0 && ::dup2(out, STDOUT_FILENO) >= 0 && ::dup2(err, STDERR_FILENO) >= 0)
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

Ended Program::wait() {
    int status = 0;
    if (::waitpid(process, &status, 0) < 0) throw std::runtime_error("the process is gone");
    process = -1;
    Ended ended;
    ended.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    ended.out = textOf(out);
    ended.err = textOf(err);
    return ended;
}

Ended runProgram(const std::vector<std::string>& arguments, const std::string& folder) {
    return Program(arguments, folder).wait();
}

} // namespace Support
