// SPDX-License-Identifier: MIT
#include "framework/Quillmere.h"
#include "tests/plugin/DynamicSymbols.h"

#include <gtest/gtest.h>

#include <typeinfo>

using namespace Quillmere::Core;

using Names = std::set<std::string>;

TEST(SymbolTableTest, ThePluginOffersThreeNamesAndNoMore) {
    EXPECT_EQ(exportedNames(PLUGIN_FILE),
              (Names{"dllGetQuillmereVersion", "dllStartPlugin", "dllStopPlugin"}));
}

/// One `type_info` per type in the process: the framework offers it, and (see above) the plug-in doesn't.
TEST(SymbolTableTest, TheFrameworkOffersTheTypesThatCrossTheBorder) {
    const Names names = exportedNames(CORE_FILE);
    const std::type_info* const types[] = {
        &typeid(InputPin<MatrixXd>),
        &typeid(OutputPin<MatrixXd>),
        &typeid(ValueProperty<bool>),
        &typeid(ValueProperty<int>),
        &typeid(ValueProperty<unsigned>),
        &typeid(ValueProperty<double>),
        &typeid(ValueProperty<MatrixXd>),
        &typeid(RangeProperty<int>),
        &typeid(RangeProperty<double>),
        &typeid(EnumProperty<std::string>),
        &typeid(CommandProperty),
        &typeid(Filter),
        &typeid(SimpleBufferStrategy<Sample, SingleValuePtrBuffer>),
        &typeid(ThreadSafeBufferStrategy<Sample, SingleValueBuffer>),
        &typeid(SynchronizedBufferStrategy<Sample, FifoBuffer>),
    };
    for (const std::type_info* const type : types)
        EXPECT_TRUE(names.contains(std::string("_ZTI") + type->name())) << type->name();
}
