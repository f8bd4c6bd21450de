# SPDX-License-Identifier: Apache-2.0
"""Forks before or after the library has logged a message; the child must exit."""

import os
import signal
import sys
import time

import numpy as np
import vela

order, end = sys.argv[1:]


def log():
    os.environ["VELA_SOFTWARE_DEVICE"] = "1"
    try:
        vela.Mat.from_array(np.zeros((2, 2), np.float32)).update_gpu_from_cpu()
    except vela.Error:
        return
    sys.exit("nothing was refused")


if order == "log-first":
    log()
child = os.fork()
if child == 0:
    log()
    sys.exit(0) if end == "exit" else os._exit(0)
limit = time.monotonic() + 10
while time.monotonic() < limit:
    ended, status = os.waitpid(child, os.WNOHANG)
    if ended:
        print("ended" if status == 0 else f"status {status}")
        break
    time.sleep(0.02)
else:
    os.kill(child, signal.SIGKILL)
    print("hangs")
