# SPDX-License-Identifier: Apache-2.0
"""vela.io: that every option reaches the library, and what failures look like."""

import errno
import os
import threading
from pathlib import Path

import numpy as np
import pytest
import vela
from vela import COORDINATE_SYSTEM as AXES
from vela import MAT_TYPE, UNIT, Mat, io

POINTS = np.arange(24, dtype=np.float32).reshape(2, 4, 3) + 0.5
COLORS = (np.arange(32) * 7).astype(np.uint8).reshape(2, 4, 4)


@pytest.fixture
def cloud():
    points = POINTS.copy()
    points[1, 2] = np.nan
    return Mat.from_points(points, COLORS)


def lines(path):
    return path.read_text().splitlines()


class TestClouds:
    @pytest.mark.parametrize("format", io.CLOUD_FILE)
    def test_points_and_colours_come_back(self, tmp_path, cloud, format):
        encoding = io.ENCODING.ASCII
        path = tmp_path / "cloud"
        result = io.write_cloud(cloud, path, format=format, encoding=encoding)
        assert (result.points, result.written, result.dropped, result.bytes) == (8, 7, 1, path.stat().st_size)
        read, info = io.read_cloud(path)
        assert (info.format, info.encoding, info.points, info.invalid) == (format, encoding, 7, 0)
        keep = cloud.valid
        assert np.array_equal(read.xyz[0], POINTS[keep]) and info.normals is None
        if info.has_color:
            assert np.array_equal(read.rgba[0, :, :3], COLORS[keep][:, :3])
        header = io.inspect_cloud(str(path))
        assert (header.format, header.encoding) == (format, encoding)
        assert io.kind_of(path) is io.FILE_KIND.CLOUD or format == io.CLOUD_FILE.XYZ

    def test_every_option_of_writing_counts(self, tmp_path, cloud):
        path = tmp_path / "cloud.ply"
        text = dict(encoding=io.ENCODING.ASCII)
        io.write_cloud(cloud, path, color=False, **text)
        assert "red" not in path.read_text()
        io.write_cloud(cloud, path, alpha=True, **text)
        assert "alpha" in path.read_text()
        assert io.read_cloud(path)[0].rgba[0, 1].tolist() == COLORS[0, 1].tolist()
        assert io.write_cloud(cloud, path, keep_grid=True).written == 8
        grid, info = io.read_cloud(path)
        assert grid.shape == (2, 4, 4) and info.invalid == 1 and np.isnan(grid.xyz[1, 2]).all()
        normals = Mat.from_points(-POINTS)
        io.write_cloud(cloud, path, normals=normals, unit=UNIT.METER, axes=AXES.IMAGE, sync=True)
        read, info = io.read_cloud(path, normals=True)
        assert np.array_equal(info.normals.xyz[0], -POINTS[cloud.valid]) and info.has_normals
        assert (info.unit, info.axes) == (UNIT.METER, AXES.IMAGE)
        plain = tmp_path / "cloud.xyz"
        io.write_cloud(cloud, plain, separator=";", color=False)
        assert any(line.count(";") == 2 for line in lines(plain)) and io.read_cloud(plain)[1].separator == ";"

    def test_units_and_axes_are_converted_both_ways(self, tmp_path, cloud):
        path = tmp_path / "cloud.pcd"
        forward_left_up = np.stack([POINTS[..., 2], -POINTS[..., 0], -POINTS[..., 1]], -1)[cloud.valid]
        ros = AXES.RIGHT_HANDED_Z_UP_AND_X_FORWARD
        io.write_cloud(cloud, path, unit=UNIT.METER, target_unit=UNIT.CENTIMETER, axes=AXES.IMAGE, target_axes=ros)
        read, info = io.read_cloud(path)
        assert np.allclose(read.xyz[0], forward_left_up * 100) and info.unit is UNIT.CENTIMETER
        back, info = io.read_cloud(path, target_unit=UNIT.METER, target_axes=AXES.IMAGE)
        assert np.allclose(back.xyz[0], POINTS[cloud.valid]) and info.axes is AXES.IMAGE
        io.write_cloud(cloud, path)
        told = {"unit": UNIT.METER, "axes": AXES.IMAGE}
        read, info = io.read_cloud(path, **told, target_unit=UNIT.CENTIMETER, target_axes=ros)
        assert np.allclose(read.xyz[0], forward_left_up * 100) and info.axes is ros

    def test_every_option_of_reading_counts(self, tmp_path, cloud):
        path = tmp_path / "cloud.ply"
        io.write_cloud(cloud, path)
        assert io.read_cloud(path, color=False)[0].type is MAT_TYPE.MAT_32F_C3
        bare = io.read_cloud(path, color=False, four_channels=True)[0]
        assert bare.type is MAT_TYPE.MAT_32F_C4 and (bare.numpy()[..., 3] == 0).all()
        for options in ({"max_points": 6}, {"format": io.CLOUD_FILE.PCD}):
            with pytest.raises(vela.Error):
                io.read_cloud(path, **options)


