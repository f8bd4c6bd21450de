# SPDX-License-Identifier: Apache-2.0
"""The commands of velatool: python -m vela --help."""

from __future__ import annotations

import os
import signal
import sys

from ._core import run_tool


def main() -> int:
    # Python would note an interrupt and act after the command, and tell of a closed pipe as of a full disk.
    for number in (signal.SIGINT, signal.SIGPIPE):
        signal.signal(number, signal.SIG_DFL)
    program = "python -m vela" if sys.argv[0] == __file__ else sys.argv[0]
    return run_tool([os.fsencode(word) for word in (program, *sys.argv[1:])])


if __name__ == "__main__":
    sys.exit(main())
