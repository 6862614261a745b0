// SPDX-License-Identifier: MIT
#include "host/picture/PngCanvas.h"

#include "host/recording/ContentSeal.h"
#include "host/text/Printable.h"

#include <cairo.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <new>
#include <numbers>

namespace Quillmere::Host {

namespace {

using namespace std::string_view_literals;

constexpr double kPixelsToAUnit = 2.0;
// The signature, and the first chunk, which every such file begins with, and which is as long in each.
constexpr std::size_t kBytesInFront = 8 + 25;
constexpr std::size_t kPlaceOfMark = kBytesInFront;
/// By this a picture is known again: the begin of a chunk `tEXt`, behind its length.
constexpr std::string_view kMark = "tEXtSoftware\0quillmere plot, "sv;

/// Most significant byte first.
std::string bytesOf(std::uint32_t number) {
    std::string bytes;
    for (const unsigned shift : {24u, 16u, 8u, 0u})
        bytes += static_cast<char>(number >> shift & 0xFFu);
    return bytes;
}

/// The checksum that the chunks of a PNG have, bit by bit: a chunk is short.
std::uint32_t checksumOf(std::string_view bytes) {
    std::uint32_t sum = 0xFFFFFFFFu;
    for (const char byte : bytes) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum & 1u) != 0 ? 0xEDB88320u ^ (sum >> 1) : sum >> 1;
    }
    return ~sum;
}

/// A chunk that says whose picture it is, and seals what is behind it; its checksum is that of the whole
/// seal.
void mark(std::string& picture) {
    const std::string text = std::string(kMark) + ContentSeal::getBlank();
    picture.insert(kPlaceOfMark, bytesOf(static_cast<std::uint32_t>(text.size() - 4)) + text + bytesOf(0));
    ContentSeal::close(picture);
    const std::size_t begin = kPlaceOfMark + 4;
    const std::uint32_t sum = checksumOf(std::string_view(picture).substr(begin, text.size()));
    picture.replace(begin + text.size(), 4, bytesOf(sum));
}

cairo_status_t append(void* target, const unsigned char* bytes, unsigned int count) {
    try {
        static_cast<std::string*>(target)->append(reinterpret_cast<const char*>(bytes), count);
    } catch (...) { // which must not pass through C
        return CAIRO_STATUS_NO_MEMORY;
    }
    return CAIRO_STATUS_SUCCESS;
}

} // namespace

class PngCanvas::Surface {
public:
    Surface(double width, double height)
        : image(cairo_image_surface_create(CAIRO_FORMAT_RGB24,
                                           static_cast<int>(std::lround(width * kPixelsToAUnit)),
                                           static_cast<int>(std::lround(height * kPixelsToAUnit)))),
          cairo(cairo_create(image)) {
        if (cairo_status(cairo) != CAIRO_STATUS_SUCCESS) {
            free();
            throw std::bad_alloc();
        }
        cairo_set_source_rgb(cairo, 1.0, 1.0, 1.0);
        cairo_paint(cairo);
        cairo_scale(cairo, kPixelsToAUnit, kPixelsToAUnit);
        cairo_set_line_join(cairo, CAIRO_LINE_JOIN_ROUND);
        cairo_set_line_cap(cairo, CAIRO_LINE_CAP_ROUND);
    }
    Surface(const Surface&) = delete;
    Surface& operator=(const Surface&) = delete;
    ~Surface() { free(); }

    void setColour(Colour colour) const {
        cairo_set_source_rgb(cairo, ((colour >> 16) & 0xFF) / 255.0, ((colour >> 8) & 0xFF) / 255.0,
                             (colour & 0xFF) / 255.0);
    }

    cairo_surface_t* image;
    cairo_t* cairo;

private:
    void free() {
        cairo_destroy(cairo);
        cairo_surface_destroy(image);
    }
};

PngCanvas::PngCanvas(double width, double height) : surface(std::make_unique<Surface>(width, height)) {}

PngCanvas::~PngCanvas() = default;

void PngCanvas::drawLine(const std::vector<Point>& points, const Pen& pen) {
    if (points.size() < 2) return;
    cairo_t* const cairo = surface->cairo;
    surface->setColour(pen.colour);
    cairo_set_line_width(cairo, pen.width);
    cairo_set_dash(cairo, pen.dashes.data(), static_cast<int>(pen.dashes.size()), 0.0);
    for (const Point& point : points)
        cairo_line_to(cairo, point.x, point.y);
    cairo_stroke(cairo);
}

void PngCanvas::drawDots(const std::vector<Point>& points, double radius, Colour colour) {
    surface->setColour(colour);
    for (const Point& point : points) {
        cairo_new_sub_path(surface->cairo);
        cairo_arc(surface->cairo, point.x, point.y, radius, 0.0, 2.0 * std::numbers::pi);
    }
    cairo_fill(surface->cairo);
}

void PngCanvas::fillBoxes(const std::vector<Box>& boxes, Colour colour) {
    surface->setColour(colour);
    for (const Box& box : boxes)
        cairo_rectangle(surface->cairo, box.x, box.y, box.width, box.height);
    // Boxes side by side have no seam between them then.
    cairo_set_antialias(surface->cairo, CAIRO_ANTIALIAS_NONE);
    cairo_fill(surface->cairo);
    cairo_set_antialias(surface->cairo, CAIRO_ANTIALIAS_DEFAULT);
}

void PngCanvas::write(Point place, const std::string& text, const Letters& letters) {
    if (text.empty()) return;
    const std::string shown = printable(text, std::numeric_limits<std::size_t>::max());
    cairo_t* const cairo = surface->cairo;
    surface->setColour(letters.colour);
    cairo_select_font_face(cairo, "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           letters.isBold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cairo, letters.size);
    cairo_text_extents_t extents;
    cairo_text_extents(cairo, shown.c_str(), &extents);
    const double part = letters.anchor == Letters::Anchor::Start    ? 0.0
                        : letters.anchor == Letters::Anchor::Middle ? 0.5
                                                                    : 1.0;
    cairo_save(cairo);
    cairo_translate(cairo, place.x, place.y);
    if (letters.isUpward) cairo_rotate(cairo, -std::numbers::pi / 2.0);
    cairo_move_to(cairo, -part * extents.x_advance, 0.0);
    cairo_show_text(cairo, shown.c_str());
    cairo_restore(cairo);
    cairo_new_path(cairo);
}

std::string PngCanvas::getBytes() const {
    std::string bytes;
    if (cairo_status(surface->cairo) != CAIRO_STATUS_SUCCESS ||
        cairo_surface_write_to_png_stream(surface->image, append, &bytes) != CAIRO_STATUS_SUCCESS)
        throw std::bad_alloc();
    mark(bytes);
    return bytes;
}

bool PngCanvas::getIsOwn(std::string_view head) {
    return head.starts_with("\x89PNG") && head.size() > kPlaceOfMark + 4 &&
           head.substr(kPlaceOfMark + 4).starts_with(kMark);
}

} // namespace Quillmere::Host
