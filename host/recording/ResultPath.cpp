// SPDX-License-Identifier: MIT
#include "host/recording/ResultPath.h"

#include "host/text/Counted.h"
#include "host/recording/ResultMark.h"
#include "host/ends/StandardStream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <climits>
#include <cstring>
#include <filesystem>

namespace Quillmere::Host {

namespace {

namespace fs = std::filesystem;
using Refusal = std::optional<ResultRefusal>;

constexpr const char* kPartial = ".partial";
constexpr const char* kWidened = ".widened";
constexpr int kMostLinks = 40; ///< As many as the kernel follows.
constexpr std::size_t kShownName = 60;

/// A descriptor that is closed with its owner.
class Opened {
public:
    Opened(const std::string& path, int way) : file(::open(path.c_str(), way | O_CLOEXEC)) {}
    ~Opened() {
        if (file >= 0) ::close(file);
    }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;
    int get() const { return file; }

private:
    int file;
};

/// The descriptor of this process that a name such as `/dev/stdout` or `/dev/fd/3` leads to, -1 for another
/// name. Opening such a name would open a file anew, at its begin; to go on where the descriptor is, it has
/// to be known.
int findDescriptor(fs::path path) {
    const fs::path own = "/proc/" + std::to_string(::getpid()) + "/fd";
    std::error_code error;
    for (int links = 0; links < kMostLinks; ++links) {
        const fs::path folder = fs::weakly_canonical(fs::absolute(path, error).parent_path(), error);
        if (error) return -1;
        if (folder == own) {
            const std::string number = path.filename().string();
            int descriptor = -1;
            const auto [end, problem] =
                std::from_chars(number.data(), number.data() + number.size(), descriptor);
            return problem == std::errc() && *end == '\0' ? descriptor : -1;
        }
        if (!fs::is_symlink(path, error)) return -1;
        path = folder / fs::read_symlink(path, error);
        if (error) return -1;
    }
    return -1;
}

/// A name for a message: of one that is too long for any file, the begin.
std::string shown(const std::string& path) {
    if (path.size() <= PATH_MAX / 4 && fs::path(path).filename().native().size() <= NAME_MAX) return path;
    return path.substr(0, kShownName) + "...";
}

std::string theFile(const std::string& path) {
    return "the file '" + shown(path) + "'";
}

/// Of what is no regular file; 0 where nobody could tell.
std::string nameOfKind(mode_t mode) {
    switch (mode & static_cast<mode_t>(S_IFMT)) {
    case S_IFLNK:
        return "the link '";
    case S_IFDIR:
        return "the folder '";
    case S_IFIFO:
        return "the named pipe '";
    case S_IFSOCK:
        return "the socket '";
    case S_IFCHR:
    case S_IFBLK:
        return "the device '";
    default:
        return "something that is no file, '";
    }
}

Refusal refuse(std::string found, std::string expected) {
    return ResultRefusal{std::move(found), std::move(expected)};
}

constexpr const char* kMakersRefused[] = {"", ", which was changed after a run had written it",
                                          ", which no run has written"};

const char* makerRefused(ResultMark::Maker maker) {
    return kMakersRefused[static_cast<std::size_t>(maker)];
}

const char* expectedName(const ResultOptions& options) {
    return options.isOfGraph ? "another name, or 'overwrite: true' or --overwrite to replace it"
                             : "another name, or --overwrite to replace it";
}

constexpr const char* kNothingElse =
    "nothing there but what a run has left, since the result is written there first: move it away, or "
    "name the result otherwise";

} // namespace

ResultPath::ResultPath(std::string name) : path(std::move(name)) {
    struct stat facts {};
    if (getIsStandardStream(path)) {
        kind = Kind::Descriptor;
        descriptor = STDOUT_FILENO;
        path = "standard output";
    } else if (descriptor = findDescriptor(path); descriptor >= 0) {
        kind = Kind::Descriptor;
    } else if (::stat(path.c_str(), &facts) == 0 && !S_ISREG(facts.st_mode) && !S_ISDIR(facts.st_mode)) {
        kind = Kind::Device;
    }
    partialPath = getIsFile() ? path + kPartial : path;
    widenedPath = getIsFile() ? partialPath + kWidened : path;
}

std::vector<FileEnd::File> ResultPath::getFiles() const {
    if (kind == Kind::Descriptor) return {{path, descriptor}};
    if (!getIsFile()) return {{path}};
    return {{path}, {partialPath}, {widenedPath}};
}

Refusal ResultPath::findRefusal(const ResultOptions& options) const {
    if (kind == Kind::Descriptor) return {};
    if (!getIsFile()) return findRefusalOfFinal(options);
    if (Refusal refusal = findRefusalOfFolder()) return refusal;
    if (Refusal refusal = findRefusalOfFinal(options)) return refusal;
    if (Refusal refusal = findRefusalOfPartial(partialPath, options)) return refusal;
    return findRefusalOfPartial(widenedPath, options);
}

Refusal ResultPath::findRefusalOfFolder() const {
    const fs::path asPath(path);
    const fs::path folder = asPath.has_parent_path() ? asPath.parent_path() : fs::path(".");
    const std::size_t length = asPath.filename().native().size();
    const std::size_t most = NAME_MAX - std::strlen(kPartial) - std::strlen(kWidened);
    if (length > most)
        return refuse("a name of " + counted(length, "byte") + " for a result, '" +
                          asPath.filename().string().substr(0, kShownName) + "...'",
                      std::to_string(most) + " at most, since it is written as NAME.partial first");
    if (path.size() + std::strlen(kPartial) + std::strlen(kWidened) >= PATH_MAX)
        return refuse("a path of " + counted(path.size(), "byte") + " for a result, '" + shown(path) + "'",
                      "a shorter one");
    std::error_code error;
    if (fs::is_directory(asPath, error)) return refuse("the folder '" + path + "'", "the name of a file");
    if (!fs::is_directory(folder, error))
        return refuse(theFile(path) + " in a folder that isn't there", "a folder that is");
    if (::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0)
        return refuse(theFile(path) + " in a folder that can't be written to (" + std::strerror(errno) + ")",
                      "a folder that can");
    return {};
}

Refusal ResultPath::findRefusalOfFinal(const ResultOptions& options) const {
    struct stat facts {};
    if (kind == Kind::Device) {
        if (::stat(path.c_str(), &facts) == 0 && (S_ISBLK(facts.st_mode) || S_ISSOCK(facts.st_mode)))
            return refuse((S_ISBLK(facts.st_mode) ? "the disk '" : "the socket '") + path + "'",
                          "the name of a file, a pipe or a device that takes text");
        return {};
    }
    if (::lstat(path.c_str(), &facts) != 0) return {};
    if (S_ISLNK(facts.st_mode)) {
        std::error_code error;
        return refuse("the link '" + shown(path) + "' to '" + fs::read_symlink(path, error).string() + "'",
                      "the name of the file itself, since a result takes the place of what has its name");
    }
    if (S_ISDIR(facts.st_mode)) return refuse("the folder '" + path + "'", "the name of a file");
    if (options.overwrites) return {};
    if (!S_ISREG(facts.st_mode))
        return refuse(theFile(path) + ", which no run has written", expectedName(options));
    if ((facts.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0)
        return refuse(theFile(path) + ", which is write-protected", expectedName(options));
    const Opened file(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    const ResultMark::Maker maker =
        file.get() < 0 ? ResultMark::Maker::Unknown : ResultMark::findMaker(file.get(), options);
    if (maker == ResultMark::Maker::Run) return {};
    return refuse(theFile(path) + makerRefused(maker), expectedName(options));
}

/// What isn't a lone regular file may be a trap that somebody has set in a folder for all: its target would
/// be emptied.
Refusal ResultPath::findRefusalOfPartial(const std::string& path, const ResultOptions& options) {
    struct stat facts {};
    if (::lstat(path.c_str(), &facts) != 0) return {};
    if (!S_ISREG(facts.st_mode)) return refuse(nameOfKind(facts.st_mode) + path + "'", kNothingElse);
    const Opened file(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    if (file.get() < 0)
        return refuse(theFile(path) + ", which can't be read (" + std::strerror(errno) + ")", kNothingElse);
    return findRefusalOfPartial(path, file.get(), options);
}

Refusal ResultPath::findRefusalOfPartial(const std::string& path, int file, const ResultOptions& options) {
    struct stat facts {};
    if (::fstat(file, &facts) != 0 || !S_ISREG(facts.st_mode))
        return refuse(nameOfKind(facts.st_mode) + path + "'", kNothingElse);
    if (facts.st_nlink > 1) return refuse(theFile(path) + ", which has another name too", kNothingElse);
    if (facts.st_uid != ::geteuid()) return refuse(theFile(path) + " of another user", kNothingElse);
    const ResultMark::Maker maker = ResultMark::findMaker(file, options);
    if (maker == ResultMark::Maker::Run) return {};
    return refuse(theFile(path) + makerRefused(maker), kNothingElse);
}

} // namespace Quillmere::Host
