// SPDX-License-Identifier: MIT
#include "host/recording/WavForm.h"

#include "host/ends/RecordingException.h"
#include "host/recording/ArrayReader.h"
#include "host/recording/DataChoice.h"
#include "host/text/Complaint.h"
#include "host/text/Counted.h"
#include "host/text/Printable.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace Quillmere::Host {

namespace {

constexpr const char* kWhole = "a WAV file that is whole";
constexpr std::size_t kLongestText = 100;

/// What the library reads the file through. An exception must not pass its frames, so reading ends at one,
/// and the rows that are missing are told.
struct Access {
    const RecordingFile* file = nullptr;
    sf_count_t place = 0;

    static sf_count_t getLength(void* self) {
        return static_cast<sf_count_t>(static_cast<Access*>(self)->file->getSize());
    }
    static sf_count_t seek(sf_count_t offset, int whence, void* self) {
        Access& access = *static_cast<Access*>(self);
        const sf_count_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? access.place : getLength(self);
        access.place = std::clamp<sf_count_t>(from + offset, 0, getLength(self));
        return access.place;
    }
    static sf_count_t read(void* to, sf_count_t count, void* self) {
        Access& access = *static_cast<Access*>(self);
        if (count <= 0) return 0;
        try {
            const std::size_t got =
                access.file->readAt(static_cast<std::uint64_t>(access.place), static_cast<char*>(to),
                                    static_cast<std::size_t>(count));
            access.place += static_cast<sf_count_t>(got);
            return static_cast<sf_count_t>(got);
        } catch (const std::exception&) {
            return 0;
        }
    }
    static sf_count_t write(const void*, sf_count_t, void*) { return 0; }
    static sf_count_t tell(void* self) { return static_cast<Access*>(self)->place; }
};

struct Sound {
    explicit Sound(const RecordingFile& file) : access{&file, 0} {
        SF_VIRTUAL_IO calls{Access::getLength, Access::seek, Access::read, Access::write, Access::tell};
        handle = sf_open_virtual(&calls, SFM_READ, &facts, &access);
    }
    ~Sound() {
        if (handle != nullptr) sf_close(handle);
    }
    Sound(const Sound&) = delete;
    Sound& operator=(const Sound&) = delete;

    Access access;
    SF_INFO facts{};
    SNDFILE* handle = nullptr;
};

class WavTable final : public NumberTable {
public:
    WavTable(const RecordingFile& openFile, std::unique_ptr<Sound> opened)
        : NumberTable(static_cast<std::uint64_t>(opened->facts.frames),
                      static_cast<std::size_t>(opened->facts.channels)),
          file(openFile), sound(std::move(opened)) {}

    void read(std::uint64_t first, std::size_t count, double* to) override {
        const sf_count_t got = sf_readf_double(sound->handle, to, static_cast<sf_count_t>(count));
        if (got == static_cast<sf_count_t>(count)) return;
        const std::uint64_t there = first + static_cast<std::uint64_t>(std::max<sf_count_t>(got, 0));
        throw RecordingException(
            {{file.getName()},
             "its end behind " + counted(there, "row") + " of " + std::to_string(getRows()),
             kWhole});
    }

private:
    const RecordingFile& file;
    std::unique_ptr<Sound> sound;
};

/// The library takes what there is of a file that was cut for the whole of it.
void requireAllBytes(const RecordingFile& file) {
    std::array<unsigned char, 8> head{};
    if (file.readAt(0, reinterpret_cast<char*>(head.data()), head.size()) < head.size()) return;
    if (head[0] != 'R' || head[1] != 'I') return; // a large one, whose length stands elsewhere
    const std::uint32_t size =
        head[4] | std::uint32_t{head[5]} << 8 | std::uint32_t{head[6]} << 16 | std::uint32_t{head[7]} << 24;
    // Who writes to a pipe can't know the length, and leaves one of these.
    if (size == 0 || size == 0xFFFFFFFF) return;
    if (std::uint64_t{size} + 8 <= file.getSize()) return;
    throw RecordingException({{file.getName()},
                              "its end behind " + std::to_string(file.getSize()) + " of " +
                                  counted(std::uint64_t{size} + 8, "byte"),
                              kWhole});
}

} // namespace

std::unique_ptr<RecordingReader> openWav(std::unique_ptr<RecordingFile> file) {
    requireAllBytes(*file);
    auto sound = std::make_unique<Sound>(*file);
    if (sound->handle == nullptr)
        throw RecordingException(
            {{file->getName()},
             "a WAV file that can't be read (" + printable(sf_strerror(nullptr), kLongestText) + ")",
             kWhole});
    if (sound->facts.frames < 1 || sound->facts.channels < 1 || sound->facts.samplerate < 1)
        throw RecordingException({{file->getName()}, "a WAV file without a sample", "one that has some"});
    ArrayContent content;
    content.columns = numberedColumns(static_cast<std::size_t>(sound->facts.channels));
    content.rate = sound->facts.samplerate;
    content.data = std::make_unique<WavTable>(*file, std::move(sound));
    return std::make_unique<ArrayReader>(std::move(file), std::move(content));
}

} // namespace Quillmere::Host
