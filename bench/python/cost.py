# SPDX-License-Identifier: Apache-2.0
"""What calls of the Python package cost, compared with numpy in the same run: the minimum of many repetitions.

Usage: python bench/python/cost.py
Where a target is given and missed, the line says so and the program ends with 1.
"""

import subprocess
import sys
import timeit

import numpy as np
import vela
from vela import MAT_TYPE, UNIT, Mat, Transform

m = Mat(1280, 720, MAT_TYPE.MAT_32F_C4)
m.set_to(1)
array = m.numpy()
motion, other = Transform(), Transform()
eye = np.eye(4, dtype=np.float32)
points = np.ones((720 * 1280, 3), np.float32)


def nothing():
    pass


# The measured call, the call to compare with, and the target in nanoseconds.
CASES = [
    ("empty call", "vela.has_gpu()", "nothing()", 60),
    ("property", "m.width", "array.size", 70),
    ("m.numpy()", "m.numpy()", "array.view()", 1000),
    ("np.asarray(m)", "np.asarray(m)", "np.asarray(array)", None),
    ("np.from_dlpack(m)", "np.from_dlpack(m)", "np.from_dlpack(array)", None),
    ("Mat.from_array(array)", "Mat.from_array(array)", "np.asarray(array)", None),
    ("Mat(8, 8, ...)", "Mat(8, 8, MAT_TYPE.MAT_32F_C1)", "np.empty((8, 8), np.float32)", None),
    ("4 x 4 product", "motion @ other", "eye @ eye", 160),
    ("4 x 4 inverse", "motion.inverse()", "np.linalg.inv(eye)", None),
    ("922k points moved", "motion @ points", "points @ eye[:3, :3].T + eye[:3, 3]", None),
    ("922k points scaled", "m.convert_unit(UNIT.METER, UNIT.CENTIMETER)", "np.multiply(array, 1, out=array)", None),
    ("922k points tested", "m.valid", "np.isfinite(array[..., :3]).all(-1)", None),
]


def nanoseconds(statement):
    timer = timeit.Timer(statement, globals=globals())
    count = max(1, int(0.02 / max(timer.timeit(1), 1e-8)))
    return min(timer.repeat(9, count)) / count * 1e9


def import_milliseconds(module):
    """Time of a process that imports the module, minus one that does not; Python's own modules are already loaded."""
    def run(code):
        return min(timeit.repeat(lambda: subprocess.run([sys.executable, "-c", code], check=True), number=1, repeat=7))

    return 1000 * (run(f"import enum, dataclasses, {module}") - run("import enum, dataclasses"))


def main():
    missed = False
    print(f"{'':24}{'vela':>12}{'numpy':>12}{'ratio':>8}{'target':>9}")
    for label, ours, theirs, target in CASES:
        a, b = nanoseconds(ours), nanoseconds(theirs)
        late = target is not None and a > target
        missed |= late
        print(f"{label:24}{a:9.0f} ns{b:9.0f} ns{a / b:8.2f}{target or '':>9}{'  missed' if late else ''}")
    a, b = import_milliseconds("vela"), import_milliseconds("numpy")
    missed |= a > 40
    print(f"{'import':24}{a:9.1f} ms{b:9.1f} ms{a / b:8.2f}{'40 ms':>9}{'  missed' if a > 40 else ''}")
    sys.exit(missed)


if __name__ == "__main__":
    main()
