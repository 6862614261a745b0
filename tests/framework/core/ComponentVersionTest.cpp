// SPDX-License-Identifier: MIT
#include "framework/core/ComponentVersion.h"

#include <gtest/gtest.h>

using Quillmere::Core::ComponentVersion;

TEST(ComponentVersionTest, IsBuiltFromItsText) {
    const std::string text = "1.3.3";
    const ComponentVersion version(text);
    EXPECT_EQ(version.toString(), "1.3.3");
    EXPECT_EQ(version, ComponentVersion("1.3.3"));
    EXPECT_NE(version, ComponentVersion("1.3.30"));
}
