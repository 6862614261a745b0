// SPDX-License-Identifier: MIT
#include "host/recording/RecordingForms.h"

#include "host/ends/RecordingException.h"
#include "host/ends/StandardStream.h"
#include "host/recording/BidsReader.h"
#include "host/recording/CsvReader.h"
#include "host/recording/RecordingFile.h"
#include "host/text/Complaint.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#ifdef QUILLMERE_WITH_ZLIB
#include "host/recording/Gunzip.h"
#include "host/recording/MatForm.h"
#endif
#ifdef QUILLMERE_WITH_HDF5
#include "host/recording/Hdf5Form.h"
#endif
#ifdef QUILLMERE_WITH_SNDFILE
#include "host/recording/WavForm.h"
#endif

#include <algorithm>
#include <array>
#include <string_view>

namespace Quillmere::Host {

namespace {

using namespace std::string_view_literals;

/// As many bytes as any form needs to know its own.
constexpr std::size_t kBytesLookedAt = 512;
constexpr std::string_view kGzip = "\x1F\x8B";

/// Of a file that is one table as a whole.
void refuseData(const RecordingFile& file, const ReadingWishes& wishes) {
    if (wishes.data.empty()) return;
    throw UnclearRecording({{file.getName()},
                            "one table, which has no '" + printable(wishes.data, kLongestName) + "'",
                            "no 'data:', which chooses among the variables of a MAT or an HDF5 file"});
}

using OpenFile = std::unique_ptr<RecordingFile>;

/// Of a file whose form needs a library that configuring hasn't found.
[[noreturn, maybe_unused]] void refuseForm(const RecordingFile& file, const std::string& found) {
    throw RecordingException({{file.getName()},
                              found + ", which this build of the program has no reader for",
                              "one of what it was built with: " + listOfNames(getRecordingForms())});
}

/// Of a file that its reader goes to and fro in, or that a library opens by its name.
[[maybe_unused]] void requireWholeFile(const RecordingFile& file, const std::string& what) {
    const bool isStream = file.getIsPiped() || getIsStandardStream(file.getPath());
    if (!isStream && !file.getIsPacked()) return;
    throw RecordingException({{file.getName()},
                              what + (isStream ? " that comes as a stream" : " compressed by gzip"),
                              "the name of a file, unpacked: its rows don't lie one behind the other"});
}

using Reader = std::unique_ptr<RecordingReader>;

[[maybe_unused]] DataWish dataWishOf(const ReadingWishes& wishes) {
    return {wishes.data, wishes.time.empty() ? "" : wishes.time.front()};
}

Reader openAsHdf5(OpenFile file, [[maybe_unused]] const ReadingWishes& wishes, const std::string& found) {
#ifdef QUILLMERE_WITH_HDF5
    requireWholeFile(*file, found);
    return openHdf5(std::move(file), dataWishOf(wishes));
#else
    refuseForm(*file, found);
#endif
}

Reader openAsMat(OpenFile file, [[maybe_unused]] const ReadingWishes& wishes) {
#ifdef QUILLMERE_WITH_ZLIB
    requireWholeFile(*file, "a MAT file");
    return openMat(std::move(file), dataWishOf(wishes));
#else
    refuseForm(*file, "a MAT file");
#endif
}

Reader openAsWav(OpenFile file, const ReadingWishes& wishes) {
    refuseData(*file, wishes);
#ifdef QUILLMERE_WITH_SNDFILE
    requireWholeFile(*file, "a WAV file");
    return openWav(std::move(file));
#else
    refuseForm(*file, "a WAV file");
#endif
}

bool getIsWav(std::string_view head) {
    return (head.starts_with("RIFF") || head.starts_with("RF64")) && head.size() >= 12 &&
           head.substr(8, 4) == "WAVE";
}

bool getIsMat(std::string_view head) {
    const std::string_view version = head.substr(std::min<std::size_t>(124, head.size()), 4);
    return head.starts_with("MATLAB 5.0 MAT-file") || version == "\0\1IM"sv || version == "\1\0MI"sv;
}

/// Of what is drawn, whose bytes or text are no table; empty of everything else.
std::string drawnKindOf(std::string_view head) {
    constexpr std::array kPictures{"\x89PNG\r\n\x1A\n"sv, "\xFF\xD8\xFF"sv, "GIF8"sv, "<svg"sv};
    const auto getIsBegin = [&](std::string_view begin) { return head.starts_with(begin); };
    if (std::any_of(kPictures.begin(), kPictures.end(), getIsBegin)) return "a picture";
    constexpr std::array kPages{"<!DOCTYPE html"sv, "<!doctype html"sv, "<html"sv};
    if (std::any_of(kPages.begin(), kPages.end(), getIsBegin)) return "a page for a browser";
    return "";
}

struct Form {
    /// Whether a file is of this form, by its name and its first bytes, 512 of them or the whole file.
    bool (*getIsOf)(const std::string& path, std::string_view head);
    Reader (*open)(OpenFile file, const ReadingWishes& wishes);
};

/// The first that fits is taken, so the last one takes everything.
constexpr std::array kForms{
    Form{[](const std::string&, std::string_view head) { return head.starts_with("\x89HDF\r\n\x1A\n"); },
         [](OpenFile file, const ReadingWishes& wishes) {
             return openAsHdf5(std::move(file), wishes, "an HDF5 file");
         }},
    Form{[](const std::string&, std::string_view head) { return head.starts_with("MATLAB 7.3 MAT-file"); },
         [](OpenFile file, const ReadingWishes& wishes) {
             return openAsHdf5(std::move(file), wishes, "a MAT file of version 7.3");
         }},
    Form{[](const std::string&, std::string_view head) { return getIsMat(head); }, openAsMat},
    Form{[](const std::string&, std::string_view head) { return getIsWav(head); }, openAsWav},
    Form{[](const std::string&, std::string_view head) { return !drawnKindOf(head).empty(); },
         [](OpenFile file, const ReadingWishes&) -> Reader {
             throw RecordingException(
                 {{file->getName()}, drawnKindOf(file->lookAhead(kBytesLookedAt)), "a recording"});
         }},
    Form{[](const std::string& path, std::string_view) { return BidsReader::getIsOf(path); },
         [](OpenFile file, const ReadingWishes& wishes) -> Reader {
             refuseData(*file, wishes);
             return std::make_unique<BidsReader>(std::move(file));
         }},
    Form{[](const std::string&, std::string_view) { return true; },
         [](OpenFile file, const ReadingWishes& wishes) -> Reader {
             refuseData(*file, wishes);
             return std::make_unique<CsvReader>(std::move(file), wishes);
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
        "BIDS motion",
#ifdef QUILLMERE_WITH_ZLIB
        "CSV compressed by gzip",
        "MAT 5",
#endif
#ifdef QUILLMERE_WITH_HDF5
        "HDF5",
        "MAT 7.3",
#endif
#ifdef QUILLMERE_WITH_SNDFILE
        "WAV",
#endif
    };
    return names;
}

std::unique_ptr<RecordingReader> openRecording(const std::string& path, const ReadingWishes& wishes) {
    auto file = std::make_unique<RecordingFile>(path, wishes.stop);
    const std::string_view head = lookAtBegin(*file);
    const auto form =
        std::find_if(kForms.begin(), kForms.end(), [&](const Form& one) { return one.getIsOf(path, head); });
    return form->open(std::move(file), wishes);
}

std::unique_ptr<RecordingReader> openRecording(const std::string& path, const DataWish& wish) {
    ReadingWishes wishes;
    wishes.data = wish.data;
    if (!wish.time.empty()) wishes.time.push_back(wish.time);
    return openRecording(path, wishes);
}

} // namespace Quillmere::Host
