// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/picture/Picture.h"
#include "host/text/Complaint.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

enum class PictureForm { Svg, Png };

/// The forms of pictures that this library was built to draw, as users name them.
QUILLMERE_API const std::vector<std::string>& getPictureForms();

/// The form that a file's name asks for, SVG for standard output. What is wrong with the name, or a form that
/// isn't built in, is a complaint at `where`.
QUILLMERE_API std::optional<PictureForm> pictureFormOf(const std::string& path, const Place& where,
                                                       Complaints& complaints);

/// The picture as the bytes of a file. The same picture gives the same ones. Requires: a form that is built
/// in.
QUILLMERE_API std::string drawPicture(const Picture& picture, PictureForm form);

/// Whether a file that begins so is a picture of ours.
QUILLMERE_API bool getIsPicture(std::string_view head);

} // namespace Quillmere::Host
