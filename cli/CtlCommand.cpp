// SPDX-License-Identifier: MIT
#include "cli/Commands.h"
#include "host/live/ControlException.h"
#include "host/live/ControlSocket.h"

#include <CLI/CLI.hpp>

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>

namespace Cli {

using namespace Quillmere::Host;

namespace {

constexpr std::string_view kError = "error: ";

/// The connection to a run, line by line.
class Line {
public:
    explicit Line(const std::string& path) : descriptor(ControlSocket::connectTo(path)) {}
    ~Line() { ::close(descriptor); }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    void send(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t count = ::send(descriptor, text.data(), text.size(), MSG_NOSIGNAL);
            if (count < 0 && errno != EINTR) return; // the answer that doesn't come tells
            if (count > 0) text.remove_prefix(static_cast<std::size_t>(count));
        }
    }
    /// The next line without its end; false when the run has hung up.
    bool read(std::string& line) {
        std::size_t end = 0;
        while ((end = received.find('\n')) == std::string::npos) {
            char piece[4096];
            const ssize_t count = ::recv(descriptor, piece, sizeof piece, 0);
            if (count == 0 || (count < 0 && errno != EINTR)) return false;
            if (count > 0) received.append(piece, static_cast<std::size_t>(count));
        }
        line = received.substr(0, end);
        received.erase(0, end + 1);
        return true;
    }

private:
    int descriptor;
    std::string received;
};

} // namespace

CtlCommand::CtlCommand(CLI::App& command) {
    command.add_option("PATH", path, "The --control of the run.")->required();
    command.add_option("REQUEST", words, "What to ask: help lists it.")->required();
    command.positionals_at_end();
    command.prefix_command(false);
    command.footer(
        "Requests: set NAME VALUE, get NAME, fire NAME, list [PATTERN], watch PATTERN, stats, state, stop, "
        "help.");
}

/// The words in a line; the second is a name or a pattern, which may have blanks.
std::string CtlCommand::request() const {
    std::string line;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i].find('\n') != std::string::npos)
            throw UsageError{"found a line end in the request; expected one line"};
        const bool isName = i == 1 && words[i].find(' ') != std::string::npos;
        line += (i == 0 ? "" : " ") + (isName ? "\"" + words[i] + "\"" : words[i]);
    }
    return line + "\n";
}

ExitCode CtlCommand::run() {
    const bool watches = words.front() == "watch";
    Line line(path);
    line.send(request());
    bool isAnswered = false;
    std::string answer;
    while ((!isAnswered || watches) && line.read(answer)) {
        if (std::string_view(answer).starts_with(kError)) {
            std::cerr << "quillmere: " << answer.substr(kError.size()) << "\n";
            return kFailedMidway;
        }
        isAnswered = isAnswered || answer == "ok";
        if (!answer.empty() && answer.front() == ' ') std::cout << answer.substr(1) << std::endl;
        if (!std::cout) return kDone; // who reads along has seen enough
    }
    if (isAnswered) return kDone;
    std::cerr << "quillmere: " << path << ": the run ended before it answered\n";
    return kFailedMidway;
}

} // namespace Cli
