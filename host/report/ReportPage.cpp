// SPDX-License-Identifier: MIT
#include "host/report/ReportPage.h"

#include "host/recording/ContentSeal.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <vector>

namespace Quillmere::Host::ReportPage {

namespace {
/// In front of the title, behind it, behind the JSON and behind the blobs; in parts, since there are
/// compilers that take no longer texts. Without the page there are none.
const std::vector<std::vector<std::string_view>>& pieces() {
    static const std::vector<std::vector<std::string_view>> all{
#include QUILLMERE_REPORT_PAGE // what the build has made of pages/report
    };
    return all;
}

std::string pieceAt(std::size_t index) {
    std::string whole;
    for (const std::string_view part : pieces().at(index))
        whole += part;
    return whole;
}

std::string escapedTitle(std::string_view title) {
    std::string escaped;
    for (const char letter : printable(title, kLongestName)) {
        if (letter == '&')
            escaped += "&amp;";
        else if (letter == '<')
            escaped += "&lt;";
        else
            escaped += letter;
    }
    return escaped;
}
} // namespace

bool getIsThere() {
    return !pieces().empty();
}

/// In JSON a `<` stands in texts alone, where it may be written so; then nothing in it ends a script or
/// begins a comment.
std::string make(std::string_view title, std::string_view json, std::string_view blobs) {
    std::string page = pieceAt(0) + escapedTitle(title) + pieceAt(1);
    page.insert(beginOfPage().size(), "\n<!-- " + ContentSeal::getBlank() + " -->");
    page.reserve(page.size() + json.size() + blobs.size() + (std::size_t{1} << 18));
    for (const char letter : json) {
        if (letter == '<')
            page += "\\u003c";
        else
            page += letter;
    }
    page += pieceAt(2);
    page += blobs;
    page += pieceAt(3);
    ContentSeal::close(page);
    return page;
}

std::string beginOfPage() {
    const std::string head = pieceAt(0);
    return head.substr(0, head.find("\n<meta http-equiv"));
}

} // namespace Quillmere::Host::ReportPage
