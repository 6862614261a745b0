// SPDX-License-Identifier: MIT
#include "framework/core/StampClock.h"

#include <Poco/Timestamp.h>

namespace Quillmere::Core {

namespace {
thread_local const double* lentTime = nullptr; // seconds; null for the wall clock
} // namespace

double StampClock::now() {
    return lentTime != nullptr ? *lentTime : static_cast<double>(Poco::Timestamp().utcTime()) * 1e-7;
}

StampClock::Lent::Lent(const double* seconds) noexcept : before(lentTime) {
    lentTime = seconds;
}

StampClock::Lent::~Lent() {
    lentTime = before;
}

} // namespace Quillmere::Core
