// SPDX-License-Identifier: MIT
#include "host/batch/WorkerPool.h"

#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <initializer_list>
#include <system_error>
#include <utility>

namespace Quillmere::Host {

namespace {

constexpr std::size_t kLongestPrint = 8192; ///< Of what a worker says, its end.
/// Open files that workers leave to this process: for a status, the summary, and for a sanitizer, which takes
/// memory that it has no pipe to look at for unsound.
constexpr rlim_t kFilesOfOurs = 4;

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// Likewise, once those files are closed.
[[noreturn]] void failWithout(std::initializer_list<int> files, const char* what) {
    const int reason = errno;
    for (const int file : files)
        ::close(file);
    errno = reason;
    fail(what);
}

/// Whether enough can be opened yet after the last that was. Says in `errno` why not.
bool getAreFilesLeft(int last) {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return true;
    errno = EMFILE;
    return static_cast<rlim_t>(last) + kFilesOfOurs < limit.rlim_cur;
}

std::string textIn(int file) {
    const off_t size = ::lseek(file, 0, SEEK_END);
    const off_t from = std::max<off_t>(0, size - static_cast<off_t>(kLongestPrint));
    std::string text(static_cast<std::size_t>(std::max<off_t>(0, size - from)), '\0');
    const ssize_t count = ::pread(file, text.data(), text.size(), from);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(0, count)));
    return text;
}

std::string endText(int status) {
    if (WIFSIGNALED(status)) {
        const int number = WTERMSIG(status);
        return "its process was ended by signal " + std::to_string(number) + " (" + ::strsignal(number) + ")";
    }
    return "its process ended with the code " + std::to_string(WEXITSTATUS(status));
}

/// What a worker does before it is a program of its own: nothing but system calls.
[[noreturn]] void becomeWorker(pid_t parent, int socket, int output, char* const* words) {
    // It doesn't outlive who reads its answers, not even where that is killed.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(127);
    if (::dup2(socket, STDIN_FILENO) >= 0 && ::dup2(output, STDOUT_FILENO) >= 0 &&
        ::dup2(output, STDERR_FILENO) >= 0)
        ::execv(words[0], words);
    ::_exit(127);
}

} // namespace

WorkerPool::WorkerPool(std::vector<std::string> words, std::size_t mostWorkers)
    : program(std::move(words)), most(std::max<std::size_t>(1, mostWorkers)) {
    workers.reserve(most);
}

WorkerPool::~WorkerPool() {
    Ended ended;
    for (Worker& worker : workers) {
        if (worker.process < 0) continue;
        if (worker.isBusy) ::kill(worker.process, SIGKILL);
        bury(worker, ended); // closes its socket, so one without a task ends by itself
    }
}

std::size_t WorkerPool::getBusy() const {
    return static_cast<std::size_t>(
        std::count_if(workers.begin(), workers.end(), [](const Worker& worker) { return worker.isBusy; }));
}

WorkerPool::Worker& WorkerPool::idleWorker() {
    const auto isIdle = [](const Worker& worker) { return !worker.isBusy && worker.process >= 0; };
    auto idle = std::find_if(workers.begin(), workers.end(), isIdle);
    // None that lives: the place of one that is gone.
    if (idle == workers.end())
        idle =
            std::find_if(workers.begin(), workers.end(), [](const Worker& worker) { return !worker.isBusy; });
    return idle != workers.end() ? *idle : workers.emplace_back();
}

void WorkerPool::spawn(Worker& worker) const {
    int sockets[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) fail("no socket for a worker");
    const int output = ::memfd_create("quillmere-worker", MFD_CLOEXEC);
    if (output < 0) failWithout({sockets[0], sockets[1]}, "no memory for what a worker prints");
    // With a single worker it is worth a try.
    if (getBusy() > 0 && !getAreFilesLeft(output))
        failWithout({sockets[0], sockets[1], output}, "no files beside those of workers");
    std::vector<char*> words;
    for (const std::string& word : program)
        words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    const pid_t parent = ::getpid();
    const pid_t process = ::fork();
    if (process == 0) becomeWorker(parent, sockets[1], output, words.data());
    if (process < 0) failWithout({sockets[0], sockets[1], output}, "no process for a worker");
    ::close(sockets[1]);
    worker.process = process;
    worker.socket = sockets[0];
    worker.output = output;
}

void WorkerPool::start(std::size_t task, const std::string& line) {
    Worker& worker = idleWorker();
    if (worker.process < 0) spawn(worker);
    [[maybe_unused]] const int emptied = ::ftruncate(worker.output, 0);
    ::lseek(worker.output, 0, SEEK_SET); // the worker's own place, too
    worker.isBusy = true;
    worker.task = task;
    worker.answer.clear();
    const std::string text = line + "\n";
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t count = ::send(worker.socket, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return; // it is gone, as the next wait finds
        sent += static_cast<std::size_t>(count);
    }
}

/// Takes what a worker has sent; whether its task has ended.
bool WorkerPool::hear(Worker& worker, Ended& ended) {
    char piece[1024];
    const ssize_t count = ::recv(worker.socket, piece, sizeof piece, 0);
    if (count < 0 && errno == EINTR) return false;
    if (count > 0) worker.answer.append(piece, static_cast<std::size_t>(count));
    const bool isAnswered = worker.answer.ends_with('\n');
    if (count > 0 && !isAnswered) return false;
    ended.task = worker.task;
    ended.printed = textIn(worker.output);
    if (isAnswered)
        ended.answer = worker.answer.substr(0, worker.answer.size() - 1);
    else
        bury(worker, ended);
    worker.isBusy = false;
    return true;
}

std::vector<WorkerPool::Ended> WorkerPool::wait(std::chrono::milliseconds time) {
    std::vector<pollfd> files;
    std::vector<Worker*> busy;
    for (Worker& worker : workers) {
        if (!worker.isBusy) continue;
        files.push_back({.fd = worker.socket, .events = POLLIN, .revents = 0});
        busy.push_back(&worker);
    }
    std::vector<Ended> all;
    if (::poll(files.data(), files.size(), static_cast<int>(time.count())) <= 0) return all;
    for (std::size_t i = 0; i < busy.size(); ++i) {
        if (files[i].revents == 0) continue;
        Ended ended;
        if (hear(*busy[i], ended)) all.push_back(std::move(ended));
    }
    return all;
}

void WorkerPool::interrupt() const {
    for (const Worker& worker : workers)
        if (worker.isBusy) ::kill(worker.process, SIGTERM);
}

/// Waits for the end of a worker that has ended, or is about to.
void WorkerPool::bury(Worker& worker, Ended& ended) {
    ::close(std::exchange(worker.socket, -1));
    ::close(std::exchange(worker.output, -1));
    int status = 0;
    while (::waitpid(worker.process, &status, 0) < 0 && errno == EINTR) {
    }
    worker.process = -1;
    ended.crash = endText(status);
    if (WIFSIGNALED(status)) ended.signal = WTERMSIG(status);
}

} // namespace Quillmere::Host
