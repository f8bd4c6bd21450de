# SPDX-License-Identifier: Apache-2.0
"""Sends Mats to worker processes and back."""

import multiprocessing
import sys

import numpy as np
import vela


def to_millimetres(m):
    m.convert_unit(vela.UNIT.METER, vela.UNIT.MILLIMETER)
    return m


if __name__ == "__main__":
    clouds = [vela.Mat.from_points(np.full((50, 3), i, np.float32)) for i in range(8)]
    with multiprocessing.get_context(sys.argv[1]).Pool(2) as pool:
        results = pool.map(to_millimetres, clouds)
    assert all(np.array_equal(r.xyz, c.xyz * 1000) for r, c in zip(results, clouds))
    print("equal")
