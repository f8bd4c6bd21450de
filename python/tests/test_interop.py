# SPDX-License-Identifier: Apache-2.0
"""Other libraries in the same process. scripts/wheel_check has cv2; elsewhere its test is skipped."""

import array
import importlib.util

import pytest
from vela import Mat


def test_arrays_of_the_standard_library_are_shared():
    values = array.array("f", [1, 2, 3, 4, 5, 6])
    shared = Mat.from_array(memoryview(values).cast("B").cast("f", (2, 3)), copy=False)
    shared.numpy()[1, 2] = 9
    assert values[5] == 9
    assert Mat.from_array(memoryview(bytes(12)).cast("B", (3, 4))).owns, "bytes cannot be written"


@pytest.mark.skipif(importlib.util.find_spec("cv2") is None, reason="cv2 is not installed")
@pytest.mark.parametrize("order", ["cv2-first", "vela-first"])
def test_opencv_works_on_shared_pixels(run_program, tmp_path, order):
    assert run_program("opencv.py", order, str(tmp_path)) == "equal\n"
