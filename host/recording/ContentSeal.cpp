// SPDX-License-Identifier: MIT
#include "host/recording/ContentSeal.h"

#include <cstdint>
#include <cstdio>

namespace Quillmere::Host::ContentSeal {

namespace {
constexpr std::string_view kBegin = "quillmere-seal:";
constexpr std::string_view kDigits = "0000000000000000";
constexpr std::size_t kBehind = 4; ///< Bytes behind the digits that don't count.
/// A seal stands in what a file of ours begins with.
constexpr std::size_t kHead = std::size_t{1} << 16;

/// FNV-1a in 64 bits (G. Fowler, L. C. Noll, K.-P. Vo).
class Hash {
public:
    void take(std::string_view bytes) {
        for (const char byte : bytes) {
            state ^= static_cast<unsigned char>(byte);
            state *= 0x100000001b3u;
        }
    }
    std::string getText() const {
        char text[17];
        std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(state));
        return text;
    }

private:
    std::uint64_t state = 0xcbf29ce484222325u;
};
} // namespace

std::string getBlank() {
    return std::string(kBegin) + std::string(kDigits);
}

void close(std::string& content) {
    const std::size_t begin = content.find(getBlank());
    if (begin == std::string::npos) return;
    const std::size_t digits = begin + kBegin.size();
    Hash hash;
    const std::size_t behind = digits + kDigits.size() + kBehind;
    if (behind < content.size()) hash.take(std::string_view(content).substr(behind));
    content.replace(digits, kDigits.size(), hash.getText());
}

bool getIsBroken(const std::function<std::string(std::size_t place, std::size_t count)>& read) {
    const std::string head = read(0, kHead);
    const std::size_t begin = head.find(kBegin);
    if (begin == std::string::npos) return false;
    const std::size_t digits = begin + kBegin.size();
    Hash hash;
    for (std::size_t place = digits + kDigits.size() + kBehind;;) {
        const std::string piece = read(place, kHead);
        if (piece.empty()) break;
        hash.take(piece);
        place += piece.size();
    }
    return head.compare(digits, kDigits.size(), hash.getText()) != 0;
}

} // namespace Quillmere::Host::ContentSeal
