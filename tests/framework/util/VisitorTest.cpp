// SPDX-License-Identifier: MIT
#include "framework/util/Visitor.h"

#include <gtest/gtest.h>

using namespace Util::System;

namespace {
struct CatchAll {};

struct Shape : AbstractVisitable<void, void, CatchAll, 1> {
    void accept(AbstractVisitor& visitor) const override { wasKnown = acceptTyped(*this, visitor); }
    mutable bool wasKnown = false;
};

struct Circle final : Shape {
    void accept(AbstractVisitor& visitor) const override { wasKnown = acceptTyped(*this, visitor); }
};

struct ShapeVisitor final : AbstractVisitor, Visitor<Shape, void, void, 1> {
    void visit(const Shape& shape) override { seen = &shape; }
    const Shape* seen = nullptr;
};
} // namespace

TEST(VisitorTest, AVisitorIsAskedForTheVeryType) {
    const Shape shape;
    const Circle circle;
    ShapeVisitor visitor;
    shape.accept(visitor);
    EXPECT_TRUE(shape.wasKnown);
    EXPECT_EQ(visitor.seen, &shape);
    circle.accept(visitor);
    EXPECT_FALSE(circle.wasKnown) << "a base isn't the type";
    EXPECT_EQ(visitor.seen, &shape);
}

TEST(VisitorTest, FamiliesAreToldApartByTheirTag) {
    struct OtherFamily final : AbstractVisitor, Visitor<Shape, void, void, 2> {
        void visit(const Shape&) override { FAIL(); }
    } visitor;
    const Shape shape;
    shape.accept(visitor);
    EXPECT_FALSE(shape.wasKnown);
}

TEST(VisitorTest, AVisitorMayKnowNothing) {
    AbstractVisitor visitor;
    const Shape shape;
    shape.accept(visitor);
    EXPECT_FALSE(shape.wasKnown);
}
