// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/text/HostException.h"

#include <gtest/gtest.h>

#include <string>

namespace Support {

/// What a refusal says. One that doesn't carry what was found and what was expected fails the test.
inline std::string refusalText(const Quillmere::Host::HostException& exception) {
    EXPECT_FALSE(exception.getComplaints().empty()) << exception.what();
    for (const Quillmere::Host::Complaint& complaint : exception.getComplaints())
        EXPECT_FALSE(complaint.found.empty() || complaint.expected.empty()) << exception.what();
    return exception.what();
}

} // namespace Support
