// SPDX-License-Identifier: MIT
#pragma once

#include "tests/framework/TestBlocks.h"

#include <memory>
#include <utility>
#include <string>
#include <vector>

using namespace Quillmere::Core;

/// A factory of empty blocks under any type name, which counts its like.
class TestFactory final : public AbstractFilterFactory {
public:
    explicit TestFactory(std::string blockTypeName)
        : AbstractFilterFactory("plug-in", ComponentVersion("1")), typeName(std::move(blockTypeName)) {
        ++live;
    }
    ~TestFactory() override {
        --live;
        ++ended;
    }
    const char* getTypeName() const override { return typeName.c_str(); }
    Filter* create(const std::string& instanceName) override { return new TestBlocks::Plain(instanceName); }

    static inline int live = 0;
    static inline int ended = 0;

private:
    std::string typeName;
};

/// A plug-in with a factory for each of the type names.
class TestPlugin : public DefaultPlugin {
public:
    TestPlugin(const std::string& name, const std::string& versionText,
               const std::vector<std::string>& typeNames)
        : DefaultPlugin(name, versionText) {
        metaData.description = "for tests";
        TestFactory::ended = 0;
        for (const std::string& typeName : typeNames)
            addFactory(std::make_unique<TestFactory>(typeName));
    }
};
