// SPDX-License-Identifier: MIT
#include "host/graph/RunOrder.h"

#include "framework/Quillmere.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Quillmere::Core;
using namespace Quillmere::Host;

class Node final : public Filter {
public:
    explicit Node(const std::string& name)
        : Filter(name, true), a("a", this), b("b", this), out("out", this) {}
    void process() override {}
    const char* getTypeName() const override { return "Node"; }

    InputPin<MatrixXd> a;
    InputPin<MatrixXd> b;
    OutputPin<MatrixXd> out;
};

struct RunOrderTest : testing::Test {
    std::string orderOf(const std::vector<Filter*>& blocks) {
        std::string names;
        for (const Filter* const block : runOrder(blocks))
            names += block->getName();
        return names;
    }

    Node one{"1"};
    Node two{"2"};
    Node three{"3"};
    const std::vector<Filter*> all{&one, &two, &three};
    const std::vector<Filter*> backwards{&three, &two, &one};
};

TEST_F(RunOrderTest, SendersComeFirst) {
    EXPECT_EQ(orderOf(backwards), "321") << "as given, where no link says anything";
    one.out.attach(two.a, false);
    two.out.attach(three.a, false);
    EXPECT_EQ(orderOf(backwards), "123");
    EXPECT_EQ(orderOf({&three, &one}), "31") << "what isn't among them says nothing";
}

TEST_F(RunOrderTest, TwoWaysToOneBlockAreNoLoop) {
    one.out.attach(two.a, false);
    one.out.attach(three.a, false);
    two.out.attach(three.b, false);
    EXPECT_FALSE(hasLoop(all));
    EXPECT_FALSE(hasLoop(backwards));
}

TEST_F(RunOrderTest, LinksThatLeadBackAreALoop) {
    one.out.attach(two.a, false);
    two.out.attach(three.a, false);
    three.out.attach(one.b, false);
    EXPECT_TRUE(hasLoop(all));
    EXPECT_TRUE(hasLoop(backwards));
    EXPECT_FALSE(hasLoop({&one, &two})) << "a loop through others is none of theirs";
    EXPECT_EQ(orderOf(all), "123") << "the first of those that are left breaks it";
}

TEST_F(RunOrderTest, ABlockThatFeedsItselfIsALoop) {
    two.out.attach(two.b, false);
    EXPECT_TRUE(hasLoop(all));
}

} // namespace
