# SPDX-License-Identifier: MIT
"""`python -m velmarind` is the command `quillmere`."""

from __future__ import annotations

import os
import sys

from velmarind import _native


def main() -> int:
    path = _native.command_path()
    if not path:
        print(
            "velmarind: found no command quillmere beside the package; expected it in the wheel or the build;"
            " build it with 'cmake --build --preset dev --target quillmere'",
            file=sys.stderr,
        )
        return 2
    sys.stdout.flush()
    os.execv(path, ["quillmere", *sys.argv[1:]])


if __name__ == "__main__":
    sys.exit(main())
