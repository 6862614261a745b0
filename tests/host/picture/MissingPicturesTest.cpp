// SPDX-License-Identifier: MIT
// PictureFile.cpp is compiled into this program as where no library is found.
#include "host/picture/PictureFile.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;

TEST(MissingPictures, PngIsRefusedByItsName) {
    EXPECT_EQ(getPictureForms(), std::vector<std::string>{"SVG"});
    Complaints complaints;
    EXPECT_EQ(pictureFormOf("walk.svg", {"--output"}, complaints), PictureForm::Svg);
    EXPECT_TRUE(complaints.isEmpty());
    EXPECT_EQ(pictureFormOf("walk.png", {"--output"}, complaints), std::nullopt);
    ASSERT_FALSE(complaints.isEmpty());
    EXPECT_EQ(complaints.getSorted().front().getText(),
              "--output: found the picture 'walk.png', a form that this build of the program can't draw; "
              "expected a name that ends in .svg, or a program that was built with Cairo");
}

TEST(MissingPictures, SvgNeedsNoLibrary) {
    Picture picture;
    picture.title = "empty";
    EXPECT_TRUE(getIsPicture(drawPicture(picture, PictureForm::Svg)));
}

} // namespace
