// SPDX-License-Identifier: MIT
#include "host/picture/PictureFile.h"

#include "host/ends/StandardStream.h"
#include "host/recording/ContentSeal.h"
#include "host/picture/PagePainter.h"
#include "host/picture/SvgCanvas.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#ifdef QUILLMERE_WITH_CAIRO
#include "host/picture/PngCanvas.h"
#endif

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace Quillmere::Host {

namespace {

constexpr const char* kPng = "PNG";

std::string endingOf(const std::string& path) {
    std::string ending = std::filesystem::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return ending;
}

} // namespace

const std::vector<std::string>& getPictureForms() {
#ifdef QUILLMERE_WITH_CAIRO
    static const std::vector<std::string> forms{"SVG", kPng};
#else
    static const std::vector<std::string> forms{"SVG"};
#endif
    return forms;
}

std::optional<PictureForm> pictureFormOf(const std::string& path, const Place& where,
                                         Complaints& complaints) {
    const std::string ending = endingOf(path);
    if (getIsStandardStream(path) || path.starts_with("/dev/") || ending == ".svg") return PictureForm::Svg;
    std::string name = "the picture '"; // piece by piece, as GCC 12 takes a sum of short texts for too long
    name += printable(path, kLongestName);
    name += "'";
    const std::vector<std::string>& forms = getPictureForms();
    if (ending != ".png") {
        complaints.add(where, name,
                       forms.size() > 1 ? "a name that ends in .svg or .png" : "a name that ends in .svg");
    } else if (std::find(forms.begin(), forms.end(), kPng) == forms.end()) {
        complaints.add(where, name + ", a form that this build of the program can't draw",
                       "a name that ends in .svg, or a program that was built with Cairo");
    } else {
        return PictureForm::Png;
    }
    return std::nullopt;
}

std::string drawPicture(const Picture& picture, PictureForm form) {
    const PagePainter painter(picture);
#ifdef QUILLMERE_WITH_CAIRO
    if (form == PictureForm::Png) {
        PngCanvas canvas(painter.getWidth(), painter.getHeight());
        painter.paint(canvas);
        return canvas.getBytes();
    }
#else
    static_cast<void>(form);
#endif
    SvgCanvas canvas(painter.getWidth(), painter.getHeight(), picture.title, painter.getDescription());
    painter.paint(canvas);
    std::string text = canvas.getText();
    ContentSeal::close(text);
    return text;
}

bool getIsPicture(std::string_view head) {
#ifdef QUILLMERE_WITH_CAIRO
    if (PngCanvas::getIsOwn(head)) return true;
#endif
    return SvgCanvas::getIsOwn(head);
}

} // namespace Quillmere::Host
