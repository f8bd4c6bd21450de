# SPDX-License-Identifier: Apache-2.0
"""Other libraries in the same process. Those that are not installed are skipped; scripts/wheel_check has cv2."""

import array
import importlib.util

import numpy as np
import pytest
from vela import MAT_TYPE, Mat


def needs(module):
    return pytest.mark.skipif(importlib.util.find_spec(module) is None, reason=f"{module} is not installed")


def test_standard_library():
    values = array.array("f", [1, 2, 3, 4, 5, 6])
    shared = Mat.from_array(memoryview(values).cast("B").cast("f", (2, 3)), copy=False)
    shared.numpy()[1, 2] = 9
    assert values[5] == 9
    assert Mat.from_array(memoryview(bytes(12)).cast("B", (3, 4))).owns, "bytes cannot be written"


@needs("cv2")
@pytest.mark.parametrize("order", ["cv2-first", "vela-first"])
def test_opencv(run_program, tmp_path, order):
    assert run_program("opencv.py", order, str(tmp_path)) == "equal\n"


@needs("torch")
def test_torch():
    import torch

    m = Mat(5, 4, MAT_TYPE.MAT_32F_C3)
    tensor = torch.from_dlpack(m)
    tensor[:] = 3
    assert (m.numpy() == 3).all() and tensor.shape == (4, 5, 3)
    back = Mat.from_array(torch.arange(12, dtype=torch.uint8).reshape(3, 4), copy=False)
    assert back.numpy().tolist() == np.arange(12).reshape(3, 4).tolist()
    del m
    assert float(tensor.sum()) == 180


