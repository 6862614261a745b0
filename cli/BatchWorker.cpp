// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/Usage.h"
#include "cli/UsageError.h"
#include "host/batch/BatchRun.h"
#include "host/batch/ShellWords.h"

#include <CLI/CLI.hpp>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <iostream>
#include <new>
#include <stdexcept>
#include <utility>

namespace Cli {

using namespace Quillmere::Host;

namespace {

/// The other end of who gives out the work. Graphs that read standard input find nothing there.
class Giver {
public:
    Giver() : socket(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)) {
        const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        ::dup2(nothing, STDIN_FILENO);
        ::close(nothing);
    }
    ~Giver() { ::close(socket); }
    Giver(const Giver&) = delete;
    Giver& operator=(const Giver&) = delete;

    /// Nothing when no more comes.
    std::optional<std::string> take() {
        std::size_t end = 0;
        while ((end = text.find('\n')) == std::string::npos) {
            char piece[4096];
            const ssize_t count = ::recv(socket, piece, sizeof piece, 0);
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) return std::nullopt;
            text.append(piece, static_cast<std::size_t>(count));
        }
        std::string line = text.substr(0, end);
        text.erase(0, end + 1);
        return line;
    }

    void answer(const std::string& word) const {
        const std::string line = word + "\n"; // so short that it goes at once
        [[maybe_unused]] const ssize_t sent = ::send(socket, line.data(), line.size(), MSG_NOSIGNAL);
    }

private:
    int socket;
    std::string text;
};

std::string answerOf(ExitCode code, const RunCommand& command) {
    if (code != kDone) return command.getIsInterrupted() ? WorkerAnswer::kInterrupted : WorkerAnswer::kFailed;
    if (command.getIsDoneBefore()) return WorkerAnswer::kKept;
    return command.getLooks() ? WorkerAnswer::kWouldRun : WorkerAnswer::kDone;
}

} // namespace

ExitCode BatchWorkerCommand::run() {
    Giver giver;
    while (const auto line = giver.take()) {
        const std::string answer = runLine(*line);
        std::cout.flush();
        giver.answer(answer);
    }
    return kDone;
}

std::string BatchWorkerCommand::runLine(const std::string& line) {
    CLI::App program("", "quillmere");
    RunCommand command(*program.add_subcommand("run", ""));
    command.keepCatalogue(catalogue);
    try {
        auto split = splitShellLine(line);
        if (!split || split->empty()) throw std::invalid_argument("a call that is none");
        std::vector<std::string> words = std::move(*split);
        std::reverse(words.begin(), words.end()); // as the parser takes them
        try {
            program.parse(std::move(words));
        } catch (const CLI::ParseError& error) {
            refuseCall(program, error);
        }
        return answerOf(command.run(), command);
    } catch (const UsageError& error) {
        std::cerr << "quillmere: " << error.what() << "\n";
    } catch (const std::bad_alloc&) {
        std::cerr << kOutOfMemory;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
    }
    return WorkerAnswer::kFailed;
}

} // namespace Cli
