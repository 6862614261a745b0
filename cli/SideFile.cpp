// SPDX-License-Identifier: MIT
#include "cli/SideFile.h"

#include "cli/UsageError.h"
#include "host/ends/RecordingException.h"
#include "host/ends/StandardStream.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>
#include <system_error>

namespace Cli {

using namespace Quillmere::Host;

void checkSideFile(const std::string& option, const std::string& path, const ResultOptions& options) {
    const auto refusal = ResultPath(path).findRefusal(options);
    if (refusal) throw UsageError({{option}, refusal->found, refusal->expected});
}

void checkPageName(const std::string& option, const std::string& path) {
    if (getIsStandardStream(path) || path.starts_with("/dev/")) return;
    std::string ending = std::filesystem::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    if (ending == ".html" || ending == ".htm") return;
    throw UsageError({{option},
                      "the report '" + printable(path, kLongestName) + "'",
                      "a name that ends in .html or .htm"});
}

void keepFromSideFile(const std::string& option, const std::string& path, const std::string& file,
                      const std::string& what) {
    std::error_code error; // of what isn't there, which can't be the same
    if (std::filesystem::equivalent(path, file, error))
        throw UsageError(
            {{option}, what + " '" + printable(file, kLongestName) + "'", "a file that isn't read"});
}

bool writeSideFile(const std::string& path, const ResultOptions& options, const std::string& text) {
    try {
        ResultFile file(path, options);
        try {
            file.write(text.data(), text.size());
            file.complete();
        } catch (...) {
            file.discard();
            throw;
        }
    } catch (const RecordingException& exception) {
        std::cerr << "quillmere: " << exception.what() << "\n";
        return false;
    }
    return true;
}

} // namespace Cli
