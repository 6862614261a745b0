// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/PipeWait.h"
#include "host/recording/ResultPath.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>

namespace Quillmere::Host {

/// A result on its way: written as `NAME.partial` beside its final name, and given that name by `complete`
/// alone, so a file under the final name is always a whole one and what stood there before stays until then.
/// It gets the name when all of it is on the disk, and the mode of what it replaces. What it may replace: see
/// `ResultPath`.
///
/// Two runs can't write one result at a time: the second is refused. Where the file system has no locks,
/// nobody looks after that. Failures are `RecordingException`s.
class QUILLMERE_API ResultFile {
public:
    /// Opens `NAME.partial`, empty; of a pipe it waits for the reader. Waiting, also that of `write`, ends
    /// with `InterruptedException` when a stop is requested.
    explicit ResultFile(const std::string& path, ResultOptions options = {},
                        const std::stop_token& stop = {});
    /// Leaves `NAME.partial` where it is, unless `complete` or `discard` came before.
    ~ResultFile();
    ResultFile(const ResultFile&) = delete;
    ResultFile& operator=(const ResultFile&) = delete;

    /// Of a pipe it waits for the reader, as long as nobody gives up.
    void write(const char* bytes, std::size_t count);
    /// Bytes that are written, also by a call that failed midway.
    std::uint64_t getWritten() const { return written; }
    /// Throws away what was written last, so that `bytes` are left; what is written straight stays.
    void cutTo(std::uint64_t bytes);

    /// From now on a write to a pipe that isn't read fails, also one that is under way. [any]
    void giveUp() { isGivenUp = true; }

    /// Nothing more is written: brings everything to the disk, still under the partial name. A second call
    /// does nothing.
    void finish();

    /// Finishes and gives the file its final name.
    void complete();

    /// Removes what was written, as if nothing had been.
    void discard();

    /// Whether what was written is gone for good: a device, a pipe, standard output.
    bool getIsDirect() const { return !name.getIsFile(); }
    /// The final name.
    const std::string& getPath() const { return name.getPath(); }
    /// Where the bytes are as long as the file isn't complete.
    const std::string& getPartialPath() const { return name.getPartialPath(); }

    /// Another file for the same result, empty, to copy what was written into. Requires: a file that can be
    /// renamed.
    std::unique_ptr<ResultFile> beginCopy() const;
    /// Puts a copy in the place of what was written. Requires: nothing is written any more.
    void adopt(ResultFile& copy);

private:
    struct CopyOf {};
    ResultFile(CopyOf, const ResultFile& original);

    void openDirect();
    int openPipe() const;
    /// Opens the file at `current`, as a new one or over what a run has left there.
    void openOwn();
    bool tryToOpen();
    void lock();
    bool getIsAtName() const;
    void takeModeOf(const std::string& path) const;
    void requireFinalName() const;
    void rename();
    void syncFolder() const;
    void waitForReader() const;
    void beginSync();
    void close();
    [[noreturn]] void fail(const std::string& what) const;

    ResultPath name;
    ResultOptions options;
    std::string current; ///< Where the bytes are.
    std::uint64_t written = 0;
    std::uint64_t syncBegun = 0; ///< Bytes that are on their way to the disk.
    bool isFinished = false;
    std::atomic<bool> isGivenUp{false};
    PipeWait waiting;
    int file = -1;
};

} // namespace Quillmere::Host
