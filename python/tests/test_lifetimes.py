# SPDX-License-Identifier: Apache-2.0
"""Who keeps pixels alive. The C library maps blocks of this size separately and unmaps them when they are freed, so
that using freed pixels crashes the process."""

import copy
import gc
import resource
import weakref
from pathlib import Path

import numpy as np
import pytest
from vela import COPY_TYPE, MAT_TYPE, Mat

SIDE = 1600  # 1600 x 1600 x 16 bytes: above the largest threshold that the C library ever adapts to


class Tracked(np.ndarray):
    """An array that allows weak references."""


def large(value):
    m = Mat(SIDE, SIDE, MAT_TYPE.MAT_32F_C4)
    m.numpy()[...] = value
    return m


VIEWS = {
    "numpy": Mat.numpy,
    "asarray": np.asarray,
    "dlpack": np.from_dlpack,
    "memoryview": lambda m: np.asarray(memoryview(m)),
    "xyz": lambda m: m.xyz,
    "rgba": lambda m: m.rgba.view(np.float32),
    "ref": lambda m: m.ref(),
    "copy": copy.copy,
    "capsule": lambda m: m.__dlpack__(),
    "shared": lambda m: Mat.from_array(m, copy=False),
}

CHANGES = {
    "free": Mat.free,
    "with": lambda m: m.__exit__(None, None, None),
    "copy_to": lambda m: Mat.from_array(np.zeros((2, 2), np.uint8)).copy_to(m),
    "nothing but the end": lambda m: None,
}


@pytest.mark.parametrize("change", CHANGES)
@pytest.mark.parametrize("view", VIEWS)
def test_a_view_outlives_what_becomes_of_its_mat(view, change):
    m = large(2.5)
    seen = VIEWS[view](m)
    CHANGES[change](m)
    del m
    gc.collect()
    if isinstance(seen, Mat):
        seen = seen.numpy()
    if isinstance(seen, np.ndarray):
        assert seen.reshape(-1)[0] == 2.5 and seen.reshape(-1)[-1] == 2.5


@pytest.mark.parametrize("view", VIEWS)
def test_a_shared_array_lives_as_long_as_its_views_and_no_longer(view):
    array = np.ones((40, 30, 4), np.float32).view(Tracked)
    watched = weakref.ref(array)
    m = Mat.from_array(array, copy=False)
    del array
    gc.collect()
    assert watched() is not None
    seen = VIEWS[view](m)
    m.free()
    gc.collect()
    assert watched() is not None, "the view still shows it"
    del seen
    gc.collect()
    assert watched() is None, "nothing shows it any more"


def test_a_copied_array_is_let_go():
    array = np.ones((40, 30), np.float32).view(Tracked)
    watched = weakref.ref(array)
    m = Mat.from_array(array, copy=True)
    del array
    assert watched() is None and m


def test_with_releases_and_copy_to_replaces():
    with large(1) as m:
        view = m.numpy()
    assert not m and view[0, 0, 0] == 1
    target = large(3)
    old, other = target.numpy(), target.ref()
    large(4).copy_to(target)  # fits: written through
    assert old[0, 0, 0] == 4 == other.numpy()[0, 0, 0]
    Mat.from_array(np.full((2, 2), 5, np.uint8)).copy_to(target, COPY_TYPE.CPU_CPU)  # does not: new pixels
    assert old[0, 0, 0] == 4 == other.numpy()[0, 0, 0] and target.numpy().tolist() == [[5, 5], [5, 5]]


def test_nothing_is_leaked():
    def in_use():
        gc.collect()
        return int(Path("/proc/self/statm").read_text().split()[1]) * resource.getpagesize()

    def round_of_everything():
        m = Mat(512, 512, MAT_TYPE.MAT_32F_C4)
        for view in VIEWS.values():
            view(m)
        _ = m.valid, m.clone(), m.shape, m.dtype, repr(m), m.__dlpack__(copy=True), bytes(m)
        with pytest.raises(TypeError):
            Mat.from_array("text")

    for _ in range(5):
        round_of_everything()
    before = in_use()
    for _ in range(50):
        round_of_everything()
    assert in_use() - before < 50 * 512 * 512 * 16 / 10, "a tenth of one Mat per round"
