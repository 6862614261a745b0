// SPDX-License-Identifier: MIT
#include "tests/host/recording/SystemFaults.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <utility>

namespace Support {

namespace {

SystemFault* armed = nullptr; // one at a time, in one thread

std::string nameOf(int file) {
    char path[PATH_MAX];
    const ssize_t length = ::readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), path, sizeof path);
    return length < 0 ? std::string() : std::string(path, static_cast<std::size_t>(length));
}

bool strikes(const char* name, int file) {
    return armed != nullptr && armed->strikes(name, nameOf(file));
}

template <class Call>
Call real(const char* name) {
    return reinterpret_cast<Call>(::dlsym(RTLD_NEXT, name));
}

} // namespace

SystemFault::SystemFault(std::string name, int number, std::function<void()> before)
    : call(std::move(name)), error(number), onCall(std::move(before)) {
    armed = this;
}

SystemFault::~SystemFault() {
    armed = nullptr;
}

bool SystemFault::strikes(const char* name, const std::string& path) {
    if (name != call || path.find(".partial") == std::string::npos) return false;
    ++calls;
    if (const auto once = std::exchange(onCall, {})) once();
    if (calls <= spared || error == 0) return false;
    errno = error;
    return true;
}

} // namespace Support

// Seen from the libraries.
#pragma GCC visibility push(default)
extern "C" {

int fsync(int file) {
    if (Support::strikes("fsync", file)) return -1;
    return Support::real<int (*)(int)>("fsync")(file);
}

/// Closes all the same, as the kernel does.
int close(int file) {
    const bool fails = Support::strikes("close", file);
    const int error = errno;
    const int result = Support::real<int (*)(int)>("close")(file);
    if (!fails) return result;
    errno = error;
    return -1;
}

ssize_t write(int file, const void* bytes, std::size_t count) {
    if (Support::strikes("write", file)) return -1;
    return Support::real<ssize_t (*)(int, const void*, std::size_t)>("write")(file, bytes, count);
}

int flock(int file, int operation) noexcept {
    if (Support::strikes("flock", file)) return -1;
    return Support::real<int (*)(int, int)>("flock")(file, operation);
}

int rename(const char* from, const char* to) noexcept {
    if (Support::armed != nullptr && Support::armed->strikes("rename", from)) return -1;
    return Support::real<int (*)(const char*, const char*)>("rename")(from, to);
}

int fchown(int file, uid_t owner, gid_t group) noexcept {
    if (Support::strikes("fchown", file)) return -1;
    return Support::real<int (*)(int, uid_t, gid_t)>("fchown")(file, owner, group);
}

int fsetxattr(int file, const char* name, const void* value, std::size_t size, int flags) noexcept {
    if (Support::strikes("fsetxattr", file)) return -1;
    using Call = int (*)(int, const char*, const void*, std::size_t, int);
    return Support::real<Call>("fsetxattr")(file, name, value, size, flags);
}

} // extern "C"
#pragma GCC visibility pop
