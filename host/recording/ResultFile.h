// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/PipeWait.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Quillmere::Host {

/// A result on its way: written as `NAME.partial` beside its final name, and given that name by `complete` alone, so
/// a file under the final name is always a whole one and what stood there before stays until then.
///
/// A symbolic link is followed: the file that it names is replaced, not the link. A device, a pipe and standard output
/// (`-`) are written straight, since they can't be renamed. Two runs can't write one result at a time: the second is refused.
/// Failures are `RecordingException`s.
class QUILLMERE_API ResultFile {
public:
    /// Opens `NAME.partial`, empty; of a pipe it waits for the reader. Waiting, also that of `write`, ends with
    /// `InterruptedException` when `stop` is given and becomes true; it isn't owned and outlives the file.
    explicit ResultFile(const std::string& path, const std::atomic<bool>* stop = nullptr);
    /// Leaves `NAME.partial` where it is, unless `complete` or `discard` came before.
    ~ResultFile();
    ResultFile(const ResultFile&) = delete;
    ResultFile& operator=(const ResultFile&) = delete;

    /// Of a pipe it waits for the reader, as long as nobody gives up.
    void write(const char* bytes, std::size_t count);

    /// From now on a write to a pipe that isn't read fails, also one that is under way. [any]
    void giveUp() { isGivenUp = true; }

    /// Everything is written: gives the file its final name.
    void complete();

    /// Removes what was written, as if nothing had been.
    void discard();

    /// Whether what was written is gone for good: a device, a pipe, standard output.
    bool getIsDirect() const { return isDirect; }
    /// The final name, links followed.
    const std::string& getPath() const { return path; }
    /// Where the bytes are as long as the file isn't complete.
    const std::string& getPartialPath() const { return partialPath; }

    /// Makes the file at `replacement`, written by the caller, the partial file. Requires: nothing is written any more.
    void replacePartial(const std::string& replacement);

    /// What `path` comes to when links are followed and `.` and `..` are resolved; the file itself need not exist.
    static std::string resolve(const std::string& path);

private:
    [[noreturn]] void fail(const std::string& what) const;
    int openPipe() const;
    void waitForReader() const;
    void close();

    std::string path;
    std::string partialPath;
    bool isDirect = false; ///< Nothing to rename.
    std::atomic<bool> isGivenUp{false};
    PipeWait waiting;
    int file = -1;
};

} // namespace Quillmere::Host
