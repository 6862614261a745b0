// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/PipeWait.h"
#include "host/recording/Unpacker.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace Quillmere::Host {

/// Whether a recording of that path would come through a pipe, a terminal or a device, so that what is read
/// of it is gone for whoever reads it next. Opens nothing, which could wait for who writes.
bool getIsPipe(const std::string& path);

/// The bytes of a recording: of a file, or of whoever writes a pipe. Failures are `RecordingException`s.
///
/// A file is taken as long as it is when its end is reached: what was appended meanwhile belongs to it. One
/// that got shorter since it was opened is refused, since what is missing was a part of it.
class QUILLMERE_API RecordingFile {
public:
    /// Opens the file, or standard input for `-`. Raises when there is none that can be read, and for a
    /// folder. Nothing is waited for yet; what waits later ends when a stop is requested, see `setStop`.
    explicit RecordingFile(const std::string& filePath, const std::stop_token& stop = {});
    ~RecordingFile();
    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;

    /// As messages name it.
    const std::string& getName() const { return name; }
    /// As it was opened.
    const std::string& getPath() const { return path; }
    /// Whether bytes may have to be waited for: no file on a disk, but a pipe, a terminal, a device.
    bool getIsPiped() const { return isPiped; }
    /// Of a file when it was opened, also of one that is unpacked; 0 for a pipe.
    std::uint64_t getSize() const { return size; }
    /// What to wait on for more of a pipe.
    int getDescriptor() const { return file; }

    /// From then on waiting for a pipe ends with `InterruptedException` when a stop is requested. [setup]
    void setStop(const std::stop_token& token) { waiting.setStop(token); }
    /// From then on what is looked at and read is what the file holds, unpacked. Requires: nothing has been
    /// read. [setup]
    void unpackWith(std::unique_ptr<Unpacker> unpacker);
    bool getIsPacked() const { return unpacker != nullptr; }
    /// How far the file itself has been read, also of one that is unpacked.
    std::uint64_t getBytesTaken() const;
    /// The first `count` bytes, or all when there are fewer; of a pipe what comes at first, since who writes
    /// it may send little and wait. They stay to be read. Requires: nothing has been read. The view holds
    /// until the next call.
    std::string_view lookAhead(std::size_t count);
    /// Reads at most `count` bytes, as many as are there; 0 at the end.
    std::size_t read(char* to, std::size_t count);
    /// Reads at most `count` bytes from a place in a file, whatever was read before; fewer at its end.
    /// Requires: it isn't piped.
    std::size_t readAt(std::uint64_t place, char* to, std::size_t count) const;
    /// Whether `read` wouldn't wait.
    bool getIsReadable();
    /// Whether somebody wrote to the file between its opening and its end. Requires: `read` gave 0.
    bool getIsChanged() const { return isChanged; }
    /// Whether a file is another than when it was opened, by its size and its time. [any]
    bool getHasChanged() const;

private:
    std::size_t next(char* to, std::size_t count);
    std::size_t readOn(char* to, std::size_t count);
    std::size_t unpackOn(char* to, std::size_t count);
    bool takePacked();
    bool getHasCome() const;
    [[noreturn]] void fail(const char* what) const;
    void checkEnd();

    std::string path;
    std::string name;
    int file = -1;
    bool isPiped = true;
    bool isChanged = false;
    std::uint64_t size = 0; ///< From `begin` on.
    off_t begin = 0;        ///< Where in the file the recording begins.
    std::uint64_t bytesRead = 0;
    std::string ahead; ///< Looked at and not yet read.
    std::unique_ptr<Unpacker> unpacker;
    std::string packed;        ///< A piece of the file as it is, for the unpacker,
    std::string_view toUnpack; ///< and what is left of it.
    std::timespec written{};   ///< When it was last written to, as it was opened.
    PipeWait waiting;
};

} // namespace Quillmere::Host
