// SPDX-License-Identifier: MIT
#include "framework/core/NamedObject.h"

#include <gtest/gtest.h>

TEST(NamedObjectTest, HoldsItsName) {
    struct Thing final : Quillmere::Core::NamedObject {
        using NamedObject::NamedObject;
    };
    std::string name = "Windows Size";
    const Thing thing(name);
    name = "changed afterwards";
    EXPECT_EQ(thing.getName(), "Windows Size");
    EXPECT_EQ(Thing("").getName(), "");
}
