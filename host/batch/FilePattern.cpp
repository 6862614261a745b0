// SPDX-License-Identifier: MIT
#include "host/batch/FilePattern.h"

#include "host/batch/BatchSummary.h"
#include "host/batch/RunStatus.h"
#include "host/text/Printable.h"

#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

namespace Quillmere::Host {

namespace fs = std::filesystem;

namespace {

bool getIsPattern(const std::string& name) {
    return name.find_first_of("*?[") != std::string::npos;
}

/// A pattern taken apart: a folder that stands fast, and what is looked for below it.
struct Pattern {
    explicit Pattern(const std::string& text) {
        std::error_code error;
        const bool isFile = fs::is_regular_file(text, error); // whatever signs its name has
        for (const fs::path& part : fs::path(text).lexically_normal())
            (parts.empty() && (isFile || !getIsPattern(part.string())) ? folder : rest(part)) /= part;
        if (!parts.empty()) return;
        parts.push_back(folder.filename().string());
        folder = folder.parent_path();
        isLiteral = true;
    }

    fs::path folder;
    std::vector<std::string> parts;
    bool isLiteral = false;

private:
    fs::path& rest(const fs::path& part) {
        parts.push_back(part.string());
        return ignored;
    }
    fs::path ignored;
};

/// The same place by another name, from the top, without a sign behind it.
fs::path absoluteOf(const fs::path& path) {
    std::error_code error;
    fs::path whole = fs::absolute(path.empty() ? fs::path(".") : path, error).lexically_normal();
    return whole.has_filename() ? whole : whole.parent_path();
}

fs::path canonicalOf(const fs::path& path) {
    std::error_code error;
    fs::path whole = fs::weakly_canonical(absoluteOf(path), error);
    return error ? absoluteOf(path) : whole;
}

/// Files and folders that hold no recordings, whatever a pattern says.
class LeftOut {
public:
    explicit LeftOut(const std::vector<std::string>& names) {
        for (const std::string& name : names)
            if (!name.empty()) places.push_back(canonicalOf(name));
    }

    /// Whether one of them is `folder`, or above it.
    bool getHides(const fs::path& folder) const {
        if (places.empty()) return false;
        const fs::path whole = canonicalOf(folder);
        return std::any_of(places.begin(), places.end(), [&](const fs::path& place) {
            return std::mismatch(place.begin(), place.end(), whole.begin(), whole.end()).first == place.end();
        });
    }
    /// The same of a file in a folder that isn't hidden.
    bool getIsOne(const fs::path& file) const {
        return std::any_of(places.begin(), places.end(), [&](const fs::path& place) {
            return place.filename() == file.filename() && place == canonicalOf(file);
        });
    }

private:
    std::vector<fs::path> places;
};

bool getIsSummary(const fs::path& file) {
    if (file.filename() != kSummaryName) return false;
    std::ifstream stream(file, std::ios::binary);
    std::string begin(std::char_traits<char>::length(kSummaryBegin), '\0');
    stream.read(begin.data(), static_cast<std::streamsize>(begin.size()));
    return begin == kSummaryBegin;
}

/// The files in a folder that a run has put there.
std::set<std::string> resultsIn(const fs::path& folder) {
    std::set<std::string> names;
    if (const auto status = readStatus((folder / RunStatus::kFileName).string()))
        for (const RunStatus::Result& result : status->results)
            names.insert(result.path);
    return names;
}

/// Looks through folders for what a pattern names.
class Finder {
public:
    /// What is found, and what isn't.
    struct Found {
        std::set<std::string> files;
        std::vector<std::pair<std::string, std::string>> unread; ///< Folders, and why.
        std::string results; ///< The first result of an earlier run that was left out.
    };

    Finder(const Pattern& wanted, const LeftOut& others) : pattern(wanted), leftOut(others) {}

    Found find(bool withResults) {
        takesResults = withResults;
        found = {};
        look(pattern.folder, 0);
        return found;
    }

private:
    void look(const fs::path& folder, std::size_t part) {
        if (leftOut.getHides(folder)) return;
        if (pattern.isLiteral) return take(folder / pattern.parts[part], {});
        const bool isAnyDepth = pattern.parts[part] == "**";
        const bool isLast = part + 1 == pattern.parts.size();
        if (isAnyDepth && !isLast) look(folder, part + 1);
        const std::set<std::string> made = takesResults ? std::set<std::string>() : resultsIn(folder);
        std::error_code error;
        fs::directory_iterator at(folder.empty() ? "." : folder, error);
        for (; !error && at != fs::directory_iterator(); at.increment(error)) {
            const std::string name = at->path().filename().string();
            const fs::path path = folder / name;
            if (isAnyDepth)
                lookAnywhere(path, *at, part, made);
            else if (::fnmatch(pattern.parts[part].c_str(), name.c_str(), FNM_PERIOD) == 0)
                isLast ? take(path, made) : enter(path, part + 1);
        }
        // A folder that isn't there has nothing; one that is, and can't be read, may have recordings.
        if (error && error != std::errc::no_such_file_or_directory && error != std::errc::not_a_directory)
            tell(folder, "cannot be read: " + error.message());
    }

