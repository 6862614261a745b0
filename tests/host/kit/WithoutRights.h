// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <sys/types.h>
#include <unistd.h>

namespace Support {

/// For as long as it lives the program may do no more than a user without rights.
class WithoutRights {
public:
    WithoutRights() : before(::geteuid()) {
        if (before == 0) isLowered = ::seteuid(kNobody) == 0;
    }
    ~WithoutRights() {
        if (!isLowered) return;
        EXPECT_EQ(::seteuid(before), 0);
    }
    WithoutRights(const WithoutRights&) = delete;
    WithoutRights& operator=(const WithoutRights&) = delete;

private:
    static constexpr uid_t kNobody = 65534;
    uid_t before;
    bool isLowered = false;
};

} // namespace Support
