// SPDX-License-Identifier: MIT
#pragma once

#include <hdf5.h>

#include <mutex>
#include <string>
#include <utility>

namespace Quillmere::Host {

/// One lives around every use of the library, which isn't made for several threads and prints its errors to
/// standard error unless it is told not to. Not for a thread that has one.
class Hdf5Turn {
public:
    Hdf5Turn();
    ~Hdf5Turn();
    Hdf5Turn(const Hdf5Turn&) = delete;
    Hdf5Turn& operator=(const Hdf5Turn&) = delete;

    /// What the library says of the last call that failed, in parentheses with a blank in front, or nothing.
    static std::string getErrorText();

private:
    std::lock_guard<std::mutex> lock;
    H5E_auto2_t print = nullptr; ///< What the program had.
    void* printData = nullptr;
};

/// An identifier of the library, closed at the end. Requires of what it closes in: a turn.
class Hdf5Handle {
public:
    using Close = herr_t (*)(hid_t);

    Hdf5Handle() = default;
    Hdf5Handle(hid_t handle, Close closer) : id(handle), close(closer) {}
    Hdf5Handle(Hdf5Handle&& other) noexcept : id(std::exchange(other.id, -1)), close(other.close) {}
    Hdf5Handle& operator=(Hdf5Handle&& other) noexcept {
        std::swap(id, other.id);
        std::swap(close, other.close);
        return *this;
    }
    ~Hdf5Handle() { reset(); }

    void reset() {
        if (id >= 0) close(id);
        id = -1;
    }
    hid_t get() const { return id; }
    explicit operator bool() const { return id >= 0; }

private:
    hid_t id = -1;
    Close close = nullptr;
};

} // namespace Quillmere::Host
