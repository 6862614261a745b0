// SPDX-License-Identifier: MIT
// Stands in front of the C library's allocator of a program that runs with it preloaded, and tries what
// becomes of the program when an allocation finds no memory. The program is the command as people have it.
//
//   SHORT_MEMORY_REPORT=FILE   at each allocation that `main` and what it calls make, a child is forked in
//                              which that one fails; how each child ended goes to FILE, the parent goes on
//   SHORT_MEMORY_EVERY=K       ... at every K-th of them
//   SHORT_MEMORY_FAIL=N        no children: the allocation N fails, for programs with threads
//                              and to look at one case
//   SHORT_MEMORY_LASTS=1       all behind it fail, too
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* pointer, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

constexpr unsigned kPatienceInSeconds = 60; // for a child on a busy machine

using Main = int (*)(int, char**, char**);
Main realMain = nullptr;

std::atomic<bool> isCounting{false};
std::atomic<unsigned long> count{0};
unsigned long every = 1;
unsigned long failing = 0; ///< Number of the one that fails; 0 for none.
bool isLasting = false;
int report = -1;
int childsError = -1; ///< A file in the place of a child's standard error.

void tell(unsigned long number, int status) {
    struct stat said {};
    ::fstat(childsError, &said);
    char line[80];
    const int length = std::snprintf(
        line, sizeof line, "%lu %s %d %s\n", number, WIFEXITED(status) ? "exit" : "signal",
        WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status), said.st_size > 0 ? "told" : "silent");
    if (::write(report, line, static_cast<std::size_t>(length)) != length) ::_exit(99);
}

/// In the child true: its allocation fails.
bool isChildOfFork(unsigned long number) {
    isCounting = false;
    const pid_t child = ::fork();
    if (child == 0) {
        const int nowhere = ::open("/dev/null", O_WRONLY);
        ::ftruncate(childsError, 0);
        ::lseek(childsError, 0, SEEK_SET);
        ::dup2(nowhere, STDOUT_FILENO);
        ::dup2(childsError, STDERR_FILENO);
        ::alarm(kPatienceInSeconds);
        isCounting = isLasting;
        failing = number;
        report = -1;
        return true;
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    tell(number, status);
    isCounting = true;
    return false;
}

bool isRefused() {
    if (!isCounting.load(std::memory_order_relaxed)) return false;
    const unsigned long number = ++count;
    const bool refused = report >= 0 ? number % every == 0 && isChildOfFork(number)
                                     : failing != 0 && (number == failing || (isLasting && number > failing));
    if (refused) errno = ENOMEM;
    return refused;
}

const char* setting(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

int countingMain(int argc, char** argv, char** environment) {
    isLasting = setting("SHORT_MEMORY_LASTS") != nullptr;
    if (const char* const number = setting("SHORT_MEMORY_FAIL")) failing = std::strtoul(number, nullptr, 10);
    if (const char* const number = setting("SHORT_MEMORY_EVERY")) every = std::strtoul(number, nullptr, 10);
    if (const char* const path = setting("SHORT_MEMORY_REPORT")) {
        report = ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        char scratch[] = "/tmp/quillmere-test-XXXXXX";
        childsError = ::mkstemp(scratch);
        ::unlink(scratch);
    }
    isCounting = true;
    return realMain(argc, argv, environment);
}

} // namespace

extern "C" {

[[gnu::visibility("default")]] void* malloc(std::size_t size) {
    return isRefused() ? nullptr : __libc_malloc(size);
}
[[gnu::visibility("default")]] void* calloc(std::size_t number, std::size_t size) {
    return isRefused() ? nullptr : __libc_calloc(number, size);
}
[[gnu::visibility("default")]] void* realloc(void* pointer, std::size_t size) {
    return isRefused() ? nullptr : __libc_realloc(pointer, size);
}
[[gnu::visibility("default")]] void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return isRefused() ? nullptr : __libc_memalign(alignment, size);
}
[[gnu::visibility("default")]] int posix_memalign(void** out, std::size_t alignment, std::size_t size) {
    *out = isRefused() ? nullptr : __libc_memalign(alignment, size);
    return *out != nullptr ? 0 : ENOMEM;
}

/// Counting begins with `main`: what the C++ library needs to begin at all isn't the program's.
[[gnu::visibility("default")]] int __libc_start_main(Main main, int argc, char** argv, void (*init)(),
                                                     void (*fini)(), void (*linkerFini)(), void* stackEnd) {
    using Start = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);
    realMain = main;
    const auto start = reinterpret_cast<Start>(::dlsym(RTLD_NEXT, "__libc_start_main"));
    return start(countingMain, argc, argv, init, fini, linkerFini, stackEnd);
}
}
