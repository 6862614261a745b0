// SPDX-License-Identifier: MIT
#include "host/picture/PictureFile.h"
#include "host/recording/ContentSeal.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace Quillmere::Host;

/// The pixels of a PNG, as another library reads them.
class Pixels {
public:
    explicit Pixels(const std::string& png) {
        std::string_view left = png;
        const auto read = [](void* from, unsigned char* to, unsigned int count) {
            auto& bytes = *static_cast<std::string_view*>(from);
            if (bytes.size() < count) return CAIRO_STATUS_READ_ERROR;
            std::memcpy(to, bytes.data(), count);
            bytes.remove_prefix(count);
            return CAIRO_STATUS_SUCCESS;
        };
        image.reset(cairo_image_surface_create_from_png_stream(read, &left));
        width = cairo_image_surface_get_width(image.get());
        height = cairo_image_surface_get_height(image.get());
    }
    std::uint32_t at(int x, int y) const {
        std::uint32_t pixel = 0;
        const unsigned char* const row =
            cairo_image_surface_get_data(image.get()) + y * cairo_image_surface_get_stride(image.get());
        std::memcpy(&pixel, row + 4 * x, sizeof pixel);
        return pixel & 0xFFFFFFu;
    }
    /// The first and the last row of pixels that have this colour in a column; the height where none has.
    std::pair<int, int> extentOf(std::uint32_t colour, int x) const {
        std::pair<int, int> extent{height, height};
        for (int y = 0; y < height; ++y)
            if (at(x, y) == colour) extent = {std::min(extent.first, y), y};
        return extent;
    }
    int width = 0;
    int height = 0;

private:
    std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> image{nullptr, cairo_surface_destroy};
};

constexpr std::uint32_t kBlue = 0x0072B2;

/// Noise between -1 and 1, with silence, a gap and one sample far out.
Picture noisyPicture() {
    CurveTable table;
    table.rows = 100'000;
    table.curves.emplace_back("noise", "V", Envelope::kMostPieces);
    for (int row = 0; row < 100'000; ++row) {
        if (row >= 40'000 && row < 60'000) continue;
        const double value = row == 80'000 ? 3.0 : row % 2 == 0 ? 1.0 : -1.0;
        table.curves[0].envelope.take(row * 0.001, value);
    }
    std::vector<CurveTable> tables;
    tables.push_back(std::move(table));
    return arrange(std::move(tables), {.title = "noise"});
}

TEST(Png, HasTheCurveWhereTheValuesAre) {
    const std::string png = drawPicture(noisyPicture(), PictureForm::Png);
    const Pixels pixels(png);
    ASSERT_EQ(pixels.width, 1920);
    ASSERT_GT(pixels.height, 700);
    EXPECT_EQ(pixels.at(0, 0), 0xFFFFFFu);
    // The plot ends at 938 units of 960; where it begins depends on the width of numbers.
    int left = 0;
    while (left < pixels.width && pixels.extentOf(kBlue, left).first == pixels.height)
        ++left;
    const double length = 2 * 938.0 - left;
    const auto at = [&](double part) {
        return pixels.extentOf(kBlue, left + static_cast<int>(part * length));
    };
    const auto [top, bottom] = at(0.2);
    EXPECT_GT(bottom - top, 250); // from -1 to 1, of 300 units for -1 to 3
    EXPECT_LT(bottom - top, 300);
    EXPECT_EQ(at(0.21), at(0.2));
    EXPECT_EQ(at(0.5).first, pixels.height); // the gap
    int highest = pixels.height;
    for (int x = left + static_cast<int>(0.79 * length); x < left + static_cast<int>(0.81 * length); ++x)
        highest = std::min(highest, pixels.extentOf(kBlue, x).first);
    EXPECT_LT(highest, top - 200); // one sample of a hundred thousand
}

TEST(Png, IsTheSameEachTimeAndKnownAgain) {
    const std::string png = drawPicture(noisyPicture(), PictureForm::Png);
    EXPECT_EQ(drawPicture(noisyPicture(), PictureForm::Png), png);
    EXPECT_TRUE(getIsPicture(png));
    EXPECT_FALSE(getIsPicture("\x89PNG\r\n\x1A\n somebody's own picture, which is long enough to look at"));
}

/// Other programs read a chunk only whose checksum is right, and its text is what comes behind the header.
TEST(Png, IsSealedByAChunkThatOthersCanRead) {
    const std::string png = drawPicture(noisyPicture(), PictureForm::Png);
    const auto numberAt = [&](std::size_t place) {
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < 4; ++i)
            number = number << 8u | static_cast<unsigned char>(png.at(place + i));
        return number;
    };
    const std::size_t length = numberAt(33);
    EXPECT_EQ(png.substr(37, 4), "tEXt");
    EXPECT_TRUE(png.substr(41, length).starts_with(std::string("Software\0quillmere", 18)));
    std::uint32_t sum = 0xFFFFFFFFu; // as PNG's chunks have it
    for (const char byte : png.substr(37, 4 + length)) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum & 1u) != 0 ? 0xEDB88320u ^ sum >> 1u : sum >> 1u;
    }
    EXPECT_EQ(numberAt(41 + length), ~sum);
    const auto read = [&](const std::string& from) {
        return [&from](std::size_t place, std::size_t count) {
            return place < from.size() ? from.substr(place, count) : std::string();
        };
    };
    EXPECT_FALSE(ContentSeal::getIsBroken(read(png)));
    std::string changed = png;
    changed[changed.size() / 2] = static_cast<char>(changed[changed.size() / 2] ^ 1);
    EXPECT_TRUE(ContentSeal::getIsBroken(read(changed)));
}

} // namespace
