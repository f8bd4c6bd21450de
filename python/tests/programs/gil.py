# SPDX-License-Identifier: Apache-2.0
"""Counts how often another thread runs while this one converts; prints the ticks and the seconds."""

import sys
import threading
import time

import vela

m = vela.Mat(4000, 3000, vela.MAT_TYPE.MAT_32F_C4)
m.set_to(1.25)
ticks = 0
stop = threading.Event()


def tick():
    global ticks
    while not stop.is_set():
        ticks += 1
        time.sleep(0.005)


thread = threading.Thread(target=tick)
sys.setswitchinterval(100)  # so long that the other thread runs only if the lock is released
thread.start()
start, before = time.monotonic(), ticks
while time.monotonic() - start < 1:
    m.convert_unit(vela.UNIT.METER, vela.UNIT.INCH)
print(ticks - before, time.monotonic() - start)
stop.set()
thread.join()
