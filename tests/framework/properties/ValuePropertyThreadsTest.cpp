// SPDX-License-Identifier: MIT
#include "framework/properties/ValueProperty.h"

#include "tests/framework/TestBlocks.h"

#include <gtest/gtest.h>

#include <thread>

using namespace TestBlocks;

namespace {
struct CountingObserver final : PropertyObserver {
    void valueChanged(const AbstractProperty&) override { ++values; }
    void attributesChanged(const AbstractProperty&) override { ++attributes; }
    int values = 0; // plain: the guard is what keeps the writers apart
    int attributes = 0;
};

struct Handler {
    void changed() { ++calls; }
    int calls = 0; // plain, for the same reason
};
} // namespace

TEST(ValuePropertyThreadsTest, WritersReadersAndObserversMayComeFromAnyThread) {
    constexpr int kRounds = 500;
    LayoutManager layout("layout");
    Plain block("block");
    layout.add(block);
    ValueProperty<int> number("number", &block.getPropertyBag());
    ValueProperty<MatrixXd> matrix("matrix", &block.getPropertyBag());
    Handler handler;
    CountingObserver observer;
    number.setChangeHandler(&handler, &Handler::changed);
    number.addObserver(observer);

    std::thread up([&] {
        for (int i = 1; i <= kRounds; ++i) {
            number.setValue(i);
            matrix.setValue(MatrixXd::Constant(1 + i % 3, 2, i));
        }
    });
    std::thread down([&] {
        for (int i = 1; i <= kRounds; ++i)
            number.setValue(-i);
    });
    std::thread flags([&] {
        CountingObserver passing;
        for (int i = 0; i < kRounds; ++i) {
            number.setIsReadable(i % 2 != 0);
            matrix.addObserver(passing);
            matrix.setIsReadable(true);
            matrix.removeObserver(passing);
        }
    });
    for (int i = 0; i < kRounds; ++i) {
        static_cast<void>(number.getIsReadable()); // no guard, and no race with who writes it
        const MatrixXd seen = matrix.getValue();
        ASSERT_TRUE(seen.size() == 0 || (seen.array() == seen(0)).all()) << "a torn read";
        layout.runStep();
    }
    for (std::thread* const thread : {&up, &down, &flags})
        thread->join();

    EXPECT_EQ(handler.calls, observer.values);
    EXPECT_EQ(handler.calls, 2 * kRounds) << "no two writes in a row are equal";
    EXPECT_EQ(observer.attributes, kRounds);
}
