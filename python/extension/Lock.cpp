// SPDX-License-Identifier: MIT
#include "python/extension/Lock.h"

#include <unistd.h>

namespace Python {

Unlocked::~Unlocked() {
#if PY_VERSION_HEX >= 0x030D0000
    const bool isEnding = Py_IsFinalizing() != 0;
#else
    const bool isEnding = _Py_IsFinalizing() != 0;
#endif
    while (isEnding)
        ::pause();
    PyEval_RestoreThread(state);
}

} // namespace Python
