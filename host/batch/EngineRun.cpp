// SPDX-License-Identifier: MIT
#include "host/batch/EngineRun.h"

#include "host/batch/ResultFolder.h"
#include "host/batch/RunStatus.h"
#include "host/ends/RecordingException.h"
#include "host/recording/ResultPath.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

namespace Quillmere::Host {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::milliseconds kBetweenLooks{100};
constexpr int kSignalled = 128; // as shells have it

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

void writeAll(int file, const std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
        const ssize_t count = ::write(file, text.data() + at, text.size() - at);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) fail("no memory for the plan of an engine");
        at += static_cast<std::size_t>(count);
    }
}

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (const std::string& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

/// What there is, but for what is said anew.
std::vector<std::string> environmentWith(const std::map<std::string, std::string>& more) {
    std::vector<std::string> texts;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (!more.contains(text.substr(0, text.find('=')))) texts.push_back(text);
    }
    for (const auto& [name, value] : more)
        texts.push_back(std::string(name).append("=").append(value));
    return texts;
}

int exitCodeOf(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? kSignalled + WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace

EngineRun::EngineRun(const BatchPlan& entries, std::vector<std::size_t> those, BatchOptions called,
                     EngineOptions given, BatchTally& counted)
    : plan(entries), recordings(std::move(those)), calls(std::move(called)), options(std::move(given)),
      tally(counted), began(timeText()) {}

/// A file in memory, so that nobody waits for the other.
int EngineRun::writeCalls() const {
    const int file = ::memfd_create("quillmere-plan", MFD_CLOEXEC);
    if (file < 0) fail("no memory for the plan of an engine");
    writeAll(file, options.settings + "\n");
    for (const std::size_t recording : recordings)
        writeAll(file, callOf(plan.entries[recording], calls) + "\n");
    ::lseek(file, 0, SEEK_SET);
    return file;
}

pid_t EngineRun::start(int input, int output) const {
    const std::vector<std::string> texts = environmentWith(options.environment);
    const std::vector<char*> words = pointersTo(options.program);
    const std::vector<char*> environment = pointersTo(texts);
    const pid_t parent = ::getpid();
    const pid_t process = ::fork();
    if (process < 0) fail("no process for an engine");
    if (process > 0) return process;
    // Nothing but system calls from here on. It doesn't outlive who reads its answers.
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() == parent && ::dup2(input, STDIN_FILENO) >= 0 && ::dup2(output, STDOUT_FILENO) >= 0)
        ::execve(words[0], words.data(), environment.data());
    ::_exit(127);
}

int EngineRun::run(const std::stop_token& stop, const BatchProgressHandler& onProgress) {
    int answers[2];
    if (::pipe2(answers, O_CLOEXEC) != 0) fail("no pipe for an engine");
    const int input = writeCalls();
    const pid_t process = start(input, answers[1]);
    ::close(input);
    ::close(answers[1]);
    std::string text;
    bool isStopped = false;
    for (;;) {
        if (stop.stop_requested() && !std::exchange(isStopped, true)) ::kill(process, SIGTERM);
        onProgress(tally.getProgress());
        pollfd answer{.fd = answers[0], .events = POLLIN, .revents = 0};
        if (::poll(&answer, 1, static_cast<int>(kBetweenLooks.count())) <= 0) continue;
        char piece[4096];
        const ssize_t count = ::read(answers[0], piece, sizeof piece);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        text.append(piece, static_cast<std::size_t>(count));
        for (std::size_t end = 0; (end = text.find('\n')) != std::string::npos; text.erase(0, end + 1))
            hear(text.substr(0, end));
    }
    ::close(answers[0]);
    findUntold();
    tally.setRunning(0);
    onProgress(tally.getProgress());
    return exitCodeOf(process);
}

void EngineRun::hear(const std::string& line) {
    using State = BatchEnd::State;
    const std::size_t blank = line.find(' ');
    const std::string word = line.substr(0, blank);
    std::size_t number = recordings.size();
    const char* const from = line.data() + (blank == std::string::npos ? line.size() : blank + 1);
    const char* const end = line.data() + line.size();
    const char* const rest = std::from_chars(from, end, number).ptr;
    if (word == EngineAnswer::kRunning) return tally.setRunning(number);
    if (number >= recordings.size()) return;
    const std::size_t recording = recordings[number];
    if (tally.getEnds()[recording].state != State::Waiting) return;
    std::string text = rest == end ? "" : std::string(rest + 1, end);
    std::replace(text.begin(), text.end(), EngineAnswer::kLineEnd, '\n');
    text = saidIn(std::move(text));
    const std::string refusal = options.arrivals.empty() ? "" : takeIn(number);
    if (!refusal.empty()) return tally.take(recording, State::Failed, refusal);
    if (word == EngineAnswer::kCrashed) tellCrash(plan.entries[recording], began, text);
    const State state = word == EngineAnswer::kDone          ? State::Done
                        : word == EngineAnswer::kInterrupted ? State::Interrupted
                                                             : State::Failed;
    tally.take(recording, state, std::move(text));
}

/// Of some the word may have been on its way when the engine lost whoever had it.
void EngineRun::findUntold() {
    for (const std::size_t recording : recordings) {
        if (tally.getEnds()[recording].state != BatchEnd::State::Waiting) continue;
        const auto status = readStatus(plan.entries[recording].folder + "/" + RunStatus::kFileName);
        if (status && status->getIsDone() && status->began >= began)
            tally.take(recording, BatchEnd::State::Done);
    }
}

std::string EngineRun::takeIn(std::size_t number) const {
    const fs::path arrived = fs::path(options.arrivals) / std::to_string(number);
    const BatchPlan::Entry& entry = plan.entries[recordings[number]];
    std::error_code error;
    if (!fs::is_directory(arrived, error)) return {}; // it hasn't run
    std::set<std::string> names;
    for (const fs::directory_entry& file : fs::directory_iterator(arrived))
        if (file.path().filename() != RunStatus::kFileName) names.insert(file.path().filename().string());
    ResultOptions rules;
    rules.overwrites = std::find(entry.words.begin(), entry.words.end(), "--overwrite") != entry.words.end();
    try {
        const ResultFolder folder(entry.folder);
        folder.begin({entry.recording});
        for (const std::string& name : names) {
            const std::string path = (fs::path(entry.folder) / name).string();
            const auto refusal = ResultPath(path).findRefusal(rules);
            if (refusal) return Complaint{{path}, refusal->found, refusal->expected}.getText();
        }
        for (const std::string& name : names)
            fs::rename(arrived / name, fs::path(entry.folder) / name);
        // The status comes last, as ever.
        if (fs::exists(arrived / RunStatus::kFileName))
            fs::rename(arrived / RunStatus::kFileName, fs::path(entry.folder) / RunStatus::kFileName);
        fs::remove(arrived, error);
    } catch (const RecordingException& exception) {
        return exception.what();
    } catch (const fs::filesystem_error& exception) {
        return exception.what();
    }
    return {};
}

} // namespace Quillmere::Host
