// SPDX-License-Identifier: MIT
#include "Device.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cmath>

Device::Device() : event(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)), driver([this] { drive(); }) {}

Device::~Device() {
    {
        const std::lock_guard lock(mutex);
        isOver = true;
    }
    driver.join();
    ::close(event);
}

std::optional<Reading> Device::take(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex);
    arrived.wait_for(lock, patience, [this] { return !queue.empty(); });
    if (queue.empty()) return std::nullopt;
    const Reading reading = queue.front();
    queue.pop_front();
    eventfd_t count = 0;
    if (queue.empty()) ::eventfd_read(event, &count);
    return reading;
}

void Device::drive() {
    constexpr int kRate = 400;
    const auto start = std::chrono::steady_clock::now();
    for (int n = 0;; ++n) {
        std::this_thread::sleep_until(start + std::chrono::microseconds(1000000 / kRate) * n);
        const double time = static_cast<double>(n) / kRate;
        const std::lock_guard lock(mutex);
        if (isOver) return;
        queue.push_back({time, {std::sin(30.0 * time), std::cos(30.0 * time), 1.0}});
        ::eventfd_write(event, 1);
        arrived.notify_one();
    }
}