class TestDepth:
    depth = np.array([[0.5, 1.25, np.nan], [2, 3, 60]], np.float32)

    @pytest.mark.parametrize("extension", ["png", "pgm", "pfm", "npy"])
    def test_depths_come_back(self, tmp_path, extension):
        path = tmp_path / f"depth.{extension}"
        samples = {"unit": UNIT.METER} if extension in ("png", "pgm") else {}
        io.write_depth(Mat.from_array(self.depth), path, **samples)
        read, info = io.read_depth(path)
        assert np.array_equal(read.numpy(), self.depth, equal_nan=True)
        assert info.format.name == extension.upper() and (info.width, info.height, info.with_depth) == (3, 2, 5)
        assert io.inspect_depth(path).sample_bits == (16 if extension in ("png", "pgm") else 32)

    def test_every_option_counts(self, tmp_path):
        m, path = Mat.from_array(self.depth), tmp_path / "depth.pgm"
        io.write_depth(m, path, encoding=io.ENCODING.ASCII, unit=UNIT.METER, target_unit=UNIT.MILLIMETER)
        assert path.read_bytes().startswith(b"P2") and b" 1250" in path.read_bytes()
        read, info = io.read_depth(path, target_unit=UNIT.CENTIMETER)
        assert np.allclose(read.numpy(), self.depth * 100, equal_nan=True) and info.unit is UNIT.CENTIMETER
        with pytest.raises(vela.Error):
            io.write_depth(m, path, scale=2000)
        assert io.write_depth(m, path, scale=2000, allow_clipping=True).clipped == 1
        io.write_depth(m, path, format=io.DEPTH_FILE.PNG, invalid=65535, scale=4, compression=9)
        info = io.read_depth(path)[1]
        assert (info.format, info.invalid, info.scale) == (io.DEPTH_FILE.PNG, 65535, 4)
        rows = tmp_path / "depth.pfm"
        io.write_depth(m, rows, rows=io.ROW_ORDER.TOP_FIRST)
        assert np.array_equal(io.read_depth(rows)[0].numpy(), self.depth[::-1], equal_nan=True)
        assert np.array_equal(io.read_depth(rows, rows=io.ROW_ORDER.TOP_FIRST)[0].numpy(), self.depth, equal_nan=True)
        with pytest.raises(vela.Error):
            io.read_depth(rows, max_pixels=5)


@pytest.mark.parametrize("dtype", [np.float32, np.uint8])
def test_npy_files_are_exchanged_with_numpy(tmp_path, dtype):
    values = np.arange(24).reshape(2, 3, 4).astype(dtype)
    path = tmp_path / "Ünicode.npy"
    assert io.write_npy(Mat.from_array(values), path).bytes == path.stat().st_size
    assert np.array_equal(np.load(path), values) and io.kind_of(path) is io.FILE_KIND.ARRAY
    np.save(path, values[::-1])
    assert np.array_equal(io.read_npy(path).numpy(), values[::-1])
    np.save(path, values.astype(np.float64))
    with pytest.raises(vela.Error, match="Ünicode.npy"):
        io.read_npy(path)


class TestFailures:
    @pytest.mark.parametrize(
        "read", [io.read_cloud, io.read_depth, io.read_npy, io.inspect_cloud, io.inspect_depth]
    )
    def test_a_missing_file_raises_file_not_found(self, tmp_path, read):
        path = tmp_path / "missing.ply"
        with pytest.raises(FileNotFoundError) as caught:
            read(path)
        assert caught.value.errno == errno.ENOENT and Path(caught.value.filename) == path

    def test_a_full_disk_and_a_missing_folder_raise_os_errors(self, tmp_path, cloud):
        with pytest.raises(OSError) as caught:
            io.write_cloud(cloud, "/dev/full", format=io.CLOUD_FILE.PLY)
        assert caught.value.errno == errno.ENOSPC
        with pytest.raises(FileNotFoundError):
            io.write_npy(cloud, tmp_path / "no" / "folder.npy")

    def test_bad_arguments_write_nothing(self, tmp_path, cloud):
        for bad in (3, None):
            with pytest.raises(TypeError):
                io.write_cloud(cloud, bad)
        with pytest.raises(TypeError):
            io.write_cloud(cloud, tmp_path / "a.ply", "positional")
        with pytest.raises(vela.Error) as caught:
            io.write_cloud(cloud, tmp_path / "cloud.unknown")
        assert caught.value.code is vela.ERROR_CODE.INVALID_FUNCTION_PARAMETERS
        with pytest.raises(vela.Error):
            io.write_depth(cloud, tmp_path / "depth.png")
        assert not list(tmp_path.iterdir())

    def test_progress_is_reported_and_may_cancel(self, tmp_path):
        big = Mat.from_points(np.ones((700_000, 3), np.float32))
        path = tmp_path / "big.ply"
        seen = []
        io.write_cloud(big, path, progress=lambda done, total: seen.append((done, total)))
        assert seen and all(done <= total for done, total in seen if total) and path.exists()
        path.unlink()
        with pytest.raises(ZeroDivisionError):
            io.write_cloud(big, path, progress=lambda done, total: 1 / 0)
        with pytest.raises(OSError) as caught:
            io.write_cloud(big, path, progress=lambda done, total: False)
        assert caught.value.errno == errno.ECANCELED and not list(tmp_path.iterdir())

    def test_a_mat_freed_while_it_is_written_is_written_whole(self, tmp_path):
        big = Mat.from_points(np.ones((3_000_000, 3), np.float32))
        thread = threading.Thread(target=io.write_cloud, args=(big, tmp_path / "big.ply"))
        thread.start()
        big.free()
        thread.join()
        assert io.inspect_cloud(tmp_path / "big.ply").points == 3_000_000


def test_results_describe_themselves(tmp_path, cloud):
    result = io.write_cloud(cloud, tmp_path / "a.xyz", color=False)
    assert repr(result).startswith("Result(points=8, written=7, dropped=1, clipped=0, bytes=")
    match result:
        case io.Result(points=8, written=written):
            assert written == 7
