# SPDX-License-Identifier: Apache-2.0
"""OpenCV and this package in one process, imported in the order asked for."""

import sys
from pathlib import Path

if sys.argv[1] == "cv2-first":
    import cv2
    import vela
else:
    import vela
    import cv2
import numpy as np

folder = Path(sys.argv[2])
picture = np.arange(4 * 6 * 3, dtype=np.uint8).reshape(4, 6, 3)
cv2.imwrite(str(folder / "a.png"), picture)
m = vela.Mat.from_array(cv2.imread(str(folder / "a.png")), copy=False)
assert np.array_equal(m.numpy(), picture)

padded = np.zeros((8, 10, 3), np.uint8)
part = vela.Mat.from_array(padded[2:6, 1:7], copy=False)
cv2.blur(picture, (3, 3), dst=part.numpy())
assert np.array_equal(padded[2:6, 1:7], cv2.blur(picture, (3, 3))) and not padded[0].any()

depth = np.float32([[0.5, 1.25], [3, 65]])
vela.io.write_depth(vela.Mat.from_array(depth), folder / "d.png", scale=1000)
assert np.array_equal(cv2.imread(str(folder / "d.png"), cv2.IMREAD_UNCHANGED), (depth * 1000).astype(np.uint16))
print("equal")
