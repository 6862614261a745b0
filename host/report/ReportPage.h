// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <string>
#include <string_view>

namespace Quillmere::Host {

/// The page of pages/report, which the build has embedded: HTML that needs nothing beside itself, no network
/// either, and draws itself from what is put into it.
namespace ReportPage {

/// Whether this build has it: one that was made without node hasn't.
QUILLMERE_API bool getIsThere();

/// The whole page. What is in `title` and `json` may hold anything, `</script>` too: none of it ends up as
/// markup. `blobs` are elements. Requires: it is there.
QUILLMERE_API std::string make(std::string_view title, std::string_view json, std::string_view blobs);

/// How every page begins, and no other HTML is likely to.
QUILLMERE_API std::string beginOfPage();

} // namespace ReportPage

} // namespace Quillmere::Host
