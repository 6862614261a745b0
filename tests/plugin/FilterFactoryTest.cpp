// SPDX-License-Identifier: MIT
#include "plugin/FilterFactory.h"

#include "tests/framework/TestBlocks.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

using namespace TestBlocks;

namespace {
class Named final : public Plain {
public:
    static constexpr const char* kTypeName = "Named";
    explicit Named(const std::string& name) : Plain(name) { ++live; }
    ~Named() override { --live; }
    const char* getTypeName() const override { return kTypeName; }

    static inline int live = 0;
};

/// There is never memory for it.
class Huge final : public Plain {
public:
    static constexpr const char* kTypeName = "Huge";
    using Plain::Plain;
    static void* operator new(std::size_t, const std::nothrow_t&) noexcept { return nullptr; }
    static void operator delete(void*) {}
};

class Unwilling final : public Plain {
public:
    static constexpr const char* kTypeName = "Unwilling";
    explicit Unwilling(const std::string& name) : Plain(name) { throw std::runtime_error("no"); }
};

const ComponentVersion kVersion("1.2");
} // namespace

TEST(FilterFactoryTest, MakesBlocksOfItsClassUnderTheirTypeName) {
    FilterFactory<Named> factory("plug-in", kVersion);
    EXPECT_STREQ(factory.getTypeName(), "Named");
    EXPECT_EQ(factory.getPluginName(), "plug-in");
    EXPECT_EQ(factory.getVersion(), kVersion);
    Filter* const block = factory.create("one");
    EXPECT_NE(dynamic_cast<Named*>(block), nullptr);
    EXPECT_EQ(block->getName(), "one");
    EXPECT_STREQ(block->getTypeName(), factory.getTypeName());
    factory.destroy(block);
    EXPECT_EQ(Named::live, 0);
}

TEST(FilterFactoryTest, DestroyIgnoresNull) {
    FilterFactory<Named> factory("plug-in", kVersion);
    factory.destroy(nullptr);
}

TEST(FilterFactoryTest, TwoCreatesOfOneNameAreTwoBlocks) {
    FilterFactory<Named> factory("plug-in", kVersion);
    Filter* const one = factory.create("same");
    Filter* const two = factory.create("same");
    EXPECT_NE(one, two);
    EXPECT_EQ(Named::live, 2);
    factory.destroy(one);
    EXPECT_EQ(Named::live, 1);
    EXPECT_EQ(two->getName(), "same");
    factory.destroy(two);
    EXPECT_EQ(Named::live, 0);
}

TEST(FilterFactoryTest, WithoutMemoryCreateGivesNull) {
    FilterFactory<Huge> factory("plug-in", kVersion);
    EXPECT_EQ(factory.create("huge"), nullptr);
}

TEST(FilterFactoryTest, WhatABlocksConstructorRaisesGoesToTheCaller) {
    FilterFactory<Unwilling> factory("plug-in", kVersion);
    EXPECT_THROW(factory.create("unwilling"), std::runtime_error);
}
