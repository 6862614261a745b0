// SPDX-License-Identifier: MIT
#include "host/graph/RunOrder.h"

#include "framework/Quillmere.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Core;

class Node final : public Filter {
public:
    explicit Node(const std::string& name)
        : Filter(name, true), first("first", this), second("second", this), out("out", this) {}
    void process() override {}
    const char* getTypeName() const override { return "Node"; }

    InputPin<MatrixXd> first;
    InputPin<MatrixXd> second;
    OutputPin<MatrixXd> out;
};

struct OrderRow {
    const char* name;
    const char* blocks; ///< A letter each, as a file has them.
    const char* links;  ///< Two letters each, from and to.
    const char* order;
    bool hasLoop = false;
};

const OrderRow kRows[] = {
    {.name = "no links", .blocks = "cab", .links = "", .order = "cab"},
    {.name = "a chain the wrong way round", .blocks = "cba", .links = "ab bc", .order = "abc"},
    {.name = "ties as in the file", .blocks = "dcba", .links = "ad ab ac", .order = "adcb"},
    {.name = "the first that is ready, however far down",
     .blocks = "xaby",
     .links = "by yx",
     .order = "abyx"},
    {.name = "two senders", .blocks = "cab", .links = "ac bc", .order = "abc"},
    {.name = "two links between two blocks", .blocks = "ba", .links = "ab ab", .order = "ab"},
    {.name = "a loop begins with the first",
     .blocks = "bca",
     .links = "ab bc ca",
     .order = "bca",
     .hasLoop = true},
    {.name = "a loop behind a sender",
     .blocks = "bcsa",
     .links = "sa ab bc ca",
     .order = "sbca",
     .hasLoop = true},
    {.name = "a block that feeds itself", .blocks = "bca", .links = "bb bc", .order = "abc", .hasLoop = true},
    {.name = "senders that are elsewhere don't count", .blocks = "ba", .links = "zb ab", .order = "ab"},
    {.name = "none", .blocks = "", .links = "", .order = ""},
};

TEST(RunOrder, SendersComeFirst) {
    for (const OrderRow& row : kRows) {
        std::deque<Node> nodes;
        const auto nodeOf = [&](char letter) -> Node& {
            for (Node& node : nodes)
                if (node.getName()[0] == letter) return node;
            return nodes.emplace_back(std::string(1, letter));
        };
        std::vector<Filter*> blocks;
        for (const char* letter = row.blocks; *letter != 0; ++letter)
            blocks.push_back(&nodeOf(*letter));
        for (const char* link = row.links; *link != 0; link += link[2] == ' ' ? 3 : 2) {
            Node& to = nodeOf(link[1]);
            nodeOf(link[0]).out.attach(to.first.isAttached() ? to.second : to.first, false);
        }
        std::string order;
        for (const Filter* const block : Quillmere::Host::runOrder(blocks))
            order += block->getName();
        EXPECT_EQ(order, row.order) << row.name;
        EXPECT_EQ(Quillmere::Host::hasLoop(blocks), row.hasLoop) << row.name;
    }
}

} // namespace
