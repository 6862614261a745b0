// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

namespace Support {

/// Lets one system call on partial files fail for as long as it lives: those with `.partial` in the name. The
/// program that links this has calls of its own in front of the C library's.
class SystemFault {
public:
    /// `call` is `close`, `fchown`, `flock`, `fsetxattr`, `fsync`, `rename` or `write`. Of error 0 nothing
    /// fails.
    SystemFault(std::string call, int error, std::function<void()> before = {});
    ~SystemFault();
    SystemFault(const SystemFault&) = delete;
    SystemFault& operator=(const SystemFault&) = delete;

    /// The first `count` calls go well.
    void spare(int count) { spared = count; }
    /// How many calls have come by.
    int getCalls() const { return calls; }

    /// Whether the call is to fail; sets `errno` then.
    bool strikes(const char* name, const std::string& path);

private:
    std::string call;
    int error;
    std::function<void()> onCall; ///< Run once.
    int spared = 0;
    int calls = 0;
};

} // namespace Support
