// SPDX-License-Identifier: MIT
#include "host/batch/FileHash.h"

#include <Poco/SHA2Engine.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace Quillmere::Host {

std::optional<FileFacts> factsOf(const std::string& path) {
    struct stat facts {};
    if (::stat(path.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode)) return std::nullopt;
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    return FileFacts{.bytes = static_cast<std::uint64_t>(facts.st_size),
                     .modified = facts.st_mtim.tv_sec * kNanoseconds + facts.st_mtim.tv_nsec};
}

std::string hashOfFile(const std::string& path) {
    if (!factsOf(path)) return {}; // a pipe would be emptied
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return {};
    constexpr std::size_t kPiece = std::size_t{1} << 16;
    std::vector<char> piece(kPiece);
    Poco::SHA2Engine engine(Poco::SHA2Engine::SHA_256);
    ssize_t count = 0;
    while ((count = ::read(file, piece.data(), piece.size())) > 0 || (count < 0 && errno == EINTR))
        if (count > 0) engine.update(piece.data(), static_cast<std::size_t>(count));
    ::close(file);
    return count == 0 ? Poco::DigestEngine::digestToHex(engine.digest()) : std::string();
}

} // namespace Quillmere::Host
