// SPDX-License-Identifier: MIT
#include "host/recording/RecordingForms.h"

#include "host/recording/CsvReader.h"
#include "host/recording/RecordingFile.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Quillmere::Host {

namespace {

/// As many bytes as any form needs to know its own.
constexpr std::size_t kBytesLookedAt = 512;

struct Form {
    /// Whether a file is of this form, by its name and its first bytes, 512 of them or the whole file.
    bool (*getIsOf)(const std::string& path, std::string_view head);
    /// What a library opens by its name it can't have from a pipe: then the opener complains.
    std::unique_ptr<RecordingReader> (*open)(std::unique_ptr<RecordingFile> file);
};

/// The first that fits is taken, so the last one takes everything.
constexpr std::array kForms{
    Form{[](const std::string&, std::string_view) { return true; },
         [](std::unique_ptr<RecordingFile> file) -> std::unique_ptr<RecordingReader> {
             return std::make_unique<CsvReader>(std::move(file));
         }},
};

} // namespace

std::unique_ptr<RecordingReader> openRecording(const std::string& path) {
    auto file = std::make_unique<RecordingFile>(path);
    // With one form there is nothing to choose, and a pipe isn't waited for twice.
    const std::string_view head = kForms.size() > 1 ? file->lookAhead(kBytesLookedAt) : std::string_view();
    const auto form =
        std::find_if(kForms.begin(), kForms.end(), [&](const Form& one) { return one.getIsOf(path, head); });
    return form->open(std::move(file));
}

} // namespace Quillmere::Host
