# SPDX-License-Identifier: Apache-2.0
"""Pixels in and out: from_array, numpy, the buffer protocol, DLPack."""

import hashlib

import numpy as np
import pytest
from vela import MAT_TYPE as T
from vela import MEM, Error, Mat

CHANNELS = {"32F": (1, 2, 3, 4), "8U": (1, 2, 3, 4), "US16": (1,), "8S": (4,)}
DTYPES = {"32F": np.float32, "8U": np.uint8, "US16": np.uint16, "8S": np.int8}
TYPES = [(kind, n) for kind, counts in CHANNELS.items() for n in counts]


def counting(height, width, tail, dtype):
    values = np.arange(height * width * int(np.prod(tail)))
    return values.reshape((height, width) + tail).astype(dtype)


@pytest.mark.parametrize(("kind", "channels"), TYPES)
def test_every_type_is_shared_both_ways(kind, channels):
    type, dtype = T[f"MAT_{kind}_C{channels}"], DTYPES[kind]
    array = counting(3, 5, (channels,) if channels > 1 else (), dtype)
    m = Mat.from_array(array, copy=False)
    assert (m.type, m.shape, m.dtype, m.owns, m.width, m.height) == (type, array.shape, dtype, False, 5, 3)
    views = [m.numpy(), np.asarray(m), np.from_dlpack(m), np.asarray(memoryview(m)), Mat.from_array(array).numpy()]
    for view in views:
        assert view.dtype == dtype and np.array_equal(view, array) and np.shares_memory(view, array)
    assert not np.shares_memory(Mat.from_array(array, copy=True).numpy(), array)
    views[0][1, 2] = 77
    assert (array[1, 2] == 77).all()
    assert memoryview(m).format == array.dtype.char and bytes(m) == array.tobytes()
    owned = Mat(5, 3, type)
    owned.set_to(7)
    assert owned.owns and (np.from_dlpack(owned) == np.full(array.shape, 7, dtype)).all()


@pytest.mark.parametrize(
    ("part", "why"),
    [
        (lambda a: a[:, ::2], "pixels of a row"),
        (lambda a: a[::-1], "backwards"),
        (lambda a: a.transpose(1, 0, 2), "pixels of a row"),
        (lambda a: a[..., ::-1], "channels"),
        (lambda a: a[..., :2], "pixels of a row"),
        (lambda a: np.lib.stride_tricks.as_strided(a, (6, 8, 3), (12, 12, 4)), "overlap"),
        (lambda a: np.broadcast_to(a[:1], a.shape), "read-only"),
        (lambda a: a.tobytes() and np.frombuffer(a.tobytes(), np.float32).reshape(a.shape), "read-only"),
    ],
)
def test_what_cannot_be_shared_is_copied(part, why):
    array = counting(6, 8, (3,), np.float32)
    view = part(array)
    with pytest.raises(ValueError, match=why):
        Mat.from_array(view, copy=False)
    for copy in (None, True):
        m = Mat.from_array(view, copy=copy)
        assert m.owns and np.array_equal(m.numpy(), view) and not np.shares_memory(m.numpy(), array)


def test_arrays_that_no_mat_holds_are_refused():
    types = (np.zeros((3, 3)), np.zeros((3, 3, 5), np.float32), np.zeros((3, 3, 3), np.uint16), np.zeros((3, 3), np.int8))
    for bad in (*types, [[1.0, 2.0]], "text", None):
        with pytest.raises(TypeError):
            Mat.from_array(bad)
    for shape in ((3,), (1, 2, 3, 4)):
        with pytest.raises(ValueError):
            Mat.from_array(np.zeros(shape, np.float32))


@pytest.mark.parametrize("shape", [(0, 4), (4, 0), (0, 0, 3), (1, 1), (1, 5, 4), (5, 1, 4)])
def test_the_smallest_sizes_keep_their_shape(shape):
    array = np.ones(shape, np.uint8)
    m = Mat.from_array(array)
    assert m and m.numpy().shape == shape == np.from_dlpack(m).shape == memoryview(m).shape
    assert m.clone().numpy().tobytes() == bytes(m) == array.tobytes()


def test_a_part_of_an_array_keeps_its_row_step():
    big = counting(20, 30, (), np.float32)
    part = big[4:9, 6:16]
    m = Mat.from_array(part, copy=False)
    assert m.step == 120 and m.numpy().strides == (120, 4) and np.array_equal(np.from_dlpack(m), part)
    assert memoryview(m).tolist() == part.tolist() and bytes(m) == part.tobytes()
    with pytest.raises(BufferError, match="rows are apart"):
        hashlib.sha256(m)
    packed = m.clone()
    assert packed.step == 40 and np.array_equal(packed.numpy(), part)
    assert hashlib.sha256(packed).digest() == hashlib.sha256(part.copy()).digest()
    one_row = Mat.from_array(big[4:5, 6:16], copy=False)  # one row is packed, whatever comes after it
    assert hashlib.sha256(one_row).digest() == hashlib.sha256(big[4:5, 6:16].copy()).digest()


def test_asarray_obeys_dtype_and_copy():
    m = Mat.from_array(counting(2, 3, (), np.uint8))
    assert np.asarray(m, np.float64).tolist() == [[0, 1, 2], [3, 4, 5]]
    assert not np.shares_memory(m.__array__(copy=True), m.numpy())
    with pytest.raises(ValueError, match="dtype"):
        m.__array__(np.dtype("f8"), copy=False)


def test_without_a_host_side_nothing_is_shown(monkeypatch):
    for show in (Mat.numpy, memoryview, np.from_dlpack, lambda m: m.valid, lambda m: m.xyz, lambda m: m.set_to(1)):
        with pytest.raises(BufferError, match="empty"):
            show(Mat())
    monkeypatch.setenv("VELA_SOFTWARE_DEVICE", "1")
    with pytest.raises(BufferError, match="no host side"):
        Mat(4, 3, T.MAT_8U_C1, MEM.GPU).numpy()


