// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/MatrixXd.h"

#include <utility>

namespace Quillmere::Core {

/// A sample: a payload and its time stamp in seconds.
template <class T>
struct TimeStampedData {
    T value{};
    double timeStamp = 0.0;
};

/// The one sample type of all links.
using Sample = TimeStampedData<MatrixXd>;

/// Copies payload and time stamp, reusing the storage of `to` as `resizeSample` does. [any]
inline void copySample(Sample& to, const Sample& from) {
    copySample(to.value, from.value);
    to.timeStamp = from.timeStamp;
}

/// Swaps storage and time stamp; no element is copied. [any]
inline void swapSamples(Sample& a, Sample& b) noexcept {
    a.value.swap(b.value);
    std::swap(a.timeStamp, b.timeStamp);
}

} // namespace Quillmere::Core
