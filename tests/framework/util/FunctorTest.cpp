// SPDX-License-Identifier: MIT
#include "framework/util/Functor.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <type_traits>
#include <vector>

using namespace Util::System;

namespace {
struct Block {
    void touch() { ++touches; }
    int touchAndAnswer() {
        ++touches;
        return 7;
    }
    void take(const std::vector<int>& numbers) { taken = &numbers; }
    bool takeAndAnswer(const std::vector<int>& numbers) {
        taken = &numbers;
        return true;
    }
    void raise() { throw std::runtime_error("from the block"); }
    int touches = 0;
    const std::vector<int>* taken = nullptr;
};

using NoArgument = Functor<void, NullType>;
using OneArgument = Functor<void, Seq<const std::vector<int>&>>;
} // namespace

TEST(FunctorTest, TheTypeListHasSixPlaces) {
    EXPECT_TRUE((std::is_same_v<Seq<int>, Seq<int, NullType, NullType, NullType, NullType, NullType>>));
    EXPECT_TRUE((std::is_base_of_v<Private::FunctorImplBase<void>, FunctorImpl<void, NullType>>));
    EXPECT_TRUE((std::is_base_of_v<Private::FunctorImplBase<void>, FunctorImpl<void, Seq<int>>>));
    EXPECT_TRUE((std::has_virtual_destructor_v<Private::FunctorImplBase<void>>));
}

TEST(FunctorTest, CallsTheMemberFunctionAndDropsWhatItReturns) {
    Block block;
    MemFunHandler<NoArgument, Block*, void (Block::*)()> handler(&block, &Block::touch);
    MemFunHandler<NoArgument, Block*, int (Block::*)()> answering(&block, &Block::touchAndAnswer);
    FunctorImpl<void, NullType>& shape = handler;
    shape();
    answering();
    EXPECT_EQ(block.touches, 2);
}

TEST(FunctorTest, PassesTheArgumentItself) {
    using Numbers = std::vector<int>;
    Block block;
    const Numbers numbers{1, 2, 3};
    MemFunHandler<OneArgument, Block*, void (Block::*)(const Numbers&)> handler(&block, &Block::take);
    FunctorImpl<void, Seq<const Numbers&>>& shape = handler;
    shape(numbers);
    EXPECT_EQ(block.taken, &numbers) << "not a copy";
    block.taken = nullptr;
    MemFunHandler<OneArgument, Block*, bool (Block::*)(const Numbers&)> answering(&block,
                                                                                  &Block::takeAndAnswer);
    answering.clone()->operator()(numbers);
    EXPECT_EQ(block.taken, &numbers);
}

TEST(FunctorTest, ACloneOutlivesItsOriginal) {
    Block block;
    std::unique_ptr<FunctorImpl<void, NullType>> clone;
    {
        const MemFunHandler<NoArgument, Block*, void (Block::*)()> handler(&block, &Block::touch);
        clone = handler.clone();
    }
    (*clone)();
    clone->clone()->operator()();
    EXPECT_EQ(block.touches, 2);
    clone = nullptr;
    EXPECT_EQ(block.touches, 2) << "the object isn't owned";
}

TEST(FunctorTest, WhatTheFunctionRaisesGoesToTheCaller) {
    Block block;
    MemFunHandler<NoArgument, Block*, void (Block::*)()> handler(&block, &Block::raise);
    EXPECT_THROW(handler(), std::runtime_error);
}
