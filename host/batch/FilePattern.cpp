// SPDX-License-Identifier: MIT
#include "host/batch/FilePattern.h"

#include "host/text/Printable.h"

#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>

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

/// Looks through folders for what a pattern names.
class Finder {
public:
    Finder(const Pattern& wanted, const std::string& leftOut, std::set<std::string>& files)
        : pattern(wanted), found(files) {
        std::error_code error;
        if (!leftOut.empty()) hidden = fs::weakly_canonical(fs::absolute(leftOut, error), error);
    }

    void find() { look(pattern.folder, 0); }

private:
    void look(const fs::path& folder, std::size_t part) {
        if (getIsHidden(folder)) return;
        if (pattern.isLiteral) return take(folder / pattern.parts[part]);
        const bool isAnyDepth = pattern.parts[part] == "**";
        const bool isLast = part + 1 == pattern.parts.size();
        if (isAnyDepth && !isLast) look(folder, part + 1);
        std::error_code error; // of a folder that may not be read, in which nothing is found
        for (const fs::directory_entry& entry : fs::directory_iterator(
                 folder.empty() ? "." : folder, fs::directory_options::skip_permission_denied, error)) {
            const std::string name = entry.path().filename().string();
            const fs::path path = folder / name;
            if (isAnyDepth)
                lookAnywhere(path, name, entry, part, isLast);
            else if (::fnmatch(pattern.parts[part].c_str(), name.c_str(), FNM_PERIOD) == 0)
                isLast ? take(path) : enter(path, part + 1);
        }
    }

    void lookAnywhere(const fs::path& path, const std::string& name, const fs::directory_entry& entry,
                      std::size_t part, bool isLast) {
        if (name.starts_with('.')) return;
        std::error_code error;
        if (!entry.is_symlink(error) && entry.is_directory(error))
            look(path, part);
        else if (isLast)
            take(path);
    }

    void enter(const fs::path& path, std::size_t part) {
        std::error_code error;
        if (fs::is_directory(path, error)) look(path, part);
    }

    void take(const fs::path& path) {
        std::error_code error;
        if (fs::is_regular_file(path, error)) found.insert(path.lexically_normal().string());
    }

    bool getIsHidden(const fs::path& folder) const {
        if (hidden.empty()) return false;
        std::error_code error;
        return fs::weakly_canonical(fs::absolute(folder.empty() ? "." : folder, error), error) == hidden;
    }

    const Pattern& pattern;
    std::set<std::string>& found;
    fs::path hidden;
};

fs::path commonOf(const fs::path& one, const fs::path& other) {
    fs::path common;
    for (auto a = one.begin(), b = other.begin(); a != one.end() && b != other.end() && *a == *b; ++a, ++b)
        common /= *a;
    return common;
}

void complain(const std::string& text, const std::string& option, Complaints& complaints) {
    std::error_code error;
    std::string quoted = "'";
    quoted += printable(text, kLongestName);
    quoted += '\'';
    if (fs::is_directory(text, error))
        complaints.add({option}, "the folder " + quoted, "files, or a pattern of them",
                       (fs::path(text) / "**/*.csv").string());
    else
        complaints.add({option}, "no file for " + quoted, "a file, or a pattern that some have");
}

} // namespace

std::string FoundFiles::nameBelowRoot(const std::string& file) const {
    return root.empty() ? file : fs::path(file).lexically_relative(root).string();
}

FoundFiles findFiles(const std::vector<std::string>& patterns, const std::string& leftOut,
                     const std::string& option, Complaints& complaints) {
    std::set<std::string> all;
    std::optional<fs::path> root;
    for (const std::string& text : patterns) {
        const Pattern pattern(text);
        std::set<std::string> found;
        Finder(pattern, leftOut, found).find();
        if (found.empty()) complain(text, option, complaints);
        all.merge(found);
        root = root ? commonOf(*root, pattern.folder) : pattern.folder;
    }
    return {.files = {all.begin(), all.end()}, .root = root ? root->string() : std::string()};
}

} // namespace Quillmere::Host
