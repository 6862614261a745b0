// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>

/// What a driver hands over: seconds since the device began, and three accelerations.
struct Reading {
    double time;
    std::array<double, 3> acceleration;
};

/// Stands for a driver: a thread of its own that puts a reading into a queue four hundred times a second. Put
/// what your device's library does in the place of `drive`.
class Device {
public:
    Device();
    ~Device();

    /// The oldest reading; where there is none yet, waits for one, but no longer than `patience`. [any]
    std::optional<Reading> take(std::chrono::milliseconds patience);
    /// Something to read as long as a reading waits. [any]
    int getDescriptor() const { return event; }

private:
    void drive();

    const int event;
    std::mutex mutex;
    std::condition_variable arrived;
    std::deque<Reading> queue; ///< Under `mutex`.
    bool isOver = false;       ///< Under `mutex`.
    std::thread driver;        ///< Last: it begins when all else is there.
};
