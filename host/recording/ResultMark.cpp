// SPDX-License-Identifier: MIT
#include "host/recording/ResultMark.h"

#include "host/recording/ContentSeal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace Quillmere::Host::ResultMark {

namespace {

constexpr const char* kAttribute = "user.quillmere.result";
constexpr std::string_view kOpen = "open";
/// File systems keep times more or less finely, and copies with them.
constexpr std::int64_t kSameSecond = 2;
constexpr std::size_t kHead = std::size_t{1} << 16;

void set(int file, std::string_view text) {
    // What can't carry a mark is known by its text.
    [[maybe_unused]] const int result = ::fsetxattr(file, kAttribute, text.data(), text.size(), 0);
}

/// Whether the mark of a file that was closed tells of this size and time.
bool getIsUnchanged(std::string_view mark, const struct stat& facts) {
    std::int64_t size = 0;
    std::int64_t second = 0;
    const char* const end = mark.data() + mark.size();
    const auto [space, sizeError] = std::from_chars(mark.data(), end, size);
    if (sizeError != std::errc() || space == end) return false;
    const auto [stop, secondError] = std::from_chars(space + 1, end, second);
    if (secondError != std::errc() || stop != end) return false;
    return size == facts.st_size && std::abs(second - facts.st_mtim.tv_sec) <= kSameSecond;
}

std::string partOf(int file, std::size_t place, std::size_t most) {
    std::string part(most, '\0');
    std::size_t filled = 0;
    while (filled < part.size()) {
        const ssize_t count =
            ::pread(file, part.data() + filled, part.size() - filled, static_cast<off_t>(place + filled));
        if (count <= 0) break;
        filled += static_cast<std::size_t>(count);
    }
    part.resize(filled);
    return part;
}

/// Of a file without a mark.
Maker findMakerByContent(int file, const ResultOptions& options) {
    if (!options.looksOwn || !options.looksOwn(partOf(file, 0, kHead))) return Maker::Unknown;
    const auto read = [&](std::size_t place, std::size_t count) { return partOf(file, place, count); };
    return ContentSeal::getIsBroken(read) ? Maker::ChangedSince : Maker::Run;
}

} // namespace

void open(int file) {
    set(file, kOpen);
}

void close(int file) {
    struct stat facts {};
    if (::fstat(file, &facts) != 0) return;
    // In place: a run's steady rows and its end allocate alike, however large the result is.
    char text[64];
    const int length = std::snprintf(text, sizeof text, "%lld %lld", static_cast<long long>(facts.st_size),
                                     static_cast<long long>(facts.st_mtim.tv_sec));
    set(file, {text, static_cast<std::size_t>(length)});
}

Maker findMaker(int file, const ResultOptions& options) {
    struct stat facts {};
    if (::fstat(file, &facts) != 0) return Maker::Unknown;
    if (facts.st_size == 0) return Maker::Run; // nothing is lost with it
    char text[64];
    const ssize_t length = ::fgetxattr(file, kAttribute, text, sizeof text);
    if (length >= 0) {
        const std::string_view mark(text, static_cast<std::size_t>(length));
        return mark == kOpen || getIsUnchanged(mark, facts) ? Maker::Run : Maker::ChangedSince;
    }
    return findMakerByContent(file, options);
}

bool getIsOfRun(const std::string& path) {
    // What others hold open for ever, as a pipe, is no result that could carry a mark.
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) return false;
    struct stat facts {};
    const bool isOfRun = ::fstat(file, &facts) == 0 && S_ISREG(facts.st_mode) && facts.st_size > 0 &&
                         findMaker(file, {}) == Maker::Run;
    ::close(file);
    return isOfRun;
}

} // namespace Quillmere::Host::ResultMark
