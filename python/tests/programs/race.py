# SPDX-License-Identifier: Apache-2.0
"""Frees a Mat while another thread converts it; if its pixels were unmapped now, the process would crash."""

import threading
import time

import vela

for _ in range(10):
    m = vela.Mat(3000, 2500, vela.MAT_TYPE.MAT_32F_C4)
    m.set_to(1)
    threads = [
        threading.Thread(target=m.convert_unit, args=(vela.UNIT.METER, vela.UNIT.MILLIMETER)),
        threading.Thread(target=m.clone),
    ]
    for thread in threads:
        thread.start()
    time.sleep(0.001)
    m.free()
    for thread in threads:
        thread.join()
print("survived")