class TestDlpack:
    def test_the_version_asked_for_is_exported(self):
        m = Mat(4, 3, T.MAT_32F_C4)
        assert m.__dlpack_device__() == (1, 0)
        for asked, name in ((None, '"dltensor"'), ((0, 8), '"dltensor"'), ((1, 0), "dltensor_versioned")):
            assert name in repr(m.__dlpack__(max_version=asked))
            m.__dlpack__(max_version=asked)  # a capsule that nobody takes frees itself

    def test_copies_only_when_asked(self):
        m = Mat.from_array(counting(3, 4, (2,), np.float32))
        for copy in (True, False):
            taken = Mat.from_array(_Capsule(m.__dlpack__(max_version=(1, 0), copy=copy)), copy=False).numpy()
            assert np.array_equal(taken, m.numpy()) and np.shares_memory(taken, m.numpy()) != copy

    def test_other_devices_and_streams_are_refused(self):
        m = Mat(4, 3, T.MAT_32F_C4)
        assert m.__dlpack__(dl_device=(1, 0))
        with pytest.raises(BufferError, match="gpu"):
            m.__dlpack__(dl_device=(2, 0))
        with pytest.raises(ValueError, match="stream"):
            m.__dlpack__(stream=1)


class _Capsule:
    """Hands a capsule on, as a library's array would."""

    def __init__(self, capsule):
        self.capsule = capsule

    def __dlpack__(self, **_):
        return self.capsule

    def __dlpack_device__(self):
        return (1, 0)


def test_device_side_is_refused_without_a_gpu(monkeypatch):
    for mem in (MEM.GPU, MEM.BOTH, MEM.MANAGED):
        with pytest.raises(Error, match="No NVIDIA graphics card") as caught:
            Mat(4, 3, T.MAT_8U_C1, mem)
        assert caught.value.code.name == "NO_GPU_DETECTED"
    monkeypatch.setenv("VELA_SOFTWARE_DEVICE", "1")
    with pytest.raises(BufferError, match="no GPU"):  # the software device is never exported, asked for or not
        _ = Mat(4, 3, T.MAT_8U_C1, MEM.BOTH).gpu


class TestClouds:
    points = counting(2, 3, (3,), np.float32)
    colors = counting(2, 3, (3,), np.uint8) + 200

    @pytest.mark.parametrize("flat", [False, True])
    @pytest.mark.parametrize("point_channels", [3, 4])
    @pytest.mark.parametrize("color_channels", [0, 3, 4])
    def test_from_points_joins_points_and_colours(self, flat, point_channels, color_channels):
        points = np.dstack([self.points, np.full((2, 3), 9, np.float32)])[..., :point_channels]
        alpha = np.full((2, 3), 17, np.uint8)
        colors = np.dstack([self.colors, alpha])[..., :color_channels] if color_channels else None
        if flat:
            points = points.reshape(6, -1)
            colors = None if colors is None else colors.reshape(6, -1)
        m = Mat.from_points(points, colors)
        assert m.type == T.MAT_32F_C4 and m.shape == ((1, 6, 4) if flat else (2, 3, 4)) and m.owns
        assert np.array_equal(m.xyz.reshape(-1, 3), self.points.reshape(-1, 3))
        if colors is None:
            assert (m.numpy()[..., 3] == (9 if point_channels == 4 else 0)).all()
        else:
            assert np.array_equal(m.rgba[..., :3].reshape(-1, 3), self.colors.reshape(-1, 3))
            assert (m.rgba[..., 3] == (17 if color_channels == 4 else 255)).all()

    @pytest.mark.parametrize(
        ("points", "colors"),
        [((3,), None), ((2, 5), None), ((1, 2, 3, 4), None), ((6, 3), (5, 3)), ((6, 3), (6, 2)), ((6, 3), (6,)),
         ((2, 3, 3), (6, 3)), ((2, 3, 3), (3, 2, 3))],
    )  # fmt: skip
    def test_shapes_that_are_no_cloud_are_refused(self, points, colors):
        with pytest.raises(ValueError, match="shape"):
            Mat.from_points(np.zeros(points, np.float32), colors and np.zeros(colors, np.uint8))

    def test_views_of_a_part_write_through(self):
        big = np.zeros((6, 7, 4), np.float32)
        m = Mat.from_array(big[1:3, 2:5], copy=False)
        m.xyz[1, 2] = 1, 2, 3
        m.rgba[1, 2] = 10, 20, 30, 40
        assert big[2, 4, :3].tolist() == [1, 2, 3] and big[2, 4, 3:].tobytes() == bytes([10, 20, 30, 40])
        assert np.count_nonzero(big) == 4

    def test_valid_marks_finite_points_and_depths(self):
        cloud = np.ones((2, 3, 4), np.float32)
        cloud[0, 0, 2], cloud[0, 1, 0], cloud[1, 2, 3] = np.nan, -np.inf, np.nan
        assert Mat.from_array(cloud).valid.tolist() == [[False, False, True], [True, True, True]]
        depth = np.array([[1, np.inf], [np.nan, 0]], np.float32)
        assert Mat.from_array(depth).valid.tolist() == [[True, False], [False, True]]

    def test_pictures_have_no_points(self):
        for type, views in ((T.MAT_8U_C4, ("xyz", "rgba", "valid")), (T.MAT_32F_C3, ("rgba",)), (T.MAT_32F_C2, ("valid",))):
            for view in views:
                with pytest.raises(TypeError, match="MAT_32F_C4"):
                    getattr(Mat(2, 2, type), view)
