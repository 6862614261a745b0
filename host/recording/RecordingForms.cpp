// SPDX-License-Identifier: MIT
#include "host/recording/RecordingForms.h"

#include "host/ends/RecordingException.h"
#include "host/recording/CsvReader.h"
#include "host/recording/RecordingFile.h"
#include "host/text/Complaint.h"
#include "host/text/NearestName.h"
#ifdef QUILLMERE_WITH_ZLIB
#include "host/recording/Gunzip.h"
#endif

#include <algorithm>
#include <array>
#include <string_view>

namespace Quillmere::Host {

namespace {

/// As many bytes as any form needs to know its own.
constexpr std::size_t kBytesLookedAt = 512;
constexpr std::string_view kGzip = "\x1F\x8B";

using OpenFile = std::unique_ptr<RecordingFile>;

/// Of a file whose form needs a library that configuring hasn't found.
[[noreturn, maybe_unused]] void refuseForm(const RecordingFile& file, const std::string& found) {
    throw RecordingException({{file.getName()},
                              found + ", which this build of the program has no reader for",
                              "one of what it was built with: " + listOfNames(getRecordingForms())});
}

struct Form {
    /// Whether a file is of this form, by its name and its first bytes, 512 of them or the whole file.
    bool (*getIsOf)(const std::string& path, std::string_view head);
    /// What a library opens by its name it can't have from a pipe: then the opener complains.
    std::unique_ptr<RecordingReader> (*open)(OpenFile file);
};

/// The first that fits is taken, so the last one takes everything.
constexpr std::array kForms{
    Form{[](const std::string&, std::string_view) { return true; },
         [](OpenFile file) -> std::unique_ptr<RecordingReader> {
             return std::make_unique<CsvReader>(std::move(file));
         }},
};

/// What a file begins with; of one that is compressed what is in it.
std::string_view lookAtBegin(RecordingFile& file) {
    std::string_view head = file.lookAhead(kBytesLookedAt);
    // Whoever writes a pipe may have sent less than tells.
    while (!head.empty() && head.size() < kGzip.size() && kGzip.starts_with(head)) {
        const std::size_t before = head.size();
        head = file.lookAhead(kGzip.size());
        if (head.size() == before) break;
    }
    if (!head.starts_with(kGzip)) return head;
#ifdef QUILLMERE_WITH_ZLIB
    file.unpackWith(std::make_unique<Gunzip>(file.getName()));
    return file.lookAhead(kBytesLookedAt);
#else
    refuseForm(file, "a file compressed by gzip");
#endif
}

} // namespace

const std::vector<std::string>& getRecordingForms() {
    static const std::vector<std::string> names{
        "CSV",
#ifdef QUILLMERE_WITH_ZLIB
        "CSV compressed by gzip",
#endif
    };
    return names;
}

std::unique_ptr<RecordingReader> openRecording(const std::string& path) {
    auto file = std::make_unique<RecordingFile>(path);
    const std::string_view head = lookAtBegin(*file);
    const auto form =
        std::find_if(kForms.begin(), kForms.end(), [&](const Form& one) { return one.getIsOf(path, head); });
    return form->open(std::move(file));
}

} // namespace Quillmere::Host
