// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <stop_token>

namespace Python {

/// Does work in a thread of its own, without the interpreter's lock, while the calling thread listens to who
/// interrupts and calls `look` now and then, with the lock. What `look` raises, or an interruption,
/// requests a stop; when the work has ended in order, it comes out here. What the work raises comes out,
/// too. When the interpreter exits meanwhile, a stop is requested. Requires: the interpreter's lock.
void doInterruptibly(const std::function<void(const std::stop_token& stop)>& work,
                     const std::function<void()>& look = {});

/// Requests a stop of all such work, and waits for it; for the end of the interpreter. Requires: not the
/// interpreter's lock.
void stopAllWork();

/// In a forked child: none of it is under way here.
void forgetAllWork();

} // namespace Python
