// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

namespace Quillmere::Core {

/// What a block stamps whose rules say that it stamps the wall clock: just that, unless the host lends the
/// thread another time, so that a run gives the same whenever it is done.
class QUILLMERE_API StampClock {
public:
    /// Seconds: of the time that the calling thread was lent, else of the wall clock, since 15 October 1582,
    /// midnight UTC. [any]
    static double now();

    /// Lends the thread in which it lives a time for as long as it lives; those of one thread end in reverse
    /// order. [run]
    class QUILLMERE_API Lent {
    public:
        /// `seconds` isn't owned, may change meanwhile and may be null: then it is the wall clock.
        explicit Lent(const double* seconds) noexcept;
        ~Lent();
        Lent(const Lent&) = delete;
        Lent& operator=(const Lent&) = delete;

    private:
        const double* const before;
    };
};

} // namespace Quillmere::Core
