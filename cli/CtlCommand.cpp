// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/Usage.h"
#include "cli/UsageError.h"
#include "host/live/ControlException.h"
#include "host/control/ControlConsole.h"
#include "host/control/ControlSocket.h"
#include "host/text/Complaint.h"

#include <CLI/CLI.hpp>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <iostream>
#include <limits>

namespace Cli {

using namespace Quillmere::Host;

namespace {

constexpr std::string_view kError = "error: ";
constexpr int kLongestTimeout = 1000000; ///< Seconds.

/// A line of a run's answers is never as long; one that is doesn't come from a run.
constexpr std::size_t kLongestLine = std::size_t{1} << 26;

/// The connection to a run, line by line, for as long as the run takes its time with an answer and no longer.
class Connection {
public:
    Connection(const std::string& socketPath, std::chrono::seconds longest)
        : path(socketPath), patience(longest), descriptor(ControlSocket::connectTo(path, patience)),
          latest(Clock::now() + patience) {}
    ~Connection() { ::close(descriptor); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void send(std::string_view text) const {
        while (!text.empty()) {
            waitFor(POLLOUT);
            const ssize_t count = ::send(descriptor, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
            if (count < 0 && errno != EINTR && errno != EAGAIN) return; // the answer that doesn't come tells
            if (count > 0) text.remove_prefix(static_cast<std::size_t>(count));
        }
    }
    /// The next line without its end; false when the run has hung up.
    bool read(std::string& line) {
        std::size_t end = 0;
        for (std::size_t seen = 0; (end = received.find('\n', seen)) == std::string::npos;) {
            seen = received.size();
            if (seen > kLongestLine)
                throw ControlException({{path},
                                        "a line of more than " + std::to_string(kLongestLine) + " bytes",
                                        "the --control of a run"});
            waitFor(POLLIN);
            char piece[4096];
            const ssize_t count = ::recv(descriptor, piece, sizeof piece, 0);
            if (count == 0 || (count < 0 && errno != EINTR)) return false;
            if (count > 0) received.append(piece, static_cast<std::size_t>(count));
        }
        line = received.substr(0, end);
        received.erase(0, end + 1);
        return true;
    }
    /// What comes from now on comes when it comes.
    void waitForEver() { isHurried = false; }

private:
    using Clock = std::chrono::steady_clock;

    void waitFor(short event) const {
        if (!isHurried) return; // a read or write waits by itself
        for (;;) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(latest - Clock::now());
            if (left.count() <= 0) break;
            pollfd entry{descriptor, event, 0};
            const int most = std::numeric_limits<int>::max();
            const int count = ::poll(&entry, 1, left.count() < most ? static_cast<int>(left.count()) : most);
            if (count > 0 || (count < 0 && errno != EINTR)) return;
        }
        throw ControlException({{path},
                                "no answer within " + std::to_string(patience.count()) + " s",
                                "one sooner, or a longer --timeout"});
    }

    const std::string path;
    const std::chrono::seconds patience;
    const int descriptor;
    const Clock::time_point latest;
    bool isHurried = true;
    std::string received;
};

/// Whether lines may follow the answer to a request of that word.
bool getGoesOn(const std::string& word) {
    const auto& requests = ControlConsole::getRequests();
    return std::any_of(requests.begin(), requests.end(),
                       [&](const ControlRequest& request) { return request.word == word && request.goesOn; });
}

} // namespace

CtlCommand::CtlCommand(CLI::App& command) : application(command) {
    command.add_option("PATH", path, "The --control of the run.")->required();
    command.add_option("--timeout", timeout, "Wait no longer than SECONDS for an answer.")
        ->type_name("SECONDS")
        ->capture_default_str()
        ->check(wholeNumber(1, kLongestTimeout));
    // The request is taken as it stands: an option would take brackets for a list of words, and a value such
    // as -2 for an option.
    command.prefix_command();
    std::string requests = "Behind PATH stands the request:";
    for (const std::string& line : ControlConsole::getHelp())
        requests += "\n  " + line;
    command.footer(requests);
}

/// The words in a line; the second is a name or a pattern, which may have blanks.
std::string CtlCommand::requestOf(const std::vector<std::string>& words) {
    std::string line;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i].find('\n') != std::string::npos)
            throw UsageError({{}, "a line end in the request", "one line"});
        const bool isName = i == 1 && words[i].find(' ') != std::string::npos;
        line += (i == 0 ? "" : " ") + (isName ? "\"" + words[i] + "\"" : words[i]);
    }
    return line + "\n";
}

ExitCode CtlCommand::run() {
    const std::vector<std::string> words = application.remaining();
    if (words.empty())
        throw UsageError({{}, "no request behind '" + path + "'", "one, such as 'help', which lists them"});
    const bool watches = getGoesOn(words.front());
    Connection connection(path, std::chrono::seconds(timeout));
    connection.send(requestOf(words));
    bool isAnswered = false;
    std::string answer;
    while ((!isAnswered || watches) && connection.read(answer)) {
        if (std::string_view(answer).starts_with(kError)) {
            std::cerr << "quillmere: " << answer.substr(kError.size()) << "\n";
            return kFailedMidway;
        }
        isAnswered = isAnswered || answer == "ok";
        if (isAnswered) connection.waitForEver();
        if (!answer.empty() && answer.front() == ' ') std::cout << answer.substr(1) << std::endl;
        if (!std::cout) return kDone; // who reads along has seen enough
    }
    if (isAnswered) return kDone;
    std::cerr << "quillmere: " << path << ": the run ended before it answered\n";
    return kFailedMidway;
}

} // namespace Cli
