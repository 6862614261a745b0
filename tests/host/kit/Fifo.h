// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace Support {

/// After so long, what a test waits for won't come any more. No test measures by it.
inline constexpr std::chrono::seconds kPatience{30};

/// Looks again and again until `isDone` says so; false when patience is at its end.
bool waitUntil(const std::function<bool()>& isDone);

/// A named pipe whose one end is the test. The test has it open for both ways, so that nobody waits for the
/// other end to come, and who reads it meets the end when the test closes it.
class Fifo {
public:
    explicit Fifo(std::string path);
    ~Fifo();
    Fifo(const Fifo&) = delete;
    Fifo& operator=(const Fifo&) = delete;

    void write(std::string_view text) const;
    /// The next line with its end; what there is of it when patience is at its end.
    std::string readLine() const;
    void close();

private:
    const std::string path;
    int file;
};

/// A pipe in the place of one of the program's standard streams, until the end.
class StandardPipe {
public:
    /// `descriptor` is that of standard input or standard output.
    explicit StandardPipe(int descriptor);
    ~StandardPipe();
    StandardPipe(const StandardPipe&) = delete;
    StandardPipe& operator=(const StandardPipe&) = delete;

    /// What the test has of it: the end that writes standard input, or the one that reads standard output.
    void write(std::string_view text) const;
    void close();
    /// Everything until the writers are gone; the program's own standard output is one until here.
    std::string readAll();

private:
    void restore();

    const int standard;
    int former; ///< What it stands in the place of; below 0 when it's back.
    int end;
};

} // namespace Support
