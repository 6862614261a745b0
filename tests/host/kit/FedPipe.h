// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

namespace Support {

/// A named pipe that a test writes to. Rows wait in it before anybody reads them, and nobody who is gone
/// breaks it.
class FedPipe {
public:
    /// Makes the pipe.
    explicit FedPipe(const std::string& path);
    /// Ends it, for who reads, unless `close` has.
    ~FedPipe();
    FedPipe(const FedPipe&) = delete;
    FedPipe& operator=(const FedPipe&) = delete;

    /// Waits for room as long as `isWanted` says so; false when it said no.
    bool write(const std::string& text, const std::function<bool()>& isWanted) const;
    void close();

private:
    int file = -1;
};

} // namespace Support
