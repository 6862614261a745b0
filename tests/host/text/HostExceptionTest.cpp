// SPDX-License-Identifier: MIT
#include "host/text/HostException.h"

#include "host/ends/RecordingException.h"
#include "host/live/ControlException.h"
#include "host/plugins/PluginLibrary.h"
#include "host/response/FrequencyResponse.h"
#include "host/run/RunEnd.h"
#include "host/text/Complaint.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

using namespace Quillmere::Host;

template <class Exception>
void expectIsOne(const char* name) {
    const Complaint complaint{{"x"}, "a", "b", "c"};
    try {
        throw Exception(complaint);
    } catch (const HostException& exception) {
        EXPECT_STREQ(exception.what(), "x: found a; expected b; did you mean c?") << name;
        ASSERT_EQ(exception.getComplaints().size(), 1u) << name;
        EXPECT_EQ(exception.getComplaints()[0].where.file, "x") << name;
        EXPECT_EQ(exception.getComplaints()[0].found, "a") << name;
        EXPECT_EQ(exception.getComplaints()[0].expected, "b") << name;
        EXPECT_EQ(exception.getComplaints()[0].suggestion, "c") << name;
    }
    // One that has only a text can't be taken apart by who catches it.
    static_assert(!std::is_constructible_v<Exception, std::string>);
    static_assert(!std::is_constructible_v<Exception, const char*>);
}

TEST(HostException, IsTheBaseOfAllThatTheHostRaises) {
    expectIsOne<HostException>("HostException");
    expectIsOne<PluginException>("PluginException");
    expectIsOne<RecordingException>("RecordingException");
    expectIsOne<ResponseException>("ResponseException");
    expectIsOne<RunException>("RunException");
    expectIsOne<ControlException>("ControlException");
    EXPECT_STREQ(InterruptedException().what(), "interrupted");
    EXPECT_TRUE(InterruptedException().getComplaints().empty()) << "nothing is wrong";
    static_assert(std::is_base_of_v<HostException, GraphException>);
    static_assert(std::is_base_of_v<HostException, InterruptedException>);
}

TEST(HostException, KeepsItsComplaintsInACopy) {
    const GraphException exception({{{"a.yaml", 1, 2}, "x", "y"}, {{"a.yaml", 3, 4}, "v", "w"}}, {}, 7);
    const HostException copy = exception;
    EXPECT_STREQ(copy.what(), "a.yaml:1:2: found x; expected y\n"
                              "a.yaml:3:4: found v; expected w\n"
                              "and 7 more");
    ASSERT_EQ(copy.getComplaints().size(), 2u);
    EXPECT_EQ(copy.getComplaints()[1].where.line, 3);
    static_assert(std::is_nothrow_copy_constructible_v<GraphException>);
}

} // namespace