    void tell(const fs::path& folder, const std::string& why) {
        const auto isIt = [&](const auto& one) { return one.first == folder.string(); };
        if (std::none_of(found.unread.begin(), found.unread.end(), isIt))
            found.unread.emplace_back(folder.string(), why);
    }

    void lookAnywhere(const fs::path& path, const fs::directory_entry& entry, std::size_t part,
                      const std::set<std::string>& made) {
        if (path.filename().string().starts_with('.')) return;
        std::error_code error;
        const bool isFolder = entry.is_directory(error);
        if (isFolder && entry.is_symlink(error)) // which may lead to one above
            tell(path, "is a link to a folder, which ** doesn't follow");
        else if (isFolder)
            look(path, part);
        else if (part + 1 == pattern.parts.size())
            take(path, made);
    }

    void enter(const fs::path& path, std::size_t part) {
        std::error_code error;
        if (fs::is_directory(path, error)) look(path, part);
    }

    void take(const fs::path& path, const std::set<std::string>& made) {
        std::error_code error;
        if (!fs::is_regular_file(path, error) || leftOut.getIsOne(path) || getIsSummary(path)) return;
        if (made.contains(path.filename().string())) {
            if (found.results.empty()) found.results = path.string();
            return;
        }
        const std::string name = path.lexically_normal().string();
        found.files.insert(name == "-" ? "./-" : name); // which alone is standard input
    }

    const Pattern& pattern;
    const LeftOut& leftOut;
    bool takesResults = false;
    Found found;
};

void warn(const Finder::Found& found, const std::string& option, Complaints& complaints) {
    for (const auto& [folder, why] : found.unread)
        complaints.warn({folder}, why + "; recordings there are left out");
    if (!found.results.empty())
        complaints.warn({option}, "left out the results of earlier runs, as '" +
                                      printable(found.results, kLongestName) +
                                      "'; a pattern for them alone takes them");
}

fs::path commonOf(const fs::path& one, const fs::path& other) {
    fs::path common;
    for (auto a = one.begin(), b = other.begin(); a != one.end() && b != other.end() && *a == *b; ++a, ++b)
        common /= *a;
    return common;
}

void complain(const std::string& text, const std::string& option, const LeftOut& others,
              Complaints& complaints) {
    std::error_code error;
    std::string quoted = "'";
    quoted += printable(text, kLongestName);
    quoted += '\'';
    if (fs::is_directory(text, error))
        complaints.add({option}, "the folder " + quoted, "files, or a pattern of them",
                       (fs::path(text) / "**/*.csv").string());
    else if (others.getHides(Pattern(text).folder))
        complaints.add({option}, quoted + ", where the results go",
                       "recordings beside the folder of results");
    else
        complaints.add({option}, "no file for " + quoted, "a file, or a pattern that some have");
}

} // namespace

std::string FoundFiles::nameBelowRoot(const std::string& file) const {
    return absoluteOf(file).lexically_relative(absoluteOf(root)).string();
}

FoundFiles findFiles(const std::vector<std::string>& patterns, const std::vector<std::string>& leftOut,
                     const std::string& option, Complaints& complaints) {
    const LeftOut others(leftOut);
    std::map<std::string, std::string> all; // by the name from the top: each counts once
    std::optional<fs::path> root;
    for (const std::string& text : patterns) {
        const Pattern pattern(text);
        Finder finder(pattern, others);
        Finder::Found found = finder.find(false);
        if (found.files.empty() && !found.results.empty()) found = finder.find(true);
        warn(found, option, complaints);
        if (found.files.empty()) complain(text, option, others, complaints);
        for (const std::string& file : found.files)
            all.emplace(absoluteOf(file).string(), file);
        const fs::path folder = absoluteOf(pattern.folder);
        root = root ? commonOf(*root, folder) : folder;
    }
    FoundFiles found;
    for (auto& [whole, file] : all)
        found.files.push_back(std::move(file));
    if (root) found.root = root->string();
    return found;
}

} // namespace Quillmere::Host
