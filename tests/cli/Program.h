// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace Support {

/// How a program ended and what it printed.
struct Ended {
    int exitCode = -1; ///< Minus the signal when one ended it.
    std::string out;
    std::string err;
};

/// What a program has for standard input and standard output, by the names of files or pipes in its folder.
/// Where there is none it reads what the test reads, and writes to a file of its own.
struct Streams {
    std::string in;
    std::string out;
};

/// A program that runs beside the test. Its output goes to files, so that it never waits for the test to
/// read, unless the test wants it so.
class Program {
public:
    /// Starts `arguments[0]` in `folder`.
    Program(const std::vector<std::string>& arguments, const std::string& folder,
            const Streams& streams = {});
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    void signal(int number) const;
    /// Waits until it catches that signal, which would just end it before.
    void waitUntilItCatches(int number) const;
    pid_t getProcess() const { return process; }
    /// Waits for its end; one that doesn't come is brought about, and has the exit code of that.
    Ended wait();

private:
    pid_t process = -1;
    int out = -1;
    int err = -1;
};

/// Runs a program to its end.
Ended runProgram(const std::vector<std::string>& arguments, const std::string& folder,
                 const Streams& streams = {});

} // namespace Support
