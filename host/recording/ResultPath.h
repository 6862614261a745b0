// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/FileEnd.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct stat;

namespace Quillmere::Host {

/// What a result may replace.
struct ResultOptions {
    /// Also a file that no run has made.
    bool overwrites = false;
    /// Whether a file that begins so is a result of the caller's kind: asked where a file has lost its mark,
    /// as copies have. Empty: never.
    std::function<bool(std::string_view)> looksOwn;
    /// Whether a graph could say so: pictures, reports and summaries stand in none.
    bool isOfGraph = true;
};

/// Why a result can't be written, as complaints say it.
struct ResultRefusal {
    std::string found;
    std::string expected;
};

/// Where the name of a result leads, and which other names the result takes until it is whole.
///
/// A file gets its name when it is whole, and stands beside it as `NAME.partial` until then, as
/// `NAME.partial.widened` while it is copied into a wider form. A device, a pipe, standard output (`-`) and
/// an open descriptor (`/dev/stdout`, `/dev/fd/3`) are written straight, since they can't be renamed; links
/// may lead to these.
///
/// A file of another's is never lost. What stands under the final name is replaced only if a run has made it:
/// it carries the mark of `ResultMark`, is empty, or looks like it; or if the caller says that anything may
/// go. What stands under the other two names has to be such, a regular file with one name, and this user's. A
/// link to a file is refused.
class QUILLMERE_API ResultPath {
public:
    enum class Kind { File, Device, Descriptor };

    explicit ResultPath(std::string name);

    Kind getKind() const { return kind; }
    bool getIsFile() const { return kind == Kind::File; }
    /// As messages name it.
    const std::string& getPath() const { return path; }
    /// The same as the path, for what is written straight.
    const std::string& getPartialPath() const { return partialPath; }
    const std::string& getWidenedPath() const { return widenedPath; }
    /// Requires: `Kind::Descriptor`.
    int getDescriptor() const { return descriptor; }

    /// Every file that it is until it is whole.
    std::vector<FileEnd::File> getFiles() const;

    /// Looks whether the result could be written now. Touches nothing.
    std::optional<ResultRefusal> findRefusal(const ResultOptions& options) const;
    /// Looks at the final name alone.
    std::optional<ResultRefusal> findRefusalOfFinal(const ResultOptions& options) const;
    /// Looks at an open file that stands under one of the other names.
    static std::optional<ResultRefusal> findRefusalOfPartial(const std::string& path, int file,
                                                             const ResultOptions& options);

private:
    std::optional<ResultRefusal> findRefusalOfFolder() const;
    static std::optional<ResultRefusal> findRefusalOfPartial(const std::string& path,
                                                             const ResultOptions& options);

    std::string path;
    std::string partialPath;
    std::string widenedPath;
    Kind kind = Kind::File;
    int descriptor = -1;
};

} // namespace Quillmere::Host
