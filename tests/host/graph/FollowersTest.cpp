// SPDX-License-Identifier: MIT
#include "host/graph/Followers.h"

#include "framework/Quillmere.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Quillmere::Core;
using Quillmere::Host::followersOf;

class Node final : public Filter {
public:
    explicit Node(const std::string& name, const char* type = "Node")
        : Filter(name, true), in("in", this), control("control", this), out("out", this), typeName(type) {
        control.setIsBlocking(false);
    }
    void process() override {}
    const char* getTypeName() const override { return typeName; }

    InputPin<MatrixXd> in;
    InputPin<MatrixXd> control;
    OutputPin<MatrixXd> out;

private:
    const char* typeName;
};

std::string namesOf(const std::vector<Filter*>& blocks) {
    std::string names;
    for (const Filter* const block : followersOf(blocks))
        names += block->getName() + " ";
    return names;
}

} // namespace

TEST(FollowersTest, AreBehindABlockThatMakesTimesInWhateverOrder) {
    Node source("source");
    Node maker("maker", "Unframe");
    Node near("near");
    Node far("far");
    Node beside("beside");
    source.out.attach(maker.in, false);
    source.out.attach(beside.in, false);
    maker.out.attach(near.in, false);
    near.out.attach(far.in, false);
    EXPECT_EQ(namesOf({&source, &maker, &near, &far, &beside}), "near far ");
    EXPECT_EQ(namesOf({&far, &beside, &near, &maker, &source}), "far near ");
    EXPECT_EQ(namesOf({&source, &far, &beside}), "") << "what links them is elsewhere";
    EXPECT_EQ(namesOf({&near}), "near ") << "a maker itself may be elsewhere";
}

TEST(FollowersTest, AreBehindControlInputsToo) {
    Node maker("maker", "Join");
    Node held("held");
    Node behind("behind");
    maker.out.attach(held.control, false);
    held.out.attach(behind.in, false);
    EXPECT_EQ(namesOf({&maker, &held, &behind}), "held behind ");
}

TEST(FollowersTest, InALoopAreAllThatStandInIt) {
    Node maker("maker", "Resample");
    Node sum("sum");
    Node back("back");
    Node own("own", "Join");
    maker.out.attach(sum.in, false);
    sum.out.attach(back.in, false);
    back.out.attach(sum.control, false);
    EXPECT_EQ(namesOf({&back, &maker, &sum}), "back sum ");
    own.out.attach(own.control, false);
    EXPECT_EQ(namesOf({&own}), "own ") << "a maker may be behind itself";
}
